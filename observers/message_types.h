/// How messages are shown. Not exported.
#pragma once

#include "hcbase/string.h"
#include "zrlib/records/message_types.h"

#include <string_view>

namespace zrobservers {

/// "OUT", "WARNING", "ERROR" or "TRACE"; empty for any other type.
inline const char* NameOfType(short type)
{
    return type == ZR_MSG_OUT  ? "OUT"
        : type == ZR_MSG_WARN  ? "WARNING"
        : type == ZR_MSG_ERROR ? "ERROR"
        : type == ZR_MSG_TRACE ? "TRACE"
                               : "";
}

/// A text as it is sent: up to its first zero byte.
inline std::string_view AsSent(const HCString& text) { return static_cast<const char*>(text); }

} // namespace zrobservers
