/// ObserverList: the observers of a subject. For ZRObservedObject only.
#pragma once

#include "zrlib/containers/array.h"
#include "zrlib/frame/short_lock.h"

#include <atomic>

class ZRObjectObserver;
class ZRObservedObject;

namespace zr {

struct ObserverEntry;

/// The observers in the order of their attachment, each once. Threads: any, also while others broadcast to the list
/// (observer_call.h), unless stated otherwise.
///
/// An entry belongs to its list while it is in it. Afterwards it belongs to the calls that still use it, the last of
/// which deletes it.
class ObserverList {
public:
    ObserverList() noexcept = default;

    /// The same observers. They are not notified.
    ObserverList(const ObserverList& other);
    ObserverList& operator=(const ObserverList& other);

    /// As End.
    ~ObserverList();

    int GetCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

    /// The observer at an index from 0; null when there is none.
    ZRObjectObserver* At(int index) const;

    bool Contains(const ZRObjectObserver* observer) const;

    /// Adds an observer behind the others and sets its subject. False when it is in the list already; its subject is
    /// then unchanged. Throws std::bad_alloc; the list is then unchanged.
    bool Append(ZRObjectObserver& observer, ZRObservedObject& subject);

    /// Removes an observer, if it is in the list, and clears its subject: calls of it that have not started will not.
    void Remove(ZRObjectObserver& observer);

    /// Waits until no OnEvent of this observer runs for an event that another thread sent to this list. Does not wait
    /// when it is called from OnEvent, of whatever observer.
    void AwaitCalls(const ZRObjectObserver& observer) const;

    /// Removes all, and waits as AwaitCalls does for one.
    void Clear();

    /// Removes all, and waits for other threads' broadcasts that are under way, unless it is called from OnEvent. For a
    /// list that is about to be destroyed.
    void End();

private:
    friend class ObserverCall;

    using Entries = ZRArray<ObserverEntry*>;

    int Find(const ZRObjectObserver* observer) const;
    void Replace(Entries& entries);

    mutable ShortLock m_lock; // for changes and calls. Whoever changes or only reads holds g_dataLock too
    std::atomic<int> m_count{0};
    Entries m_entries;
};

} // namespace zr
