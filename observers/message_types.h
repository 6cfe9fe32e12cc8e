/// Names of message types.
#pragma once

#include "zrlib/records/message_types.h"

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

} // namespace zrobservers
