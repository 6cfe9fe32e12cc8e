#include "hcbase/system/files.h"

#include "hcbase/system/windows.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

namespace hcbase::system {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE ToHandle(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

class Handle {
public:
    explicit Handle(HANDLE handle)
        : m_handle(handle)
    {
    }
    ~Handle()
    {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

/// A FILETIME counts units of 100 nanoseconds since 1601-01-01, which is 11,644,473,600 seconds before 1970.
TimeStamp ToTimeStamp(const FILETIME& time)
{
    const std::int64_t units = (static_cast<std::int64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    const std::int64_t unitsPerSecond = 10'000'000;
    return {units / unitsPerSecond - 11'644'473'600, static_cast<std::int32_t>(units % unitsPerSecond) * 100};
}

std::string ReasonOf(DWORD error)
{
    wchar_t buffer[512];
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, buffer, 512, nullptr);
    return length != 0 ? Utf8(buffer) : "error " + std::to_string(error);
}

} // namespace

const char* LastSeparator(const char* path)
{
    return std::max(std::strrchr(path, '\\'), std::strrchr(path, '/'), std::less<>());
}

bool GetFileInfo(const char* path, FileInfo& info)
{
    // Opened, because a query by name describes a link itself. The flag allows folders to be opened.
    const Handle file(
        CreateFileW(WidePath(path).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION status{};
    if (file.Get() == INVALID_HANDLE_VALUE || GetFileInformationByHandle(file.Get(), &status) == 0) {
        return false;
    }
    info.created = ToTimeStamp(status.ftCreationTime);
    info.modified = ToTimeStamp(status.ftLastWriteTime);
    info.accessed = ToTimeStamp(status.ftLastAccessTime);
    info.size = (static_cast<std::int64_t>(status.nFileSizeHigh) << 32) | status.nFileSizeLow;
    info.isDirectory = (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return true;
}

bool RemoveFile(const char* path) { return DeleteFileW(WidePath(path).c_str()) != 0; }

bool GetDiskSpace(const char* path, DiskSpace& space)
{
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    ULARGE_INTEGER free{};
    if (GetDiskFreeSpaceExW(WidePath(path).c_str(), &available, &total, &free) == 0) {
        return false;
    }
    space = {available.QuadPart, total.QuadPart, free.QuadPart};
    return true;
}

std::intptr_t OpenForAppending(const char* path, Opening opening)
{
    // FILE_APPEND_DATA without FILE_WRITE_DATA: each write is appended at the end, atomically for all processes.
    const HANDLE file = CreateFileW(WidePath(path).c_str(), FILE_APPEND_DATA | SYNCHRONIZE, kShareAll, nullptr,
        opening == Opening::kCreateIfMissing ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE ? reinterpret_cast<std::intptr_t>(file) : kNoFile;
}

LineResult WriteLine(std::intptr_t file, const char* text, std::size_t length, bool endsCutLine)
{
    const std::string_view lineEnding = "\r\n";
    const std::size_t ending = endsCutLine ? lineEnding.size() : 0;
    std::string line;
    line.reserve(ending + length + lineEnding.size());
    line.append(lineEnding, 0, ending).append(text, length).append(lineEnding);
    DWORD written = 0;
    WriteFile(ToHandle(file), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    return ToLineResult(written, ending, line.size());
}

bool GetFileIdentity(std::intptr_t file, FileIdentity& identity, bool& isEmpty)
{
    BY_HANDLE_FILE_INFORMATION status{};
    if (GetFileInformationByHandle(ToHandle(file), &status) == 0) {
        return false;
    }
    identity = {
        status.dwVolumeSerialNumber, (static_cast<std::uint64_t>(status.nFileIndexHigh) << 32) | status.nFileIndexLow};
    isEmpty = status.nFileSizeHigh == 0 && status.nFileSizeLow == 0;
    return true;
}

bool CloseFile(std::intptr_t file) { return CloseHandle(ToHandle(file)) != 0; }

Reading ReadFile(const char* path, std::size_t limit, std::string& content)
{
    const Handle file(CreateFileW(
        WidePath(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            return Reading::kMissing;
        }
        content = ReasonOf(error);
        return Reading::kFailed;
    }
    content.clear();
    std::vector<char> buffer(4096);
    for (;;) {
        DWORD count = 0;
        const bool isRead =
            ::ReadFile(file.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) != 0;
        if (isRead && count == 0) {
            return Reading::kDone;
        }
        if (!isRead || content.size() + count > limit) {
            content = ReasonOf(isRead ? static_cast<DWORD>(ERROR_FILE_TOO_LARGE) : GetLastError());
            return Reading::kFailed;
        }
        content.append(buffer.data(), count);
    }
}

} // namespace hcbase::system
