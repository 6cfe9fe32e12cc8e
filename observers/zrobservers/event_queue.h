/// ZREventQueue: events for the thread that wants them.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"

#include <chrono>
#include <climits>
#include <cstdint>
#include <functional>
#include <memory>

/// Where an event comes from that is handled on another thread than it was sent on.
struct ZREventOrigin {
    std::chrono::system_clock::time_point time; // when it was sent
    std::uint64_t thread = 0; // ID of the sender, as the system shows it
    ZRProfilerRun run{}; // that has just ended, for the event of a timer (ZRProfiler::GetEnding); else zeros
};

/// Keeps copies of events until a thread takes them out with Drain, such as that of a user interface. The copies have
/// no source.
///
///     ZREventQueue queue(*ZRGetMessageHandler());
///     // in the loop of the window:
///     queue.Drain([&](const ZRObservedObjectEvent& event) { window.Show(event.GetText()); });
///
/// While senders may wait for room (kWait), a sender that waits holds the lock of messages. So the thread that drains
/// must not send messages, progress or timers then, neither while it handles events nor between two calls of Drain: a
/// loop of a window that sends messages itself wants kDropOldest. The observers of this library may be used in a
/// handler all the same.
///
/// Threads: any; events of one thread stay in their order. In a child of `fork` the queue is empty, and until a thread
/// of the child has called Drain events without room are dropped.
class ZR_OBSERVERS_API ZREventQueue {
public:
    /// What happens to an event for which there is no room.
    enum class WhenFull {
        /// The sender waits until there is room; nothing is lost. The thread that has drained last (at first the one
        /// that has constructed the queue) does not wait for itself: its events are kept beyond the capacity.
        kWait,
        kDropOldest, // the event that has waited longest is lost
        kDropNewest, // the event is lost
    };

    struct Options {
        int capacity = 8192; // most events that wait, at least 1; those that a call of Drain has begun with are beside
        WhenFull whenFull = WhenFull::kWait;
        ZRFilter filter; // of messages and timers
        /// Called on the sender's thread, as OnEvent is, when an event has come into a queue that was empty: to wake a
        /// loop.
        std::function<void()> notify;
    };
    using Handler = std::function<void(const ZRObservedObjectEvent&)>;

    /// Events of the process: messages, progress and the threading switch, timers; each while it is on.
    ZREventQueue();
    explicit ZREventQueue(const Options& options);

    /// Events of one subject.
    explicit ZREventQueue(ZRObservedObject& subject);
    ZREventQueue(ZRObservedObject& subject, const Options& options);

    /// What still waits is lost. Nobody may be inside Drain.
    ~ZREventQueue();
    ZREventQueue(const ZREventQueue&) = delete;
    ZREventQueue& operator=(const ZREventQueue&) = delete;

    /// Calls `handle` for events in their order, on this thread: for those that wait now, at most `most`. Gives how
    /// many; 0 while another call is under way. An exception of `handle` passes on; the events behind wait for the next
    /// call.
    int Drain(const Handler& handle, int most = INT_MAX);

    /// Waits for an event, for at most so many milliseconds. False when there is none.
    bool WaitFor(int milliseconds);

    /// How many events were lost because there was no room.
    [[nodiscard]] std::int64_t GetDroppedCount() const;

    /// Within a handler of Drain, or an observer of a ZRBackground: where the event comes from. Null elsewhere, where
    /// the event is handled by the thread that sends it.
    [[nodiscard]] static const ZREventOrigin* GetOrigin() noexcept;

private:
    class Queue;

    std::unique_ptr<Queue> m_queue;
};
