#include "hcbase/text_io.h"

#include "hcbase/records.h"
#include "hcbase/system/files.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <utility>

using namespace hcbase;

namespace {

constexpr int kModeCreate = 3;
constexpr int kModeAppend = 5;

/// The files that end in the middle of a line of this process, because the disk was full: its next line there begins
/// with a line ending. Of more files than slots, some keep the cut line.
class CutLines {
public:
    void Add(const system::FileIdentity& file) noexcept
    {
        const LockGuard guard(g_recordsLock);
        const std::size_t slot = m_next++ % m_files.size();
        m_files[slot] = file;
        m_isEmpty.store(false, std::memory_order_relaxed);
    }

    /// Whether the file is one of them; if so, removes it.
    bool Remove(std::intptr_t openFile) noexcept
    {
        system::FileIdentity file{};
        bool wasEmptied = false;
        if (m_isEmpty.load(std::memory_order_relaxed) || !system::GetFileIdentity(openFile, file, wasEmptied)) {
            return false;
        }
        const LockGuard guard(g_recordsLock);
        const auto found = std::find(m_files.begin(), m_files.end(), file);
        if (found == m_files.end()) {
            return false;
        }
        *found = kNone;
        m_isEmpty.store(std::all_of(m_files.begin(), m_files.end(), [](const auto& other) { return other == kNone; }),
            std::memory_order_relaxed);
        return !wasEmptied; // an emptied one is another file, or has lost the cut line too
    }

private:
    static constexpr system::FileIdentity kNone{};

    std::array<system::FileIdentity, 16> m_files HC_GUARDED_BY(g_recordsLock){};
    std::size_t m_next HC_GUARDED_BY(g_recordsLock) = 0;
    std::atomic<bool> m_isEmpty{true};
};

constinit CutLines g_cutLines;

} // namespace

HCTextIo::HCTextIo(const HCString& path)
    : m_path(path)
    , m_file(system::kNoFile)
{
}

HCTextIo::HCTextIo(HCString&& path) noexcept
    : m_path(std::move(path))
    , m_file(system::kNoFile)
{
}

HCTextIo::~HCTextIo() { HCTextIo::Close(); }

char HCTextIo::Open(int mode)
{
    if (m_file != system::kNoFile || (mode != kModeCreate && mode != kModeAppend)) {
        return 0;
    }
    m_file = system::OpenForAppending(
        m_path, mode == kModeCreate ? system::Opening::kCreateIfMissing : system::Opening::kExistingOnly);
    return m_file != system::kNoFile ? 1 : 0;
}

char HCTextIo::WriteString(const char* text)
{
    if (m_file == system::kNoFile) {
        return 0;
    }
    const char* const line = text != nullptr ? text : "";
    const system::LineResult result = system::WriteLine(m_file, line, std::strlen(line), g_cutLines.Remove(m_file));
    system::FileIdentity file{};
    bool isEmpty = false;
    if (result.isCut && system::GetFileIdentity(m_file, file, isEmpty)) {
        g_cutLines.Add(file);
    }
    return result.isWhole ? 1 : 0;
}

char HCTextIo::Close()
{
    if (m_file == system::kNoFile) {
        return 0;
    }
    const bool isClosed = system::CloseFile(m_file);
    m_file = system::kNoFile;
    return isClosed ? 1 : 0;
}
