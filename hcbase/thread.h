/// HCThread: a thread that can be waited for.
#pragma once

#include "hcbase/export.h"

#include <cstdint>

/// A handle to at most one thread. Threads: one handle is used by one thread at a time.
class HC_API HCThread {
public:
    /// A handle to no thread.
    HCThread() noexcept;

    /// Detaches a thread that is still running. It needs this library until it ends, so the library must stay loaded.
    virtual ~HCThread();

    HCThread(const HCThread&) = delete;
    HCThread& operator=(const HCThread&) = delete;

    /// Starts a thread that runs function(argument) and ends with its result as exit code. The caller keeps ownership
    /// of `argument`; an exception that leaves `function` terminates the process. 1 on success; 0 for a null function,
    /// when the system refuses, and while this handle has a thread whose exit code was not read yet.
    char CreateThread(unsigned int (*function)(void*), void* argument);

    /// Waits for the thread to end, stores its exit code and returns 1; may be called again. Returns 0, and stores
    /// nothing, when there is no thread, for a null `code`, when a thread waits for itself, and in a forked child for a
    /// thread of the parent.
    char GetExitCode(int* code);

    /// Ends the calling thread with that exit code. Locks that it holds stay held. On Linux the local objects of its
    /// functions are destroyed, and a function that is noexcept, or that catches everything without rethrowing,
    /// terminates the process; on Windows they are not destroyed.
    [[noreturn]] static void ExitThread(unsigned int code);

    /// ID of the calling thread: constant for its whole life and never 0. No two threads that run at the same time have
    /// the same one, unless 2,147,483,647 others have asked for theirs in between. On Windows each fiber has an ID of
    /// its own. A thread that forks keeps its ID in the child. Cheap to call.
    static unsigned int GetCurrentThreadId() noexcept;

    /// 1 when both IDs identify one thread. 0 identifies none.
    [[nodiscard]] static char AreSameThread(unsigned int first, unsigned int second) noexcept;

private:
    bool HasThread() const noexcept;

    enum class State : std::uint8_t { kNone, kStarted, kEnded };

    std::uintptr_t m_thread;
    std::uint32_t m_forkGeneration;
    int m_exitCode;
    State m_state;
};
