/// Holds a lock for the length of a scope.
#pragma once

#include "hcbase/thread_sync.h"

class ZRSyncGuard {
public:
    explicit ZRSyncGuard(HCThreadSync& sync) noexcept
        : m_sync(sync)
    {
        m_sync.lock();
    }
    ~ZRSyncGuard() { m_sync.unlock(); }
    ZRSyncGuard(const ZRSyncGuard&) = delete;
    ZRSyncGuard& operator=(const ZRSyncGuard&) = delete;

private:
    HCThreadSync& m_sync; // not owned
};
