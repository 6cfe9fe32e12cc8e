/// An action for the moment when the process crashes. Not exported.
#pragma once

#include <cstddef>
#include <string>

namespace zrobservers {

/// Calls an action at a crash, on the thread that has crashed; again if an earlier handler recovers from it and another
/// follows. It may do only what a signal handler may. reason: for example "signal 11". The handlers installed before
/// run afterwards. Calls are counted; the last RemoveCrashAction restores those handlers, unless somebody has installed
/// another on top. RemoveCrashAction waits for an action that runs on another thread, for at most five seconds. On
/// Windows the action is called once only, and RemoveCrashAction does not wait.
void InstallCrashAction(void (*action)(const char* reason));
void RemoveCrashAction();

/// Gives this thread a stack for handlers that run after a stack overflow. Null when it has one, or there is no memory.
void* AddCrashStack();

/// Removes the result of AddCrashStack, on the same thread.
void RemoveCrashStack(void* stack);

/// A file that is appended to with only those system calls that a signal handler may make.
class CrashFile {
public:
    explicit CrashFile(const std::string& path);
    ~CrashFile();
    CrashFile(const CrashFile&) = delete;
    CrashFile& operator=(const CrashFile&) = delete;

    /// False with errno set.
    bool Open() noexcept;

    /// Writes all or a part. False with errno set when it was not all.
    bool Write(const char* data, std::size_t size) noexcept;
    void Close() noexcept;

private:
    struct Path;

    const Path* const m_path; // owned; in the system's form
    int m_descriptor = -1;
};

} // namespace zrobservers
