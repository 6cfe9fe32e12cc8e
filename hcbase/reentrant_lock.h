/// ReentrantLock: the lock behind HCThreadSync and behind the foundation's own records. Not exported.
#pragma once

#include "hcbase/system/thread_annotations.h"
#include "hcbase/system/threads.h"

#include <atomic>
#include <cstdint>
#include <limits>

namespace hcbase {

/// Constant-initialised and trivially destroyed, so it works before and after every static object.
class HC_CAPABILITY("lock") ReentrantLock {
public:
    constexpr ReentrantLock() noexcept = default;
    ReentrantLock(const ReentrantLock&) = delete;
    ReentrantLock& operator=(const ReentrantLock&) = delete;

    /// False when the calling thread holds the lock as often as can be counted.
    bool Lock() noexcept HC_ACQUIRE()
    {
        if (TryTake()) [[likely]] {
            m_holder.store(system::CurrentThreadMark(), std::memory_order_relaxed);
            return true;
        }
        return LockTaken();
    }

    /// Takes the lock if nobody else holds it; otherwise returns false at once. Also false when the calling thread
    /// holds it as often as can be counted.
    bool TryLock() noexcept HC_TRY_ACQUIRE(true)
    {
        const system::ThreadMark self = system::CurrentThreadMark();
        if (TryTake()) {
            m_holder.store(self, std::memory_order_relaxed);
            return true;
        }
        return m_holder.load(std::memory_order_relaxed) == self && CountOneMore();
    }

    /// False when the calling thread does not hold the lock.
    bool Unlock() noexcept HC_RELEASE()
    {
        if (m_holder.load(std::memory_order_relaxed) != system::CurrentThreadMark()) {
            return false;
        }
        if (m_depth != 0) [[unlikely]] {
            --m_depth;
            return true;
        }
        m_holder.store(0, std::memory_order_relaxed);
        Release();
        return true;
    }

    /// For a forked child, before it has a second thread: frees the lock unless the calling thread holds it. A holder
    /// that the child does not have will not unlock it.
    void FreeUnlessOwn() noexcept;

private:
    static constexpr std::uint32_t kFree = 0;
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kHeldAndAwaited = 2;

    // A process with one thread needs no atomic operation, which is most of what a lock costs.
    bool TryTake() noexcept
    {
        std::uint32_t seen = kFree;
        if (system::IsSingleThreaded()) {
            seen = m_word.load(std::memory_order_relaxed);
            if (seen == kFree) {
                m_word.store(kHeld, std::memory_order_relaxed);
            }
            return seen == kFree;
        }
        return m_word.compare_exchange_strong(seen, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
    }

    void Release() noexcept
    {
        if (system::IsSingleThreaded()) {
            m_word.store(kFree, std::memory_order_relaxed);
        } else if (m_word.exchange(kFree, std::memory_order_release) == kHeldAndAwaited) {
            WakeAnother();
        }
    }

    bool CountOneMore() noexcept
    {
        const bool canCount = m_depth < std::numeric_limits<std::uint32_t>::max() - 1;
        m_depth += canCount ? 1 : 0;
        return canCount;
    }

    bool LockTaken() noexcept; // out of line, so that the common path needs no frame
    void Wait() noexcept;
    bool TakeWithPauses() noexcept;
    void WakeAnother() noexcept;

    std::atomic<std::uint32_t> m_word{kFree};
    std::uint32_t m_depth = 0; // levels beyond the first; touched by the holder only
    std::atomic<system::ThreadMark> m_holder{0}; // 0 while nobody holds it
};

/// Holds a lock for the length of a scope.
class HC_SCOPED_CAPABILITY LockGuard {
public:
    explicit LockGuard(ReentrantLock& lock) noexcept HC_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.Lock();
    }
    ~LockGuard() HC_RELEASE() { m_lock.Unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    ReentrantLock& m_lock; // not owned
};

} // namespace hcbase
