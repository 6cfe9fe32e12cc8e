/// The system's high-resolution counter. Not exported.
#pragma once

#include <cstdint>

namespace zr {

/// Counts that grow steadily, whatever is done to the system's date and time.
std::int64_t ReadTicks() noexcept;

/// Counts in a second; not 0, and the same for as long as the process lives.
std::int64_t TickFrequency() noexcept;

} // namespace zr
