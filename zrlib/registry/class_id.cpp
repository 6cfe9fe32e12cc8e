#include "zrlib/registry/class_id.h"

#include "zrlib/registry/object_entry.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr const char* ZRClassID::Null;
constexpr const char* ZRClassID::Internal;
constexpr const char* ZRClassID::External;
constexpr int ZRClassID::Size;
constexpr int ZRClassID::InternalSize;
constexpr int ZRClassID::ExternalSize;
constexpr int ZRClassID::CodeSize;
#endif

namespace {

bool StartsWith(const char* text, const char* prefix, int size)
{
    return text != nullptr && std::strncmp(text, prefix, static_cast<std::size_t>(size)) == 0;
}

/// Like isxdigit, independent of the locale.
bool IsHexadecimalDigit(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F')
        || (character >= 'a' && character <= 'f');
}

HCString MakeID(const char* prefix, int code)
{
    HCString id;
    id.Format("%s%08X", prefix, static_cast<unsigned int>(code));
    return id;
}

/// 0 for a text that ends before its number begins.
int CodeOf(const char* id)
{
    constexpr std::size_t kPlace = ZRClassID::Size - 4; // the low word of the code
    constexpr int kHexadecimal = 16;
    if (id == nullptr || std::memchr(id, '\0', kPlace) != nullptr) {
        return 0;
    }
    const int callersErrno = errno;
    // A long has 64 bits on some systems; every system must read the same number.
    const long long number = std::strtol(id + kPlace, nullptr, kHexadecimal);
    errno = callersErrno;
    return static_cast<int>(std::clamp<long long>(number, INT32_MIN, INT32_MAX)) | ZRObjectEntry::OBJECTBASE;
}

} // namespace

char ZRClassID::IsNull(const char* id) { return StartsWith(id, Null, Size) ? 1 : 0; }

char ZRClassID::IsFormat(const char* id)
{
    if (id == nullptr) {
        return 0;
    }
    for (int index = 0; index < Size; ++index) {
        if (Null[index] == '-' ? id[index] != '-' : !IsHexadecimalDigit(id[index])) {
            return 0; // also at the end of a short text
        }
    }
    return 1;
}

char ZRClassID::IsInternal(const char* id) { return StartsWith(id, Internal, InternalSize) ? 1 : 0; }

char ZRClassID::IsExternal(const char* id) { return StartsWith(id, External, ExternalSize) ? 1 : 0; }

HCString ZRClassID::MakeInternalID(int code) { return MakeID(Internal, code); }

HCString ZRClassID::MakeExternalID(int code) { return MakeID(External, code); }

int ZRClassID::GetInternalID(const char* id, char check)
{
    return check != 0 && (IsFormat(id) == 0 || IsInternal(id) == 0) ? 0 : CodeOf(id);
}

int ZRClassID::GetExternalID(const char* id, char check)
{
    return check != 0 && (IsFormat(id) == 0 || IsExternal(id) == 0) ? 0 : CodeOf(id);
}
