/// The names of codes, for logs and debuggers.
#pragma once

#include "zrlib/export.h"

#include <cstdint>

/// The name of an event code (event_codes.h), such as "ZR_EVENT_PROGRESS_UPDATE"; "unknown" for any other. Valid while
/// the library is loaded. Threads: any.
[[nodiscard]] ZR_API const char* ZREventName(std::int32_t code);

/// The name of an error code (text_codes.h), such as "ZR_ERROR_MATH_DIVIDE_BY_ZERO"; "unknown" for any other. Valid
/// while the library is loaded. Threads: any.
[[nodiscard]] ZR_API const char* ZRErrorName(std::int32_t code);
