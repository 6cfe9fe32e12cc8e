#include "zrlib/platform/debugger_output.h"

#include <cstdio>

namespace zr {

void WriteToDebugger(const char* text) { std::fputs(text, stderr); }

} // namespace zr
