/// The debugger's output channel. Not exported.
#pragma once

namespace zr {

/// Writes the text unchanged to the debugger's output: on Windows what a debugger attached to the process shows, on
/// Linux standard error. The text is UTF-8. Throws std::bad_alloc. Any thread.
void WriteToDebugger(const char* text);

} // namespace zr
