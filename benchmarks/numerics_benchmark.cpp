// Checked mathematics, masks, tickets and formats, compared with the standard library and the checked functions of GSL.

#include "benchmarks/report.h"
#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_sf.h>
#include <string>

namespace {

using report::AddTarget;
using report::Measure;

/// Calls a function with arguments that the compiler does not know.
template <typename Function> void Call(benchmark::State& state, Function function)
{
    std::array<double, 8> arguments = {1.5, 2.25, 0.875, 3.5, 1.125, 2.75, 0.625, 4.5};
    benchmark::DoNotOptimize(arguments);
    std::size_t next = 0;
    for (auto _ : state) {
        double result = function(arguments[next++ % arguments.size()]);
        benchmark::DoNotOptimize(result);
    }
}

double Checked(int (*function)(double, gsl_sf_result*), double x)
{
    gsl_sf_result result;
    return function(x, &result) == GSL_SUCCESS ? result.val : 0;
}

constexpr char kRadians = 1;

// The functions that are compared; `peer` is GSL's, null where it has none.
struct Row {
    const char* name;
    double (*ours)(double);
    double (*standard)(double);
    double (*peer)(double);
};
constexpr Row kRows[] = {
    {"Log", ZRMath::Log, std::log, [](double x) { return Checked(gsl_sf_log_e, x); }},
    {"Log10", ZRMath::Log10, std::log10, nullptr},
    {"Exp", ZRMath::Exp, std::exp, [](double x) { return Checked(gsl_sf_exp_e, x); }},
    {"Pow", [](double x) { return ZRMath::Pow(x, 2.5); }, [](double x) { return std::pow(x, 2.5); }, nullptr},
    {"Sqrt", ZRMath::Sqrt, std::sqrt, nullptr},
    {"Divide", [](double x) { return ZRMath::Divide(1, x); }, [](double x) { return 1 / x; }, nullptr},
    {"Sin", [](double x) { return ZRMath::Sin(x, kRadians); }, std::sin,
        [](double x) { return Checked(gsl_sf_sin_e, x); }},
    {"Cos", [](double x) { return ZRMath::Cos(x, kRadians); }, std::cos,
        [](double x) { return Checked(gsl_sf_cos_e, x); }},
    {"Tan", [](double x) { return ZRMath::Tan(x, kRadians); }, std::tan, nullptr},
};

/// Adds the benchmarks and the targets of all rows.
const bool areAdded = [] {
    constexpr double kMostMore = 5; // nanoseconds
    for (const Row& row : kRows) {
        const std::string name = row.name;
        const auto add = [](const std::string& benchmark, double (*function)(double)) {
            benchmark::RegisterBenchmark(
                benchmark.c_str(), [function](benchmark::State& state) { Call(state, function); });
        };
        add("Math" + name, row.ours);
        add("Math" + name + "Standard", row.standard);
        AddTarget({"ZRMath::" + name + ", more than the standard library's", Measure::kDifference, "Math" + name,
            "Math" + name + "Standard", kMostMore});
        if (row.peer != nullptr) {
            add("Math" + name + "Gsl", row.peer);
            AddTarget({"ZRMath::" + name + ", to GSL's", Measure::kRatio, "Math" + name, "Math" + name + "Gsl", 1});
        }
    }
    return true;
}();

void MathCompareToZero(benchmark::State& state)
{
    Call(state, [](double x) { return static_cast<double>(ZRMath::ParmZero(x)); });
}
void MathCompareTwo(benchmark::State& state)
{
    Call(state, [](double x) { return static_cast<double>(ZRMath::ParmGT(x, 2)); });
}
BENCHMARK(MathCompareToZero);
BENCHMARK(MathCompareTwo);

template <typename Operation> void Mask(benchmark::State& state, Operation operation)
{
    std::int32_t value = 0x00ABCD00;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        auto result = operation(value);
        benchmark::DoNotOptimize(result);
    }
}
void MaskCount(benchmark::State& state) { Mask(state, ZRLongMask::BitSetCount); }
void MaskLowest(benchmark::State& state) { Mask(state, ZRLongMask::GetFirstNonZeroBitPosition); }
void MaskWeight(benchmark::State& state)
{
    Mask(state, [](std::int32_t value) { return ZRLongMask::IsBitWeightSet(value, 8); });
}
BENCHMARK(MaskCount);
BENCHMARK(MaskLowest);
BENCHMARK(MaskWeight);

void Ticket(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZRKey::IssueTicket());
    }
}
BENCHMARK(Ticket);

std::int64_t someBytes = 123'456'789;

void FormatBytes(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(someBytes);
        const HCString text = ZRFormat::KMGT(someBytes, ZRFormat::BYTES, 2);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(FormatBytes);

void FormatDoubleStandard(benchmark::State& state)
{
    constexpr double kMega = 1024.0 * 1024.0;
    char text[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(someBytes);
        std::snprintf(text, sizeof text, "%0.2f", static_cast<double>(someBytes) / kMega);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(FormatDoubleStandard);

const AddTarget numericsTargets[] = {
    AddTarget({"comparison with zero", Measure::kTime, "MathCompareToZero", "", 3}),
    AddTarget({"comparison of two numbers", Measure::kTime, "MathCompareTwo", "", 3}),
    AddTarget({"mask: number of bits", Measure::kTime, "MaskCount", "", 3}),
    AddTarget({"mask: lowest bit", Measure::kTime, "MaskLowest", "", 3}),
    AddTarget({"mask: bit of a weight", Measure::kTime, "MaskWeight", "", 3}),
    AddTarget({"ticket", Measure::kTime, "Ticket", "", 10}),
    AddTarget({"KMGT to one snprintf of a double", Measure::kRatio, "FormatBytes", "FormatDoubleStandard", 1.5}),
};

} // namespace
