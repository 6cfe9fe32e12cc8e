/// ZRMessageSettings: puts the settings of the messages back at the end of a scope.
#pragma once

#include "zrlib/messaging/message_functions.h"

/// Keeps the master switch, the flag words and the enabled bits as they are when it is built, and puts them back when
/// it goes. What happens in between is the scope's own business:
///
///     const ZRMessageSettings settings;
///     ZRSetMessagesEnabled(0); // quiet until the end of the scope
///
/// The settings belong to the process, so what other threads change meanwhile is put back too. Observers are told when
/// the master switch changes by that (ZR_EVENT_MESSAGES_ENABLED). Threads: any.
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
