#include "hcbase/shared_lock.h"

#include "hcbase/intrusive_list.h"
#include "hcbase/records.h"

#include <new>

namespace hcbase {

namespace {

constinit IntrusiveList<SharedLock> g_locks HC_GUARDED_BY(g_recordsLock);

} // namespace

SharedLock* SharedLock::Make() noexcept
{
    auto* const lock = new (std::nothrow) SharedLock;
    if (system::kHasFork && lock != nullptr) {
        const LockGuard guard(g_recordsLock);
        g_locks.Add(*lock);
    }
    return lock;
}

void SharedLock::RemoveOwner() noexcept
{
    if (m_owners.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
    }
    if (system::kHasFork) {
        const LockGuard guard(g_recordsLock);
        g_locks.Remove(*this);
    }
    delete this;
}

void SharedLock::FreeAllUnlessOwn() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    for (SharedLock* lock = g_locks.first; lock != nullptr; lock = lock->next) {
        lock->FreeUnlessOwn();
    }
}

} // namespace hcbase
