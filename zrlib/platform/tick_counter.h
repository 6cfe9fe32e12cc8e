/// The system's high-resolution counter. Not exported.
#pragma once

#include <cstdint>

#if !defined(_WIN32)
#include <ctime>
#endif

namespace zr {

#if defined(_WIN32)

/// Counts that grow steadily, whatever happens to the system's date and time.
std::int64_t ReadTicks() noexcept;

/// Counts in a second; not 0, and constant for the life of the process.
std::int64_t TickFrequency() noexcept;

#else

// Inline, because a call is a good part of what the clock itself costs. One tick is a nanosecond.

constexpr std::int64_t TickFrequency() noexcept { return 1'000'000'000; }

inline std::int64_t ReadTicks() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * TickFrequency() + now.tv_nsec;
}

#endif

inline double SecondsSince(std::int64_t start) noexcept
{
    return static_cast<double>(ReadTicks() - start) / static_cast<double>(TickFrequency());
}

} // namespace zr
