#include "zrlib/platform/debugger_output.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <string>

namespace zr {

void WriteToDebugger(const char* text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0); // with the terminator
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), size);
    OutputDebugStringW(wide.c_str());
}

} // namespace zr
