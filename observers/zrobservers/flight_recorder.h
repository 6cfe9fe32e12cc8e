/// ZRFlightRecorder: the last messages before something went wrong.
#pragma once

#include "hcbase/string.h"
#include "zrlib/records/message_types.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"

#include <memory>

/// Keeps the last messages in memory, traces included, and appends them to a file when there is a reason: a message of
/// a chosen type, WriteNow, or a crash. Each message is written once, or again where the disk was full:
///
///     -- 3 messages, process 4711: a message of type ERROR
///     2026-11-23T20:15:02.123456Z 4711 TRACE 1 Map::Load: reads roads
///     2026-11-23T20:15:02.123470Z 4712 WARNING 1 Map::Load: line 7 is empty
///     2026-11-23T20:15:02.123999Z 4711 ERROR 1 Map::Check: no roads
///
/// A line has the time in UTC, the thread's ID, type, level, place and text. Control characters become blanks. Place
/// and text together are kept up to kMostBytes. Messages are on while the object exists (ZRSetMessagesEnabled). Keeping
/// a message costs one reading of the clock and a copy of its texts, and allocates nothing.
///
/// Threads: any. A child of `fork` writes only what it has sent itself.
class ZR_OBSERVERS_API ZRFlightRecorder {
public:
    static constexpr int kMostBytes = 472;

    struct Options {
        int count = 1000; // of kept messages, 1 to 1,000,000; 512 bytes each
        int types = ZR_MSG_ERROR; // of messages that trigger a write, a sum of ZR_MSG_...; 0 for none
        /// Write when the process crashes: by SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGSYS or SIGABRT; on Windows by an
        /// unhandled exception, or abort. The handler installed before runs afterwards, and the process ends as it
        /// would have. At most eight recorders of a process do so.
        bool atCrash = false;
        ZRFilter filter; // of what is kept
    };

    /// path: UTF-8, of the file that is appended to; created when there is something to write. A relative one starts at
    /// the directory that is current now. When the file cannot be written, that is reported once with ZRErrorSet, and
    /// the messages are kept for the next reason.
    explicit ZRFlightRecorder(const HCString& path);
    ZRFlightRecorder(const HCString& path, const Options& options);
    ~ZRFlightRecorder();
    ZRFlightRecorder(const ZRFlightRecorder&) = delete;
    ZRFlightRecorder& operator=(const ZRFlightRecorder&) = delete;

    /// Writes what was kept since the last write. False when that failed.
    bool WriteNow();

    /// Whether the last write succeeded.
    [[nodiscard]] bool IsOpen() const;

    /// While one exists, a crash of its thread can be recorded even when the thread's stack has overflowed. The thread
    /// that constructs a recorder with `atCrash` has one.
    class ZR_OBSERVERS_API ThreadGuard {
    public:
        ThreadGuard();

        /// To be called on the same thread.
        ~ThreadGuard();
        ThreadGuard(const ThreadGuard&) = delete;
        ThreadGuard& operator=(const ThreadGuard&) = delete;

    private:
        void* m_stack = nullptr; // owned; null when the thread had one, or there is none
    };

private:
    class Recorder;

    std::unique_ptr<Recorder> m_recorder;
};
