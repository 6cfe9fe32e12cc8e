#include "zrlib/platform/tick_counter.h"

#include <ctime>

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

} // namespace

std::int64_t zr::ReadTicks() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

std::int64_t zr::TickFrequency() noexcept { return kNanosecondsPerSecond; }
