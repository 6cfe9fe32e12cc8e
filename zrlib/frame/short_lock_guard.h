/// ShortLockGuard: holds a ShortLock. Not exported.
#pragma once

#include "zrlib/frame/short_lock.h"
#include "zrlib/platform/fork_hooks.h"
#include "zrlib/platform/single_threaded.h"

namespace zr {

/// Holds a lock for the length of a scope.
class ShortLockGuard {
public:
    explicit ShortLockGuard(ShortLock& lock) noexcept
        : m_lock(lock)
    {
        Lock(lock);
    }
    ~ShortLockGuard() { Unlock(m_lock); }
    ShortLockGuard(const ShortLockGuard&) = delete;
    ShortLockGuard& operator=(const ShortLockGuard&) = delete;

    static void Lock(ShortLock& lock) noexcept
    {
        if (IsSingleThreaded()) {
            return; // nobody starts a thread while a lock is held
        }
        std::uint32_t free = kFree;
        if (!lock.m_word.compare_exchange_strong(free, Held(), std::memory_order_acquire, std::memory_order_relaxed))
            [[unlikely]] {
            Wait(lock);
        }
    }

    static void Unlock(ShortLock& lock) noexcept
    {
        if (!IsSingleThreaded() && !IsHeldForFork(lock)) {
            lock.m_word.store(kFree, std::memory_order_release);
        }
    }

    // Between these two the calling thread, which forks, holds the locks of the process. Fork handlers installed before
    // the library's run in between and may call the library.
    static void LockForFork() noexcept;
    static void UnlockAfterFork() noexcept;

private:
    static constexpr std::uint32_t kFree = 0;

    /// The value of the word while a thread of this process, not of its parent, holds the lock.
    static std::uint32_t Held() noexcept { return ForkGeneration() + 1; }

    static void Wait(ShortLock& lock) noexcept;

    static bool IsHeldForFork(const ShortLock& lock) noexcept
    {
        return s_forker.load(std::memory_order_relaxed) != 0 && IsHeldByForker(lock);
    }
    static bool IsHeldByForker(const ShortLock& lock) noexcept;

    static std::atomic<std::uintptr_t> s_forker; // mark of the thread that holds the locks for a fork; 0 for none

    ShortLock& m_lock; // not owned
};

/// Guards what changes seldom and is read or changed in short steps: lists of observers, names of subjects and
/// observers, the texts of progress, the list of lock trails, the libraries and objects of registries. There is one for
/// the process, so that it can be held across fork and the child finds nothing half changed. It is taken before the
/// lock of a subject's list and before those of the foundation.
extern ShortLock g_dataLock;

/// Guards the stacks of running timers and the states that they feed. Also held across fork. No other lock is taken
/// while it is held.
extern ShortLock g_timersLock;

} // namespace zr
