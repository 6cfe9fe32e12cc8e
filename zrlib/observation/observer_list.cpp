#include "zrlib/observation/observer_list.h"

#include "zrlib/frame/backoff.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observer_call.h"
#include "zrlib/platform/process_end.h"

#include <memory>
#include <vector>

namespace zr {

ObserverEntry::ObserverEntry(ZRObjectObserver& attached)
    : observer(&attached)
    , sync(attached.m_sync)
{
}

ObserverEntry::ObserverEntry(const ObserverEntry& other)
    : observer(other.observer)
    , sync(other.sync)
{
}

bool ObserverCall::IsInsideOnEvent()
{
    const std::uintptr_t self = ThreadMark();
    bool isInside = false;
    Seats::ForEach([&](const Seat& seat) {
        isInside = isInside
            || (seat.owner.load(std::memory_order_relaxed) == self
                && (seat.call.load(std::memory_order_relaxed) & kRuns) != 0);
    });
    return isInside;
}

void ObserverCall::Release(ObserverEntry& entry)
{
    if (entry.users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete &entry;
    }
}

void ObserverCall::GiveUp(ObserverEntry& entry)
{
    const auto address = reinterpret_cast<std::uintptr_t>(&entry);
    Seats::ForEach([&](Seat& seat) {
        std::uintptr_t call = seat.call.load();
        while ((call & ~kBits) == address && (call & kIsGivenUp) == 0) {
            entry.users.fetch_add(1, std::memory_order_relaxed);
            if (seat.call.compare_exchange_strong(call, call | kIsGivenUp)) {
                break;
            }
            entry.users.fetch_sub(1, std::memory_order_relaxed); // it has started or ended meanwhile
        }
    });
}

bool ObserverCall::HasNobodyToAwait() { return IsSingleThreaded() || OtherThreadsAreGone() || IsInsideOnEvent(); }

void ObserverCall::Await(const ObserverList& list, const ZRObjectObserver* observer)
{
    if (HasNobodyToAwait()) {
        return;
    }
    const std::uintptr_t self = ThreadMark();
    Seats::ForEach([&](const Seat& seat) {
        // A thread may make one call of the same entry after another; wait only for the one that runs now.
        const std::uint32_t endedCalls = seat.endedCalls.load(std::memory_order_acquire);
        const auto isUnderWay = [&] {
            // A call that has not started was given up when the entry was removed, or ends.
            const std::uintptr_t call = seat.call.load(std::memory_order_acquire);
            return call != 0 && (call & kBits) != kIsGivenUp && seat.subject.load(std::memory_order_acquire) == &list
                && (observer == nullptr || seat.observer.load(std::memory_order_acquire) == observer)
                && seat.endedCalls.load(std::memory_order_acquire) == endedCalls
                && seat.owner.load(std::memory_order_relaxed) != self;
        };
        Backoff backoff;
        while (isUnderWay()) {
            backoff.Wait();
        }
    });
}

void ObserverCall::AwaitBroadcasts(const ObserverList& list)
{
    if (HasNobodyToAwait()) {
        return;
    }
    const std::uintptr_t self = ThreadMark();
    Seats::ForEach([&list, self](const Seat& seat) {
        Backoff backoff;
        while (seat.subject.load(std::memory_order_acquire) == &list
            && seat.owner.load(std::memory_order_relaxed) != self) {
            backoff.Wait();
        }
    });
}

ObserverList::ObserverList(const ObserverList& other) { *this = other; }

ObserverList& ObserverList::operator=(const ObserverList& other)
{
    if (this == &other) {
        return *this;
    }
    std::vector<std::unique_ptr<ObserverEntry>> copies;
    Entries entries;
    {
        const ShortLockGuard data(g_dataLock);
        for (int index = 0; index < other.GetCount(); ++index) {
            copies.push_back(std::make_unique<ObserverEntry>(*other.m_entries.GetAt(index)));
        }
        entries.SetSize(static_cast<int>(copies.size()), 1);
    }
    for (std::size_t index = 0; index < copies.size(); ++index) {
        entries.GetAt(static_cast<int>(index)) = copies[index].release();
    }
    Replace(entries);
    return *this;
}

ObserverList::~ObserverList()
{
    if (GetCount() > 0) { // otherwise End has been called
        End();
    }
}

void ObserverList::End()
{
    Clear();
    ObserverCall::AwaitBroadcasts(*this);
}

void ObserverList::Clear()
{
    Entries none;
    Replace(none);
}

void ObserverList::Replace(Entries& entries)
{
    {
        const ShortLockGuard data(g_dataLock);
        {
            const ShortLockGuard guard(m_lock);
            m_entries.Swap(entries);
            m_count.store(m_entries.GetSize(), std::memory_order_relaxed);
        }
        for (int index = 0; index < entries.GetSize(); ++index) {
            ObserverCall::GiveUp(*entries.GetAt(index));
        }
    }
    for (int index = 0; index < entries.GetSize(); ++index) {
        ObserverCall::Release(*entries.GetAt(index));
    }
    ObserverCall::Await(*this, nullptr);
}

int ObserverList::Find(const ZRObjectObserver* observer) const
{
    int index = GetCount() - 1;
    while (index >= 0 && m_entries.GetAt(index)->observer != observer) {
        --index;
    }
    return index;
}

ZRObjectObserver* ObserverList::At(int index) const
{
    const ShortLockGuard data(g_dataLock);
    const ObserverEntry* const entry = m_entries.GetAt(index);
    return entry != nullptr ? entry->observer : nullptr;
}

bool ObserverList::Contains(const ZRObjectObserver* observer) const
{
    const ShortLockGuard data(g_dataLock);
    return Find(observer) >= 0;
}

bool ObserverList::Append(ZRObjectObserver& observer, ZRObservedObject& subject)
{
    auto entry = std::make_unique<ObserverEntry>(observer);
    const ShortLockGuard data(g_dataLock);
    if (Find(&observer) >= 0) {
        return false;
    }
    const ShortLockGuard guard(m_lock);
    m_entries.Append(entry.get());
    static_cast<void>(entry.release());
    observer.m_pSubject = &subject; // before the first event
    m_count.store(m_entries.GetSize(), std::memory_order_relaxed);
    return true;
}

void ObserverList::Remove(ZRObjectObserver& observer)
{
    ObserverEntry* removed = nullptr;
    {
        const ShortLockGuard data(g_dataLock);
        const int index = Find(&observer);
        if (index < 0) {
            return;
        }
        observer.m_pSubject = nullptr;
        {
            const ShortLockGuard guard(m_lock);
            removed = m_entries.GetAt(index);
            m_entries.RemoveAt(index);
            m_count.store(m_entries.GetSize(), std::memory_order_relaxed);
        }
        ObserverCall::GiveUp(*removed);
    }
    ObserverCall::Release(*removed);
}

void ObserverList::AwaitCalls(const ZRObjectObserver& observer) const { ObserverCall::Await(*this, &observer); }

} // namespace zr
