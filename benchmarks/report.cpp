// The main program of the benchmarks. Runs each several times, in random order, and compares the least time of each
// with its target: on a busy machine, the least time is the least disturbed one.

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

std::vector<report::Figure>& Figures()
{
    static std::vector<report::Figure> figures;
    return figures;
}

/// Prints medians and keeps the times of all repetitions.
class KeepingReporter : public benchmark::ConsoleReporter {
public:
    KeepingReporter()
        : ConsoleReporter(OO_Tabular)
    {
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                const benchmark::BenchmarkName& name = run.run_name;
                m_times[name.args.empty() ? name.function_name : name.function_name + "/" + name.args].push_back(
                    run.real_accumulated_time * 1e9 / static_cast<double>(run.iterations));
            }
        }
        std::vector<Run> medians;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(medians),
            [](const Run& run) { return run.aggregate_name == "median"; });
        ConsoleReporter::ReportRuns(medians);
    }

    /// The least time in nanoseconds; negative when the benchmark did not run.
    double LeastOf(const std::string& name) const
    {
        const auto found = m_times.find(name);
        return found != m_times.end() ? *std::min_element(found->second.begin(), found->second.end()) : -1;
    }

private:
    std::map<std::string, std::vector<double>> m_times;
};

void PrintTarget(const report::Target& target, const KeepingReporter& reporter)
{
    const double subject = reporter.LeastOf(target.subject);
    const double reference = target.measure == report::Measure::kTime ? 0 : reporter.LeastOf(target.reference);
    if (subject < 0 || reference < 0) {
        return; // filtered out
    }
    const bool isRatio = target.measure == report::Measure::kRatio;
    const double value = isRatio ? subject / reference : subject - reference;
    std::printf("%-62s %10.1f %10.1f %9.2f %-2s %9.2f  %s\n", target.what.c_str(), subject, reference, value,
        isRatio ? "x" : "ns", target.target, value <= target.target ? "met" : "MISSED");
}

void PrintFigure(const report::Figure& figure)
{
    const double value = figure.measure();
    std::printf("%-62s %10s %10s %9.0f %-2s %9.0f  %s\n", figure.what.c_str(), "", "", value, figure.unit,
        figure.target, value <= figure.target ? "met" : "MISSED");
}

} // namespace

report::AddFigure::AddFigure(Figure figure) { Figures().push_back(std::move(figure)); }

report::AddTarget::AddTarget(Target target) { Targets().push_back(std::move(target)); }

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=15";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minimumTime[] = "--benchmark_min_time=0.05";
    // Before the given arguments, which so override them.
    arguments.insert(arguments.begin() + 1, {repetitions, interleaving, minimumTime});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    KeepingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf(
        "\n%-62s %10s %10s %12s %9s\n", "least of the repetitions of this run", "ns", "reference", "value", "target");
    for (const report::Target& target : Targets()) {
        PrintTarget(target, reporter);
    }
    for (const report::Figure& figure : Figures()) {
        PrintFigure(figure);
    }
    return 0;
}
