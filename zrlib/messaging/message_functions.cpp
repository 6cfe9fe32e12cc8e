#include "zrlib/messaging/message_functions.h"

#include "hcbase/error.h"
#include "zrlib/frame/module.h"
#include "zrlib/messaging/message_handler.h"

#include <cstdint>

namespace {

bool IsLevel(short level)
{
    constexpr short kLowest = 1;
    constexpr short kHighest = 7;
    return static_cast<std::uint16_t>(level - kLowest) <= kHighest - kLowest;
}

/// Null before the module is built and once it is gone.
ZRMessageHandler* StandingHandler() { return ZRModuleUse::ModuleStands() ? ZRGetModule()->m_pMessageHandler : nullptr; }

ZRMessageHandler* HandlerForLevel(short level) { return IsLevel(level) ? StandingHandler() : nullptr; }

/// An error that has no code of its own.
void RecordPlainError(const HCString& text) { HFErrorSet(1, text, "ZRError", 0); }

} // namespace

ZRMessageHandler* ZRGetMessageHandler() { return ZRGetModule()->m_pMessageHandler; }

void ZROut(const HCString& text, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->Out(text, location, level);
    }
}

void ZRWarn(const HCString& text, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->Warn(text, location, level);
    }
}

void ZRError(const HCString& text, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->Error(text, location, 0, 0, level);
        RecordPlainError(text);
    }
}

void ZRTrace(const HCString& text, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->Trace(text, location, level);
    }
}

void ZROutEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->OutEx(text, textEx, location, level);
    }
}

void ZRWarnEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->WarnEx(text, textEx, location, level);
    }
}

void ZRErrorEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->ErrorEx(text, textEx, location, 0, 0, level);
        RecordPlainError(text);
    }
}

void ZRTraceEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    if (ZRMessageHandler* const handler = HandlerForLevel(level)) {
        handler->TraceEx(text, textEx, location, level);
    }
}

int ZRErrorSet(int code, const char* text, const char* location, char chainToPrevious, short level)
{
    if (ZRMessageHandler* const handler = StandingHandler()) {
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
    if (ZRMessageHandler* const handler = StandingHandler()) {
        handler->SetEnabled(enabled);
    }
}

char ZRGetMessagesEnabled()
{
    const ZRMessageHandler* const handler = StandingHandler();
    return handler != nullptr ? handler->GetEnabled() : char{0};
}
