/// EventBuffer: events on their way to another thread. Not exported.
#pragma once

#include "system.h"
#include "zrobservers/event_queue.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace zrobservers {

/// A bounded queue of copies of events with many writers and one reader at a time. The reader takes everything that
/// waits at once, so that it holds the lock for a few instructions only.
///
/// A forked child leaves its parent's state untouched, as another thread may have been in the middle of changing it,
/// and starts with a new one.
class EventBuffer {
public:
    explicit EventBuffer(const ZREventQueue::Options& options);
    ~EventBuffer();
    EventBuffer(const EventBuffer&) = delete;
    EventBuffer& operator=(const EventBuffer&) = delete;

    void Push(const ZRObservedObjectEvent& event);
    int Drain(const ZREventQueue::Handler& handle, int most);
    bool WaitFor(int milliseconds);
    std::int64_t GetDroppedCount();

    /// For a reader that gathers: waits for an event, and then for others to come. False after End, when nothing waits.
    bool WaitForBatch();

    /// Waits until the reader has handled what has been pushed.
    void WaitUntilHandled();

    /// Says that there is a thread that reads. Otherwise that is known when it first drains.
    void AnnounceReader();

    /// Says that the thread announced before could not be started: nobody waits for it.
    void WithdrawReader();

    /// Ends all waiting for room, and makes a reader that gathers drain what there is and end.
    void End();

    static const ZREventOrigin* GetOrigin() noexcept;

    /// While one exists on a thread that drains, senders that wait for room get it, beyond the capacity, so that the
    /// thread may take a lock that they hold.
    class Opened {
    public:
        Opened();
        ~Opened();
        Opened(const Opened&) = delete;
        Opened& operator=(const Opened&) = delete;
    };

private:
    /// A message without the other fields of its event; any other event whole.
    struct Entry {
        ZREventOrigin origin;
        ZRMsg message;
        std::unique_ptr<ZRObservedObjectEvent> event; // null for a message

        void Set(const ZRObservedObjectEvent& from);
        void Call(const ZREventQueue::Handler& handle) const;
    };

    /// A ring of entries, of which `count` from `first` on are in use.
    struct Entries {
        std::vector<Entry> ring;
        std::size_t first = 0;
        std::size_t count = 0;

        Entry& At(std::size_t index) { return ring[(first + index) % ring.size()]; }
        void Append(const ZRObservedObjectEvent& event);
        void DropFirst();
    };

    struct State {
        std::mutex lock;
        std::condition_variable more; // for the reader
        std::condition_variable room; // for writers
        std::condition_variable handled; // for those who wait until all is handled
        Entries waiting;
        std::int64_t pushed = 0;
        std::int64_t handledUpTo = 0; // counts as `pushed` does
        std::int64_t dropped = 0;
        Entries taken; // the reader's, as is `next`
        std::size_t next = 0; // index of the first that is not handled
        std::int64_t takenUpTo = 0;
        std::thread::id lastReader; // the thread that drained last; before, the one that constructed the buffer
        bool isDraining = false;
        int openings = 0; // the reader sends something itself
        int waitingForAll = 0;
        bool isReaderAsleep = false;
        bool isReadHere = true; // false in a child in which nobody has drained yet
        bool isOver = false;
    };

    class Reading;

    State& Current();
    bool MakeRoom(State& state, std::unique_lock<std::mutex>& guard) const;
    bool HasMuch(const State& state) const;
    static bool Take(State& state);
    static void HandleNext(State& state, const ZREventQueue::Handler& handle);

    static thread_local State* t_draining;
    static thread_local const ZREventOrigin* t_origin;

    const std::size_t m_capacity;
    const ZREventQueue::WhenFull m_whenFull;
    const std::function<void()> m_notify;
    std::atomic<State*> m_state; // owned
    std::atomic<unsigned int> m_forkGeneration{ForkGeneration()};
    HCThreadSync m_forkLock; // works in a forked child
};

/// Reports what failed in an observer, which may run on a thread that drains.
void Tell(const HCString& text, const char* place);

} // namespace zrobservers
