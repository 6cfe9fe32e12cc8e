/// ZRThreadSync: a lock that can be switched off and reports long waits.
/// Folder sync: the locks of the library's clients, their guards and trails, and the switch that turns them off.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/export.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/sync/threading.h"

#include <cstdint>
#include <mutex>

class ZRLockTrail;

/// The foundation's re-entrant lock with four additions: it can be switched off, by itself (SetActive) or with all
/// others of the process (ZRSetThreadingEnabled); it counts its holds; it can report how long threads wait for it; and
/// it can send lock trails, which are dormant (lock_trail_handler.h). `lock` and `unlock` of the base are there too and
/// bypass all this.
///
/// Reports are for worker threads: the thread that loaded the library is never timed.
///
/// | SetActive | SetReport | SetVerbose | on a worker thread |
/// |---|---|---|---|
/// | 0 | any | any | nothing is locked |
/// | 1 | 0 | any | locks |
/// | 1 | 1 | 0 | locks; a wait longer than the threshold is a warning |
/// | 1 | 1 | 1 | also reports each attempt before it is made |
///
/// Threads: Lock, Unlock and the settings may be called from any thread, at any time; a setting takes effect when it is
/// next tested. But the lock must not be switched off or on while it is held, as the two calls would not match. The
/// caller serialises copying, assigning and destroying, as for HCThreadSync.
class ZR_API ZRThreadSync : public HCThreadSync {
public:
    /// Unlocked and active, without reports, with a threshold of 0.01 seconds.
    ZRThreadSync();

    /// Copies share one underlying lock, but have settings and a count of their own.
    ZRThreadSync(const ZRThreadSync& other);
    ZRThreadSync& operator=(const ZRThreadSync& other);
    virtual ~ZRThreadSync();

    /// Waits until the calling thread holds the lock. Returns 1, at once while the lock is switched off; 0 when the
    /// lock could not be taken (HCThreadSync::lock).
    ///
    /// location: names the place in reports; null is shown as "?". trail: null, or the record that is sent to the
    /// observers of lock trails before the lock is held. Messages, and so the observers of messages, run on this
    /// thread; if one of them throws, the lock is not held.
    char Lock(const char* location, ZRLockTrail* trail);

    /// Releases one level of the hold. Returns 1, at once while the lock is switched off; 0 when the calling thread
    /// does not hold the lock. The trail is sent in either case, after the lock has been released; an observer of it
    /// may throw. The location has no effect.
    char Unlock(const char* location, ZRLockTrail* trail);

    // That of the base would bypass the count and the switch.
    bool try_lock() = delete;

    /// Whether attempts are reported too.
    [[nodiscard]] char GetVerbose() const noexcept { return m_bVerbose; }
    void SetVerbose(char verbose) { m_bVerbose = verbose; }

    /// Whether waits are timed.
    [[nodiscard]] char GetReport() const noexcept { return m_bReport; }
    void SetReport(char report) { m_bReport = report; }

    /// Whether the lock is switched on.
    [[nodiscard]] char GetActive() const noexcept { return m_bActive; }
    void SetActive(char active) { m_bActive = active; }

    /// Seconds; a longer wait is reported as a warning.
    [[nodiscard]] double GetWarningThreshold() const noexcept { return m_dWarningThreshold; }
    void SetWarningThreshold(double seconds) { m_dWarningThreshold = seconds; }

    /// ID of the thread that loaded the library.
    static unsigned int GetMainThread();

    /// Whether the calling thread is the one that loaded the library. 1 or 0.
    [[nodiscard]] static char IsMainThread();
    [[nodiscard]] static char IsNotMainThread();

private:
    friend class ZRLockGuard;
    struct Counted;

    bool IsOn() const { return g_bThreadingEnabled.load(std::memory_order_relaxed) != 0 && m_bActive != 0; }
    bool LockUnreported(ZRLockTrail* trail);
    bool UnlockUnreported(ZRLockTrail* trail);
    char LockTimed(const char* location, ZRLockTrail* trail);

    zr::Relaxed<int> m_nLockCount; // for reports only
    zr::Relaxed<std::uintptr_t> m_nHolder; // mark of the thread to which Lock gave the lock; 0 once it is released
    zr::Relaxed<char> m_bVerbose;
    zr::Relaxed<char> m_bReport;
    zr::Relaxed<char> m_bActive{1};
    zr::Relaxed<double> m_dWarningThreshold{0.01};

    static unsigned int m_main_thread; // written once while the library loads
};

// The guards of the standard library would take the lock of the base class, bypassing reports, count and off-switch.
// These declarations make that an error: use ZRLockGuard (lock_guard.h).
namespace std {
template <> class lock_guard<ZRThreadSync>;
template <> class unique_lock<ZRThreadSync>;
template <> class scoped_lock<ZRThreadSync>;
} // namespace std

// Lock and Unlock when there is nothing to report, for ZRLockGuard: without a call into this library. They return false
// when they have done nothing. The count is decremented while the lock is still held, as whoever has a guard holds it.

inline bool ZRThreadSync::LockUnreported(ZRLockTrail* trail)
{
    if (trail != nullptr || m_bReport != 0 || !IsOn() || lock() == 0) {
        return false;
    }
    m_nLockCount = m_nLockCount + 1;
    return true;
}

inline bool ZRThreadSync::UnlockUnreported(ZRLockTrail* trail)
{
    if (trail != nullptr || !IsOn()) {
        return false;
    }
    const int count = m_nLockCount - 1;
    m_nLockCount = count;
    if (count == 0) {
        m_nHolder = 0;
    }
    if (unlock() == 0) { // was released with `unlock`
        m_nLockCount = m_nLockCount + 1;
    }
    return true;
}
