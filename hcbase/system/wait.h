/// Sleeping on a 32-bit word until another thread of this process wakes the sleeper. Not exported.
#pragma once

#include <atomic>
#include <cstdint>

namespace hcbase::system {

/// Lets the processor rest for some ten nanoseconds, in a loop that waits for another thread.
inline void PauseProcessor() noexcept
{
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("isb"); // "yield" is a no-op on most processors
#endif
}

/// Sleeps while `word` holds `value`, until WakeOne. May return early, so the caller must check again.
void WaitWhileEqual(std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;

/// Wakes one thread that sleeps on `word`, if there is one. The word may be destroyed by then: only its address is
/// used.
void WakeOne(std::atomic<std::uint32_t>& word) noexcept;

} // namespace hcbase::system
