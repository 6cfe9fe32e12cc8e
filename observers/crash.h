/// Being called when the process crashes.
#pragma once

#include <cstddef>
#include <string>

namespace zrobservers {

/// Calls an action once, when the process is about to end by a crash, on the thread that has crashed. It may do only
/// what a signal handler may. reason: for example "signal 11". The handlers that were there before run afterwards.
/// Calls are counted; the last RemoveCrashAction puts back what was there, unless somebody has put his own on top.
void InstallCrashAction(void (*action)(const char* reason));
void RemoveCrashAction();

/// Gives this thread a stack for the handling of a stack that has overflowed. Null when it has one, or there is no
/// memory.
void* AddCrashStack();

/// Takes back what AddCrashStack has given, on the same thread.
void RemoveCrashStack(void* stack);

/// A file that is appended to by nothing but calls of the system that a signal handler may make.
class CrashFile {
public:
    explicit CrashFile(const std::string& path);
    ~CrashFile();
    CrashFile(const CrashFile&) = delete;
    CrashFile& operator=(const CrashFile&) = delete;

    /// False with errno set.
    bool Open() noexcept;

    /// All or a part. False with errno set when it was not all.
    bool Write(const char* data, std::size_t size) noexcept;
    void Close() noexcept;

private:
    struct Path;

    const Path* const m_path; // owned; as the system wants it
    int m_descriptor = -1;
};

} // namespace zrobservers
