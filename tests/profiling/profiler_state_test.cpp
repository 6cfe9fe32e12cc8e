#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

/// Shows what is for classes that are derived.
struct State : ZRProfilerState {
    using ZRProfilerState::ZRProfilerState, ZRProfilerState::SetMin, ZRProfilerState::SetMax, ZRProfilerState::SetTotal,
        ZRProfilerState::SetSelf, ZRProfilerState::SetThreadID, ZRProfilerState::IncCalls,
        ZRProfilerState::IncDependantCalls;
};

TEST(ProfilerState, AddsUpRunsAndDependants)
{
    const struct {
        void (*step)(State&);
        const char* numbers; // shortest, longest, total, self, runs, runs of dependants, whether on this thread
    } rows[] = {
        {[](State& state) { state.RemoveDependantTime(2.5); }, "1.8e+308 -1.8e+308 0 -2.5 0 1 0"},
        {[](State& state) { state.Update(0.0); }, "0 0 0 -2.5 1 1 1"},
        {[](State& state) { state.Update(4); }, "0 4 4 1.5 2 1 1"},
        {[](State& state) { state.Update(-2); }, "-2 4 2 -0.5 3 1 1"},
        // Each of these changes one number, by which states differ.
        {[](State& state) { state.SetMin(1); }, "1 4 2 -0.5 3 1 1"},
        {[](State& state) { state.SetMax(1); }, "1 1 2 -0.5 3 1 1"},
        {[](State& state) { state.SetTotal(1); }, "1 1 1 -0.5 3 1 1"},
        {[](State& state) { state.SetSelf(1); }, "1 1 1 1 3 1 1"},
        {[](State& state) { state.IncCalls(); }, "1 1 1 1 4 1 1"},
        {[](State& state) { state.IncDependantCalls(); }, "1 1 1 1 4 2 1"},
        {[](State& state) { state.SetThreadID(0); }, "1 1 1 1 4 2 0"},
    };
    State state("place");
    for (const auto& row : rows) {
        const State before(state);
        row.step(state);
        HCString numbers;
        numbers.Format("%.2g %.2g %g %g %d %d %d", state.GetMin(), state.GetMax(), state.GetTotal(), state.GetSelf(),
            static_cast<int>(state.GetCalls()), static_cast<int>(state.GetDependantCalls()),
            state.GetThreadID() == HCThread::GetCurrentThreadId());
        EXPECT_EQ(numbers, row.numbers);
        EXPECT_FALSE(before == state) << row.numbers;
        State assigned;
        assigned = state;
        EXPECT_TRUE(assigned == state) << row.numbers;
    }
}

TEST(ProfilerState, ComparesNamesAndIsNotEqualToANaN)
{
    EXPECT_TRUE(ZRProfilerState() == ZRProfilerState("Unknown"));
    EXPECT_FALSE(ZRProfilerState("unknown") == ZRProfilerState("Unknown"));
    ZRProfilerState state;
    state.Update(1);
    state.Update(std::nan(""));
    EXPECT_EQ(state.GetMax(), 1);
    EXPECT_FALSE(state == state);
}

} // namespace
