/// HCThreadSync: a re-entrant lock.
#pragma once

#include "hcbase/export.h"

namespace hcbase {
class SharedLock;
}

/// A lock that the thread which holds it may take again; it is free for others after as many unlocks as locks.
///
/// Copies share one underlying lock, which goes with its last owner, as a pointer shared by both would. A lock must not
/// be destroyed, by its last owner, while a thread holds it or waits for it.
///
/// fork: in the child every lock works at once. One that another thread of the parent held is free again, one that the
/// forking thread held is still its own. Whether the data behind a freed lock are consistent is for their owner to
/// judge.
///
/// A thread must not end while it holds a lock: nobody unlocks it then, and a later thread may be taken for the holder.
///
/// Windows: when a process ends, its threads go before the static objects of its libraries do. A lock that one of them
/// held is then free.
///
/// Threads: lock and unlock from any thread; copying, assigning and destroying one object is the caller's to serialise.
class HC_API HCThreadSync {
public:
    /// Unlocked.
    HCThreadSync() noexcept;
    HCThreadSync(const HCThreadSync& other) noexcept;
    HCThreadSync& operator=(const HCThreadSync& other) noexcept;
    ~HCThreadSync();

    /// Waits until the calling thread holds the lock. Gives 1, or 0 without waiting when the lock could not be
    /// allocated or is already held as often as can be counted (4,294,967,295 times).
    char lock() noexcept;

    /// Takes the lock if nobody else holds it, without waiting. Whether the calling thread holds it once more. With
    /// this the guards of the standard library work, std::lock_guard, std::unique_lock and std::scoped_lock.
    [[nodiscard]] bool try_lock() noexcept;

    /// Gives up one level of the calling thread's hold. Gives 1, or 0 and changes nothing when the thread does not hold
    /// it.
    char unlock() noexcept;

private:
    hcbase::SharedLock* m_lock; // owned together with the copies
};
