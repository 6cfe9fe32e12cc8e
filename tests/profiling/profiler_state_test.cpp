#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

TEST(ProfilerState, AddsUpRunsAndDependants)
{
    const struct {
        const char* what;
        void (*time)(ZRProfilerState&);
        double min;
        double max;
        double total;
        double self;
        int calls;
        int dependantCalls;
    } rows[] = {
        {"nothing", [](auto&) {}, kLargest, -kLargest, 0, 0, 0, 0},
        {"an empty run", [](auto& state) { state.Update(0.0); }, 0, 0, 0, 0, 1, 0},
        {"two runs", [](auto& state) { state.Update(1.0), state.Update(3.0); }, 1, 3, 4, 4, 2, 0},
        {"a dependant alone", [](auto& state) { state.RemoveDependantTime(2.5); }, kLargest, -kLargest, 0, -2.5, 0, 1},
        {"a dependant", [](auto& state) { state.RemoveDependantTime(3), state.Update(10); }, 10, 10, 10, 7, 1, 1},
        {"its own parent", [](auto& state) { state.RemoveDependantTime(1), state.Update(1), state.Update(3); }, 1, 3, 4,
            3, 2, 1},
        {"negative", [](auto& state) { state.Update(-2), state.Update(1); }, -2, 1, -1, -1, 2, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ZRProfilerState state("place");
        row.time(state);
        EXPECT_EQ(state.GetMin(), row.min);
        EXPECT_EQ(state.GetMax(), row.max);
        EXPECT_EQ(state.GetTotal(), row.total);
        EXPECT_EQ(state.GetSelf(), row.self);
        EXPECT_EQ(state.GetCalls(), row.calls);
        EXPECT_EQ(state.GetDependantCalls(), row.dependantCalls);
        EXPECT_EQ(state.GetThreadID(), row.calls > 0 ? HCThread::GetCurrentThreadId() : 0);
        EXPECT_EQ(state.GetLocation(), "place");
        EXPECT_TRUE(ZRProfilerState(state) == state);
        ZRProfilerState assigned;
        EXPECT_FALSE(assigned == state);
        assigned = state;
        EXPECT_TRUE(assigned == state);
    }
}

TEST(ProfilerState, ComparesNumbersNameAndThread)
{
    EXPECT_TRUE(ZRProfilerState() == ZRProfilerState("Unknown"));
    EXPECT_FALSE(ZRProfilerState("unknown") == ZRProfilerState("Unknown"));
    ZRProfilerState here;
    here.Update(1);
    ZRProfilerState there;
    std::thread([&there] { there.Update(1); }).join();
    EXPECT_FALSE(here == there);
    here.Update(std::nan(""));
    EXPECT_EQ(here.GetMax(), 1);
    EXPECT_FALSE(here == here) << "a NaN is not equal to itself";
}

} // namespace
