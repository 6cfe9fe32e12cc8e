#include "hcbase/reentrant_lock.h"

#include "hcbase/system/threads.h"
#include "hcbase/system/wait.h"

#include <limits>

namespace hcbase {

// The analysis cannot follow a lock through its own atomic word.
bool ReentrantLock::Lock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    const std::uint32_t self = system::CurrentThreadId();
    std::uint32_t seen = 0;
    if (m_word.compare_exchange_strong(seen, self, std::memory_order_acquire, std::memory_order_relaxed)) {
        return true;
    }
    if ((seen & ~kSomebodyWaits) == self) {
        if (m_depth == std::numeric_limits<std::uint32_t>::max() - 1) {
            return false;
        }
        ++m_depth;
        return true;
    }
    LockContended(self);
    return true;
}

void ReentrantLock::LockContended(std::uint32_t self) noexcept
{
    // A thread that has slept cannot know whether others still do, so it takes the lock with the mark set and wakes one
    // of them, perhaps for nothing, when it lets go.
    std::uint32_t mark = 0;
    std::uint32_t seen = m_word.load(std::memory_order_relaxed);
    for (;;) {
        if (seen == 0 || system::IsLeftBehindByFork(seen & ~kSomebodyWaits)) {
            if (m_word.compare_exchange_weak(seen, self | mark, std::memory_order_acquire, std::memory_order_relaxed)) {
                m_depth = 0; // a holder that was left behind leaves its count behind too
                return;
            }
            continue;
        }
        if ((seen & kSomebodyWaits) == 0
            && !m_word.compare_exchange_weak(seen, seen | kSomebodyWaits, std::memory_order_relaxed)) {
            continue;
        }
        system::WaitWhileEqual(m_word, seen | kSomebodyWaits);
        mark = kSomebodyWaits;
        seen = m_word.load(std::memory_order_relaxed);
    }
}

bool ReentrantLock::Unlock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    if ((m_word.load(std::memory_order_relaxed) & ~kSomebodyWaits) != system::CurrentThreadId()) {
        return false;
    }
    if (m_depth != 0) {
        --m_depth;
        return true;
    }
    if ((m_word.exchange(0, std::memory_order_release) & kSomebodyWaits) != 0) {
        system::WakeOne(m_word);
    }
    return true;
}

} // namespace hcbase
