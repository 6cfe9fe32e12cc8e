#include "system.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zrobservers {

namespace {

constinit std::atomic<unsigned int> g_forkGeneration{0};

struct CachedId {
    unsigned int forkGeneration;
    pid_t id; // 0 until it is asked for
};
constinit thread_local CachedId t_thread{0, 0};

// The C library removes the hook when it unloads this library.
[[gnu::constructor]] void InstallForkHook()
{
    pthread_atfork(nullptr, nullptr, [] { g_forkGeneration.fetch_add(1, std::memory_order_relaxed); });
}

} // namespace

unsigned int ForkGeneration() noexcept { return g_forkGeneration.load(std::memory_order_relaxed); }

std::uint64_t ThreadId() noexcept
{
    if (t_thread.id == 0 || t_thread.forkGeneration != ForkGeneration()) {
        t_thread = {ForkGeneration(), gettid()};
    }
    return static_cast<std::uint64_t>(t_thread.id);
}

std::uint64_t ProcessId() noexcept { return static_cast<std::uint64_t>(getpid()); }

std::string ThreadName()
{
    char name[16] = {}; // the longest that the system stores
    return prctl(PR_GET_NAME, name) == 0 ? name : "";
}

std::string ProcessName() { return program_invocation_short_name; }

std::string FileOf(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

bool IsWritable(const std::string& path) { return access(path.c_str(), W_OK) == 0; }

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

bool IsSameTerminal(std::FILE* one, std::FILE* other)
{
    struct stat first {};
    struct stat second {};
    return IsTerminal(one) && IsTerminal(other) && fstat(fileno(one), &first) == 0 && fstat(fileno(other), &second) == 0
        && first.st_rdev == second.st_rdev;
}

TerminalSize SizeOfTerminal(std::FILE* stream)
{
    winsize size{};
    const bool isKnown = ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && size.ws_row != 0;
    return isKnown ? TerminalSize{size.ws_col, size.ws_row} : TerminalSize{};
}

void WithoutSignals(const std::function<void()>& action)
{
    struct Mask {
        Mask()
        {
            sigset_t most;
            sigfillset(&most);
            for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGSYS, SIGTRAP, SIGABRT}) {
                sigdelset(&most, signal); // a thread that crashes with its signal blocked ends without a handler
            }
            pthread_sigmask(SIG_SETMASK, &most, &former);
        }
        ~Mask() { pthread_sigmask(SIG_SETMASK, &former, nullptr); }
        sigset_t former;
    };
    const Mask mask;
    action();
}

bool OutputFile::Open(const std::string& path, bool isNew)
{
    constexpr int kFirstOwn = 3;
    constexpr mode_t kMode = 0666;
    Close();
    const int opened =
        open(path.c_str(), O_WRONLY | O_CREAT | (isNew ? O_EXCL : O_TRUNC) | O_CLOEXEC | O_NOCTTY, kMode);
    if (opened < 0) {
        return false;
    }
    m_size = 0;
    struct stat status {};
    fstat(opened, &status);
    m_device = status.st_dev;
    m_inode = status.st_ino;
    if (opened >= kFirstOwn) {
        m_descriptor = opened;
        return true;
    }
    m_descriptor = fcntl(opened, F_DUPFD_CLOEXEC, kFirstOwn);
    close(opened);
    return m_descriptor >= 0;
}

bool OutputFile::IsOpen() noexcept
{
    if (m_descriptor < 0) {
        return false;
    }
    struct stat status {};
    if (fstat(m_descriptor, &status) != 0 || status.st_dev != m_device || status.st_ino != m_inode) {
        m_descriptor = -1;
    }
    return m_descriptor >= 0;
}

bool OutputFile::Write(const char* data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t written = write(m_descriptor, data + done, size - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            const int error = written == 0 ? ENOSPC : errno;
            if (ftruncate(m_descriptor, m_size) == 0) { // a partial write would spoil later ones
                lseek(m_descriptor, m_size, SEEK_SET);
            }
            errno = error;
            return false;
        }
    }
    m_size += static_cast<std::int64_t>(size);
    return true;
}

void OutputFile::Close() noexcept
{
    if (IsOpen()) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

} // namespace zrobservers
