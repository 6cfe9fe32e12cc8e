#include "hcbase/thread_sync.h"

#include "hcbase/reentrant_lock.h"

#include <atomic>
#include <new>

struct HCThreadSync::Shared {
    hcbase::ReentrantLock lock;
    std::atomic<int> owners{1};
};

HCThreadSync::HCThreadSync() noexcept : m_shared(new (std::nothrow) Shared) {}

HCThreadSync::HCThreadSync(const HCThreadSync& other) noexcept : m_shared(other.m_shared)
{
    if (m_shared != nullptr) {
        m_shared->owners.fetch_add(1, std::memory_order_relaxed);
    }
}

HCThreadSync& HCThreadSync::operator=(const HCThreadSync& other) noexcept
{
    if (m_shared != other.m_shared) {
        Release();
        m_shared = other.m_shared;
        if (m_shared != nullptr) {
            m_shared->owners.fetch_add(1, std::memory_order_relaxed);
        }
    }
    return *this;
}

HCThreadSync::~HCThreadSync() { Release(); }

void HCThreadSync::Release() noexcept
{
    if (m_shared != nullptr && m_shared->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete m_shared;
    }
}

// The hold outlives the call, which is the purpose of the two and more than the analysis can follow.
char HCThreadSync::lock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    return m_shared != nullptr && m_shared->lock.Lock() ? 1 : 0;
}

char HCThreadSync::unlock() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    return m_shared != nullptr && m_shared->lock.Unlock() ? 1 : 0;
}
