/// ZRMessageHandler: delivers every message.
/// Folder messaging: messages, from the functions and macros that send them to console, debugger, log and observers.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/records/message_types.h"
#include "zrlib/sync/thread_sync.h"

#include <atomic>

class ZRMsg;

/// Sends each message to the console, the debugger's output, the log file and its observers, in that order.
///
/// Three kinds of switch, independent of each other:
/// - the master switch (SetEnabled): while it is 0, nothing is sent at all;
/// - a flag word for each message type, the sum of the ZR_DEST_ values to which messages of that type go;
/// - an enabled bit for each type, which stops nothing: it is kept for clients that ask (IsTypeEnabled,
///   GetFlagFromType).
///
/// Each line is the type's prefix and the text: "OUT - ", "WARNING - ", "ERROR - " or "TRACE - ". The console is not
/// flushed. The log is the file zr_messages.txt in the directory of the logical name "home" (hcbase/filename.h); it is
/// opened, written and closed for each message, grows without limit and is never truncated, and others may move or
/// delete it at any time. A message that cannot be written to the log is lost for the log only: when its folder is
/// missing, the disk is full, no home is known (reported on standard error once), or the log is a folder or a pipe
/// without a reader. A pipe that is read slowly delays every sender. Errors: std::bad_alloc when there is no memory for
/// a message; when there is none for a line, the debugger or the file loses it.
///
/// A text is written unchanged, line breaks and escape codes included, up to its first zero byte. errno is preserved.
///
/// Observers (ZRGetMessageHandler()->AttachObserver) receive every message that passes the master switch, as
/// ZR_EVENT_MESSAGE, whatever the flag words and the level are, and changes of the master switch, as
/// ZR_EVENT_MESSAGES_ENABLED.
///
/// The process has one handler (ZRGetMessageHandler), and all switches are process-wide.
/// Truth values: anything but 0 is true; results are 0 or 1 unless stated otherwise.
/// Threads: any, at any time. A lock is held while a message is delivered, to observers too, so messages do not mix and
/// all destinations see them in one order. A switch takes effect when it is next tested, which may be in the middle of
/// another thread's message. Observers attach and detach as at every subject (ZRObservedObject), without that lock. The
/// client serialises copying, assigning and destroying a handler of its own.
class ZR_API ZRMessageHandler : public ZRObservedObject {
public:
    ZRMessageHandler();

    /// Copies share one lock and have the same observers.
    ZRMessageHandler(const ZRMessageHandler& other);
    ZRMessageHandler& operator=(const ZRMessageHandler& other);
    ~ZRMessageHandler() override;

    // Each builds a message and sends it. text: for all destinations; textEx: carried, not printed. location: where the
    // message is raised; may be null. level, code, chainToPrevious: carried unchecked.
    void Out(const HCString& text, const char* location, short level);
    void Warn(const HCString& text, const char* location, short level);
    void Error(const HCString& text, const char* location, int code, char chainToPrevious, short level);
    void Trace(const HCString& text, const char* location, short level);
    void OutEx(const HCString& text, const HCString& textEx, const char* location, short level);
    void WarnEx(const HCString& text, const HCString& textEx, const char* location, short level);
    void ErrorEx(const HCString& text, const HCString& textEx, const char* location, int code, char chainToPrevious,
        short level);
    void TraceEx(const HCString& text, const HCString& textEx, const char* location, short level);

    /// Sends a message that the caller has built, and writes the calling thread's ID into it. A no-op while messages
    /// are off. A message of an unknown type goes to the observers only.
    void BroadcastMessage(ZRMsg& message);

    /// The master switch, as it was set. Observers are notified of a change, on the thread that makes it and without
    /// the lock.
    [[nodiscard]] char GetEnabled() const;
    void SetEnabled(char enabled);

    /// The same without a handler.
    [[nodiscard]] static char GetSwitch() noexcept { return m_bEnabled.load(std::memory_order_relaxed); }

    /// Whether the master switch is on.
    [[nodiscard]] static bool AreMessagesOn() noexcept { return GetSwitch() != 0; }

    /// Whether a message of a type, sent by the handler of the process, would reach a line of text or an observer.
    [[nodiscard]] static bool IsWanted(short type) noexcept;

    /// The same without a call, for a type known at compile time.
    template <short type> [[nodiscard]] static bool IsWanted() noexcept;

    // The enabled bits.
    static void SetOutEnabled(char enabled);
    static void SetWarnEnabled(char enabled);
    static void SetErrorEnabled(char enabled);
    static void SetTraceEnabled(char enabled);
    static void SetAllEnabled(char enabled);
    [[nodiscard]] static char IsOutEnabled();
    [[nodiscard]] static char IsWarnEnabled();
    [[nodiscard]] static char IsErrorEnabled();
    [[nodiscard]] static char IsTraceEnabled();

    /// 1 when `type` is a single bit and that bit is set.
    [[nodiscard]] static char IsTypeEnabled(short type);

    // The flag words.
    [[nodiscard]] static short GetOutFlags();
    [[nodiscard]] static short GetWarnFlags();
    [[nodiscard]] static short GetErrorFlags();
    [[nodiscard]] static short GetTraceFlags();
    static void SetOutFlags(short flags);
    static void SetWarnFlags(short flags);
    static void SetErrorFlags(short flags);
    static void SetTraceFlags(short flags);
    static void SetAllFlags(short flags);

    // One bit of one flag word.
    static void SetOutMsgView(char on);
    static void SetOutConsole(char on);
    static void SetOutDebugger(char on);
    static void SetOutFile(char on);
    static void SetWarnMsgView(char on);
    static void SetWarnConsole(char on);
    static void SetWarnDebugger(char on);
    static void SetWarnFile(char on);
    static void SetErrorMsgView(char on);
    static void SetErrorConsole(char on);
    static void SetErrorDebugger(char on);
    static void SetErrorFile(char on);
    static void SetTraceMsgView(char on);
    static void SetTraceConsole(char on);
    static void SetTraceDebugger(char on);
    static void SetTraceFile(char on);

    /// 1 when `destination` is a single bit that is set in the flag word of `type`; 0 for an unknown type.
    [[nodiscard]] static char IsDestinationEnabled(short destination, short type);
    [[nodiscard]] static char IsMsgViewEnabled(short type);
    [[nodiscard]] static char IsConsoleEnabled(short type);
    [[nodiscard]] static char IsDebuggerEnabled(short type);
    [[nodiscard]] static char IsFileEnabled(short type);

    /// As IsDestinationEnabled, but 0 while the enabled bit of `type` is clear. Mind the order of the arguments.
    [[nodiscard]] static char GetFlagFromType(short type, short destination);

protected:
    /// Take and release the handler's lock; `location` is not used. 1 on success.
    char Lock(const char* location);
    char Unlock(const char* location);

    /// Appends one line to the log. 1 when the file was opened and closed without failure, otherwise 0.
    char AppendToFile(const HCString& text);

    static std::atomic<char> m_bEnabled;
    static std::atomic<short> m_nEnabled;
    static std::atomic<short> m_nOutFlags;
    static std::atomic<short> m_nWarnFlags;
    static std::atomic<short> m_nErrorFlags;
    static std::atomic<short> m_nTraceFlags;
    static const HCString m_csFileName; // base name of the log

private:
    friend class ZRMessageRoute;

    struct MessageType;

    /// The destinations to which a line of text goes.
    static constexpr short kLineDestinations = ZR_DEST_CONSOLE | ZR_DEST_DEBUGGER | ZR_DEST_FILE;

    ZR_NOT_SHARED static const MessageType* FindType(short type);
    ZR_NOT_SHARED static bool HasLine(short type);
    ZR_NOT_SHARED static bool IsObserved(const ZRMessageHandler* handler);
    template <typename Then> void Pass(const HCString& text, short type, Then then);
    ZR_NOT_SHARED void Deliver(const HCString& text, const MessageType& type);

    static std::atomic<const ZRMessageHandler*> m_ofProcess; // null until IsWanted has asked for it

    ZRThreadSync m_sync; // locked as an HCThreadSync, so that no switch affects it
};

template <short type> bool ZRMessageHandler::IsWanted() noexcept
{
    static_assert(type == ZR_MSG_OUT || type == ZR_MSG_WARN || type == ZR_MSG_ERROR || type == ZR_MSG_TRACE);
    if (!AreMessagesOn()) {
        return false;
    }
    const std::atomic<short>& flags = type == ZR_MSG_OUT ? m_nOutFlags
        : type == ZR_MSG_WARN                            ? m_nWarnFlags
        : type == ZR_MSG_ERROR                           ? m_nErrorFlags
                                                         : m_nTraceFlags;
    if ((flags.load(std::memory_order_relaxed) & kLineDestinations) != 0) {
        return true;
    }
    const ZRMessageHandler* const handler = m_ofProcess.load(std::memory_order_acquire);
    return handler != nullptr ? handler->GetObserverCount() > 0 : IsWanted(type);
}
