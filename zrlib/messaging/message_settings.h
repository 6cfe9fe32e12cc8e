/// ZRMessageSettings: restores the settings of the messages at the end of a scope.
#pragma once

#include "zrlib/messaging/message_functions.h"

/// Saves the master switch, the flag words and the enabled bits when constructed and restores them when destroyed. In
/// between, the scope may change them:
///
///     const ZRMessageSettings settings;
///     ZRSetMessagesEnabled(0); // quiet until the end of the scope
///
/// The settings are process-wide, so changes by other threads are undone too. Observers are notified if that changes
/// the master switch (ZR_EVENT_MESSAGES_ENABLED). Threads: any.
class [[nodiscard]] ZRMessageSettings {
public:
    [[nodiscard]] ZRMessageSettings() = default;
    ~ZRMessageSettings()
    {
        ZRSetOutFlags(m_outFlags);
        ZRSetWarnFlags(m_warnFlags);
        ZRSetErrorFlags(m_errorFlags);
        ZRSetTraceFlags(m_traceFlags);
        ZRSetOutEnabled(m_outEnabled);
        ZRSetWarnEnabled(m_warnEnabled);
        ZRSetErrorEnabled(m_errorEnabled);
        ZRSetTraceEnabled(m_traceEnabled);
        ZRSetMessagesEnabled(m_enabled);
    }
    ZRMessageSettings(const ZRMessageSettings&) = delete;
    ZRMessageSettings& operator=(const ZRMessageSettings&) = delete;

private:
    char m_enabled = ZRGetMessagesEnabled();
    short m_outFlags = ZRGetOutFlags();
    short m_warnFlags = ZRGetWarnFlags();
    short m_errorFlags = ZRGetErrorFlags();
    short m_traceFlags = ZRGetTraceFlags();
    char m_outEnabled = ZRIsOutEnabled();
    char m_warnEnabled = ZRIsWarnEnabled();
    char m_errorEnabled = ZRIsErrorEnabled();
    char m_traceEnabled = ZRIsTraceEnabled();
};
