#include "text_file.h"

#include <algorithm>
#include <fstream>
#include <vector>

FileCount& FileCount::operator+=(const FileCount& other)
{
    files += other.files;
    lines += other.lines;
    bytes += other.bytes;
    return *this;
}

ReadResult CountTextFile(const std::filesystem::path& path, FileCount& count)
{
    constexpr std::size_t kBufferSize = std::size_t{64} * 1024;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return ReadResult::kUnreadable;
    }
    FileCount counted{1, 0, 0};
    std::vector<char> buffer(kBufferSize);
    char last = '\n';
    while (file.read(buffer.data(), kBufferSize) || file.gcount() > 0) {
        const auto end = buffer.begin() + file.gcount();
        if (std::find(buffer.begin(), end, '\0') != end) {
            return ReadResult::kBinary;
        }
        counted.lines += std::count(buffer.begin(), end, '\n');
        counted.bytes += file.gcount();
        last = *(end - 1);
    }
    if (file.bad()) {
        return ReadResult::kUnreadable;
    }
    counted.lines += last != '\n' ? 1 : 0;
    count += counted;
    return ReadResult::kText;
}
