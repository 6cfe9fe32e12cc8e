/// Files of the system. Paths are UTF-8 and of any length. No function changes errno. Not exported.
/// Folder system: one interface for what differs between Linux and Windows, and one source for each of the two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace hcbase::system {

#if defined(_WIN32)
constexpr char kSeparator = '\\';
inline bool IsSeparator(char character) { return character == '\\' || character == '/'; }
#else
constexpr char kSeparator = '/';
inline bool IsSeparator(char character) { return character == '/'; }
#endif

/// The last separator in the path; null when there is none.
const char* LastSeparator(const char* path);

/// Seconds and nanoseconds since 1970-01-01 00:00 UTC.
struct TimeStamp {
    std::int64_t seconds;
    std::int32_t nanoseconds;
};

struct FileInfo {
    TimeStamp created; // the last change of status where the system does not record the creation
    TimeStamp modified;
    TimeStamp accessed;
    std::int64_t size;
    bool isDirectory;
};

/// Follows links. False when there is no such file or it cannot be queried; `info` is then unchanged.
bool GetFileInfo(const char* path, FileInfo& info);

bool RemoveFile(const char* path);

struct DiskSpace {
    std::uint64_t available; // bytes free for the calling account
    std::uint64_t total;
    std::uint64_t free;
};

bool GetDiskSpace(const char* path, DiskSpace& space);

enum class Opening { kCreateIfMissing, kExistingOnly };

constexpr std::intptr_t kNoFile = -1;

/// Opens a file so that each write is appended at the current end, whoever else writes. Never truncates, waits for
/// nobody but the holder of a lease, and never takes the place of standard input, output or error. Child processes do
/// not inherit it, and others may read, write, rename and delete the file meanwhile. Returns kNoFile on failure, and
/// for a pipe without a reader.
std::intptr_t OpenForAppending(const char* path, Opening opening);

/// The result of writing a line.
struct LineResult {
    bool isWhole; // all of it was written
    bool isCut; // the file ends in the middle of a line of this process
};

/// Writes the text and a line ending in one system call. endsCutLine: first writes one more line ending, for the line
/// before, which was cut.
LineResult WriteLine(std::intptr_t file, const char* text, std::size_t length, bool endsCutLine);

/// The result when `written` of `size` bytes were written, of which the first `ending` end the line before.
constexpr LineResult ToLineResult(std::size_t written, std::size_t ending, std::size_t size)
{
    return {written == size, written != size && written != ending};
}

/// Identifies a file whatever its path.
struct FileIdentity {
    std::uint64_t device;
    std::uint64_t number;

    bool operator==(const FileIdentity&) const = default;
};

/// False when the system does not say.
bool GetFileIdentity(std::intptr_t file, FileIdentity& identity, bool& isEmpty);

bool CloseFile(std::intptr_t file);

enum class Reading { kDone, kMissing, kFailed };

/// Reads a whole file of at most `limit` bytes. With kFailed `content` holds the reason as readable text.
Reading ReadFile(const char* path, std::size_t limit, std::string& content);

} // namespace hcbase::system
