/// ZRThreadSync: a lock that can be switched off and tells of long waits.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/export.h"
#include "zrlib/frame/relaxed.h"

#include <cstdint>

class ZRLockTrail;

/// The foundation's re-entrant lock with four additions: it can be switched off, by itself (SetActive) or with all
/// others of the process (ZRSetThreadingEnabled); it counts its holds; it can report how long threads wait for it; and
/// it can leave a trail for observers (ZRLockTrail). `lock` and `unlock` of the base are there too and know nothing of
/// all this.
///
/// Reports are for worker threads: the thread that loaded the library is never timed.
///
/// | SetActive | SetReport | SetVerbose | on a worker thread |
/// |---|---|---|---|
/// | 0 | any | any | nothing is locked |
/// | 1 | 0 | any | locks |
/// | 1 | 1 | 0 | locks; a wait longer than the threshold is a warning |
/// | 1 | 1 | 1 | also says before each attempt that it is made |
///
/// Threads: Lock, Unlock and the settings from any thread, at any time; a setting takes effect at its next test. Only
/// the lock must not be switched off or on while it is held, as the two calls would not match. Copying, assigning and
/// destroying are the caller's to serialise, as for HCThreadSync.
class ZR_API ZRThreadSync : public HCThreadSync {
public:
    /// Unlocked and active, without reports, with a threshold of 0.01 seconds.
    ZRThreadSync();

    /// Copies share one underlying lock, with settings and a count of their own.
    ZRThreadSync(const ZRThreadSync& other);
    ZRThreadSync& operator=(const ZRThreadSync& other);
    virtual ~ZRThreadSync();

    /// Waits until the calling thread holds the lock. Gives 1, at once while the lock is switched off; 0 when the lock
    /// could not be taken (HCThreadSync::lock).
    ///
    /// location: names the place in reports; null shows as "?". trail: null, or whose attempt is told to the observers
    /// of lock trails, before the lock is held. Messages, and so the observers of messages, run on this thread; if one
    /// of them throws, the lock is not held.
    char Lock(const char* location, ZRLockTrail* trail);

    /// Gives up one level of the hold. Gives 1, at once while the lock is switched off; 0 when the calling thread does
    /// not hold the lock. The trail is told in either case, when the lock has been given up; an observer of it may
    /// throw. The location has no effect.
    char Unlock(const char* location, ZRLockTrail* trail);

    /// Whether attempts are reported too.
    char GetVerbose() const { return m_bVerbose; }
    void SetVerbose(char verbose) { m_bVerbose = verbose; }

    /// Whether waits are timed.
    char GetReport() const { return m_bReport; }
    void SetReport(char report) { m_bReport = report; }

    /// Whether the lock is switched on.
    char GetActive() const { return m_bActive; }
    void SetActive(char active) { m_bActive = active; }

    /// Seconds; a longer wait draws a warning.
    double GetWarningThreshold() const { return m_dWarningThreshold; }
    void SetWarningThreshold(double seconds) { m_dWarningThreshold = seconds; }

    /// ID of the thread that loaded the library.
    static unsigned int GetMainThread();

    /// Whether the calling thread is the one that loaded the library. 1 or 0.
    static char IsMainThread();
    static char IsNotMainThread();

private:
    struct Counted;

    bool IsOn() const;
    char LockTimed(const char* location, ZRLockTrail* trail);

    zr::Relaxed<int> m_nLockCount; // for reports only
    zr::Relaxed<std::uintptr_t> m_nHolder; // mark of the thread that Lock has given the lock; 0 when it is given up
    zr::Relaxed<char> m_bVerbose;
    zr::Relaxed<char> m_bReport;
    zr::Relaxed<char> m_bActive{1};
    zr::Relaxed<double> m_dWarningThreshold{0.01};

    static unsigned int m_main_thread; // written once while the library loads
};
