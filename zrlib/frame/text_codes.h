/// Numbers of the library's fixed texts and its error codes.
///
/// The texts are in one table that is registered with the foundation: HFTextGet(HFTextFind("ZRLib"), code, &text)
/// returns the text of each number and error code while this library is loaded. A linker that drops libraries of which
/// only constants are used (--as-needed) leaves it out.
#pragma once

#include <cstdint>

// Text numbers: general.
inline constexpr std::int32_t ZR_TEXT_UNTITLED = 0;
inline constexpr std::int32_t ZR_TEXT_UNKNOWN = 1;
inline constexpr std::int32_t ZR_TEXT_UNDEFINED = 2;
inline constexpr std::int32_t ZR_TEXT_GENERIC = 3;
inline constexpr std::int32_t ZR_TEXT_UNKNOWN_FORMAT_CODE = 4;

// Text numbers: names of operating systems.
inline constexpr std::int32_t ZR_TEXT_OPSYS_RSX = 100;
inline constexpr std::int32_t ZR_TEXT_OPSYS_VAX = 101;
inline constexpr std::int32_t ZR_TEXT_OPSYS_DOS = 102;
inline constexpr std::int32_t ZR_TEXT_OPSYS_MASSCOMP = 103;
inline constexpr std::int32_t ZR_TEXT_OPSYS_APOLLO = 104;
inline constexpr std::int32_t ZR_TEXT_OPSYS_HP400 = 105;
inline constexpr std::int32_t ZR_TEXT_OPSYS_SUN = 106;
inline constexpr std::int32_t ZR_TEXT_OPSYS_SGI = 107;
inline constexpr std::int32_t ZR_TEXT_OPSYS_IBM6000 = 108;
inline constexpr std::int32_t ZR_TEXT_OPSYS_DECSTATION = 109;
inline constexpr std::int32_t ZR_TEXT_OPSYS_HP700 = 110;
inline constexpr std::int32_t ZR_TEXT_OPSYS_GENERIC_UNIX = 111;
inline constexpr std::int32_t ZR_TEXT_OPSYS_WINDOWS = 112;
inline constexpr std::int32_t ZR_TEXT_OPSYS_UNIDENTIFIED = 113;

// Text numbers: names of platforms.
inline constexpr std::int32_t ZR_TEXT_PLATFORM_WINDOWS = 200;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_UNIX = 201;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_DEC_ALPHA = 202;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_IBM6000 = 203;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_SGI = 204;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_HP700 = 205;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_SUN = 206;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_SGI64 = 207;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_LINUX = 208;
inline constexpr std::int32_t ZR_TEXT_PLATFORM_UNIDENTIFIED = 209;

// Text numbers: mathematics. Number 300 + k belongs to error -65736 - k.
inline constexpr std::int32_t ZR_TEXT_MATH_LOG_OF_ZERO = 300;
inline constexpr std::int32_t ZR_TEXT_MATH_LOG_OF_NEGATIVE = 301;
inline constexpr std::int32_t ZR_TEXT_MATH_EXPONENT_TOO_GREAT = 302;
inline constexpr std::int32_t ZR_TEXT_MATH_ZERO_TO_POWER_ZERO = 303;
inline constexpr std::int32_t ZR_TEXT_MATH_ZERO_TO_NEGATIVE_POWER = 304;
inline constexpr std::int32_t ZR_TEXT_MATH_NEGATIVE_TO_NON_INTEGER_POWER = 305;
inline constexpr std::int32_t ZR_TEXT_MATH_OVERFLOW = 306;
inline constexpr std::int32_t ZR_TEXT_MATH_ROOT_OF_NEGATIVE = 307;
inline constexpr std::int32_t ZR_TEXT_MATH_DIVIDE_BY_ZERO = 308;
inline constexpr std::int32_t ZR_TEXT_MATH_TAN_90_RADIANS = 309;
inline constexpr std::int32_t ZR_TEXT_MATH_TAN_90 = 310;
inline constexpr std::int32_t ZR_TEXT_MATH_TAN_270_RADIANS = 311;
inline constexpr std::int32_t ZR_TEXT_MATH_TAN_270 = 312;

// Error codes: shared memory. For clients; this library raises none of them.
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_ASSIGNMENT = -65636;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_NOT_OPEN = -65637;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_FIELD_OUT_OF_RANGE = -65638;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_ALREADY_MAPPED = -65639;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_CREATE_MUTEX = -65640;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_MAP_VIEW = -65641;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_CREATE_MAPPING = -65642;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_NOT_MAPPED = -65643;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_WRITE = -65644;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_READ = -65645;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_LOCK_FIELD = -65646;
inline constexpr std::int32_t ZR_ERROR_SHARED_MEMORY_UNLOCK_FIELD = -65647;

// Error codes: mathematics.
inline constexpr std::int32_t ZR_ERROR_MATH_LOG_OF_ZERO = -65736;
inline constexpr std::int32_t ZR_ERROR_MATH_LOG_OF_NEGATIVE = -65737;
inline constexpr std::int32_t ZR_ERROR_MATH_EXPONENT_TOO_GREAT = -65738;
inline constexpr std::int32_t ZR_ERROR_MATH_ZERO_TO_POWER_ZERO = -65739;
inline constexpr std::int32_t ZR_ERROR_MATH_ZERO_TO_NEGATIVE_POWER = -65740;
inline constexpr std::int32_t ZR_ERROR_MATH_NEGATIVE_TO_NON_INTEGER_POWER = -65741;
inline constexpr std::int32_t ZR_ERROR_MATH_OVERFLOW = -65742;
inline constexpr std::int32_t ZR_ERROR_MATH_ROOT_OF_NEGATIVE = -65743;
inline constexpr std::int32_t ZR_ERROR_MATH_DIVIDE_BY_ZERO = -65744;
inline constexpr std::int32_t ZR_ERROR_MATH_TAN_90_RADIANS = -65745;
inline constexpr std::int32_t ZR_ERROR_MATH_TAN_90 = -65746;
inline constexpr std::int32_t ZR_ERROR_MATH_TAN_270_RADIANS = -65747;
inline constexpr std::int32_t ZR_ERROR_MATH_TAN_270 = -65748;

// Error codes: object registry.
inline constexpr std::int32_t ZR_ERROR_REGISTRY_ZERO_NIBBLE = -65836;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_HIGH_WORD = -65837;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_LIBRARY_EXISTS = -65838;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_LIBRARY_NOT_REGISTERED = -65839;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_LIBRARY_CODE = -65840;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_LIBRARY_NOT_FOUND = -65841;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_OBJECT_EXISTS = -65842;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_OBJECT_CODE = -65843;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_OBJECT_NOT_FOUND = -65844;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_CLASS_ID_FORMAT = -65845;
inline constexpr std::int32_t ZR_ERROR_REGISTRY_CLASS_ID_IN_USE = -65846;
