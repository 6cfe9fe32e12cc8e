#include "hcbase/thread_sync.h"

#include "hcbase/shared_lock.h"

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
    if (other.m_lock != nullptr) {
        other.m_lock->AddOwner(); // before the own one is given up: they may be the same
    }
    if (m_lock != nullptr) {
        m_lock->RemoveOwner();
    }
    m_lock = other.m_lock;
    return *this;
}

HCThreadSync::~HCThreadSync()
{
    if (m_lock != nullptr) {
        m_lock->RemoveOwner();
    }
}

// The hold outlives the call, which is the purpose of the two and more than clang's analysis can follow.
char HCThreadSync::lock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS { return m_lock != nullptr && m_lock->Lock() ? 1 : 0; }

char HCThreadSync::unlock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    return m_lock != nullptr && m_lock->Unlock() ? 1 : 0;
}
