/// The end of the process. Not exported.
#pragma once

namespace zr {

/// True when the process is ending and the system has ended all threads but the calling one, whatever locks they held.
#if defined(_WIN32)
bool OtherThreadsAreGone() noexcept;
#else
constexpr bool OtherThreadsAreGone() noexcept { return false; } // they run to the very end
#endif

} // namespace zr
