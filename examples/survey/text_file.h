/// Counting what is in one file.
#pragma once

#include <cstdint>
#include <filesystem>

struct FileCount {
    std::int64_t files = 0;
    std::int64_t lines = 0;
    std::int64_t bytes = 0;

    FileCount& operator+=(const FileCount& other);
};

enum class ReadResult { kText, kBinary, kUnreadable };

/// Counts the lines and bytes of a text file; a last line without an ending counts too. A file with a zero byte is
/// binary. `count` is changed only when the result is kText.
ReadResult CountTextFile(const std::filesystem::path& path, FileCount& count);
