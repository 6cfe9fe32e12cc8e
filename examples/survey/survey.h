/// Walking a folder tree and adding up its text files by type.
#pragma once

#include "file_types.h"
#include "text_file.h"

#include <filesystem>
#include <map>

/// Everything it reports is a message: Out for folders and totals, Trace for each file, Warn for what is skipped, Error
/// for a path that does not exist. Tells how far it has come as progress of the process.
class Survey {
public:
    /// Walks a folder with all that lies below it, or takes a single file. Links to folders are not followed, because
    /// they may lead back. False when there is no such path or it cannot be reached.
    bool Walk(const std::filesystem::path& path);

    /// Reports files, lines and bytes of each type and of all.
    void ReportTotals() const;

private:
    void WalkFolder(const std::filesystem::path& folder);
    void Take(const std::filesystem::path& file, FileCount& ofFolder);
    void TakeText(const std::filesystem::path& file, const FileCount& count);

    FileTypes m_types;
    int m_seen = 0; // files and folders so far
    std::map<int, FileCount> m_byType; // by the object code of the type
};
