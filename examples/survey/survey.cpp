#include "survey.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <system_error>
#include <thread>
#include <vector>
#include <zrlib/zrlib.h>

namespace fs = std::filesystem;

namespace {

/// The path in UTF-8, the encoding of messages.
std::string Text(const fs::path& path)
{
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

/// The extension in lower case, without the dot.
std::string TypeOf(const fs::path& file)
{
    std::string type = Text(file.extension());
    std::transform(type.begin(), type.end(), type.begin(),
        [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return type.size() > 1 ? type.substr(1) : "(no type)";
}

std::string Describe(const FileCount& count)
{
    HCString text;
    text.Format("%lld files, %lld lines, %s", static_cast<long long>(count.files), static_cast<long long>(count.lines),
        static_cast<const char*>(ZRFormat::KMGT(count.bytes, ZRFormat::BYTES, 2)));
    return text.ToString();
}

/// Reads a file. `count` is called for each block, so that it can time the counting.
template <typename Count> ReadResult ReadText(const fs::path& path, FileCount& result, Count count)
{
    TextFile text(path);
    while (text.ReadBlock()) {
        count(text);
    }
    return text.Finish(result);
}

void WarnSkipped(const fs::path& path, const char* reason) { ZR_WARN("Skipped %s: %s", Text(path).c_str(), reason); }

} // namespace

Survey::Survey() { m_sync.SetReport(1); }

bool Survey::Take(const fs::path& path, int threads)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found || status.type() == fs::file_type::none) {
        const bool isMissing = status.type() == fs::file_type::not_found;
        ZR_ERROR("%s %s", Text(path).c_str(), isMissing ? "does not exist" : error.message().c_str());
        return false;
    }
    {
        const ZRProfiler timer(&m_walking);
        if (fs::is_directory(status)) {
            Walk(path);
        } else {
            m_files.push_back({path, 0, {}});
        }
    }
    ZRProgressRun run("Survey", static_cast<int>(m_files.size()));
    m_run = &run;
    if (threads > 0) {
        ReadOnThreads(threads);
    } else {
        ReadUntilDone();
    }
    return true;
}

void Survey::Walk(const fs::path& folder)
{
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        entries.push_back(*entry);
    }
    if (error) {
        WarnSkipped(folder, error.message().c_str());
        return;
    }
    std::sort(entries.begin(), entries.end()); // so that the same tree gives the same report

    const std::size_t index = m_folders.size();
    m_folders.push_back({folder, ZRKey::IssueTicket()});
    std::vector<fs::path> below;
    for (const fs::directory_entry& entry : entries) {
        if (!fs::is_directory(entry.status(error))) {
            m_files.push_back({entry.path(), index, {}});
        } else if (entry.is_symlink(error)) {
            WarnSkipped(entry.path(), "link to a folder");
        } else {
            below.push_back(entry.path());
        }
    }
    for (const fs::path& next : below) {
        Walk(next);
    }
}

void Survey::ReadOnThreads(int threads)
{
    std::vector<std::thread> readers;
    readers.reserve(static_cast<std::size_t>(threads));
    try {
        while (readers.size() < static_cast<std::size_t>(threads)) {
            readers.emplace_back([this] { ReadUntilDone(); });
        }
    } catch (const std::system_error& error) {
        ZR_WARN("Only %d threads: %s", static_cast<int>(readers.size()), error.what());
    }
    if (readers.empty()) {
        ReadUntilDone();
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
}

void Survey::ReadUntilDone()
{
    for (std::size_t next = m_next++; next < m_files.size(); next = m_next++) {
        File& file = m_files[next];
        if (!IsReadable(file.path)) {
            continue;
        }
        FileCount count;
        ReadResult result = ReadResult::kUnreadable;
        {
            const ZRProfiler reading(&m_reading);
            result = ReadText(file.path, count, [this](TextFile& text) {
                const ZRProfiler counting(&m_counting);
                text.CountBlock();
            });
        }
        const ZRLockGuard guard(m_sync, "Survey::ReadUntilDone");
        Keep(file, result, count);
    }
}

/// Whether a path is a regular file. If not, a warning says why.
bool Survey::IsReadable(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    switch (status.type()) {
    case fs::file_type::regular:
        return true;
    case fs::file_type::not_found:
        WarnSkipped(path, fs::is_symlink(fs::symlink_status(path, error)) ? "dangling link" : "gone meanwhile");
        return false;
    case fs::file_type::none: // the system cannot tell the type
        WarnSkipped(path, error.message().c_str());
        return false;
    default:
        WarnSkipped(path, "not a file with a content");
        return false;
    }
}

void Survey::Keep(File& file, ReadResult result, const FileCount& count)
{
    m_run->Step(HCString(Text(file.path)));
    switch (result) {
    case ReadResult::kText: {
        const int type = m_types.CodeOf(TypeOf(file.path));
        ZR_TRACE("File %s, type %s: %s", Text(file.path).c_str(), FileTypes::NameOf(type), Describe(count).c_str());
        file.count = count;
        m_byType[type] += count;
        m_sizes.Add(count.bytes);
        break;
    }
    case ReadResult::kBinary:
        WarnSkipped(file.path, "binary");
        break;
    case ReadResult::kUnreadable:
        WarnSkipped(file.path, "cannot be read");
        break;
    }
}

void Survey::Report()
{
    const ZRProfiler timer(&m_reporting);
    std::vector<FileCount> ofFolders(m_folders.size() + 1); // one more, for a file taken alone
    for (const File& file : m_files) {
        ofFolders[file.folder] += file.count;
    }
    for (std::size_t folder = 0; folder < m_folders.size(); ++folder) {
        ZR_OUT("Folder %lld %s: %s", static_cast<long long>(m_folders[folder].ticket),
            Text(m_folders[folder].path).c_str(), Describe(ofFolders[folder]).c_str());
    }
    FileCount all;
    std::map<std::string, FileCount> byName;
    for (const auto& [type, count] : m_byType) {
        byName[FileTypes::NameOf(type)] += count;
        all += count;
    }
    for (const auto& [name, count] : byName) {
        ZR_OUT("Type %s: %s", name.c_str(), Describe(count).c_str());
    }
    ZR_OUT("Total: %s", Describe(all).c_str());
    m_sizes.Report();
}
