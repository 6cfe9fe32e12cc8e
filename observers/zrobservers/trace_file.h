/// ZRTraceFile: timers, messages and progress of the process on a time line.
#pragma once

#include "hcbase/string.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"

#include <cstdint>
#include <memory>

/// Writes a trace in Chrome's trace event format, which Perfetto, speedscope and chrome://tracing open.
///
/// - Each run of a timer that feeds a state is a complete event, nested as the timers were. The handler of profiler
///   states is on while the object exists.
/// - Each message is an instant event on its thread, with place, type, level and code.
/// - Progress is a counter of percents and a span from its start to its end, while progress is on (ZRProgressEnable).
///
/// Threads have the system's IDs and names, so that they match those of other tools; the name is read at a thread's
/// first event.
///
/// Events are collected and written by a thread of the object four times a second, or by the sender when 256 KiB are
/// waiting. A process that is killed leaves a file without its last bracket, which the viewers accept. In a child of
/// `fork` the trace continues in a file of its own, with the process ID before the extension, once the child sends
/// something. The same happens when the program has closed the file. One path belongs to one process: two that open the
/// same one overwrite each other.
///
/// What cannot be written is lost: a full disk, a missing folder. It is reported once, by the next sender, Flush or the
/// destructor, and later events are written again.
///
/// Not for static objects of libraries on Windows, where the system ends threads before it destroys these.
class ZR_OBSERVERS_API ZRTraceFile {
public:
    /// Opens the file and truncates it. path: UTF-8; a relative one starts at the directory that is current now.
    /// filter: of messages and timers.
    explicit ZRTraceFile(const HCString& path, const ZRFilter& filter = {});

    /// Writes what was collected and closes the file.
    ~ZRTraceFile();
    ZRTraceFile(const ZRTraceFile&) = delete;
    ZRTraceFile& operator=(const ZRTraceFile&) = delete;

    /// Whether the last write succeeded.
    [[nodiscard]] bool IsOpen() const;

    /// Writes what was collected so far.
    void Flush();

    /// The number of timers, messages and events of progress that this process has traced.
    [[nodiscard]] std::int64_t GetEventCount() const;

private:
    friend struct ZRObserversOfEnvironment;
    class Trace;

    explicit ZRTraceFile(std::unique_ptr<Trace> trace);

    std::unique_ptr<Trace> m_trace;
};
