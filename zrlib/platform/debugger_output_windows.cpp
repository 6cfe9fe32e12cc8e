#include "zrlib/platform/debugger_output.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace zr {

void WriteToDebugger(const char* text) { OutputDebugStringA(text); }

} // namespace zr
