#include "hcbase/reentrant_lock.h"

#include "hcbase/system/wait.h"

namespace hcbase {

// The second mutex of Ulrich Drepper, "Futexes Are Tricky" (2011): a thread that has to wait marks the word as awaited
// each time it tries, because it cannot know whether others still wait. So a wake-up may find nobody, but none is
// missed.
void ReentrantLock::Wait() noexcept
{
    while (m_word.exchange(kHeldAndAwaited, std::memory_order_acquire) != kFree) {
        if (system::OtherThreadsAreGone()) {
            m_depth = 0; // the holder went without unlocking, and nobody else is left to hold it
            return;
        }
        system::WaitWhileEqual(m_word, kHeldAndAwaited);
    }
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
