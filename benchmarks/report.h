/// Targets for benchmarks, and the table that compares them with what was measured in the same run.
#pragma once

#include <string>

namespace report {

/// How a measured time is judged.
enum class Measure {
    kRatio, // time of the subject divided by that of the reference
    kDifference, // time of the subject less that of the reference, in nanoseconds
    kTime, // time of the subject, in nanoseconds
};

/// One row of the table: the names of two benchmarks, with "/" and its argument when it has one (`reference` is not
/// used with kTime), and the greatest value wanted.
struct Target {
    std::string what;
    Measure measure;
    std::string subject;
    std::string reference;
    double target;
};

/// Adds a row. To be used for static objects beside the benchmarks.
class AddTarget {
public:
    explicit AddTarget(Target target);
};

/// A row for something other than time.
struct Figure {
    std::string what;
    const char* unit;
    double (*measure)();
    double target; // the greatest value wanted
};

/// Adds a row. To be used for static objects.
class AddFigure {
public:
    explicit AddFigure(Figure figure);
};

} // namespace report
