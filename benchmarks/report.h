/// Targets of benchmarks, and the table that compares them with the measured values of a run.
#pragma once

#include <string>

namespace report {

/// The value that is compared with the target.
enum class Measure {
    kRatio, // time of the subject divided by that of the reference
    kDifference, // time of the subject minus that of the reference, in nanoseconds
    kTime, // time of the subject, in nanoseconds
};

/// One row of the table: the names of two benchmarks, with "/" and the argument if there is one, and the target. With
/// kTime `reference` is not used.
struct Target {
    std::string what;
    Measure measure;
    std::string subject;
    std::string reference;
    double target;
};

/// Adds a row. For static objects in the files of the benchmarks.
class AddTarget {
public:
    explicit AddTarget(Target target);
};

/// A row for a value that is not a time.
struct Figure {
    std::string what;
    const char* unit;
    double (*measure)();
    double target; // the greatest value wanted
};

/// Adds a row. For static objects.
class AddFigure {
public:
    explicit AddFigure(Figure figure);
};

} // namespace report
