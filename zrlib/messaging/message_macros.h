/// Messages in one line.
#pragma once

#include "zrlib/frame/function_name.h"
#include "zrlib/messaging/message_functions.h"

#include <type_traits>

// ZR_OUT("read %d files", count);
//
// Each is a statement that formats a text as printf does and sends it as the function of its type does
// (message_functions.h). The location is the name of the enclosing function ("Map::Check"), and the level is 1;
// ZR_OUT_AT and its kin take a level first, ZR_LEVEL_FIRST to ZR_LEVEL_LAST.
//
// The format is a literal, so that no text from outside can be used as one, and the compiler checks the arguments
// against it (-Wformat, which -Wall includes). The arguments are numbers and pointers; pass a text as const char*.
// While nobody can receive the message they are not evaluated, whatever they would cost: the call then costs a load and
// a branch if the master switch is off, and four of each if it is on. ZR_ERROR and ZR_ERROR_SET always evaluate and
// format, because the error is recorded.
//
// Threads: any. Errors: those of HCString::Format and of the function.

#define ZR_OUT(...) ZR_OUT_AT(1, __VA_ARGS__)
#define ZR_WARN(...) ZR_WARN_AT(1, __VA_ARGS__)
#define ZR_ERROR(...) ZR_ERROR_AT(1, __VA_ARGS__)
#define ZR_TRACE(...) ZR_TRACE_AT(1, __VA_ARGS__)

#define ZR_OUT_AT(level, ...) ZR_SEND_IF_WANTED_(ZR_MSG_OUT, ZROut, level, __VA_ARGS__)
#define ZR_WARN_AT(level, ...) ZR_SEND_IF_WANTED_(ZR_MSG_WARN, ZRWarn, level, __VA_ARGS__)
#define ZR_ERROR_AT(level, ...) ZR_SEND_(ZRError, level, __VA_ARGS__)
#define ZR_TRACE_AT(level, ...) ZR_SEND_IF_WANTED_(ZR_MSG_TRACE, ZRTrace, level, __VA_ARGS__)

/// ZR_ERROR_SET(code, "no such object: %d", number); the first argument is the code of the error (ZRErrorSet).
#define ZR_ERROR_SET(code, ...) ZR_ERROR_SET_AT(1, code, __VA_ARGS__)
#define ZR_ERROR_SET_AT(level, code, ...)                                                                              \
    ZR_FORMAT_AND_(ZRErrorSet(code, zrText_, zrPlace_.Text(), 0, static_cast<short>(level)), __VA_ARGS__)

// Not for clients.

namespace zr {

/// Accepts a literal. Whatever else an empty literal can precede, such as "a" + 1, is no array.
template <std::size_t size> constexpr bool IsLiteral(const char (&/*literal*/)[size]) { return true; }

/// Accepts what may follow a format. Takes values, not references, so that arrays are pointers and constants need no
/// address.
template <typename... Arguments> constexpr void AcceptArguments(Arguments... /*arguments*/)
{
    static_assert((std::is_scalar_v<Arguments> && ...), "give texts as const char*");
}

} // namespace zr

#define ZR_FIRST_(first, ...) first

#define ZR_FORMAT_AND_(send, ...)                                                                                      \
    do {                                                                                                               \
        static_assert(::zr::IsLiteral("" ZR_FIRST_(__VA_ARGS__, 0)), "the format is a literal");                       \
        if (false) { /* decltype would take no lambda */                                                               \
            ::zr::AcceptArguments(__VA_ARGS__);                                                                        \
        }                                                                                                              \
        constexpr auto zrPlace_ = ZR_FUNCTION_NAME();                                                                  \
        HCString zrText_;                                                                                              \
        zrText_.Format(__VA_ARGS__);                                                                                   \
        send;                                                                                                          \
    } while (false)

#define ZR_SEND_(send, level, ...)                                                                                     \
    ZR_FORMAT_AND_(send(zrText_, zrPlace_.Text(), static_cast<short>(level)), __VA_ARGS__)

#define ZR_SEND_IF_WANTED_(type, send, level, ...)                                                                     \
    do {                                                                                                               \
        if (ZRMessageHandler::IsWanted<type>()) {                                                                      \
            ZR_SEND_(send, level, __VA_ARGS__);                                                                        \
        }                                                                                                              \
    } while (false)
