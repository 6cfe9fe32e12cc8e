#include "event_buffer.h"

#include <algorithm>
#include <utility>

namespace zrobservers {

namespace {

constexpr auto kGathering = std::chrono::milliseconds(2);

} // namespace

constinit thread_local EventBuffer::State* EventBuffer::t_draining = nullptr;
constinit thread_local const ZREventOrigin* EventBuffer::t_origin = nullptr;

void EventBuffer::Entry::Set(const ZRObservedObjectEvent& from)
{
    origin.time = std::chrono::system_clock::now();
    origin.thread = ThreadId();
    const ZRProfilerRun* const run = ZRProfiler::GetEnding();
    origin.run = run != nullptr && from.GetCode() == ZR_EVENT_PROFILER_STATE ? *run : ZRProfilerRun{};
    // The event of a message shows the text of its message, unless somebody has changed it.
    const bool isMessage = from.GetCode() == ZR_EVENT_MESSAGE && &from.GetText() == &from.GetMsg().GetText();
    if (isMessage) {
        message = from.GetMsg();
        event.reset();
    } else {
        event = std::make_unique<ZRObservedObjectEvent>(from);
    }
}

void EventBuffer::Entry::Call(const ZREventQueue::Handler& handle) const
{
    if (event) {
        handle(*event);
        return;
    }
    ZRObservedObjectEvent made(ZR_EVENT_MESSAGE);
    made.SetMsg(message);
    made.SetText(message.GetText());
    made.SetTextEx(message.GetTextEx());
    handle(made);
}

void EventBuffer::Entries::Append(const ZRObservedObjectEvent& event)
{
    if (count == ring.size()) { // then the first is at the start
        ring.emplace_back();
    }
    At(count).Set(event);
    ++count;
}

void EventBuffer::Entries::DropFirst()
{
    first = (first + 1) % ring.size();
    --count;
}

/// While one exists, its thread is the reader, if no other is.
class EventBuffer::Reading {
public:
    explicit Reading(State& state)
        : m_state(state)
        , m_guard(state.lock)
        , m_isReader(!std::exchange(state.isDraining, true))
    {
        if (!m_isReader) {
            return;
        }
        state.lastReader = std::this_thread::get_id();
        state.isReadHere = true;
        t_draining = &state;
    }
    ~Reading()
    {
        if (!m_isReader) {
            return;
        }
        t_draining = m_outer;
        if (!IsOfThisProcess()) {
            m_guard.release(); // the parent holds it
            return;
        }
        if (!m_guard.owns_lock()) {
            Lock();
        }
        m_state.isDraining = false;
        if (m_state.next < m_state.taken.count) {
            m_state.more.notify_all(); // for another reader
        }
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    bool IsReader() const { return m_isReader; }

    /// False when `handle` has forked and this is the child.
    bool IsOfThisProcess() const { return m_forkGeneration == ForkGeneration(); }

    void Unlock() { m_guard.unlock(); }
    void Lock()
    {
        m_guard.lock();
        m_state.handledUpTo = m_state.takenUpTo - static_cast<std::int64_t>(m_state.taken.count - m_state.next);
        if (m_state.waitingForAll > 0) {
            m_state.handled.notify_all();
        }
    }

private:
    State& m_state;
    std::unique_lock<std::mutex> m_guard;
    const bool m_isReader;
    const unsigned int m_forkGeneration = ForkGeneration();
    State* const m_outer = t_draining; // of a handler that drains another queue
};

EventBuffer::EventBuffer(const ZREventQueue::Options& options)
    : m_capacity(static_cast<std::size_t>(std::max(options.capacity, 1)))
    , m_whenFull(options.whenFull)
    , m_notify(options.notify)
    , m_state(new State)
{
    Current().lastReader = std::this_thread::get_id();
}

EventBuffer::~EventBuffer()
{
    if (m_forkGeneration == ForkGeneration()) {
        delete m_state;
    }
}

EventBuffer::State& EventBuffer::Current()
{
    if (m_forkGeneration.load(std::memory_order_acquire) != ForkGeneration()) {
        const std::lock_guard guard(m_forkLock);
        if (m_forkGeneration != ForkGeneration()) {
            auto state = std::make_unique<State>();
            state->isReadHere = false;
            m_state = state.release(); // that of the parent is left
            m_forkGeneration.store(ForkGeneration(), std::memory_order_release);
        }
    }
    return *m_state.load(std::memory_order_acquire);
}

void EventBuffer::Push(const ZRObservedObjectEvent& event)
{
    State& state = Current();
    bool isFirst = false;
    {
        std::unique_lock guard(state.lock);
        if (state.waiting.count >= m_capacity && !MakeRoom(state, guard)) {
            ++state.dropped;
            return;
        }
        state.waiting.Append(event);
        ++state.pushed;
        isFirst = state.waiting.count == 1;
        if (std::exchange(state.isReaderAsleep, false) || state.waiting.count == (m_capacity + 1) / 2) {
            state.more.notify_all();
        }
    }
    if (isFirst && m_notify) {
        m_notify();
    }
}

/// False when the event must be dropped.
bool EventBuffer::MakeRoom(State& state, std::unique_lock<std::mutex>& guard) const
{
    switch (m_whenFull) {
    case ZREventQueue::WhenFull::kDropOldest:
        state.waiting.DropFirst();
        ++state.dropped;
        return true;
    case ZREventQueue::WhenFull::kDropNewest:
        return false;
    default:
        break;
    }
    if (!state.isReadHere) {
        return false;
    }
    if (state.lastReader != std::this_thread::get_id()) { // otherwise it would wait for itself
        state.room.wait(
            guard, [this, &state] { return state.waiting.count < m_capacity || state.openings > 0 || state.isOver; });
    }
    return true;
}

bool EventBuffer::HasMuch(const State& state) const
{
    return state.waiting.count >= (m_capacity + 1) / 2 || state.waitingForAll > 0 || state.isOver;
}

int EventBuffer::Drain(const ZREventQueue::Handler& handle, int most)
{
    State& state = Current();
    Reading reading(state);
    bool mayTake = reading.IsReader(); // once, so that the call ends
    int done = 0;
    while (reading.IsReader() && done < most) {
        if (state.next == state.taken.count && !(std::exchange(mayTake, false) && Take(state))) {
            break;
        }
        reading.Unlock();
        while (done < most && state.next < state.taken.count) {
            ++done;
            HandleNext(state, handle);
            if (!reading.IsOfThisProcess()) {
                return done;
            }
        }
        reading.Lock();
    }
    return done;
}

/// Takes what waits, if anything does.
bool EventBuffer::Take(State& state)
{
    if (state.waiting.count == 0) {
        return false;
    }
    state.taken.first = 0;
    state.taken.count = 0;
    std::swap(state.taken, state.waiting);
    state.next = 0;
    state.takenUpTo = state.pushed;
    state.room.notify_all();
    return true;
}

void EventBuffer::HandleNext(State& state, const ZREventQueue::Handler& handle)
{
    constexpr int kLong = 1000; // bytes; longer texts are freed at once
    Entry& entry = state.taken.At(state.next++);
    struct Handling {
        Entry& entry;
        const ZREventOrigin* outer; // of a handler that drains another queue
        ~Handling()
        {
            t_origin = outer;
            entry.event.reset();
            if (entry.message.GetText().GetLength() > kLong || entry.message.GetTextEx().GetLength() > kLong) {
                entry.message = ZRMsg();
            }
        }
    };
    const Handling handling{entry, t_origin};
    t_origin = &entry.origin;
    entry.Call(handle);
}

bool EventBuffer::WaitFor(int milliseconds)
{
    State& state = Current();
    std::unique_lock guard(state.lock);
    const auto isThere = [&state] {
        const bool isTakenByOther = state.isDraining && t_draining != &state;
        const bool hasEvent = state.waiting.count > 0 || (!isTakenByOther && state.next < state.taken.count);
        state.isReaderAsleep = !hasEvent;
        return hasEvent;
    };
    return state.more.wait_for(guard, std::chrono::milliseconds(milliseconds), isThere);
}

bool EventBuffer::WaitForBatch()
{
    State& state = Current();
    std::unique_lock guard(state.lock);
    state.more.wait(guard, [this, &state] {
        state.isReaderAsleep = state.waiting.count == 0 && !HasMuch(state);
        return !state.isReaderAsleep;
    });
    state.more.wait_for(guard, kGathering, [this, &state] { return HasMuch(state); });
    return state.waiting.count > 0 || !state.isOver;
}

void EventBuffer::WaitUntilHandled()
{
    State& state = Current();
    if (t_draining == &state) {
        return;
    }
    std::unique_lock guard(state.lock);
    const std::int64_t wanted = state.pushed;
    ++state.waitingForAll;
    state.more.notify_all();
    state.handled.wait(guard, [&state, wanted] { return state.handledUpTo >= wanted || !state.isReadHere; });
    --state.waitingForAll;
}

void EventBuffer::AnnounceReader()
{
    State& state = Current();
    const std::lock_guard guard(state.lock);
    state.isReadHere = true;
    state.lastReader = std::thread::id();
}

void EventBuffer::WithdrawReader()
{
    State& state = Current();
    const std::lock_guard guard(state.lock);
    state.isReadHere = false;
    state.room.notify_all();
    state.handled.notify_all();
}

void EventBuffer::End()
{
    State& state = Current();
    const std::lock_guard guard(state.lock);
    state.isOver = true;
    state.more.notify_all();
    state.room.notify_all();
}

std::int64_t EventBuffer::GetDroppedCount()
{
    State& state = Current();
    const std::lock_guard guard(state.lock);
    return state.dropped;
}

const ZREventOrigin* EventBuffer::GetOrigin() noexcept { return t_origin; }

EventBuffer::Opened::Opened()
{
    if (State* const state = t_draining; state != nullptr) {
        const std::lock_guard guard(state->lock);
        ++state->openings;
        state->room.notify_all();
    }
}

EventBuffer::Opened::~Opened()
{
    if (State* const state = t_draining; state != nullptr) {
        const std::lock_guard guard(state->lock);
        --state->openings;
    }
}

void Tell(const HCString& text, const char* place)
{
    const EventBuffer::Opened opened;
    ZRErrorSet(1, text, place, 0, 1);
}

} // namespace zrobservers
