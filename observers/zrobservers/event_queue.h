/// ZREventQueue: hands events to another thread.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"

#include <chrono>
#include <climits>
#include <cstdint>
#include <functional>
#include <memory>

/// The origin of an event that is handled on another thread than it was sent on.
struct ZREventOrigin {
    std::chrono::system_clock::time_point time; // when it was sent
    std::uint64_t thread = 0; // ID of the sender, as the system shows it
    ZRProfilerRun run{}; // the run just ended, for a timer's event (ZRProfiler::GetEnding); otherwise zeros
};

/// Keeps copies of events until a thread, such as that of a user interface, takes them out with Drain. The copies have
/// no source.
///
///     ZREventQueue queue(*ZRGetMessageHandler());
///     // in the loop of the window:
///     queue.Drain([&](const ZRObservedObjectEvent& event) { window.Show(event.GetText()); });
///
/// With kWait a sender that waits for room holds the lock of messages. So the thread that drains must not send
/// messages, progress or timers, neither while it handles events nor between two calls of Drain: use kDropOldest in an
/// event loop that sends messages itself. A handler may use the observers of this library all the same.
///
/// Threads: any; events of one thread keep their order. In a child of `fork` the queue is empty, and until a thread of
/// the child has called Drain, events without room are dropped.
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
        int capacity = 8192; // most waiting events, at least 1; those that a call of Drain has begun with do not count
        WhenFull whenFull = WhenFull::kWait;
        ZRFilter filter; // of messages and timers
        /// Called on the sender's thread, as OnEvent is, when an event enters an empty queue: to wake a loop.
        std::function<void()> notify;
    };
    using Handler = std::function<void(const ZRObservedObjectEvent&)>;

    /// Events of the process: messages, progress and the threading switch, timers; each while it is on.
    ZREventQueue();
    explicit ZREventQueue(const Options& options);

    /// Events of one subject.
    explicit ZREventQueue(ZRObservedObject& subject);
    ZREventQueue(ZRObservedObject& subject, const Options& options);

    /// Discards what is still waiting. No thread may be inside Drain.
    ~ZREventQueue();
    ZREventQueue(const ZREventQueue&) = delete;
    ZREventQueue& operator=(const ZREventQueue&) = delete;

    /// Calls `handle` for the waiting events in their order, on this thread, for at most `most` of those that are
    /// waiting now. Returns how many; 0 while another call is under way. An exception of `handle` passes to the caller;
    /// the events behind it wait for the next call.
    int Drain(const Handler& handle, int most = INT_MAX);

    /// Waits for an event, for at most `milliseconds`. False when there is none.
    bool WaitFor(int milliseconds);

    /// The number of events that were lost because there was no room.
    [[nodiscard]] std::int64_t GetDroppedCount() const;

    /// Within a handler of Drain, or an observer of a ZRBackground: the origin of the event. Null elsewhere, where the
    /// event is handled by the thread that sends it.
    [[nodiscard]] static const ZREventOrigin* GetOrigin() noexcept;

private:
    class Queue;

    std::unique_ptr<Queue> m_queue;
};
