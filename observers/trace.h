/// ZRTraceFile::Trace: the implementation of ZRTraceFile. Not exported.
#pragma once

#include "json.h"
#include "switch_guards.h"
#include "system.h"
#include "zrobservers/trace_file.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>

/// Events are written as text into a buffer, under m_lock. Whoever writes the buffer to the file holds m_fileLock,
/// takes the buffer under m_lock, and writes it without m_lock, so that senders do not wait for the disk.
class ZRTraceFile::Trace {
public:
    enum class Start {
        kNow, // the file is truncated
        kWithFirstEvent, // the file is new: if it exists already, the name gets the process ID
    };

    Trace(const HCString& path, const ZRFilter& filter, Start start);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    void Flush();
    bool IsSound() const { return m_isSound.load(std::memory_order_relaxed); }
    std::int64_t GetEventCount() const { return IsOfThisProcess() ? m_count.load(std::memory_order_relaxed) : 0; }

    /// The path of the file that is written; empty before it is open.
    std::string GetPath();

private:
    using Object = zrobservers::JsonObject;

    static constexpr std::size_t kFullBuffer = std::size_t{256} * 1024; // bytes after which the sender writes

    // A forked child leaves its parent's buffers and thread object untouched: the thread is not in the child, and
    // another thread may have been in the middle of changing the buffers.
    struct Buffers {
        zrobservers::JsonBuffer collected;
        zrobservers::JsonBuffer written; // guarded by m_fileLock
        Object::Writer writer;
        std::unordered_set<std::uint64_t> namedThreads; // numbers of those whose names are written
        std::string openPath; // guarded by m_fileLock
    };
    class Flusher;

    void OnMessage(const ZRObservedObjectEvent& event);
    void OnTimer(const ZRObservedObjectEvent& event);
    void OnProgress(const ZRObservedObjectEvent& event);

    template <typename Fill>
    void Append(const char* phase, const char* category, std::int64_t nanoseconds, std::string_view name, Fill fill);
    void NameThread(std::uint64_t thread);
    void WriteThreadName(std::uint64_t thread);
    void StartInChild();
    void StartFlusher();
    void Write();
    void NoteWhether(bool isWritten);
    bool OpenFile();
    bool OpenPath();
    void End();
    bool IsOfThisProcess() const;
    void TellFailure();

    const std::string m_path;
    const ZRFilter m_filter;
    const Start m_start;
    const std::uint32_t m_number; // of this trace among those of the process

    HCThreadSync m_lock; // like all locks here one that works in a forked child
    Buffers* m_buffers = nullptr; // owned
    std::uint64_t m_process;
    std::atomic<unsigned int> m_forkGeneration; // of the process that writes
    bool m_isChild = false; // of the process that constructed this object

    HCThreadSync m_fileLock;
    zrobservers::OutputFile m_file;
    bool m_hasBeenOpen = false;
    bool m_owesHeader = false; // there was no room for it

    std::atomic<bool> m_isSound{true}; // the last write succeeded
    std::atomic<int> m_failure{0}; // errno of the first failure; 0 before it
    std::atomic<bool> m_isTold{false};
    std::atomic<std::int64_t> m_count{0};
    // Guarded by the lock of the observer.
    std::int64_t m_progressRun = 0;
    std::optional<unsigned int> m_progressSpanIn; // ForkGeneration of the process that has begun one
    HCString m_progressTitle = ZRProgressGetTitle();

    Flusher* m_flusher = nullptr; // owned; null before the first event, and without a thread
    bool m_hasTriedFlusher = false;
    zrobservers::ProfilerOn m_profilerOn;
    // Last, so that they are destroyed first. One observer for each subject, so that none of their locks is held while
    // a message of another is sent.
    ZRListener m_messages;
    ZRListener m_timers;
    ZRListener m_progress;
};
