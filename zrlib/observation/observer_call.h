/// ObserverCall: the calls of one broadcast. Not exported.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/frame/seats.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/frame/sync_guard.h"
#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observer_list.h"

namespace zr {

/// One attachment of an observer.
struct ObserverEntry {
    explicit ObserverEntry(ZRObjectObserver& attached);
    ObserverEntry(const ObserverEntry& other);
    ObserverEntry& operator=(const ObserverEntry&) = delete;

    ZRObjectObserver* observer; // not owned
    HCThreadSync sync; // the observer's; a call may wait for it after the observer is destroyed
    std::atomic<int> users{1}; // the list, and the calls that were under way when it gave the entry up
};

/// A broadcast announces in a seat which observer it is about to call or is calling. Detaching an observer first
/// removes its entry from the list, so that no further call begins, and then finds the calls that have begun.
class ObserverCall {
public:
    /// The seat belongs to the calling thread and is not used by another broadcast.
    ObserverCall(Seat& seat, const ObserverList& list) noexcept
        : m_seat(seat)
        , m_list(list)
    {
        m_seat.subject.store(&list); // the list's destructor sees it, or the call sees an empty list
    }
    ~ObserverCall() { m_seat.subject.store(nullptr, std::memory_order_release); }
    ObserverCall(const ObserverCall&) = delete;
    ObserverCall& operator=(const ObserverCall&) = delete;

    enum class Outcome { kHandled, kNotThere, kLockFailed };

    /// Calls `handle(observer)` for the observer that is now at an index, with its lock held. kNotThere also when it
    /// was detached while this thread waited for its lock.
    template <typename Handle> Outcome Do(int index, Handle handle)
    {
        ObserverEntry* const entry = Announce(index);
        if (entry == nullptr) {
            return Outcome::kNotThere;
        }
        const End end{*this, *entry};
        const ZRSyncGuard guard(entry->sync);
        if (!guard.IsHeld()) {
            return Outcome::kLockFailed;
        }
        if (!Start(*entry)) {
            return Outcome::kNotThere;
        }
        handle(*entry->observer);
        return Outcome::kHandled;
    }

    // The word `call` of a seat, while it is not 0, is the address of the entry and these bits.
    static constexpr std::uintptr_t kRuns = 1; // OnEvent was called
    static constexpr std::uintptr_t kIsGivenUp = 2; // the list has given the entry up; the call is one of its users
    static constexpr std::uintptr_t kBits = kRuns | kIsGivenUp;

    /// Whether the calling thread is inside OnEvent of an observer.
    static bool IsInsideOnEvent();

    /// Keeps the calls of an entry that is in no list any more from starting. To be called before another thread can
    /// see that the entry is not in the list, so that whoever finds it gone finds no call that may start.
    static void GiveUp(ObserverEntry& entry);

    /// Gives up one share of an entry: the list's, or that of a call.
    static void Release(ObserverEntry& entry);

    /// Waits for the end of the call of the observer, or of any with null, that another thread has begun for an event
    /// of the list.
    static void Await(const ObserverList& list, const ZRObjectObserver* observer);

    /// Waits until no other thread broadcasts to the list.
    static void AwaitBroadcasts(const ObserverList& list);

private:
    struct End {
        ObserverCall& call;
        ObserverEntry& entry;
        ~End() { call.Finish(entry); }
    };

    ObserverEntry* Announce(int index) const
    {
        const ShortLockGuard guard(m_list.m_lock);
        ObserverEntry* const entry = m_list.m_entries.GetAt(index);
        if (entry != nullptr) {
            m_seat.observer.store(entry->observer, std::memory_order_release);
            m_seat.call.store(reinterpret_cast<std::uintptr_t>(entry), std::memory_order_release);
        }
        return entry;
    }

    /// False when the entry was given up.
    bool Start(const ObserverEntry& entry) const
    {
        auto announced = reinterpret_cast<std::uintptr_t>(&entry);
        if (IsSingleThreaded()) {
            m_seat.call.store(announced | kRuns, std::memory_order_relaxed);
            return true;
        }
        return m_seat.call.compare_exchange_strong(announced, announced | kRuns);
    }

    void Finish(ObserverEntry& entry) const
    {
        m_seat.endedCalls.store(m_seat.endedCalls.load(std::memory_order_relaxed) + 1, std::memory_order_release);
        std::uintptr_t call = 0;
        if (IsSingleThreaded()) {
            call = m_seat.call.load(std::memory_order_relaxed);
            m_seat.call.store(0, std::memory_order_relaxed);
        } else {
            call = m_seat.call.exchange(0, std::memory_order_acq_rel);
        }
        if ((call & kIsGivenUp) != 0) {
            Release(entry);
        }
    }

    static bool HasNobodyToAwait();

    Seat& m_seat; // not owned
    const ObserverList& m_list; // not owned
};

} // namespace zr
