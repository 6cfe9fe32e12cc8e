#include "zrlib/messaging/message_handler.h"

#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "hcbase/text_io.h"
#include "hcbase/thread.h"
#include "zrlib/frame/module.h"
#include "zrlib/messaging/message_route.h"
#include "zrlib/messaging/msg.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/platform/debugger_output.h"
#include "zrlib/sync/sync_guard.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

constexpr short kAllTypes = ZR_MSG_OUT | ZR_MSG_WARN | ZR_MSG_ERROR | ZR_MSG_TRACE;

/// The destinations to which a line of text goes.
constexpr short kLineDestinations = ZR_DEST_CONSOLE | ZR_DEST_DEBUGGER | ZR_DEST_FILE;

/// False unless `weight` is a single bit, so that a combination of bits is never "set".
bool IsBitSet(short word, short weight)
{
    const auto bits = static_cast<std::uint16_t>(weight);
    return (bits & (bits - 1)) == 0 && (word & weight) != 0;
}

/// Copied rather than formatted, which takes a tenth of the time.
HCString Joined(const char* prefix, const HCString& text, const char* ending)
{
    HCString joined(prefix);
    const auto start = static_cast<std::size_t>(joined.GetLength());
    const auto textLength = static_cast<std::size_t>(text.GetLength());
    const std::size_t endingLength = std::strlen(ending);
    const auto length // INT_MAX: refused
        = static_cast<int>(std::min<std::size_t>(start + textLength + endingLength, INT_MAX));
    char* const buffer = joined.GetBuffer(length);
    std::memcpy(buffer + start, text, textLength);
    std::copy_n(ending, endingLength, buffer + start + textLength);
    joined.ReleaseBuffer(length);
    return joined;
}

void SetBits(std::atomic<short>& word, short bits, char on)
{
    if (on != 0) {
        word.fetch_or(bits, kRelaxed);
    } else {
        word.fetch_and(static_cast<short>(~bits), kRelaxed);
    }
}

} // namespace

constinit std::atomic<char> ZRMessageHandler::m_bEnabled{0};
constinit std::atomic<short> ZRMessageHandler::m_nEnabled{0};
constinit std::atomic<short> ZRMessageHandler::m_nOutFlags{0};
constinit std::atomic<short> ZRMessageHandler::m_nWarnFlags{0};
constinit std::atomic<short> ZRMessageHandler::m_nErrorFlags{0};
constinit std::atomic<short> ZRMessageHandler::m_nTraceFlags{0};

/// What one type of message is called and where it goes.
struct ZRMessageHandler::MessageType {
    short type;
    const char* prefix; // of its lines
    std::atomic<short>* flags;
};

const ZRMessageHandler::MessageType* ZRMessageHandler::FindType(short type)
{
    static constexpr MessageType kTypes[] = {
        {ZR_MSG_OUT, "OUT - ", &m_nOutFlags},
        {ZR_MSG_WARN, "WARNING - ", &m_nWarnFlags},
        {ZR_MSG_ERROR, "ERROR - ", &m_nErrorFlags},
        {ZR_MSG_TRACE, "TRACE - ", &m_nTraceFlags},
    };
    for (const MessageType& candidate : kTypes) {
        if (candidate.type == type) {
            return &candidate;
        }
    }
    return nullptr;
}

ZRMessageHandler::ZRMessageHandler() = default;

ZRMessageHandler::ZRMessageHandler(const ZRMessageHandler& other) = default;

ZRMessageHandler& ZRMessageHandler::operator=(const ZRMessageHandler& other) = default;

ZRMessageHandler::~ZRMessageHandler() = default;

void ZRMessageHandler::Out(const HCString& text, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_OUT, text, nullptr, {location, level});
}

void ZRMessageHandler::Warn(const HCString& text, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_WARN, text, nullptr, {location, level});
}

void ZRMessageHandler::Error(const HCString& text, const char* location, int code, char chainToPrevious, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_ERROR, text, nullptr, {location, level, code, chainToPrevious});
}

void ZRMessageHandler::Trace(const HCString& text, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_TRACE, text, nullptr, {location, level});
}

void ZRMessageHandler::OutEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_OUT, text, &textEx, {location, level});
}

void ZRMessageHandler::WarnEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_WARN, text, &textEx, {location, level});
}

void ZRMessageHandler::ErrorEx(
    const HCString& text, const HCString& textEx, const char* location, int code, char chainToPrevious, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_ERROR, text, &textEx, {location, level, code, chainToPrevious});
}

void ZRMessageHandler::TraceEx(const HCString& text, const HCString& textEx, const char* location, short level)
{
    ZRMessageRoute::Send(this, ZR_MSG_TRACE, text, &textEx, {location, level});
}

char ZRMessageRoute::GetEnabled() { return ZRMessageHandler::m_bEnabled.load(kRelaxed); }

void ZRMessageRoute::Send(
    ZRMessageHandler* handler, short type, const HCString& text, const HCString* textEx, const Particulars& particulars)
{
    if (GetEnabled() == 0) {
        return; // before anything is copied, counted or locked: messages that nobody wants cost next to nothing
    }
    const ZRModuleUse module;
    if (!module.Stands() || handler == nullptr) {
        return;
    }
    ZRMsg message(text, type, particulars.location, particulars.level);
    if (textEx != nullptr) {
        message.m_csTextEx = *textEx;
    }
    message.m_nCode = particulars.code;
    message.m_bChainToPrevious = particulars.chainToPrevious;
    handler->Route(message);
}

void ZRMessageHandler::BroadcastMessage(ZRMsg& message)
{
    if (m_bEnabled.load(kRelaxed) == 0) {
        return;
    }
    const ZRModuleUse module;
    if (module.Stands()) {
        Route(message);
    }
}

void ZRMessageHandler::Route(ZRMsg& message)
{
    const ZRSyncGuard guard(m_sync);
    if (m_bEnabled.load(kRelaxed) == 0) {
        return; // switched off while this thread waited for its turn
    }
    message.m_nThreadID = HCThread::GetCurrentThreadId();

    const MessageType* const type = FindType(message.m_nType);
    if (type != nullptr && (type->flags->load(kRelaxed) & kLineDestinations) != 0) {
        Deliver(message.m_csText, *type);
    }
    if (IsObserved()) {
        ZRObservedObjectEvent event(this, message);
        event.Broadcast(this, 0);
    }
}

/// Whether anybody may see an event: an observer, or AdjustEvent of a class that a client derived.
bool ZRMessageHandler::IsObserved() const { return GetObserverCount() > 0 || this != ZRGetModule()->m_pMessageHandler; }

void ZRMessageHandler::Deliver(const HCString& text, const MessageType& type)
{
    const auto goesTo = [&type](short destination) { return IsBitSet(type.flags->load(kRelaxed), destination); };
    if (goesTo(ZR_DEST_CONSOLE)) {
        std::printf("%s%s\n", type.prefix, static_cast<const char*>(text));
    }
    // A line for which there is no memory is lost for its destination only.
    if (goesTo(ZR_DEST_DEBUGGER)) {
        try {
            zr::WriteToDebugger(Joined(type.prefix, text, "\n"));
        } catch (const std::exception&) {
        }
    }
    if (goesTo(ZR_DEST_FILE)) {
        try {
            AppendToFile(Joined(type.prefix, text, "")); // the file ends the line itself
        } catch (const std::exception&) {
        }
    }
}

char ZRMessageHandler::AppendToFile(const HCString& text)
{
    HCFileSystem fileSystem;
    const HCString path = HFBuildFilename(HFTranslateName("home"), fileSystem.GetFileName(m_csFileName), "txt");
    constexpr int kModeCreate = 3;
    constexpr int kModeAppend = 5;
    HCTextIo file(path);
    HCFileStatus status;
    if (!file.Open(HCFileSystem::GetFileStatus(path, status) ? kModeAppend : kModeCreate)) {
        return 0;
    }
    file.WriteString(text);
    return file.Close() ? 1 : 0;
}

char ZRMessageHandler::Lock(const char* /*location*/) { return m_sync.lock(); }

char ZRMessageHandler::Unlock(const char* /*location*/) { return m_sync.unlock(); }

char ZRMessageHandler::GetEnabled() const { return m_bEnabled.load(kRelaxed); }

void ZRMessageHandler::SetEnabled(char enabled)
{
    if (m_bEnabled.exchange(enabled, kRelaxed) == enabled) {
        return;
    }
    const ZRModuleUse module;
    if (!module.Stands()) {
        return;
    }
    ZRObservedObjectEvent event(ZR_EVENT_MESSAGES_ENABLED);
    event.SetSource(this);
    event.SetState(enabled);
    event.Broadcast(this, 0);
}

void ZRMessageHandler::SetOutEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_OUT, enabled); }
void ZRMessageHandler::SetWarnEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_WARN, enabled); }
void ZRMessageHandler::SetErrorEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_ERROR, enabled); }
void ZRMessageHandler::SetTraceEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_TRACE, enabled); }
void ZRMessageHandler::SetAllEnabled(char enabled) { SetBits(m_nEnabled, kAllTypes, enabled); }

char ZRMessageHandler::IsTypeEnabled(short type) { return IsBitSet(m_nEnabled.load(kRelaxed), type) ? 1 : 0; }
char ZRMessageHandler::IsOutEnabled() { return IsTypeEnabled(ZR_MSG_OUT); }
char ZRMessageHandler::IsWarnEnabled() { return IsTypeEnabled(ZR_MSG_WARN); }
char ZRMessageHandler::IsErrorEnabled() { return IsTypeEnabled(ZR_MSG_ERROR); }
char ZRMessageHandler::IsTraceEnabled() { return IsTypeEnabled(ZR_MSG_TRACE); }

short ZRMessageHandler::GetOutFlags() { return m_nOutFlags.load(kRelaxed); }
short ZRMessageHandler::GetWarnFlags() { return m_nWarnFlags.load(kRelaxed); }
short ZRMessageHandler::GetErrorFlags() { return m_nErrorFlags.load(kRelaxed); }
short ZRMessageHandler::GetTraceFlags() { return m_nTraceFlags.load(kRelaxed); }

void ZRMessageHandler::SetOutFlags(short flags) { m_nOutFlags.store(flags, kRelaxed); }
void ZRMessageHandler::SetWarnFlags(short flags) { m_nWarnFlags.store(flags, kRelaxed); }
void ZRMessageHandler::SetErrorFlags(short flags) { m_nErrorFlags.store(flags, kRelaxed); }
void ZRMessageHandler::SetTraceFlags(short flags) { m_nTraceFlags.store(flags, kRelaxed); }

void ZRMessageHandler::SetAllFlags(short flags)
{
    SetOutFlags(flags);
    SetWarnFlags(flags);
    SetErrorFlags(flags);
    SetTraceFlags(flags);
}

void ZRMessageHandler::SetOutMsgView(char on) { SetBits(m_nOutFlags, ZR_DEST_MSGVIEW, on); }
void ZRMessageHandler::SetOutConsole(char on) { SetBits(m_nOutFlags, ZR_DEST_CONSOLE, on); }
void ZRMessageHandler::SetOutDebugger(char on) { SetBits(m_nOutFlags, ZR_DEST_DEBUGGER, on); }
void ZRMessageHandler::SetOutFile(char on) { SetBits(m_nOutFlags, ZR_DEST_FILE, on); }
void ZRMessageHandler::SetWarnMsgView(char on) { SetBits(m_nWarnFlags, ZR_DEST_MSGVIEW, on); }
void ZRMessageHandler::SetWarnConsole(char on) { SetBits(m_nWarnFlags, ZR_DEST_CONSOLE, on); }
void ZRMessageHandler::SetWarnDebugger(char on) { SetBits(m_nWarnFlags, ZR_DEST_DEBUGGER, on); }
void ZRMessageHandler::SetWarnFile(char on) { SetBits(m_nWarnFlags, ZR_DEST_FILE, on); }
void ZRMessageHandler::SetErrorMsgView(char on) { SetBits(m_nErrorFlags, ZR_DEST_MSGVIEW, on); }
void ZRMessageHandler::SetErrorConsole(char on) { SetBits(m_nErrorFlags, ZR_DEST_CONSOLE, on); }
void ZRMessageHandler::SetErrorDebugger(char on) { SetBits(m_nErrorFlags, ZR_DEST_DEBUGGER, on); }
void ZRMessageHandler::SetErrorFile(char on) { SetBits(m_nErrorFlags, ZR_DEST_FILE, on); }
void ZRMessageHandler::SetTraceMsgView(char on) { SetBits(m_nTraceFlags, ZR_DEST_MSGVIEW, on); }
void ZRMessageHandler::SetTraceConsole(char on) { SetBits(m_nTraceFlags, ZR_DEST_CONSOLE, on); }
void ZRMessageHandler::SetTraceDebugger(char on) { SetBits(m_nTraceFlags, ZR_DEST_DEBUGGER, on); }
void ZRMessageHandler::SetTraceFile(char on) { SetBits(m_nTraceFlags, ZR_DEST_FILE, on); }

char ZRMessageHandler::IsDestinationEnabled(short destination, short type)
{
    const MessageType* const row = FindType(type);
    return row != nullptr && IsBitSet(row->flags->load(kRelaxed), destination) ? 1 : 0;
}

char ZRMessageHandler::IsMsgViewEnabled(short type) { return IsDestinationEnabled(ZR_DEST_MSGVIEW, type); }
char ZRMessageHandler::IsConsoleEnabled(short type) { return IsDestinationEnabled(ZR_DEST_CONSOLE, type); }
char ZRMessageHandler::IsDebuggerEnabled(short type) { return IsDestinationEnabled(ZR_DEST_DEBUGGER, type); }
char ZRMessageHandler::IsFileEnabled(short type) { return IsDestinationEnabled(ZR_DEST_FILE, type); }

char ZRMessageHandler::GetFlagFromType(short type, short destination)
{
    return IsTypeEnabled(type) != 0 ? IsDestinationEnabled(destination, type) : char{0};
}
