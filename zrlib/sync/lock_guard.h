/// ZRLockGuard, ZRGlobalLockGuard: hold a lock for the length of a scope.
#pragma once

#include "zrlib/sync/global_thread_sync.h"
#include "zrlib/sync/thread_sync.h"

/// Locks when constructed and unlocks when destroyed, with the reports, the count and the switches of ZRThreadSync.
///
///     const ZRLockGuard guard(m_sync, "Map::Load");
///
/// Owns nothing: lock, location and trail must outlive the guard. If an observer of the reports throws in the
/// constructor, the lock is free afterwards; in the destructor, where only a trail is reported, that terminates the
/// process.
///
/// Threads: a guard belongs to the thread that constructed it.
class ZRLockGuard {
public:
    /// location: names the place in reports; may be null. trail: as for ZRThreadSync::Lock; may be null.
    [[nodiscard]] explicit ZRLockGuard(ZRThreadSync& sync, const char* location = nullptr, ZRLockTrail* trail = nullptr)
        : m_sync(sync)
        , m_location(location)
        , m_trail(trail)
        , m_isHeld(sync.LockUnreported(trail) || sync.Lock(location, trail) != 0)
    {
    }
    ~ZRLockGuard()
    {
        if (m_isHeld && !m_sync.UnlockUnreported(m_trail)) {
            m_sync.Unlock(m_location, m_trail);
        }
    }
    ZRLockGuard(const ZRLockGuard&) = delete;
    ZRLockGuard& operator=(const ZRLockGuard&) = delete;

    /// Whether the lock was taken. True also while it is switched off.
    [[nodiscard]] bool IsHeld() const noexcept { return m_isHeld; }

private:
    ZRThreadSync& m_sync; // not owned
    const char* m_location; // not owned
    ZRLockTrail* m_trail; // not owned
    bool m_isHeld;
};

/// Holds the lock that all libraries of the process share (ZRGlobalThreadSync). Threads: a guard belongs to the thread
/// that constructed it.
class ZRGlobalLockGuard {
public:
    [[nodiscard]] explicit ZRGlobalLockGuard(const char* location = nullptr)
        : m_location(location)
        , m_isHeld(ZRGlobalThreadSync::Lock(location) != 0)
    {
    }
    ~ZRGlobalLockGuard()
    {
        if (m_isHeld) {
            ZRGlobalThreadSync::Unlock(m_location);
        }
    }
    ZRGlobalLockGuard(const ZRGlobalLockGuard&) = delete;
    ZRGlobalLockGuard& operator=(const ZRGlobalLockGuard&) = delete;

    /// False once the library's own objects are destroyed.
    [[nodiscard]] bool IsHeld() const noexcept { return m_isHeld; }

private:
    const char* m_location; // not owned
    bool m_isHeld;
};
