#include "zrlib/platform/tick_counter.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

std::int64_t zr::ReadTicks() noexcept
{
    LARGE_INTEGER count{};
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

std::int64_t zr::TickFrequency() noexcept
{
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}
