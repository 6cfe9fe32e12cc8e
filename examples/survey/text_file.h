/// Counting what is in one file.
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

/// A file that is read and counted block by block. A file with a zero byte is binary.
class TextFile {
public:
    explicit TextFile(const std::filesystem::path& path);

    /// Reads the next block. False when there is none that is worth counting.
    bool ReadBlock();

    /// Counts the block that was read last.
    void CountBlock();

    /// What the file was, after its last block. Adds to `count` if it was a text; a last line without an ending counts
    /// too.
    ReadResult Finish(FileCount& count) const;

private:
    std::ifstream m_file;
    std::vector<char> m_block;
    FileCount m_count;
    char m_last = '\n';
    bool m_isOpen;
    bool m_isBinary = false;
};
