#include "benchmarks/report.h"
#include "hcbase/hcbase.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <mutex>
#include <string>

namespace {

using report::AddTarget;
using report::Measure;

constexpr const char* kText36 = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";
constexpr const char* kText8 = "12345678";

template <typename String> void MakeCopyDestroy(benchmark::State& state, const char* text)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        String string(text);
        benchmark::DoNotOptimize(string);
        String copy(string);
        benchmark::DoNotOptimize(copy);
    }
}

void String36(benchmark::State& state) { MakeCopyDestroy<HCString>(state, kText36); }
BENCHMARK(String36);
void StdString8(benchmark::State& state) { MakeCopyDestroy<std::string>(state, kText8); }
BENCHMARK(StdString8);
void StdString36(benchmark::State& state) { MakeCopyDestroy<std::string>(state, kText36); }
BENCHMARK(StdString36);
const AddTarget string36({"HCString of 36 characters to std::string of 8: make, copy, destroy", Measure::kRatio,
    "String36", "StdString8", 1.2});

void Format(benchmark::State& state)
{
    HCString string;
    unsigned code = 0xA04F1001;
    for (auto _ : state) {
        string.Format("%s%08X", "Object code ", code++);
        benchmark::DoNotOptimize(string);
    }
}
BENCHMARK(Format);

void Snprintf(benchmark::State& state)
{
    std::array<char, 64> buffer;
    unsigned code = 0xA04F1001;
    for (auto _ : state) {
        std::snprintf(buffer.data(), buffer.size(), "%s%08X", "Object code ", code++);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(Snprintf);
const AddTarget format({"HCString::Format to snprintf", Measure::kRatio, "Format", "Snprintf", 1.2});

void Guid(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(HFGenerateGuid());
    }
}
BENCHMARK(Guid);
const AddTarget guid({"HFGenerateGuid", Measure::kTime, "Guid", "", 30});

void ThreadSync(benchmark::State& state)
{
    HCThreadSync sync;
    for (auto _ : state) {
        sync.lock();
        sync.unlock();
    }
}
BENCHMARK(ThreadSync);

void RecursiveMutex(benchmark::State& state)
{
    std::recursive_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(RecursiveMutex);
const AddTarget threadSync(
    {"HCThreadSync to std::recursive_mutex: lock, unlock", Measure::kRatio, "ThreadSync", "RecursiveMutex", 1.0});

void TextGet(benchmark::State& state)
{
    // Codes of several families in no order, as in practice.
    const int codes[] = {0, 4, 112, 300, 312, 113, 307, 104, -65846, 209, 1, 100};
    const HCTextHandle handle = HFTextFind("ZRLib");
    const char* text = nullptr;
    for (auto _ : state) {
        for (const int code : codes) {
            HFTextGet(handle, code, &text);
            benchmark::DoNotOptimize(text);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(std::size(codes)));
}
BENCHMARK(TextGet);
const AddTarget textGet({"HFTextGet, 12 of them", Measure::kTime, "TextGet", "", 12 * 15});

} // namespace
