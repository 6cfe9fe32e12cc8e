/// HCThread: a thread that can be waited for.
#pragma once

#include "hcbase/export.h"

#include <cstdint>

/// A handle on at most one thread. Threads: one handle is used by one thread at a time.
class HC_API HCThread {
public:
    /// A handle on no thread.
    HCThread() noexcept;

    /// A thread that still runs goes on by itself. It needs this library until it ends, so the library must stay
    /// loaded.
    virtual ~HCThread();

    HCThread(const HCThread&) = delete;
    HCThread& operator=(const HCThread&) = delete;

    /// Starts a thread that runs function(argument) and ends with its result as exit code. `argument` stays the
    /// caller's; an exception that leaves `function` ends the process. 1 on success; 0 for a null function, when the
    /// system refuses, and while this handle has a thread whose exit code was not asked for yet.
    char CreateThread(unsigned int (*function)(void*), void* argument);

    /// Waits for the thread to end, stores its exit code and gives 1; may be asked again. Gives 0, and stores nothing,
    /// when there is no thread, for a null `code`, when the thread asks for itself, and in a forked child for a thread
    /// of the parent.
    char GetExitCode(int* code);

    /// Ends the calling thread with that exit code. Locks that it holds stay held. On Linux the objects of its
    /// functions are destroyed, and one of them that is noexcept, or that catches everything and does not throw on,
    /// ends the process; on Windows they are not destroyed.
    [[noreturn]] static void ExitThread(unsigned int code);

    /// ID of the calling thread: the same for its whole life and never 0. No two threads that run at the same time have
    /// the same one, unless 2,147,483,647 others have asked for theirs in between. On Windows each fiber
    /// has an ID of its own. A thread that forks keeps its ID in
    /// the child. Cheap to ask for.
    static unsigned int GetCurrentThreadId() noexcept;

    /// 1 when both IDs name one thread. 0 names none.
    [[nodiscard]] static char AreSameThread(unsigned int first, unsigned int second) noexcept;

private:
    bool HasThread() const noexcept;

    enum class State : std::uint8_t { kNone, kStarted, kEnded };

    std::uintptr_t m_thread;
    std::uint32_t m_forkGeneration;
    int m_exitCode;
    State m_state;
};
