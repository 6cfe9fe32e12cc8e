/// The lock behind HCThreadSync and behind the foundation's own records.
#pragma once

#include "hcbase/system/thread_annotations.h"

#include <atomic>
#include <cstdint>

namespace hcbase {

/// Constant-initialised and trivially destroyed, so that it works before and after every static object.
///
/// One word says who holds it: 0 for nobody, else the holder's thread ID, with the lowest bit set once a thread waits.
/// Thread IDs are even and, where processes can fork, not given out again, so that the word alone tells a forked child
/// whether the holder came along (system/threads.h, IsLeftBehindByFork).
class HC_CAPABILITY("lock") ReentrantLock {
public:
    constexpr ReentrantLock() noexcept = default;
    ReentrantLock(const ReentrantLock&) = delete;
    ReentrantLock& operator=(const ReentrantLock&) = delete;

    /// False when the calling thread holds the lock as often as can be counted.
    bool Lock() noexcept HC_ACQUIRE();

    /// False when the calling thread does not hold the lock.
    bool Unlock() noexcept HC_RELEASE();

private:
    static constexpr std::uint32_t kSomebodyWaits = 1;

    void LockContended(std::uint32_t self) noexcept;

    std::atomic<std::uint32_t> m_word{0};
    std::uint32_t m_depth = 0; // levels beyond the first; touched by the holder only
};

/// Holds a lock for the length of a scope.
class HC_SCOPED_CAPABILITY LockGuard {
public:
    explicit LockGuard(ReentrantLock& lock) noexcept HC_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
    ~LockGuard() HC_RELEASE() { m_lock.Unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    ReentrantLock& m_lock; // not owned
};

} // namespace hcbase
