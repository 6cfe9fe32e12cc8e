/// What happens around fork. Not exported.
#pragma once

#include <atomic>
#include <cstdint>

namespace zr {

/// Counts the forks between this process and the one that loaded the library; always 0 where there is no fork.
extern std::atomic<std::uint32_t> g_forkGeneration;

/// ID of the thread that has forked last; 0 before.
extern std::atomic<std::uint32_t> g_forkingThread;

inline std::uint32_t ForkGeneration() noexcept { return g_forkGeneration.load(std::memory_order_relaxed); }

/// Has functions called before fork, behind it in the parent, and behind it in the child, where ForkGeneration has
/// grown by then. They fall with the library. To be called once, while the library loads.
void InstallForkHooks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept;

} // namespace zr
