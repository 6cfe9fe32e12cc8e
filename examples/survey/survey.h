/// Walking a folder tree and adding up its text files by type.
#pragma once

#include "file_types.h"
#include "size_statistics.h"
#include "text_file.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <vector>
#include <zrlib/zrlib.h>

/// Everything it reports is a message: Out for folders and totals, Trace for each file, Warn for what is skipped, Error
/// for a path that does not exist. Tells how far it has come as progress of the process, and times its phases: to walk
/// the tree, to read its files, to count what was read, and to report.
class Survey {
public:
    Survey();

    /// Walks a folder with all that lies below it, or takes a single file, and reads what it finds. Links to folders
    /// are not followed, because they may lead back. False when there is no such path or it cannot be reached.
    ///
    /// threads: how many threads read, beside the calling one; 0 to read on the calling one.
    bool Take(const std::filesystem::path& path, int threads);

    /// Reports files, lines and bytes of each folder, of each type and of all, and the sizes of files.
    void Report();

private:
    struct Folder {
        std::filesystem::path path;
        std::int64_t ticket;
    };
    struct File {
        std::filesystem::path path;
        std::size_t folder; // index; 0 also when there is no folder
        FileCount count; // all 0 when it was skipped
    };

    void Walk(const std::filesystem::path& folder);
    void ReadOnThreads(int threads);
    void ReadUntilDone();
    static bool IsReadable(const std::filesystem::path& path);
    void Keep(File& file, ReadResult result, const FileCount& count);

    FileTypes m_types;
    std::vector<Folder> m_folders;
    std::vector<File> m_files;
    std::map<int, FileCount> m_byType; // by the object code of the type
    SizeStatistics m_sizes;
    ZRProgressRun* m_run = nullptr; // not owned; while files are read

    std::atomic<std::size_t> m_next{0}; // file that no thread has taken yet
    ZRThreadSync m_sync; // guards what the threads have read, and their reports

    ZRProfilerState m_walking{"walk"};
    ZRProfilerState m_reading{"read"};
    ZRProfilerState m_counting{"count"};
    ZRProfilerState m_reporting{"report"};
};
