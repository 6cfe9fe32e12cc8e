/// ZRSyncGuard: holds a lock for the length of a scope. Not exported.
#pragma once

#include "hcbase/thread_sync.h"

class ZRSyncGuard {
public:
    explicit ZRSyncGuard(HCThreadSync& sync) noexcept
        : m_sync(sync)
        , m_isHeld(sync.lock() != 0)
    {
    }
    ~ZRSyncGuard()
    {
        if (m_isHeld) {
            m_sync.unlock();
        }
    }
    ZRSyncGuard(const ZRSyncGuard&) = delete;
    ZRSyncGuard& operator=(const ZRSyncGuard&) = delete;

    /// False when the lock could not be taken.
    bool IsHeld() const { return m_isHeld; }

private:
    HCThreadSync& m_sync; // not owned
    bool m_isHeld;
};
