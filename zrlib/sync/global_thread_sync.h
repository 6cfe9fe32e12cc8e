/// ZRGlobalThreadSync: one lock for the process.
#pragma once

#include "zrlib/export.h"

#include <atomic>

/// A lock that all clients of the library share. Re-entrant; the library itself never takes it, and the threading
/// switch has no influence on it.
///
/// Threads: any. Once the library's own objects have gone, at the end of the process, Lock and Unlock do nothing and
/// give 0, unless a thread was waiting for the lock at that moment; then it goes on working.
class ZR_API ZRGlobalThreadSync {
public:
    virtual ~ZRGlobalThreadSync();

    /// Waits until the calling thread holds the lock. 1 on success. The location has no effect.
    static char Lock(const char* location);

    /// Gives up one level of the hold. 0 when the calling thread does not hold the lock. The location has no effect.
    static char Unlock(const char* location);

    // Kept for clients; nothing here depends on them.

    [[nodiscard]] static char GetVerbose();
    static void SetVerbose(char verbose);

    /// Seconds; 1 at first.
    [[nodiscard]] static double GetWarningThreshold();
    static void SetWarningThreshold(double seconds);

private:
    static std::atomic<char> m_bVerbose;
    static std::atomic<double> m_dWarningThreshold;
};
