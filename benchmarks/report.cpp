// The main program of the benchmarks: runs them, each several times in random order, and prints the targets with the
// median of each.

#include "benchmarks/report.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <iterator>
#include <map>
#include <vector>

namespace {

std::vector<report::Target>& Targets()
{
    static std::vector<report::Target> targets;
    return targets;
}

/// Prints the medians and keeps the times of all repetitions.
class KeepingReporter : public benchmark::ConsoleReporter {
public:
    KeepingReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                m_times[run.run_name.function_name].push_back(
                    run.real_accumulated_time * 1e9 / static_cast<double>(run.iterations));
            }
        }
        std::vector<Run> medians;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(medians),
            [](const Run& run) { return run.aggregate_name == "median"; });
        ConsoleReporter::ReportRuns(medians);
    }

    /// Median time in nanoseconds; below 0 when the benchmark did not run.
    double MedianOf(const std::string& name)
    {
        std::vector<double>& times = m_times[name];
        if (times.empty()) {
            return -1;
        }
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> m_times;
};

void PrintTarget(const report::Target& target, KeepingReporter& reporter)
{
    const double subject = reporter.MedianOf(target.subject);
    const double reference = target.measure == report::Measure::kTime ? 0 : reporter.MedianOf(target.reference);
    if (subject < 0 || reference < 0) {
        return; // filtered out
    }
    const bool isRatio = target.measure == report::Measure::kRatio;
    const double value = isRatio ? subject / reference : subject - reference;
    std::printf("%-62s %10.1f %10.1f %9.2f %-2s %9.2f  %s\n", target.what.c_str(), subject, reference, value,
        isRatio ? "x" : "ns", target.target, value <= target.target ? "met" : "MISSED");
}

} // namespace

report::AddTarget::AddTarget(Target target) { Targets().push_back(std::move(target)); }

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=15";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minimumTime[] = "--benchmark_min_time=0.05";
    // Before the given ones, which may overrule them.
    arguments.insert(arguments.begin() + 1, {repetitions, interleaving, minimumTime});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    KeepingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("\n%-62s %10s %10s %12s %9s\n", "median of the repetitions of this run", "ns", "reference", "value", "target");
    for (const report::Target& target : Targets()) {
        PrintTarget(target, reporter);
    }
    return 0;
}
