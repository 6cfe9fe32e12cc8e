#include "text_file.h"

#include <algorithm>

FileCount& FileCount::operator+=(const FileCount& other)
{
    files += other.files;
    lines += other.lines;
    bytes += other.bytes;
    return *this;
}

TextFile::TextFile(const std::filesystem::path& path)
    : m_file(path, std::ios::binary)
    , m_count{1, 0, 0}
    , m_isOpen(m_file.is_open())
{
}

bool TextFile::ReadBlock()
{
    constexpr std::size_t kBlockSize = std::size_t{64} * 1024;
    if (!m_isOpen || m_isBinary) {
        return false;
    }
    m_block.resize(kBlockSize);
    m_file.read(m_block.data(), kBlockSize);
    m_block.resize(static_cast<std::size_t>(m_file.gcount()));
    return !m_block.empty();
}

void TextFile::CountBlock()
{
    m_isBinary = std::find(m_block.begin(), m_block.end(), '\0') != m_block.end();
    m_count.lines += std::count(m_block.begin(), m_block.end(), '\n');
    m_count.bytes += static_cast<std::int64_t>(m_block.size());
    m_last = m_block.back();
}

ReadResult TextFile::Finish(FileCount& count) const
{
    if (!m_isOpen || m_file.bad()) {
        return ReadResult::kUnreadable;
    }
    if (m_isBinary) {
        return ReadResult::kBinary;
    }
    count += m_count;
    count.lines += m_last != '\n' ? 1 : 0;
    return ReadResult::kText;
}
