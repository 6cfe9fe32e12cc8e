/// Internal: the reports of a registry that refuses something.
#pragma once

#include "zrlib/frame/text_codes.h"

namespace zr {

/// What a report may show: an object or library code, a class ID, and the name of the conflicting object or library.
struct Details {
    int number = 0;
    const char* classID = "";
    const char* holder = "";
};

enum class Shows { kNumberAndHolder, kClassIDAndHolder, kClassIDAndNumber };

/// The error code and the message of one kind of refusal.
struct Refusal {
    int error;
    const char* format;
    Shows shows = Shows::kNumberAndHolder; // the format may omit the last
};

// clang-format off
inline constexpr Refusal kHighWordIsWrong{ZR_ERROR_REGISTRY_HIGH_WORD, "Invalid high word in object code 0x%08X"};
inline constexpr Refusal kNibbleIsZero{ZR_ERROR_REGISTRY_ZERO_NIBBLE, "Invalid library nibble in object code 0x%08X"};
inline constexpr Refusal kLibraryCodeIsWrong{ZR_ERROR_REGISTRY_LIBRARY_CODE, "Invalid library code 0x%08X"};
inline constexpr Refusal kLibraryExists{ZR_ERROR_REGISTRY_LIBRARY_EXISTS, "Library 0x%08X already registered as %s"};
inline constexpr Refusal kLibraryIsNotFound{ZR_ERROR_REGISTRY_LIBRARY_NOT_FOUND, "Library 0x%08X not found"};
inline constexpr Refusal kLibraryIsNotRegistered{ZR_ERROR_REGISTRY_LIBRARY_NOT_REGISTERED, "Library 0x%08X is not registered"};
inline constexpr Refusal kObjectCodeIsWrong{ZR_ERROR_REGISTRY_OBJECT_CODE, "Invalid object code 0x%08X"};
inline constexpr Refusal kObjectExists{ZR_ERROR_REGISTRY_OBJECT_EXISTS, "Object 0x%08X already registered as %s"};
inline constexpr Refusal kObjectIsNotFound{ZR_ERROR_REGISTRY_OBJECT_NOT_FOUND, "Object 0x%08X not found"};
inline constexpr Refusal kClassIDIsMalformed{ZR_ERROR_REGISTRY_CLASS_ID_FORMAT,
    "Invalid class ID %s specified for object 0x%08X", Shows::kClassIDAndNumber};
inline constexpr Refusal kClassIDIsInUse{ZR_ERROR_REGISTRY_CLASS_ID_IN_USE,
    "Class ID %s already being used by %s", Shows::kClassIDAndHolder};
inline constexpr Refusal kClassIDIsDuplicate{ZR_ERROR_REGISTRY_CLASS_ID_IN_USE,
    "Duplicate class ID %s specified for object 0x%08X", Shows::kClassIDAndNumber};
// clang-format on

/// Reports a refusal, if there is memory for it. Returns false.
bool Refuse(const Refusal& refusal, const char* location, const Details& details);

/// Whether a condition holds that does not depend on what is registered; reports it if not.
inline bool Require(bool holds, const Refusal& refusal, const char* location, const Details& details)
{
    return holds || Refuse(refusal, location, details);
}

} // namespace zr
