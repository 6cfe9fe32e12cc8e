#include "system.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace zrobservers {

namespace {

std::string ToUtf8(const wchar_t* text)
{
    const auto utf8 = std::filesystem::path(text).u8string();
    return {utf8.begin(), utf8.end()};
}

} // namespace

unsigned int ForkGeneration() noexcept { return 0; }

std::uint64_t ThreadId() noexcept { return GetCurrentThreadId(); }

std::uint64_t ProcessId() noexcept { return GetCurrentProcessId(); }

std::string ThreadName()
{
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*); // since Windows 10
    const auto getDescription = reinterpret_cast<GetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    PWSTR name = nullptr;
    if (getDescription == nullptr || FAILED(getDescription(GetCurrentThread(), &name))) {
        return "";
    }
    const std::string result = ToUtf8(name);
    LocalFree(name);
    return result;
}

std::string ProcessName()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    return ToUtf8(std::filesystem::path(path).stem().c_str());
}

std::string FileOf(const void* address)
{
    constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = {};
    if (GetModuleHandleExW(kByAddress, static_cast<const wchar_t*>(address), &module) == 0
        || GetModuleFileNameW(module, path, MAX_PATH - 1) == 0) {
        return "";
    }
    return ToUtf8(path);
}

bool IsWritable(const std::string& path)
{
    constexpr int kWrite = 2;
    const std::filesystem::path wide(std::u8string(path.begin(), path.end()));
    return _waccess(wide.c_str(), kWrite) == 0;
}

bool IsTerminal(std::FILE* stream)
{
    // One that does not support escape codes does not count as a terminal.
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0 && SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool IsSameTerminal(std::FILE* one, std::FILE* other) { return IsTerminal(one) && IsTerminal(other); }

TerminalSize SizeOfTerminal(std::FILE* stream)
{
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const SMALL_RECT& window = info.srWindow;
    return GetConsoleScreenBufferInfo(handle, &info) != 0
        ? TerminalSize{window.Right - window.Left + 1, window.Bottom - window.Top + 1}
        : TerminalSize{};
}

void WithoutSignals(const std::function<void()>& action) { action(); }

bool OutputFile::Open(const std::string& path, bool isNew)
{
    Close();
    const std::filesystem::path wide(std::u8string(path.begin(), path.end()));
    const int flags = _O_WRONLY | _O_CREAT | (isNew ? _O_EXCL : _O_TRUNC) | _O_BINARY | _O_NOINHERIT;
    m_descriptor = _wopen(wide.c_str(), flags, _S_IREAD | _S_IWRITE);
    m_size = 0;
    return IsOpen();
}

bool OutputFile::IsOpen() noexcept { return m_descriptor >= 0; }

bool OutputFile::Write(const char* data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        constexpr std::size_t kMost = 1U << 30U;
        const auto piece = static_cast<unsigned int>(size - done < kMost ? size - done : kMost);
        const int written = _write(m_descriptor, data + done, piece);
        if (written <= 0) {
            const int error = written == 0 ? ENOSPC : errno;
            _chsize_s(m_descriptor, m_size); // a partial write would spoil later ones
            _lseeki64(m_descriptor, m_size, SEEK_SET);
            errno = error;
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    m_size += static_cast<std::int64_t>(size);
    return true;
}

void OutputFile::Close() noexcept
{
    if (IsOpen()) {
        _close(m_descriptor);
        m_descriptor = -1;
    }
}

} // namespace zrobservers
