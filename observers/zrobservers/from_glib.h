/// ZRFromGlib: turns what is logged with GLib into messages. For clients that have GLib; not part of zrobservers.h, and
/// not in the library.
#pragma once

#include "zrlib/zrlib.h"

#include <atomic>
#include <cstring>
#include <glib.h>

/// Turns GLib's log messages into messages of the process while one or more objects exist: "error" and "critical"
/// become Error, "warning" Warn, "message" and "info" Out, "debug" Trace. The function, or else the domain, is the
/// place. While there is no object, they go where GLib sends them by itself.
///
/// GLib takes one writer for the whole life of a process, and ends the process at a second one. So the first object
/// installs one that stays, and this header is for a program that sets none itself, or for a library that is not
/// unloaded. What an observer logs with g_log_structured while it handles such a message is left to GLib; with g_log
/// (g_message and its kin) GLib ends the process, as always when its logging recurses. So does an "error", afterwards.
///
/// Threads: any.
class [[nodiscard]] ZRFromGlib {
public:
    ZRFromGlib()
    {
        ++s_objects;
        static const bool isSet = [] {
            g_log_set_writer_func(Write, nullptr, nullptr);
            return true;
        }();
        static_cast<void>(isSet);
    }
    ~ZRFromGlib() { --s_objects; }
    ZRFromGlib(const ZRFromGlib&) = delete;
    ZRFromGlib& operator=(const ZRFromGlib&) = delete;

private:
    static GLogWriterOutput Write(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer data)
    {
        if (s_objects == 0 || s_isInside) {
            return g_log_writer_default(level, fields, count, data);
        }
        struct Inside {
            Inside() { s_isInside = true; }
            ~Inside() { s_isInside = false; }
        };
        const Inside inside;
        const HCString text = Find(fields, count, "MESSAGE");
        const HCString function = Find(fields, count, "CODE_FUNC");
        const HCString place = function.GetLength() != 0 ? function : Find(fields, count, "GLIB_DOMAIN");
        if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) != 0) {
            ZRError(text, place, 1);
        } else if ((level & G_LOG_LEVEL_WARNING) != 0) {
            ZRWarn(text, place, 1);
        } else if ((level & (G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO)) != 0) {
            ZROut(text, place, 1);
        } else {
            ZRTrace(text, place, 1);
        }
        return G_LOG_WRITER_HANDLED;
    }

    static HCString Find(const GLogField* fields, gsize count, const char* key)
    {
        for (gsize index = 0; index < count; ++index) {
            const GLogField& field = fields[index];
            if (std::strcmp(field.key, key) == 0) {
                const auto* const text = static_cast<const char*>(field.value);
                return HCString(field.length < 0 ? std::string_view(text)
                                                 : std::string_view(text, static_cast<std::size_t>(field.length)));
            }
        }
        return HCString();
    }

    static inline std::atomic<int> s_objects{0};
    static inline thread_local bool s_isInside = false;
};
