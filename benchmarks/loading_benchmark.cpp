// Loading and unloading, compared with two empty libraries, one of which needs the other, and with libraries for the
// same purposes. Each first load happens in a new process that has already loaded the C++ runtime.

#include "benchmarks/report.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

namespace {

using report::AddTarget;
using report::Measure;

const struct {
    const char* name;
    const char* file;
    bool isUnloaded; // false: stays in the process once it is loaded
} libraries[] = {
    {"ZRLib", ZRLIB_FILE, true},
    {"Empty", EMPTY_FILE, true},
    {"GObject", GOBJECT_FILE, false},
    {"Spdlog", SPDLOG_FILE, false},
    {"Poco", POCO_FILE, false},
};

struct Times { // in seconds
    double first = 0;
    double cycle = 0;
};

/// False when the program fails.
bool Load(const std::string& file, const std::string& binding, int cycles, Times& times)
{
    const std::string command = LOAD_PROGRAM " '" + file + "' " + binding + " " + std::to_string(cycles);
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
    if (output == nullptr || std::fscanf(output.get(), "%lf %lf", &times.first, &times.cycle) != 2) {
        return false;
    }
    times.first *= 1e-9;
    times.cycle *= 1e-9;
    return true;
}

void Measured(benchmark::State& state, const char* file, const std::string& binding, int cycles)
{
    setenv("HCBASE_PREFERENCES", "/nonexistent/preferences.toml", 1);
    for (auto _ : state) {
        Times times;
        if (!Load(file, binding, cycles, times)) {
            state.SkipWithError("cannot be loaded");
            break;
        }
        state.SetIterationTime(cycles > 0 ? times.cycle : times.first);
    }
}

/// Registers each benchmark for two kinds of binding: lazy, as for libraries that a program links, and at once, as
/// dlopen is usually called.
bool Register()
{
    for (const std::string binding : {"Lazy", "Now"}) {
        for (const auto& library : libraries) {
            const std::string suffix = binding + library.name;
            benchmark::RegisterBenchmark(("FirstLoad" + suffix).c_str(), Measured, library.file, binding, 0)
                ->UseManualTime()
                ->Iterations(20);
            if (library.isUnloaded) {
                benchmark::RegisterBenchmark(("LoadCycle" + suffix).c_str(), Measured, library.file, binding, 200)
                    ->UseManualTime()
                    ->Iterations(1);
            }
        }
    }
    return true;
}

const bool isRegistered = Register();

const AddTarget loadingTargets[] = {
    AddTarget({"first load to two empty libraries, bound lazily", Measure::kRatio, "FirstLoadLazyZRLib",
        "FirstLoadLazyEmpty", 1.5}),
    AddTarget({"first load to two empty libraries, bound at once", Measure::kRatio, "FirstLoadNowZRLib",
        "FirstLoadNowEmpty", 1.5}),
    AddTarget({"first load to GLib with GObject, bound lazily", Measure::kRatio, "FirstLoadLazyZRLib",
        "FirstLoadLazyGObject", 1}),
    AddTarget({"first load to GLib with GObject, bound at once", Measure::kRatio, "FirstLoadNowZRLib",
        "FirstLoadNowGObject", 1}),
    AddTarget({"first load to spdlog, bound lazily", Measure::kRatio, "FirstLoadLazyZRLib", "FirstLoadLazySpdlog", 1}),
    AddTarget({"first load to spdlog, bound at once", Measure::kRatio, "FirstLoadNowZRLib", "FirstLoadNowSpdlog", 1}),
    AddTarget(
        {"first load to POCO Foundation, bound lazily", Measure::kRatio, "FirstLoadLazyZRLib", "FirstLoadLazyPoco", 1}),
    AddTarget(
        {"first load to POCO Foundation, bound at once", Measure::kRatio, "FirstLoadNowZRLib", "FirstLoadNowPoco", 1}),
    AddTarget({"load and unload to two empty libraries, bound lazily", Measure::kRatio, "LoadCycleLazyZRLib",
        "LoadCycleLazyEmpty", 2}),
    AddTarget({"load and unload to two empty libraries, bound at once", Measure::kRatio, "LoadCycleNowZRLib",
        "LoadCycleNowEmpty", 2}),
};

} // namespace
