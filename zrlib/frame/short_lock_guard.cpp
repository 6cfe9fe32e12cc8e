#include "zrlib/frame/short_lock_guard.h"

#include "zrlib/frame/backoff.h"
#include "zrlib/platform/process_end.h"
#include "zrlib/platform/thread_mark.h"

constinit zr::ShortLock zr::g_dataLock;
constinit zr::ShortLock zr::g_timersLock;
constinit std::atomic<std::uintptr_t> zr::ShortLockGuard::s_forker{0};

bool zr::ShortLockGuard::IsHeldByForker(const ShortLock& lock) noexcept
{
    return (&lock == &g_dataLock || &lock == &g_timersLock) && s_forker.load(std::memory_order_relaxed) == ThreadMark();
}

void zr::ShortLockGuard::LockForFork() noexcept
{
    Lock(g_dataLock);
    Lock(g_timersLock);
    s_forker.store(ThreadMark(), std::memory_order_relaxed);
}

void zr::ShortLockGuard::UnlockAfterFork() noexcept
{
    s_forker.store(0, std::memory_order_relaxed);
    Unlock(g_timersLock);
    Unlock(g_dataLock);
}

void zr::ShortLockGuard::Wait(ShortLock& lock) noexcept
{
    if (IsHeldForFork(lock)) {
        return;
    }
    constexpr int kSpins = 100;
    Backoff backoff;
    int turn = 0;
    while (true) {
        std::uint32_t seen = lock.m_word.load(std::memory_order_relaxed);
        // Free, or held by a thread that will never release it: one of the parent process, or one that has ended.
        const bool mayBeTaken = seen != Held() || OtherThreadsAreGone();
        if (mayBeTaken && lock.m_word.compare_exchange_weak(seen, Held(), std::memory_order_acquire)) {
            return;
        }
        if (turn < kSpins) {
            ++turn;
        } else { // its holder is not running
            backoff.Wait();
        }
    }
}
