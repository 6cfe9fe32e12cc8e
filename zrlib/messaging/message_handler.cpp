#include "zrlib/messaging/message_handler.h"

#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "hcbase/text_io.h"
#include "hcbase/thread.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/frame/sync_guard.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/messaging/message_route.h"
#include "zrlib/numerics/bit_mask.h"
#include "zrlib/observation/handler_switch.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/platform/debugger_output.h"
#include "zrlib/records/msg.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <exception>
#include <string_view>

using zr::kRelaxed;

namespace {

constexpr short kAllTypes = ZR_MSG_OUT | ZR_MSG_WARN | ZR_MSG_ERROR | ZR_MSG_TRACE;

/// Copies, which takes a tenth of the time of formatting. The text ends at its first zero byte, as on the console.
HCString Joined(const char* prefix, const char* text, const char* ending)
{
    HCString joined;
    const std::string_view pieces[] = {prefix, text, ending};
    std::size_t size = 0;
    for (const std::string_view piece : pieces) {
        size += piece.size();
    }
    const auto length = static_cast<int>(std::min<std::size_t>(size, INT_MAX)); // INT_MAX: refused
    char* end = joined.GetBuffer(length);
    for (const std::string_view piece : pieces) {
        end = std::copy(piece.begin(), piece.end(), end);
    }
    joined.ReleaseBuffer(length);
    return joined;
}

/// Another process may move or create the file between the two attempts of a turn.
bool OpenLog(HCTextIo& file)
{
    constexpr int kModeCreate = 3;
    constexpr int kModeAppend = 5;
    constexpr int kTurns = 3;
    for (int turn = 0; turn < kTurns; ++turn) {
        if (file.Open(kModeAppend) || file.Open(kModeCreate)) {
            return true;
        }
    }
    return false;
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
constinit std::atomic<const ZRMessageHandler*> ZRMessageHandler::m_ofProcess{nullptr};

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

void ZRMessageRoute::Send(
    ZRMessageHandler* handler, short type, const HCString& text, const HCString* textEx, const MessageFields& fields)
{
    if (!ZRMessageHandler::AreMessagesOn() || handler == nullptr) {
        return; // before anything is copied, counted or locked: unwanted messages cost next to nothing
    }
    const bool isObserved = ZRMessageHandler::IsObserved(handler);
    if (!isObserved && !ZRMessageHandler::HasLine(type)) {
        return;
    }
    const zr::ModuleLease lease;
    if (!lease.IsAlive()) {
        return;
    }
    if (!isObserved) {
        handler->Pass(text, type, [] {});
        return;
    }
    ZRObservedObjectEvent event(handler, text, type, fields.location, fields.level);
    ZRMsg& message = event.m_Msg;
    if (textEx != nullptr) {
        message.m_csTextEx = *textEx;
    }
    message.m_nCode = fields.code;
    message.m_bChainToPrevious = fields.chainToPrevious;
    message.m_nThreadID = HCThread::GetCurrentThreadId();
    handler->Pass(text, type, [&] { event.BroadcastFrom(lease.GetSeat(), handler); });
}

void ZRMessageHandler::BroadcastMessage(ZRMsg& message)
{
    if (!AreMessagesOn()) {
        return;
    }
    const zr::ModuleLease lease;
    if (!lease.IsAlive()) {
        return;
    }
    const unsigned int thread = HCThread::GetCurrentThreadId();
    if (!IsObserved(this)) {
        Pass(message.m_csText, message.m_nType, [&] { message.m_nThreadID = thread; });
        return;
    }
    ZRObservedObjectEvent event(this, message);
    event.m_Msg.m_nThreadID = thread;
    Pass(message.m_csText, message.m_nType, [&] {
        message.m_nThreadID = thread;
        event.BroadcastFrom(lease.GetSeat(), this);
    });
}

bool ZRMessageHandler::IsWanted(short type) noexcept
{
    if (!AreMessagesOn()) {
        return false;
    }
    // The handler is in static storage, so its observers can be counted at any time.
    const ZRMessageHandler* const handler = ZRGetMessageHandler();
    if (m_ofProcess.load(kRelaxed) == nullptr) {
        m_ofProcess.store(handler, std::memory_order_release);
    }
    return HasLine(type) || handler->GetObserverCount() > 0;
}

/// Whether anybody may see an event: an observer, or AdjustEvent of a class that a client derived. Static, because the
/// handler of the process may be destroyed; it is in static storage, where counting its observers is harmless then.
bool ZRMessageHandler::IsObserved(const ZRMessageHandler* handler)
{
    return handler->GetObserverCount() > 0 || handler != ZRGetMessageHandler();
}

/// Whether messages of a type go to a line of text.
bool ZRMessageHandler::HasLine(short type)
{
    const MessageType* const row = FindType(type);
    return row != nullptr && (row->flags->load(kRelaxed) & kLineDestinations) != 0;
}

/// Delivers one message at a time: writes the lines, then calls `then`.
template <typename Then> void ZRMessageHandler::Pass(const HCString& text, short type, Then then)
{
    const ZRSyncGuard guard(m_sync);
    if (!AreMessagesOn()) {
        return; // switched off while this thread waited for its turn
    }
    if (HasLine(type)) {
        Deliver(text, *FindType(type));
    }
    then();
}

void ZRMessageHandler::Deliver(const HCString& text, const MessageType& type)
{
    const int callersErrno = errno; // a caller that reports an error may read it afterwards
    const auto goesTo = [&type](short destination) { return (type.flags->load(kRelaxed) & destination) != 0; };
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
    errno = callersErrno;
}

char ZRMessageHandler::AppendToFile(const HCString& text)
{
    const HCString home = HFTranslateName("home");
    if (home.GetLength() == 0) {
        return 0; // rather than into whatever folder is the current one
    }
    HCFileSystem fileSystem;
    HCTextIo file(HFBuildFilename(home, fileSystem.GetFileName(m_csFileName), "txt"));
    if (!OpenLog(file)) {
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
    zr::StoreSwitch(*this, m_bEnabled, enabled, ZR_EVENT_MESSAGES_ENABLED);
}

void ZRMessageHandler::SetOutEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_OUT, enabled); }
void ZRMessageHandler::SetWarnEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_WARN, enabled); }
void ZRMessageHandler::SetErrorEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_ERROR, enabled); }
void ZRMessageHandler::SetTraceEnabled(char enabled) { SetBits(m_nEnabled, ZR_MSG_TRACE, enabled); }
void ZRMessageHandler::SetAllEnabled(char enabled) { SetBits(m_nEnabled, kAllTypes, enabled); }

char ZRMessageHandler::IsTypeEnabled(short type)
{
    return ZRShortMask::IsBitWeightSet(m_nEnabled.load(kRelaxed), type);
}

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
    return row != nullptr ? ZRShortMask::IsBitWeightSet(row->flags->load(kRelaxed), destination) : char{0};
}

char ZRMessageHandler::IsMsgViewEnabled(short type) { return IsDestinationEnabled(ZR_DEST_MSGVIEW, type); }
char ZRMessageHandler::IsConsoleEnabled(short type) { return IsDestinationEnabled(ZR_DEST_CONSOLE, type); }
char ZRMessageHandler::IsDebuggerEnabled(short type) { return IsDestinationEnabled(ZR_DEST_DEBUGGER, type); }
char ZRMessageHandler::IsFileEnabled(short type) { return IsDestinationEnabled(ZR_DEST_FILE, type); }

char ZRMessageHandler::GetFlagFromType(short type, short destination)
{
    return IsTypeEnabled(type) != 0 ? IsDestinationEnabled(destination, type) : char{0};
}
