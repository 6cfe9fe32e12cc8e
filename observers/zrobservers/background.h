/// ZRBackground: a thread that takes the work of observers off the senders.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/event_queue.h"
#include "zrobservers/export.h"

#include <cstdint>
#include <memory>

/// Sends the events of a subject once more, on a thread of its own, to the observers that are attached to it. So any
/// observer becomes asynchronous that needs nothing of the sender's thread:
///
///     ZRBackground background(*ZRGetMessageHandler());
///     const ZRJsonLines lines(background, "lines.json");
///
/// An observer asks for time and thread of the sender with ZREventQueue::GetOrigin. Exceptions of observers are
/// dropped. For observers that send messages themselves choose a queue that drops (ZREventQueue). ZRTraceFile and
/// ZRProfileTable need the sender's thread, and are quick there.
///
/// A sender pays for a copy into a queue. The thread gathers events for two milliseconds, or until the queue is half
/// full, so that senders seldom have to wake it. A process that is killed loses what waits.
///
/// Threads: any. A child of `fork` starts a thread of its own with the first event; what waited is the parent's. Not
/// for static objects of libraries on Windows, where the system ends threads before these go.
class ZR_OBSERVERS_API ZRBackground final : public ZRObservedObject {
public:
    using Options = ZREventQueue::Options;

    /// Starts the thread. Throws std::system_error when there cannot be one. `subject` must outlive this object.
    explicit ZRBackground(ZRObservedObject& subject);
    ZRBackground(ZRObservedObject& subject, const Options& options);

    /// Of progress and the threading switch (ZRAttachObserver).
    ZRBackground();
    explicit ZRBackground(const Options& options);

    /// Ends the thread, when the observers have had all events. They are detached afterwards.
    ~ZRBackground() override;
    ZRBackground(const ZRBackground&) = delete;
    ZRBackground& operator=(const ZRBackground&) = delete;

    /// Gives the observer all events that were sent before, and detaches it then. So it waits, unless it is called by
    /// an observer of this object.
    char DetachObserver(ZRObjectObserver* observer, char flag) override;

    /// Waits until the observers have had all events that were sent before. Called by one of them it does nothing.
    void Flush();

    /// How many events were lost because there was no room.
    [[nodiscard]] std::int64_t GetDroppedCount() const;

private:
    class Worker;

    std::unique_ptr<Worker> m_worker;
};
