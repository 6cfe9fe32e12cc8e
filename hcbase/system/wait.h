/// Sleeping on a 32-bit word until another thread of this process wakes the sleeper.
#pragma once

#include <atomic>
#include <cstdint>

namespace hcbase::system {

/// Sleeps while `word` holds `value`, until WakeOne. May return early, so the caller looks again.
void WaitWhileEqual(std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;

/// Wakes one thread that sleeps on `word`, if there is one. The word may be gone by then: only its address is used.
void WakeOne(std::atomic<std::uint32_t>& word) noexcept;

} // namespace hcbase::system
