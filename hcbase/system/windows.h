/// The Windows headers, in one place with the macros that every use needs, and conversion between UTF-8 and UTF-16.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif

// WaitOnAddress needs Windows 8.
#if !defined(_WIN32_WINNT) || _WIN32_WINNT < 0x0602
#undef _WIN32_WINNT
#define _WIN32_WINNT 0x0602
#endif

#include <windows.h>

#include <string>

namespace hcbase::system {

/// Bytes that are not UTF-8 become U+FFFD. Null counts as the empty text.
std::wstring Wide(const char* text);

std::string Utf8(const wchar_t* text);

/// A path for the functions that open and delete files. A path too long for their usual form gets the form that allows
/// 32,767 characters.
std::wstring WidePath(const char* path);

} // namespace hcbase::system
