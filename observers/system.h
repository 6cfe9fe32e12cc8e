/// What the observers need from the system. Not exported.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace zrobservers {

/// IDs as in the system's tools.
std::uint64_t ThreadId() noexcept;
std::uint64_t ProcessId() noexcept;

/// Empty when none was set.
std::string ThreadName();
std::string ProcessName();

/// The number of forks between this process and the one that loaded the library.
unsigned int ForkGeneration() noexcept;

/// Data that a lock guards. A forked child leaves its parent's data untouched, as another thread may have been in the
/// middle of changing them, and starts with new ones.
template <typename Data> class DataOfProcess {
public:
    DataOfProcess() = default;
    ~DataOfProcess()
    {
        if (m_forkGeneration != ForkGeneration()) {
            (void)m_data.release();
        }
    }
    DataOfProcess(const DataOfProcess&) = delete;
    DataOfProcess& operator=(const DataOfProcess&) = delete;

    /// To be called under the lock. Throws std::bad_alloc.
    Data& Get()
    {
        if (m_forkGeneration != ForkGeneration()) {
            auto data = std::make_unique<Data>();
            (void)m_data.release();
            m_data = std::move(data);
            m_forkGeneration = ForkGeneration();
        }
        return *m_data;
    }

private:
    std::unique_ptr<Data> m_data = std::make_unique<Data>();
    unsigned int m_forkGeneration = ForkGeneration();
};

/// The path of the library or program that contains an address; empty when it is unknown.
std::string FileOf(const void* address);

/// Whether this process may write a file, or create files in a folder.
bool IsWritable(const std::string& path);

bool IsTerminal(std::FILE* stream);

/// Whether two streams write to the same terminal.
bool IsSameTerminal(std::FILE* one, std::FILE* other);

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

/// The usual size when the terminal does not say.
TerminalSize SizeOfTerminal(std::FILE* stream);

/// Runs an action with all signals blocked for this thread, so that a thread that it starts gets none of the program's.
void WithoutSignals(const std::function<void()>& action);

/// A file that one process writes. Other programs do not inherit it, and it never takes the place of a standard stream.
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile() { Close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Creates or truncates the file; with `isNew` fails when it exists. False with errno set.
    bool Open(const std::string& path, bool isNew);

    /// A program may close all files and get one of its own in the place of this one: that one is left alone, and this
    /// one is then not open.
    bool IsOpen() noexcept;

    /// Writes all, or nothing if that is possible. False with errno set. The file must be open.
    bool Write(const char* data, std::size_t size);

    void Close() noexcept;

private:
    int m_descriptor = -1;
    std::uint64_t m_device = 0; // with m_inode the identity of the file
    std::uint64_t m_inode = 0;
    std::int64_t m_size = 0; // of what was written completely
};

} // namespace zrobservers
