// Locks and timers, compared with the standard library's lock and the platform's clock.

#include "benchmarks/report.h"
#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <mutex>
#include <vector>

namespace {

using report::AddTarget;
using report::Measure;

// One inline interface for both locks.

struct StandardLock {
    void Lock() { mutex.lock(); }
    void Unlock() { mutex.unlock(); }
    std::recursive_mutex mutex;
};

struct OurLock {
    void Lock() { sync.Lock("Benchmark", nullptr); }
    void Unlock() { sync.Unlock("Benchmark", nullptr); }
    ZRThreadSync sync;
};

/// Locks and unlocks, with little work in between.
template <typename Lock> void Turn(Lock& lock, int& guarded)
{
    lock.Lock();
    benchmark::DoNotOptimize(++guarded);
    lock.Unlock();
}

template <typename Lock> void Alone(benchmark::State& state)
{
    Lock lock;
    int guarded = 0;
    for (auto _ : state) {
        Turn(lock, guarded);
    }
}

template <typename Lock> void Contending(benchmark::State& state)
{
    static Lock lock;
    static int guarded = 0;
    for (auto _ : state) {
        Turn(lock, guarded);
    }
}

void LockAlone(benchmark::State& state) { Alone<OurLock>(state); }
void LockAloneStandard(benchmark::State& state) { Alone<StandardLock>(state); }
void LockBesideThreads(benchmark::State& state) { Alone<OurLock>(state); }
void LockBesideThreadsStandard(benchmark::State& state) { Alone<StandardLock>(state); }
void LockContended(benchmark::State& state) { Contending<OurLock>(state); }
void LockContendedStandard(benchmark::State& state) { Contending<StandardLock>(state); }
BENCHMARK(LockAlone);
BENCHMARK(LockAloneStandard);
BENCHMARK(LockBesideThreads)->Threads(2)->UseRealTime();
BENCHMARK(LockBesideThreadsStandard)->Threads(2)->UseRealTime();
BENCHMARK(LockContended)->Threads(2)->UseRealTime();
BENCHMARK(LockContendedStandard)->Threads(2)->UseRealTime();

void Guarded(benchmark::State& state)
{
    ZRThreadSync sync;
    for (auto _ : state) {
        const ZRLockGuard guard(sync, "Guarded");
        benchmark::ClobberMemory();
    }
}
void GuardedStandard(benchmark::State& state)
{
    std::recursive_mutex mutex;
    for (auto _ : state) {
        const std::lock_guard guard(mutex);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Guarded);
BENCHMARK(GuardedStandard);

void LockSwitchedOff(benchmark::State& state)
{
    OurLock lock;
    lock.sync.SetActive(0);
    for (auto _ : state) {
        lock.Lock();
        lock.Unlock();
    }
}
BENCHMARK(LockSwitchedOff);

void TwoClockReadings(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::chrono::steady_clock::now());
        benchmark::DoNotOptimize(std::chrono::steady_clock::now());
    }
}
BENCHMARK(TwoClockReadings);

void TwoClockReadingsAndStack(benchmark::State& state)
{
    std::mutex mutex;
    std::vector<const void*> stack;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::chrono::steady_clock::now());
        {
            const std::lock_guard guard(mutex);
            stack.push_back(&mutex);
        }
        benchmark::DoNotOptimize(std::chrono::steady_clock::now());
        const std::lock_guard guard(mutex);
        stack.pop_back();
    }
}
BENCHMARK(TwoClockReadingsAndStack);

void Stopwatch(benchmark::State& state)
{
    for (auto _ : state) {
        const ZRProfiler timer;
        benchmark::DoNotOptimize(timer.GetElapsed());
    }
}
BENCHMARK(Stopwatch);

void StateBound(benchmark::State& state, char enabled)
{
    ZRGetProfilerStateHandler()->SetEnabled(enabled);
    ZRProfilerState place("a place of thirty-six characters....");
    for (auto _ : state) {
        const ZRProfiler timer(&place);
    }
    ZRGetProfilerStateHandler()->SetEnabled(0);
}
void StateBoundDisabled(benchmark::State& state) { StateBound(state, 0); }
void StateBoundEnabled(benchmark::State& state) { StateBound(state, 1); }
BENCHMARK(StateBoundDisabled);
BENCHMARK(StateBoundEnabled);

const AddTarget timerTargets[] = {
    AddTarget(
        {"ZRThreadSync to std::recursive_mutex: one thread", Measure::kRatio, "LockAlone", "LockAloneStandard", 1.1}),
    AddTarget({"ZRThreadSync to std::recursive_mutex: two threads, two locks", Measure::kRatio, "LockBesideThreads",
        "LockBesideThreadsStandard", 1.1}),
    AddTarget({"ZRThreadSync to std::recursive_mutex: two threads, one lock", Measure::kRatio, "LockContended",
        "LockContendedStandard", 1.1}),
    AddTarget(
        {"ZRLockGuard to std::lock_guard<std::recursive_mutex>", Measure::kRatio, "Guarded", "GuardedStandard", 1.1}),
    AddTarget({"ZRThreadSync switched off: lock, unlock", Measure::kTime, "LockSwitchedOff", "", 5}),
    AddTarget({"stopwatch, to two readings of the clock", Measure::kRatio, "Stopwatch", "TwoClockReadings", 1.3}),
    AddTarget({"timer of a state, handler off, to two readings of the clock", Measure::kRatio, "StateBoundDisabled",
        "TwoClockReadings", 1.2}),
    AddTarget({"timer of a state, handler on, to two readings of the clock and a locked stack", Measure::kRatio,
        "StateBoundEnabled", "TwoClockReadingsAndStack", 1.4}),
};

} // namespace
