/// Counts the lines and bytes of one file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

struct FileCount {
    std::int64_t files = 0;
    std::int64_t lines = 0;
    std::int64_t bytes = 0;

    FileCount& operator+=(const FileCount& other);
};

enum class ReadResult { kText, kBinary, kUnreadable };

/// Reads and counts a file block by block. A file with a zero byte is binary.
class TextFile {
public:
    explicit TextFile(const std::filesystem::path& path);

    /// Reads the next block. False at the end, and when the file cannot be opened or is binary.
    bool ReadBlock();

    /// Counts the last block read.
    void CountBlock();

    /// Returns what the file was, after the last block. Adds a text file to `count`; a last line without a line ending
    /// counts too.
    ReadResult Finish(FileCount& count) const;

private:
    std::ifstream m_file;
    std::vector<char> m_block;
    FileCount m_count;
    char m_last = '\n';
    bool m_isOpen;
    bool m_isBinary = false;
};
