#include "crash.h"

#include "zrlib/zrlib.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <mutex>
#include <sys/stat.h>
#include <windows.h>

namespace zrobservers {

namespace {

using SignalHandler = void (*)(int);

constinit std::atomic<void (*)(const char*)> g_action{nullptr};
constinit std::atomic<bool> g_hasActed{false};
LPTOP_LEVEL_EXCEPTION_FILTER g_formerFilter = nullptr;
SignalHandler g_formerAbort = SIG_DFL;
int g_users = 0;

HCThreadSync& Lock()
{
    static HCThreadSync lock;
    return lock;
}

void ActOnce(const char* reason)
{
    if (const auto action = g_action.load(); action != nullptr && !g_hasActed.exchange(true)) {
        action(reason);
    }
}

LONG WINAPI HandleException(EXCEPTION_POINTERS* exception)
{
    char reason[] = "exception 00000000";
    DWORD code = exception->ExceptionRecord->ExceptionCode;
    for (std::size_t digit = sizeof(reason) - 1; code != 0; code /= 16) {
        reason[--digit] = "0123456789ABCDEF"[code % 16];
    }
    ActOnce(reason);
    return g_formerFilter != nullptr ? g_formerFilter(exception) : EXCEPTION_CONTINUE_SEARCH;
}

void HandleAbort(int signal)
{
    ActOnce("abort");
    if (g_formerAbort != SIG_DFL && g_formerAbort != SIG_IGN) {
        g_formerAbort(signal);
    }
}

} // namespace

void InstallCrashAction(void (*action)(const char* reason))
{
    const std::lock_guard guard(Lock());
    if (g_users++ == 0) {
        g_action = action;
        g_formerFilter = SetUnhandledExceptionFilter(HandleException);
        g_formerAbort = std::signal(SIGABRT, HandleAbort);
    }
}

void RemoveCrashAction()
{
    const std::lock_guard guard(Lock());
    if (--g_users > 0) {
        return;
    }
    g_action = nullptr;
    if (const auto current = SetUnhandledExceptionFilter(g_formerFilter); current != HandleException) {
        SetUnhandledExceptionFilter(current);
    }
    if (const SignalHandler current = std::signal(SIGABRT, g_formerAbort); current != HandleAbort) {
        std::signal(SIGABRT, current);
    }
}

void* AddCrashStack()
{
    ULONG size = 64 * 1024; // reserved for handlers when the rest of the stack is used up
    SetThreadStackGuarantee(&size);
    return nullptr;
}

void RemoveCrashStack(void* /*stack*/) {}

struct CrashFile::Path {
    std::filesystem::path wide;
};

CrashFile::CrashFile(const std::string& path)
    : m_path(new Path{std::filesystem::path(std::u8string(path.begin(), path.end()))})
{
}

CrashFile::~CrashFile()
{
    Close();
    delete m_path;
}

bool CrashFile::Open() noexcept
{
    m_descriptor =
        _wopen(m_path->wide.c_str(), _O_WRONLY | _O_CREAT | _O_APPEND | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return m_descriptor >= 0;
}

bool CrashFile::Write(const char* data, std::size_t size) noexcept
{
    while (size > 0) {
        const int written = _write(m_descriptor, data, static_cast<unsigned int>(size)); // a block of the caller's
        if (written <= 0) {
            errno = written == 0 ? ENOSPC : errno;
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

void CrashFile::Close() noexcept
{
    if (m_descriptor >= 0) {
        _close(m_descriptor);
        m_descriptor = -1;
    }
}

} // namespace zrobservers
