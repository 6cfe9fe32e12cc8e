/// ZRMode: the process-wide switches that are read from the preferences.
/// Folder frame: what the folders above use: switches, texts, reports, short locks, and whether the library is alive.
#pragma once

#include "zrlib/export.h"

#include <atomic>

class ZRThreadSync;

/// Sixteen switches, read while the library loads and again whenever a client constructs an object of this class. Each
/// is the boolean of its name under "/Libraries/zrlib/" in the preference store; a missing key yields the default.
///
/// | Switch | Default | Effect |
/// |---|---|---|
/// | Threading | 0 | the run-time threading switch may be changed |
/// | CacheQueueing, ThreadBasedCache | 1 | for clients; both are 0 while Threading is 0 in the store |
/// | Cache, ForceMainThreadToUseStreamBasedCache | 1 | for clients |
/// | ForceRunInSingleThread, TTStreaming, ThreadingChannelLocking | 0 | for clients |
/// | OutEnabled, WarnEnabled, ErrorEnabled, TraceEnabled | 0 | any turns messages on at load; each sets its bit |
/// | SendToMsgView, SendToConsole, SendToDebugger, SendToFile | 0 | destinations of all types, if any of those is set |
///
/// The setters store their argument and change nothing else: neither another switch nor the state of the messages,
/// which has functions of its own (message_functions.h).
///
/// Threads: the static operations may be called from any thread.
class ZR_API ZRMode {
public:
    /// Reads the store and overwrites all sixteen switches. A fault of the store is reported on standard error
    /// (hcbase/preference_system.h), and the switches concerned get their defaults; without memory, all of them do.
    ZRMode();

    /// Objects have no state, so copying is a no-op.
    ZRMode(const ZRMode& other);
    ZRMode& operator=(const ZRMode& other);
    virtual ~ZRMode();

    [[nodiscard]] static char IsThreading();
    [[nodiscard]] static char IsCacheQueueing();
    [[nodiscard]] static char IsThreadBasedCache();
    [[nodiscard]] static char IsCache();
    [[nodiscard]] static char IsForceRunInSingleThread();
    [[nodiscard]] static char IsTTStreaming();
    [[nodiscard]] static char IsThreadingChannelLocking();
    [[nodiscard]] static char IsForceMainThreadToUseStreamBasedCache();
    [[nodiscard]] static char IsOutEnabled();
    [[nodiscard]] static char IsWarnEnabled();
    [[nodiscard]] static char IsErrorEnabled();
    [[nodiscard]] static char IsTraceEnabled();
    static char SendToMsgView();
    static char SendToConsole();
    static char SendToDebugger();
    static char SendToFile();

    static void SetThreading(char threading);
    static void SetCacheQueueing(char cacheQueueing);
    static void SetThreadBasedCache(char threadBasedCache);
    static void SetCache(char cache);
    static void SetForceRunInSingleThread(char forceRunInSingleThread);
    static void SetThreadingChannelLocking(char threadingChannelLocking);
    static void SetForceMainThreadToUseStreamBasedCache(char forceMainThreadToUseStreamBasedCache);

    // The switches by index, from 0 to GetSwitchCount() - 1, in the order in which they are read. For an index out of
    // range the key is null and the switch 0.
    [[nodiscard]] static int GetSwitchCount() noexcept;

    /// The key in the preference store: "/Libraries/zrlib/Threading".
    [[nodiscard]] static const char* GetSwitchKey(int index) noexcept;
    [[nodiscard]] static char GetSwitch(int index) noexcept;

    /// 1 on the thread that loaded the library, whichever thread of the process that was; 0 on every other.
    [[nodiscard]] static char IsMainThread();

    /// The opposite of IsMainThread.
    [[nodiscard]] static char IsWorkerThread();

protected:
    /// No-ops that return 0: the switches need no lock.
    static char Lock(const char* location);
    static char Unlock(const char* location);

    static std::atomic<char> m_bThreading;
    static std::atomic<char> m_bCacheQueueing;
    static std::atomic<char> m_bThreadBasedCache;
    static std::atomic<char> m_bCache;
    static std::atomic<char> m_bForceRunInSingleThread;
    static std::atomic<char> m_bTTStreaming;
    static std::atomic<char> m_bThreadingChannelLocking;
    static std::atomic<char> m_bForceMainThreadToUseStreamBasedCache;
    static std::atomic<char> m_bOutEnabled;
    static std::atomic<char> m_bWarnEnabled;
    static std::atomic<char> m_bErrorEnabled;
    static std::atomic<char> m_bTraceEnabled;
    static std::atomic<char> m_bSendToMsgView;
    static std::atomic<char> m_bSendToConsole;
    static std::atomic<char> m_bSendToDebugger;
    static std::atomic<char> m_bSendToFile;

    static std::atomic<ZRThreadSync*> m_pSync; // always null
    static unsigned int m_main_thread; // ID of the loading thread; written once while the library loads

private:
    struct Switch;

    ZR_NOT_SHARED static const Switch kSwitches[16];
};
