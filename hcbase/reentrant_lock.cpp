#include "hcbase/reentrant_lock.h"

#include "hcbase/system/wait.h"

namespace hcbase {

bool ReentrantLock::LockTaken() noexcept
{
    const system::ThreadMark self = system::CurrentThreadMark();
    if (m_holder.load(std::memory_order_relaxed) == self) {
        return CountOneMore();
    }
    Wait();
    m_holder.store(self, std::memory_order_relaxed);
    return true;
}

// The second mutex of Ulrich Drepper, "Futexes Are Tricky" (2011): a waiting thread marks the word as awaited on each
// attempt, because it cannot know whether others still wait. A wake-up may find nobody, but none is missed.
void ReentrantLock::Wait() noexcept
{
    if (TakeWithPauses()) {
        return;
    }
    while (m_word.exchange(kHeldAndAwaited, std::memory_order_acquire) != kFree) {
        if (system::OtherThreadsAreGone()) {
            m_depth = 0; // the holder ended without unlocking, and no other thread is left to hold it
            return;
        }
        system::WaitWhileEqual(m_word, kHeldAndAwaited);
    }
}

/// Most locks are held for much less time than falling asleep and waking take. Each look takes the cache line from the
/// holder, so the pauses grow: one thread's short holds in a row cost less than alternating (Thomas Anderson, "The
/// Performance of Spin Lock Alternatives for Shared-Memory Multiprocessors", IEEE TPDS 1, 1990).
bool ReentrantLock::TakeWithPauses() noexcept
{
    constexpr int kFirst = 16;
    constexpr int kLongest = 256;
    for (int pauses = kFirst; pauses <= kLongest; pauses *= 2) {
        for (int count = 0; count < pauses; ++count) {
            system::PauseProcessor();
        }
        if (m_word.load(std::memory_order_relaxed) == kFree && TryTake()) {
            return true;
        }
    }
    return false;
}

void ReentrantLock::WakeAnother() noexcept { system::WakeOne(m_word); }

void ReentrantLock::FreeUnlessOwn() noexcept
{
    if (m_holder.load(std::memory_order_relaxed) != system::CurrentThreadMark()) {
        m_holder.store(0, std::memory_order_relaxed);
        m_depth = 0;
        m_word.store(kFree, std::memory_order_relaxed);
    }
}

} // namespace hcbase
