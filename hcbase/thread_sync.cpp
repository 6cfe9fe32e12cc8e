#include "hcbase/thread_sync.h"

#include "hcbase/shared_lock.h"

#include <utility>

HCThreadSync::HCThreadSync() noexcept
    : m_lock(hcbase::SharedLock::Make())
{
}

HCThreadSync::HCThreadSync(const HCThreadSync& other) noexcept
    : m_lock(other.m_lock)
{
    if (m_lock != nullptr) {
        m_lock->AddOwner();
    }
}

HCThreadSync& HCThreadSync::operator=(const HCThreadSync& other) noexcept
{
    HCThreadSync copy(other);
    std::swap(m_lock, copy.m_lock);
    return *this;
}

HCThreadSync::~HCThreadSync()
{
    if (m_lock != nullptr) {
        m_lock->RemoveOwner();
    }
}

// The hold outlives the call, as it should, which is more than clang's analysis can follow.
char HCThreadSync::lock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS { return m_lock != nullptr && m_lock->Lock() ? 1 : 0; }

bool HCThreadSync::try_lock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS { return m_lock != nullptr && m_lock->TryLock(); }

char HCThreadSync::unlock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    return m_lock != nullptr && m_lock->Unlock() ? 1 : 0;
}
