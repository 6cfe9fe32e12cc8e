#include "survey.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <system_error>
#include <vector>
#include <zrlib/zrlib.h>

namespace fs = std::filesystem;

namespace {

/// The path in UTF-8, which is what messages are in.
std::string Text(const fs::path& path)
{
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

/// The extension in small letters without its dot.
std::string TypeOf(const fs::path& file)
{
    std::string type = Text(file.extension());
    std::transform(type.begin(), type.end(), type.begin(),
        [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return type.size() > 1 ? type.substr(1) : "(no type)";
}

HCString Describe(const std::string& what, const FileCount& count)
{
    HCString text;
    text.Format("%s: %lld files, %lld lines, %lld bytes", what.c_str(), static_cast<long long>(count.files),
        static_cast<long long>(count.lines), static_cast<long long>(count.bytes));
    return text;
}

/// What lies in a folder and all below it, as far as it can be read; folders count too.
int CountEntries(const fs::path& folder)
{
    int count = 0;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
        ++count;
    }
    return count;
}

void WarnSkipped(const fs::path& path, const char* reason)
{
    HCString text;
    text.Format("Skipped %s: %s", Text(path).c_str(), reason);
    ZRWarn(text, "Survey", 1);
}

} // namespace

bool Survey::Walk(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found || status.type() == fs::file_type::none) {
        const bool isMissing = status.type() == fs::file_type::not_found;
        HCString text;
        text.Format("%s %s", Text(path).c_str(), isMissing ? "does not exist" : error.message().c_str());
        ZRError(text, "Survey::Walk", 1);
        return false;
    }
    ZRProgressStart("Survey");
    if (fs::is_directory(status)) {
        if (ZRProgressEnabled() != 0) {
            ZRProgressSetRange(0, CountEntries(path));
        }
        WalkFolder(path);
    } else {
        FileCount alone;
        Take(path, alone);
    }
    ZRProgressEnd();
    return true;
}

void Survey::WalkFolder(const fs::path& folder)
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
    std::sort(entries.begin(), entries.end()); // the same report for the same tree

    FileCount ofFolder;
    std::vector<fs::path> folders;
    for (const fs::directory_entry& entry : entries) {
        HCString name(Text(entry.path()).c_str());
        ZRProgressUpdate(++m_seen, &name);
        const fs::file_status status = entry.status(error);
        if (!fs::is_directory(status)) {
            Take(entry.path(), ofFolder);
        } else if (entry.is_symlink(error)) {
            WarnSkipped(entry.path(), "link to a folder");
        } else {
            folders.push_back(entry.path());
        }
    }
    ZROut(Describe("Folder " + Text(folder), ofFolder), "Survey::WalkFolder", 1);
    for (const fs::path& below : folders) {
        WalkFolder(below);
    }
}

void Survey::Take(const fs::path& file, FileCount& ofFolder)
{
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    switch (status.type()) {
    case fs::file_type::regular:
        break;
    case fs::file_type::not_found:
        WarnSkipped(file, fs::is_symlink(fs::symlink_status(file, error)) ? "dangling link" : "gone meanwhile");
        return;
    case fs::file_type::none: // the system does not say what it is
        WarnSkipped(file, error.message().c_str());
        return;
    default:
        WarnSkipped(file, "not a file with a content");
        return;
    }
    FileCount count;
    switch (CountTextFile(file, count)) {
    case ReadResult::kText:
        TakeText(file, count);
        ofFolder += count;
        break;
    case ReadResult::kBinary:
        WarnSkipped(file, "binary");
        break;
    case ReadResult::kUnreadable:
        WarnSkipped(file, "cannot be read");
        break;
    }
}

void Survey::TakeText(const fs::path& file, const FileCount& count)
{
    const int type = m_types.CodeOf(TypeOf(file));
    ZRTrace(Describe("File " + Text(file) + ", type " + FileTypes::NameOf(type), count), "Survey::TakeText", 1);
    m_byType[type] += count;
}

void Survey::ReportTotals() const
{
    FileCount all;
    std::map<std::string, FileCount> byName;
    for (const auto& [type, count] : m_byType) {
        byName[FileTypes::NameOf(type)] += count;
        all += count;
    }
    for (const auto& [name, count] : byName) {
        ZROut(Describe("Type " + name, count), "Survey::ReportTotals", 1);
    }
    ZROut(Describe("Total", all), "Survey::ReportTotals", 1);
}
