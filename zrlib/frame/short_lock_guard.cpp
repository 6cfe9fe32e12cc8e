#include "zrlib/frame/short_lock_guard.h"

#include "zrlib/frame/backoff.h"
#include "zrlib/platform/process_end.h"

constinit zr::ShortLock zr::g_dataLock;
constinit zr::ShortLock zr::g_timersLock;

void zr::ShortLockGuard::Wait(ShortLock& lock) noexcept
{
    constexpr int kSpins = 100;
    Backoff backoff;
    int turn = 0;
    while (true) {
        std::uint32_t seen = lock.m_word.load(std::memory_order_relaxed);
        // Free, or held by a thread that will not give it back: one of the parent process, or one that is gone.
        const bool mayBeTaken = seen != Held() || OtherThreadsAreGone();
        if (mayBeTaken && lock.m_word.compare_exchange_weak(seen, Held(), std::memory_order_acquire)) {
            return;
        }
        if (turn < kSpins) {
            ++turn;
        } else { // its holder does not run
            backoff.Wait();
        }
    }
}
