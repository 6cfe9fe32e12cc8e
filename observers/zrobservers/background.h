/// ZRBackground: a thread that takes the work of observers off the senders.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/event_queue.h"
#include "zrobservers/export.h"

#include <cstdint>
#include <memory>

/// Sends the events of a subject once more, on a thread of its own, to the observers that are attached to it. This
/// makes any observer asynchronous that needs nothing of the sender's thread:
///
///     ZRBackground background(*ZRGetMessageHandler());
///     const ZRJsonLines lines(background, "lines.json");
///
/// An observer gets the sender's time and thread from ZREventQueue::GetOrigin. Exceptions of observers are dropped. For
/// observers that send messages themselves, choose a queue that drops (ZREventQueue). ZRTraceFile and ZRProfileTable
/// need the sender's thread, and are fast there.
///
/// A sender pays for a copy into a queue. The thread gathers events for two milliseconds, or until the queue is half
/// full, so that senders seldom have to wake it. A process that is killed loses what is waiting.
///
/// Threads: any. A child of `fork` starts a thread of its own with the first event; what was waiting belongs to the
/// parent. Not for static objects of libraries on Windows, where the system ends threads before it destroys these.
class ZR_OBSERVERS_API ZRBackground final : public ZRObservedObject {
public:
    using Options = ZREventQueue::Options;

    /// Starts the thread. Throws std::system_error when it cannot be started. `subject` must outlive this object.
    explicit ZRBackground(ZRObservedObject& subject);
    ZRBackground(ZRObservedObject& subject, const Options& options);

    /// For progress and the threading switch (ZRAttachObserver).
    ZRBackground();
    explicit ZRBackground(const Options& options);

    /// Ends the thread after the observers have handled all events. They are then detached.
    ~ZRBackground() override;
    ZRBackground(const ZRBackground&) = delete;
    ZRBackground& operator=(const ZRBackground&) = delete;

    /// First gives the observer all events that were sent before, and then detaches it. So it waits, unless an observer
    /// of this object calls it.
    char DetachObserver(ZRObjectObserver* observer, char flag) override;

    /// Waits until the observers have handled all events that were sent before. A no-op when one of them calls it. The
    /// caller must hold nothing that these need: an observer of messages that calls it would wait for ever for one that
    /// sends a message.
    void Flush();

    /// The number of events that were lost because there was no room.
    [[nodiscard]] std::int64_t GetDroppedCount() const;

private:
    class Worker;

    std::unique_ptr<Worker> m_worker;
};
