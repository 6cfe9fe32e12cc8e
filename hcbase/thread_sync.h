/// HCThreadSync: a re-entrant lock.
#pragma once

#include "hcbase/export.h"

namespace hcbase {
class SharedLock;
}

/// A re-entrant lock: the thread that holds it may lock it again, and must unlock it as often as it has locked it.
///
/// Copies share one underlying lock, which is destroyed with its last owner, as with a shared pointer. The last owner
/// must not destroy a lock while a thread holds it or waits for it.
///
/// fork: in the child every lock works at once. One that another thread of the parent held is free again; one that the
/// forking thread held is still its own. Whether the data behind a freed lock are consistent is for their owner to
/// judge.
///
/// A thread must not end while it holds a lock: nobody unlocks it then, and a later thread may be taken for the holder.
///
/// Windows: when a process ends, its threads end before the static objects of its libraries are destroyed. A lock that
/// one of them held is then free.
///
/// Threads: lock and unlock from any thread; the caller serialises copying, assigning and destroying one object.
class HC_API HCThreadSync {
public:
    /// Unlocked.
    HCThreadSync() noexcept;
    HCThreadSync(const HCThreadSync& other) noexcept;
    HCThreadSync& operator=(const HCThreadSync& other) noexcept;
    ~HCThreadSync();

    /// Waits until the calling thread holds the lock. Returns 1, or 0 without waiting when the lock could not be
    /// allocated or is already held as often as can be counted (4,294,967,295 times).
    char lock() noexcept;

    /// Takes the lock if nobody else holds it, without waiting. Returns whether the calling thread holds it once more.
    /// It makes std::lock_guard, std::unique_lock and std::scoped_lock work.
    [[nodiscard]] bool try_lock() noexcept;

    /// Releases one level of the calling thread's hold. Returns 1; 0, changing nothing, when the thread does not hold
    /// it.
    char unlock() noexcept;

private:
    hcbase::SharedLock* m_lock; // owned together with the copies
};
