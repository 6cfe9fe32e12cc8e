/// TimerStack: the states whose timers run. For ZRProfilerStateHandler only.
#pragma once

#include <cstdint>
#include <vector>

class ZRProfilerState;

namespace zr {

/// One stack for all threads, whose entries remember their thread. In a forked child, the entries of threads that it
/// does not have are dropped. The states are never owned. Threads: any.
class TimerStack {
public:
    TimerStack() noexcept = default;
    TimerStack(const TimerStack& other);
    TimerStack& operator=(const TimerStack& other);
    ~TimerStack();

    /// Pushes a state. Makes room for 64 at a time. Throws std::bad_alloc or std::length_error.
    void Push(ZRProfilerState* state, unsigned int thread);

    /// Pops the top state, whichever thread's it is. Null when there is none.
    ZRProfilerState* Pop();

    /// The top state, whichever thread's it is. Null when there is none.
    ZRProfilerState* Top() const;

    /// Begins a new turn: entries pushed before are not charged any more, as their timers may end without popping them.
    void BeginTurn();

    /// Stores the states of a thread in this turn, the topmost first and at most `capacity` of them. Returns how many
    /// there are.
    int OfThread(unsigned int thread, ZRProfilerState** states, int capacity) const;

    /// Ends a timer: pops the topmost state of its thread, subtracts the time from the self time of the one that is
    /// then topmost of that thread, if it is of this turn, and records the run in `state`.
    void End(ZRProfilerState& state, unsigned int thread, double elapsed);

private:
    struct Entry {
        ZRProfilerState* state; // not owned
        unsigned int thread; // ID of the thread that has pushed it
        std::uint32_t turn;
    };

    void DropThreadsOfParent() const;

    mutable std::vector<Entry> m_entries;
    std::uint32_t m_turn = 0;
    mutable std::uint32_t m_forkGeneration = 0; // of the process that has used the stack last
};

} // namespace zr
