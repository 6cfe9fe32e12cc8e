#include "zrlib/utilities/system_functions.h"

#include "hcbase/file_system.h"
#include "hcbase/string.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/frame/texts.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kFirstSystem = 1;
constexpr int kLastSystem = 12;
constexpr int kWindows = 101;

/// The name of a system in the table of texts; null when it is not there.
const char* FindSystem(int code)
{
    if (code >= kFirstSystem && code <= kLastSystem) {
        return zr::FindText(ZR_TEXT_OPSYS_RSX + code - kFirstSystem);
    }
    return code == kWindows ? zr::FindText(ZR_TEXT_OPSYS_WINDOWS) : nullptr;
}

} // namespace

int ZRStringToBuffer(char* buffer, int size, const HCString& text)
{
    if (buffer == nullptr || size < 1) {
        return 0;
    }
    const int length = std::min(text.GetLength(), size - 1);
    std::memmove(buffer, static_cast<const char*>(text), static_cast<std::size_t>(length));
    std::memset(buffer + length, 0, static_cast<std::size_t>(size - length));
    return length;
}

char ZRCheckDiskSpace(std::uint64_t size1, std::uint64_t size2)
{
    HCFileSystem fileSystem;
    std::uint64_t available = 0;
    std::uint64_t unread = 0;
    const bool isKnown = fileSystem.GetDiskInfo(fileSystem.GetCurDirectory(""), &available, &unread, &unread) != 0;
    return isKnown && available >= size1 + size2 ? 1 : 0;
}

const char* ZRGetOpSysName(int code)
{
    if (const char* const name = FindSystem(code)) {
        return name;
    }
    constexpr std::size_t kLongest = 64;
    static constinit thread_local char unidentified[kLongest]{}; // a string would need code at load and unload
    const char* const text = zr::FindText(ZR_TEXT_OPSYS_UNIDENTIFIED);
    std::snprintf(unidentified, sizeof unidentified, "%s %d", text != nullptr ? text : "", code);
    return unidentified;
}
