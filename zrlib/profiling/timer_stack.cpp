#include "zrlib/profiling/timer_stack.h"

#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/records/profiler_state.h"

#include <algorithm>

namespace zr {

TimerStack::TimerStack(const TimerStack& other) { *this = other; }

TimerStack& TimerStack::operator=(const TimerStack& other)
{
    const ShortLockGuard guard(g_timersLock);
    other.DropThreadsOfParent();
    m_entries = other.m_entries;
    m_turn = other.m_turn;
    m_forkGeneration = other.m_forkGeneration;
    return *this;
}

TimerStack::~TimerStack()
{
    const ShortLockGuard guard(g_timersLock);
    std::vector<Entry>().swap(m_entries); // a late timer finds an empty stack
}

/// Thread IDs are unique across a process and its forked children, so only the entries of the forking thread stay.
void TimerStack::DropThreadsOfParent() const
{
    if (m_forkGeneration == ForkGeneration()) [[likely]] {
        return;
    }
    m_forkGeneration = ForkGeneration();
    const std::uint32_t survivor = g_forkingThread.load(std::memory_order_relaxed);
    std::erase_if(m_entries, [survivor](const Entry& entry) { return entry.thread != survivor; });
}

void TimerStack::Push(ZRProfilerState* state, unsigned int thread)
{
    constexpr std::size_t kStep = 64;
    const ShortLockGuard guard(g_timersLock);
    DropThreadsOfParent();
    if (m_entries.size() == m_entries.capacity()) {
        m_entries.reserve(m_entries.size() + kStep);
    }
    m_entries.push_back({state, thread, m_turn});
}

ZRProfilerState* TimerStack::Pop()
{
    const ShortLockGuard guard(g_timersLock);
    DropThreadsOfParent();
    if (m_entries.empty()) {
        return nullptr;
    }
    ZRProfilerState* const top = m_entries.back().state;
    m_entries.pop_back();
    return top;
}

ZRProfilerState* TimerStack::Top() const
{
    const ShortLockGuard guard(g_timersLock);
    DropThreadsOfParent();
    return m_entries.empty() ? nullptr : m_entries.back().state;
}

void TimerStack::BeginTurn()
{
    const ShortLockGuard guard(g_timersLock);
    ++m_turn;
}

int TimerStack::OfThread(unsigned int thread, ZRProfilerState** states, int capacity) const
{
    const ShortLockGuard guard(g_timersLock);
    DropThreadsOfParent();
    int count = 0;
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        if (entry->thread == thread && entry->turn == m_turn) {
            if (count < capacity) {
                states[count] = entry->state;
            }
            ++count;
        }
    }
    return count;
}

void TimerStack::End(ZRProfilerState& state, unsigned int thread, double elapsed)
{
    const ShortLockGuard guard(g_timersLock);
    DropThreadsOfParent();
    const auto isOfThread = [thread](const Entry& entry) { return entry.thread == thread; };
    const auto own = std::find_if(m_entries.rbegin(), m_entries.rend(), isOfThread);
    if (own != m_entries.rend()) {
        const auto below = std::find_if(own + 1, m_entries.rend(), isOfThread);
        if (below != m_entries.rend() && below->turn == m_turn) {
            below->state->Charge(elapsed);
        }
        m_entries.erase(std::next(own).base());
    }
    state.Record(elapsed, thread);
}

} // namespace zr
