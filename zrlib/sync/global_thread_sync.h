/// ZRGlobalThreadSync: one lock for the process.
#pragma once

#include "zrlib/export.h"

#include <atomic>

/// A lock that all clients of the library share. Re-entrant; the library itself never takes it, and the threading
/// switch does not affect it.
///
/// Threads: any. Once the library's own objects are destroyed, at the end of the process, Lock and Unlock are no-ops
/// that return 0, unless a thread was waiting for the lock at that moment; then it keeps working.
class ZR_API ZRGlobalThreadSync {
public:
    virtual ~ZRGlobalThreadSync();

    /// Waits until the calling thread holds the lock. 1 on success. The location has no effect.
    static char Lock(const char* location);

    /// Releases one level of the hold. Returns 0 when the calling thread does not hold the lock. The location has no
    /// effect.
    static char Unlock(const char* location);

    // Stored for clients; nothing here depends on them.

    [[nodiscard]] static char GetVerbose();
    static void SetVerbose(char verbose);

    /// Seconds; initially 1.
    [[nodiscard]] static double GetWarningThreshold();
    static void SetWarningThreshold(double seconds);

private:
    static std::atomic<char> m_bVerbose;
    static std::atomic<double> m_dWarningThreshold;
};
