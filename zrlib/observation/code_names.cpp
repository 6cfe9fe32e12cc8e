#include "zrlib/observation/code_names.h"

#include "zrlib/frame/text_codes.h"
#include "zrlib/observation/event_codes.h"

#define ZR_ROW(code)                                                                                                   \
    {                                                                                                                  \
        code, #code                                                                                                    \
    }

namespace {

struct Row {
    std::int32_t code;
    const char* name;
};

constexpr Row kEvents[] = {
    ZR_ROW(ZR_EVENT_PROGRESS_START),
    ZR_ROW(ZR_EVENT_PROGRESS_RANGE),
    ZR_ROW(ZR_EVENT_PROGRESS_TEXT_VISIBLE),
    ZR_ROW(ZR_EVENT_PROGRESS_UPDATE),
    ZR_ROW(ZR_EVENT_PROGRESS_END),
    ZR_ROW(ZR_EVENT_THREADING_ENABLED),
    ZR_ROW(ZR_EVENT_MESSAGES_ENABLED),
    ZR_ROW(ZR_EVENT_MESSAGE),
    ZR_ROW(ZR_EVENT_LOCK_TRAIL),
    ZR_ROW(ZR_EVENT_PROFILER_ENABLED),
    ZR_ROW(ZR_EVENT_PROFILER_STATE),
};

constexpr Row kErrors[] = {
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_ASSIGNMENT),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_NOT_OPEN),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_FIELD_OUT_OF_RANGE),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_ALREADY_MAPPED),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_CREATE_MUTEX),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_MAP_VIEW),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_CREATE_MAPPING),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_NOT_MAPPED),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_WRITE),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_READ),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_LOCK_FIELD),
    ZR_ROW(ZR_ERROR_SHARED_MEMORY_UNLOCK_FIELD),
    ZR_ROW(ZR_ERROR_MATH_LOG_OF_ZERO),
    ZR_ROW(ZR_ERROR_MATH_LOG_OF_NEGATIVE),
    ZR_ROW(ZR_ERROR_MATH_EXPONENT_TOO_GREAT),
    ZR_ROW(ZR_ERROR_MATH_ZERO_TO_POWER_ZERO),
    ZR_ROW(ZR_ERROR_MATH_ZERO_TO_NEGATIVE_POWER),
    ZR_ROW(ZR_ERROR_MATH_NEGATIVE_TO_NON_INTEGER_POWER),
    ZR_ROW(ZR_ERROR_MATH_OVERFLOW),
    ZR_ROW(ZR_ERROR_MATH_ROOT_OF_NEGATIVE),
    ZR_ROW(ZR_ERROR_MATH_DIVIDE_BY_ZERO),
    ZR_ROW(ZR_ERROR_MATH_TAN_90_RADIANS),
    ZR_ROW(ZR_ERROR_MATH_TAN_90),
    ZR_ROW(ZR_ERROR_MATH_TAN_270_RADIANS),
    ZR_ROW(ZR_ERROR_MATH_TAN_270),
    ZR_ROW(ZR_ERROR_REGISTRY_ZERO_NIBBLE),
    ZR_ROW(ZR_ERROR_REGISTRY_HIGH_WORD),
    ZR_ROW(ZR_ERROR_REGISTRY_LIBRARY_EXISTS),
    ZR_ROW(ZR_ERROR_REGISTRY_LIBRARY_NOT_REGISTERED),
    ZR_ROW(ZR_ERROR_REGISTRY_LIBRARY_CODE),
    ZR_ROW(ZR_ERROR_REGISTRY_LIBRARY_NOT_FOUND),
    ZR_ROW(ZR_ERROR_REGISTRY_OBJECT_EXISTS),
    ZR_ROW(ZR_ERROR_REGISTRY_OBJECT_CODE),
    ZR_ROW(ZR_ERROR_REGISTRY_OBJECT_NOT_FOUND),
    ZR_ROW(ZR_ERROR_REGISTRY_CLASS_ID_FORMAT),
    ZR_ROW(ZR_ERROR_REGISTRY_CLASS_ID_IN_USE),
};

template <std::size_t count> const char* NameIn(const Row (&rows)[count], std::int32_t code)
{
    for (const Row& row : rows) {
        if (row.code == code) {
            return row.name;
        }
    }
    return "unknown";
}

} // namespace

const char* ZREventName(std::int32_t code) { return NameIn(kEvents, code); }

const char* ZRErrorName(std::int32_t code) { return NameIn(kErrors, code); }
