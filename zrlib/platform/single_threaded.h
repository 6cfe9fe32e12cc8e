/// Whether the process may have other threads. Not exported.
#pragma once

#if !defined(_WIN32)
#include <sys/single_threaded.h>
#endif

namespace zr {

/// True when the process certainly has no other thread, so that steps that no other thread may interrupt need not be
/// atomic. Costs one load.
inline bool IsSingleThreaded() noexcept
{
#if defined(_WIN32)
    return false; // Windows does not tell
#else
    return __libc_single_threaded != 0;
#endif
}

} // namespace zr
