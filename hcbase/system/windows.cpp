#include "hcbase/system/windows.h"

namespace hcbase::system {

std::wstring Wide(const char* text)
{
    if (text == nullptr) {
        return {};
    }
    const int size = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    if (size <= 1) {
        return {};
    }
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), size);
    wide.resize(static_cast<std::size_t>(size) - 1);
    return wide;
}

std::wstring WidePath(const char* path)
{
    std::wstring wide = Wide(path);
    constexpr DWORD kShort = MAX_PATH - 12; // the smallest of the limits: for folders
    const DWORD size = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr); // a relative one may be long as a whole
    if (size < kShort) {
        return wide;
    }
    std::wstring whole(size, L'\0');
    whole.resize(GetFullPathNameW(wide.c_str(), size, whole.data(), nullptr));
    const std::wstring start = whole.substr(0, 2);
    if (start != L"\\\\") {
        return L"\\\\?\\" + whole;
    }
    const bool isExtended = whole.size() > 3 && (whole[2] == L'?' || whole[2] == L'.') && whole[3] == L'\\';
    return isExtended ? whole : L"\\\\?\\UNC" + whole.substr(1);
}

std::string Utf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) {
        return {};
    }
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(size) - 1);
    return narrow;
}

} // namespace hcbase::system
