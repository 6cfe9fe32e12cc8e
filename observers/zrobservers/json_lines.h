/// ZRJsonLines: messages as JSON, one object per line.
#pragma once

#include "hcbase/string.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"

#include <memory>

class ZRObservedObject;

/// Appends one line to a file for each message:
///
///     {"time":"2026-11-23T20:15:02.123456Z","event":"message","type":"WARNING","level":1,"code":0,"chain":false,
///     "place":"Map::Load","thread":4711,"process":4711,"text":"no such road","textEx":""}
///
/// The time is UTC (RFC 3339); thread and process are the system's IDs. Control characters are escaped, so that no text
/// can forge a line; bytes that are not UTF-8 are replaced by U+FFFD. Timers have the fields name, start and seconds of
/// the run, calls, total and self; progress has what ("start", "range", "update", "end"), title, percent, and text.
///
/// Each line is written whole and at once, by any number of threads and processes, to the file that has the name then:
/// when logrotate moves the file, the next line creates a new one. A full disk may cut a line.
class ZR_OBSERVERS_API ZRJsonLines {
public:
    // What is written; a sum of these.
    static constexpr int kMessages = 1;
    static constexpr int kTimers = 2; // the handler of profiler states is on while the object exists
    static constexpr int kProgress = 4;

    /// path: UTF-8; a relative one starts at the directory that is current now. The file is created at once, and is not
    /// truncated. filter: of messages and timers.
    explicit ZRJsonLines(const HCString& path, int what = kMessages, const ZRFilter& filter = {});

    /// Writes all that one subject sends, such as a ZRBackground. `subject` must outlive this object.
    ZRJsonLines(ZRObservedObject& subject, const HCString& path, const ZRFilter& filter = {});
    ~ZRJsonLines();
    ZRJsonLines(const ZRJsonLines&) = delete;
    ZRJsonLines& operator=(const ZRJsonLines&) = delete;

    /// Whether the last line could be written.
    [[nodiscard]] bool IsOpen() const;

private:
    class Lines;

    std::unique_ptr<Lines> m_lines;
};
