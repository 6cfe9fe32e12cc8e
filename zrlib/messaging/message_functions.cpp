#include "zrlib/messaging/message_functions.h"

#include "hcbase/error.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/report.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/messaging/message_route.h"

#include <cstdint>

namespace {

bool IsLevel(short level)
{
    constexpr short kLowest = 1;
    constexpr short kHighest = 7;
    return static_cast<std::uint16_t>(level - kLowest) <= kHighest - kLowest;
}

void Send(short type, const HCString& text, const HCString* textEx, const ZRMessageRoute::MessageFields& fields)
{
    ZRMessageRoute::Send(ZRGetMessageHandler(), type, text, textEx, fields);
}

void SendAtLevel(short type, const HCString& text, const HCString* textEx, const char* location, short level)
{
    if (IsLevel(level)) {
        Send(type, text, textEx, {location, level});
    }
}

/// Its destructor records an error with the foundation: after the message, and also when sending that throws. A no-op
/// once the module is destroyed.
template <typename Text> class ErrorRecord {
public:
    ErrorRecord(int code, const Text& text, const char* location, char chain)
        : m_code(code)
        , m_text(text)
        , m_location(location)
        , m_chain(chain)
    {
    }
    ~ErrorRecord()
    {
        if (zr::ModuleSeemsAlive()) {
            HFErrorSet(m_code, m_text, m_location, m_chain);
        }
    }
    ErrorRecord(const ErrorRecord&) = delete;
    ErrorRecord& operator=(const ErrorRecord&) = delete;

private:
    int m_code;
    const Text& m_text; // not owned; an observer of the message may have changed it
    const char* m_location; // not owned
    char m_chain;
};

/// An error without a code of its own.
void SendErrorAtLevel(const HCString& text, const HCString* textEx, const char* location, short level)
{
    if (IsLevel(level)) {
        const ErrorRecord record(1, text, "ZRError", 0);
        Send(ZR_MSG_ERROR, text, textEx, {location, level});
    }
}

} // namespace

void ZROut(const HCString& text, const char* location, short level)
{
    SendAtLevel(ZR_MSG_OUT, text, nullptr, location, level);
}

void ZRWarn(const HCString& text, const char* location, short level)
{
    SendAtLevel(ZR_MSG_WARN, text, nullptr, location, level);
}

void ZRError(const HCString& text, const char* location, short level)
{
    SendErrorAtLevel(text, nullptr, location, level);
}

void ZRTrace(const HCString& text, const char* location, short level)
{
    SendAtLevel(ZR_MSG_TRACE, text, nullptr, location, level);
}

void ZROutEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(ZR_MSG_OUT, text, &textEx, location, level);
}

void ZRWarnEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(ZR_MSG_WARN, text, &textEx, location, level);
}

void ZRErrorEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendErrorAtLevel(text, &textEx, location, level);
}

void ZRTraceEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(ZR_MSG_TRACE, text, &textEx, location, level);
}

int ZRErrorSet(int code, const char* text, const char* location, char chainToPrevious, short level)
{
    const ErrorRecord record(code, text, location, chainToPrevious);
    Send(ZR_MSG_ERROR, text, nullptr, {location, level, code, chainToPrevious});
    return 0;
}

void ZRSetOutFlags(short flags) { ZRMessageHandler::SetOutFlags(flags); }
void ZRSetWarnFlags(short flags) { ZRMessageHandler::SetWarnFlags(flags); }
void ZRSetErrorFlags(short flags) { ZRMessageHandler::SetErrorFlags(flags); }
void ZRSetTraceFlags(short flags) { ZRMessageHandler::SetTraceFlags(flags); }
void ZRSetAllFlags(short flags) { ZRMessageHandler::SetAllFlags(flags); }
short ZRGetOutFlags() { return ZRMessageHandler::GetOutFlags(); }
short ZRGetWarnFlags() { return ZRMessageHandler::GetWarnFlags(); }
short ZRGetErrorFlags() { return ZRMessageHandler::GetErrorFlags(); }
short ZRGetTraceFlags() { return ZRMessageHandler::GetTraceFlags(); }

void ZRSetOutEnabled(char enabled) { ZRMessageHandler::SetOutEnabled(enabled); }
void ZRSetWarnEnabled(char enabled) { ZRMessageHandler::SetWarnEnabled(enabled); }
void ZRSetErrorEnabled(char enabled) { ZRMessageHandler::SetErrorEnabled(enabled); }
void ZRSetTraceEnabled(char enabled) { ZRMessageHandler::SetTraceEnabled(enabled); }
void ZRSetAllEnabled(char enabled) { ZRMessageHandler::SetAllEnabled(enabled); }
char ZRIsOutEnabled() { return ZRMessageHandler::IsOutEnabled(); }
char ZRIsWarnEnabled() { return ZRMessageHandler::IsWarnEnabled(); }
char ZRIsErrorEnabled() { return ZRMessageHandler::IsErrorEnabled(); }
char ZRIsTraceEnabled() { return ZRMessageHandler::IsTraceEnabled(); }

void ZRSetMessagesEnabled(char enabled)
{
    const zr::ModuleLease lease;
    if (lease.IsAlive()) {
        ZRGetMessageHandler()->SetEnabled(enabled);
    }
}

char ZRGetMessagesEnabled() { return ZRMessageHandler::GetSwitch(); }

// The reports of the folders below.

void zr::ReportOut(const HCString& text) { ZROut(text, nullptr, 1); }
void zr::ReportWarn(const HCString& text) { ZRWarn(text, nullptr, 1); }
void zr::ReportError(const HCString& text) { ZRError(text, nullptr, 1); }
void zr::ReportTrace(const HCString& text) { ZRTrace(text, nullptr, 1); }
void zr::ReportErrorSet(int code, const char* text, const char* location) { ZRErrorSet(code, text, location, 0, 1); }
bool zr::ReportsAreOn() { return ZRMessageHandler::AreMessagesOn(); }
