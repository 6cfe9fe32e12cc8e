/// The functions that send messages and control where they go.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/messaging/message_handler.h"

/// The message handler of the process. The library owns it and destroys it when it is unloaded or the process ends; the
/// functions below allow for that. Never null once the library is loaded.
[[nodiscard]] ZR_API ZRMessageHandler* ZRGetMessageHandler();

extern "C" {

// Sending. While messages are on, each function sends `text` to console, debugger and log file, each if its bit is set
// in the flag word of the type, and then to the handler's observers. The text is never used as a format. Once the
// library's own objects are destroyed, at the end of the process, the functions are no-ops.
//
// level: 1 to 7; any other value makes the call a no-op. Carried in the message, without other effect.
// location: where the message is raised, usually "Class::Function"; may be null. Carried, not printed.
// textEx: a second text, carried and not printed.
//
// Threads: any. The call runs on the caller's thread and returns when every destination has had the message, so a slow
// one delays every sender; observers are called with the handler locked. Ownership: nothing is kept; the texts may be
// destroyed when the call returns. Errors: a destination that fails loses the message for itself only; throws
// std::bad_alloc when there is no memory for the message, and whatever an observer throws.

ZR_API void ZROut(const HCString& text, const char* location, short level);
ZR_API void ZRWarn(const HCString& text, const char* location, short level);
ZR_API void ZRTrace(const HCString& text, const char* location, short level);
ZR_API void ZROutEx(const HCString& text, const HCString& textEx, const char* location, short level);
ZR_API void ZRWarnEx(const HCString& text, const HCString& textEx, const char* location, short level);
ZR_API void ZRTraceEx(const HCString& text, const HCString& textEx, const char* location, short level);

// The error functions also record the error as the calling thread's last one (HFErrorGet), with code 1, the first text
// and the location "ZRError": after the message, and whether or not it was delivered.

ZR_API void ZRError(const HCString& text, const char* location, short level);
ZR_API void ZRErrorEx(const HCString& text, const HCString& textEx, const char* location, short level);

/// Sends an error with a code (text_codes.h) and records it as the calling thread's last error with exactly this code,
/// text, location and chain flag. chainToPrevious: not 0 when the error belongs to the one before it. level: carried
/// unchecked. Null texts count as empty. Returns 0.
ZR_API int ZRErrorSet(int code, const char* text, const char* location, char chainToPrevious, short level);

// The flag words: for each type, the sum of the ZR_DEST_ values to which its messages go. All are 0 unless the
// preferences say otherwise.

ZR_API void ZRSetOutFlags(short flags);
ZR_API void ZRSetWarnFlags(short flags);
ZR_API void ZRSetErrorFlags(short flags);
ZR_API void ZRSetTraceFlags(short flags);
ZR_API void ZRSetAllFlags(short flags);
[[nodiscard]] ZR_API short ZRGetOutFlags();
[[nodiscard]] ZR_API short ZRGetWarnFlags();
[[nodiscard]] ZR_API short ZRGetErrorFlags();
[[nodiscard]] ZR_API short ZRGetTraceFlags();

// The enabled bits. They stop no message; they are kept for clients that ask.

ZR_API void ZRSetOutEnabled(char enabled);
ZR_API void ZRSetWarnEnabled(char enabled);
ZR_API void ZRSetErrorEnabled(char enabled);
ZR_API void ZRSetTraceEnabled(char enabled);
ZR_API void ZRSetAllEnabled(char enabled);
[[nodiscard]] ZR_API char ZRIsOutEnabled();
[[nodiscard]] ZR_API char ZRIsWarnEnabled();
[[nodiscard]] ZR_API char ZRIsErrorEnabled();
[[nodiscard]] ZR_API char ZRIsTraceEnabled();

/// The master switch: while it is 0, no message is sent anywhere.
ZR_API void ZRSetMessagesEnabled(char enabled);
[[nodiscard]] ZR_API char ZRGetMessagesEnabled();
}

// The same for texts that are not strings yet. While messages are off they cost next to nothing: no string is built.

inline void ZROut(const char* text, const char* location, short level)
{
    if (ZRMessageHandler::AreMessagesOn()) {
        ZROut(HCString(text), location, level);
    }
}

inline void ZRWarn(const char* text, const char* location, short level)
{
    if (ZRMessageHandler::AreMessagesOn()) {
        ZRWarn(HCString(text), location, level);
    }
}

inline void ZRTrace(const char* text, const char* location, short level)
{
    if (ZRMessageHandler::AreMessagesOn()) {
        ZRTrace(HCString(text), location, level);
    }
}
