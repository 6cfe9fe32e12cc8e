/// Hooks around fork. Not exported.
/// Folder platform: the little that the library takes from the system directly; the rest comes through hcbase.
#pragma once

#include <atomic>
#include <cstdint>

namespace zr {

/// Counts the forks between this process and the one that loaded the library; always 0 where there is no fork.
extern std::atomic<std::uint32_t> g_forkGeneration;

/// ID of the thread that has forked last; 0 before the first fork.
extern std::atomic<std::uint32_t> g_forkingThread;

inline std::uint32_t ForkGeneration() noexcept { return g_forkGeneration.load(std::memory_order_relaxed); }

/// Installs functions that are called before fork, after it in the parent, and after it in the child, where
/// ForkGeneration has grown by then. They are removed when the library is unloaded. To be called once, while the
/// library loads.
void InstallForkHooks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept;

} // namespace zr
