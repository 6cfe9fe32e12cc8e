/// Threads of the system: their IDs, starting and joining them, data for each of them, and fork. Not exported.
#pragma once

#include <cstdint>

#if !defined(_WIN32)
#include <sys/single_threaded.h>
#endif

namespace hcbase {
struct ErrorHistory;
}

namespace hcbase::system {

/// ID of the calling thread: never 0, constant for the thread's life. No two threads that run at the same time have the
/// same one.
std::uint32_t CurrentThreadId() noexcept;

/// Differs from the marks of all other running threads; never 0. Costs a third of reading the ID, but a thread that
/// starts later may get the mark of one that has ended.
using ThreadMark = std::uintptr_t;
ThreadMark CurrentThreadMark() noexcept;

/// True when the process has certainly no other thread. Costs one load.
bool IsSingleThreaded() noexcept;

/// The number of forks between this process and the one that loaded the library. Differs between parent and child.
std::uint32_t ForkGeneration() noexcept;

/// The foundation's data for one thread; only that thread touches it.
struct PerThread {
    std::uint64_t generator[4]; // state of the GUID generator
    std::uint32_t seededIn; // ForkGeneration of its seeding plus 1, 0 before the first
    std::uint32_t id; // of the thread, where it is stored here; 0 until it is asked for
    ErrorHistory* errors; // owned; null until the thread records an error
};

/// The record of the calling thread, initially all zero. Null only when there is no memory for it.
PerThread* CurrentPerThread() noexcept;

/// Releases the thread's error history when the thread ends. Called when a history is created.
void ReleaseErrorsAtThreadExit(PerThread& thread) noexcept;

/// Install and remove the hooks for fork and for the end of threads. On the loading thread.
void InstallHooks() noexcept;
void RemoveHooks() noexcept;

/// True when the process is ending and the system has ended all threads but the calling one, whatever locks they held.
bool OtherThreadsAreGone() noexcept;

#if defined(_WIN32)
constexpr bool kHasFork = false;
inline bool IsSingleThreaded() noexcept { return false; }
#else
constexpr bool kHasFork = true;
inline ThreadMark CurrentThreadMark() noexcept { return reinterpret_cast<ThreadMark>(__builtin_thread_pointer()); }
inline bool IsSingleThreaded() noexcept { return __libc_single_threaded != 0; }
#endif

using ThreadFunction = unsigned int (*)(void*);

/// Starts a thread. False when the system refuses; `handle` is then unchanged.
bool StartThread(ThreadFunction function, void* argument, std::uintptr_t& handle) noexcept;

/// Waits for the thread to end, stores its exit code and closes the handle. False, and the handle stays open, when a
/// thread waits for itself.
bool JoinThread(std::uintptr_t handle, unsigned int& exitCode) noexcept;

/// Closes the handle without waiting.
void DetachThread(std::uintptr_t handle) noexcept;

[[noreturn]] void ExitCurrentThread(unsigned int exitCode);

} // namespace hcbase::system
