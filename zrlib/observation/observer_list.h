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
/// (observer_call.h), unless told otherwise.
///
/// An entry belongs to its list while it is there. Afterwards it belongs to the calls that still use it, the last of
/// which deletes it.
class ObserverList {
public:
    ObserverList() noexcept = default;

    /// The same observers. They are not told.
    ObserverList(const ObserverList& other);
    ObserverList& operator=(const ObserverList& other);

    /// As End.
    ~ObserverList();

    int GetCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

    /// The observer at an index from 0; null when there is none.
    ZRObjectObserver* At(int index) const;

    bool Contains(const ZRObjectObserver* observer) const;

    /// Adds an observer behind the others, and tells it its subject. False when it was there; then it is not told.
    /// Throws std::bad_alloc; the list then is as it was.
    bool Append(ZRObjectObserver& observer, ZRObservedObject& subject);

    /// Removes an observer, if it is there, and tells it: calls of it that have not started will not.
    void Remove(ZRObjectObserver& observer);

    /// Waits until no OnEvent of this observer runs for an event that was sent to this list by another thread. Does not
    /// wait when it is called from OnEvent, of whatever observer.
    void AwaitCalls(const ZRObjectObserver& observer) const;

    /// Removes all, and waits as AwaitCalls does for one.
    void Clear();

    /// Removes all, and waits for the broadcasts that are under way on other threads, unless it is called from OnEvent.
    /// For a list that is about to go.
    void End();

private:
    friend class ObserverCall;

    using Entries = ZRArray<ObserverEntry*>;

    int Find(const ZRObjectObserver* observer) const;
    void Replace(Entries& entries);

    mutable ShortLock m_lock; // for changes and calls. Who changes or only looks holds g_dataLock too
    std::atomic<int> m_count{0};
    Entries m_entries;
};

} // namespace zr
