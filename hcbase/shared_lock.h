/// SharedLock: what the copies of an HCThreadSync share. Not exported.
#pragma once

#include "hcbase/reentrant_lock.h"

#include <atomic>

namespace hcbase {

/// A reference-counted lock on the heap. Where processes can fork, all of them are listed, so that a child can free
/// those whose holders it does not have.
class SharedLock : public ReentrantLock {
public:
    /// Creates a lock with one owner. Null when there is no memory.
    static SharedLock* Make() noexcept;

    void AddOwner() noexcept { m_owners.fetch_add(1, std::memory_order_relaxed); }

    /// Destroys the lock with its last owner.
    void RemoveOwner() noexcept;

    /// For a forked child, with the records locked.
    static void FreeAllUnlessOwn() noexcept;

    // Links of the list.
    SharedLock* next = nullptr;
    SharedLock* previous = nullptr;

private:
    std::atomic<int> m_owners{1};
};

} // namespace hcbase
