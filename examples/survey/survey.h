/// Walks a folder tree and adds up its text files by type.
#pragma once

#include "file_types.h"
#include "size_statistics.h"
#include "text_file.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <vector>
#include <zrlib/zrlib.h>

/// Reports by messages only: Out for folders and totals, Trace for each file, Warn for what is skipped, Error for a
/// path that does not exist. Sends the progress of the process, and times its phases: walking the tree, reading files,
/// counting what was read, and reporting.
class Survey {
public:
    Survey();

    /// Walks a folder and all folders below it, or takes a single file, and reads the files. Does not follow links to
    /// folders, which may form a cycle. False when the path does not exist or cannot be reached.
    ///
    /// threads: number of threads that read, while the calling one waits; 0 to read on the calling one.
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
        std::size_t folder; // index; also 0 for a file taken alone
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
    ZRProgressRun* m_run = nullptr; // not owned; used while files are read

    std::atomic<std::size_t> m_next{0}; // the next file that no thread has taken
    ZRThreadSync m_sync; // guards what the threads have read, and their reports

    ZRProfilerState m_walking{"walk"};
    ZRProfilerState m_reading{"read"};
    ZRProfilerState m_counting{"count"};
    ZRProfilerState m_reporting{"report"};
};
