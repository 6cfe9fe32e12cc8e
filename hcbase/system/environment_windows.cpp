#include "hcbase/system/environment.h"

#include "hcbase/system/windows.h"

#include <string>
#include <userenv.h>

namespace hcbase::system {

namespace {

/// Calls `fill(buffer, size)` with growing buffers, as the functions of the system require: they return the size that
/// they need, or the length if it fitted.
template <typename Fill> HCString FilledText(Fill fill)
{
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const auto length = static_cast<std::size_t>(fill(buffer.data(), static_cast<DWORD>(buffer.size())));
        if (length == 0) {
            return {};
        }
        if (length < buffer.size()) {
            return Utf8(buffer.c_str()).c_str();
        }
        buffer.resize(length + 1);
    }
}

HCString AccountHome()
{
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) {
        return {};
    }
    HCString home = FilledText([token](wchar_t* buffer, DWORD size) -> DWORD {
        if (GetUserProfileDirectoryW(token, buffer, &size) != 0) {
            return size - 1;
        }
        return GetLastError() == ERROR_INSUFFICIENT_BUFFER ? size : 0;
    });
    CloseHandle(token);
    return home;
}

} // namespace

void ReleaseAccountHome() noexcept {} // read afresh each time

HCString Environment(const char* name)
{
    const std::wstring wideName = Wide(name);
    return FilledText(
        [&wideName](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(wideName.c_str(), buffer, size); });
}

HCString HomeDirectory()
{
    HCString home = Environment("USERPROFILE");
    if (home.GetLength() == 0) {
        home = AccountHome();
    }
    return home;
}

HCString SettingsDirectory() { return Environment("APPDATA"); }

HCString CurrentDirectory()
{
    return FilledText([](wchar_t* buffer, DWORD size) { return GetCurrentDirectoryW(size, buffer); });
}

void WriteErrorLine(const HCString& text)
{
    const std::string line = std::string(text) + "\r\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

} // namespace hcbase::system
