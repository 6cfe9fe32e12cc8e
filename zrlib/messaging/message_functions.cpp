#include "zrlib/messaging/message_functions.h"

#include "hcbase/error.h"
#include "zrlib/frame/module.h"
#include "zrlib/messaging/message_handler.h"

#include <cstdint>

/// The process's message handler, kept in place while this object lives; null before the module is built and once it
/// has gone.
class ZRHandlerUse {
public:
    ZRHandlerUse() noexcept
        : m_handler(m_module.Stands() ? ZRGetModule()->m_pMessageHandler : nullptr)
    {
    }

    explicit operator bool() const { return m_handler != nullptr; }
    ZRMessageHandler* operator->() const { return m_handler; }

    /// The master switch. It belongs to the process, so that asking it needs no handler.
    static char GetMessagesEnabled() { return ZRMessageHandler::m_bEnabled.load(std::memory_order_relaxed); }

private:
    const ZRModuleUse m_module;
    ZRMessageHandler* const m_handler; // not owned
};

namespace {

bool IsLevel(short level)
{
    constexpr short kLowest = 1;
    constexpr short kHighest = 7;
    return static_cast<std::uint16_t>(level - kLowest) <= kHighest - kLowest;
}

/// Calls `send` with the handler unless the level or the master switch says that nothing is to be sent. That is found
/// out before anything is copied, counted or locked: messages that nobody wants cost next to nothing.
template <typename Send> void SendAtLevel(short level, Send send)
{
    if (!IsLevel(level) || ZRHandlerUse::GetMessagesEnabled() == 0) {
        return;
    }
    if (const ZRHandlerUse handler; handler) {
        send(handler);
    }
}

/// Calls `send` with the handler and then records an error that has no code of its own, delivered or not.
template <typename Send> void SendErrorAtLevel(short level, const HCString& text, Send send)
{
    if (!IsLevel(level)) {
        return;
    }
    if (const ZRHandlerUse handler; handler) {
        send(handler);
        HFErrorSet(1, text, "ZRError", 0);
    }
}

} // namespace

ZRMessageHandler* ZRGetMessageHandler() { return ZRGetModule()->m_pMessageHandler; }

void ZROut(const HCString& text, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->Out(text, location, level); });
}

void ZRWarn(const HCString& text, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->Warn(text, location, level); });
}

void ZRError(const HCString& text, const char* location, short level)
{
    SendErrorAtLevel(level, text, [&](const ZRHandlerUse& handler) { handler->Error(text, location, 0, 0, level); });
}

void ZRTrace(const HCString& text, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->Trace(text, location, level); });
}

void ZROutEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->OutEx(text, textEx, location, level); });
}

void ZRWarnEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->WarnEx(text, textEx, location, level); });
}

void ZRErrorEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendErrorAtLevel(
        level, text, [&](const ZRHandlerUse& handler) { handler->ErrorEx(text, textEx, location, 0, 0, level); });
}

void ZRTraceEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    SendAtLevel(level, [&](const ZRHandlerUse& handler) { handler->TraceEx(text, textEx, location, level); });
}

int ZRErrorSet(int code, const char* text, const char* location, char chainToPrevious, short level)
{
    if (const ZRHandlerUse handler; handler) {
        handler->Error(text, location, code, chainToPrevious, level);
        HFErrorSet(code, text, location, chainToPrevious);
    }
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
    if (const ZRHandlerUse handler; handler) {
        handler->SetEnabled(enabled);
    }
}

char ZRGetMessagesEnabled() { return ZRHandlerUse::GetMessagesEnabled(); }
