/// ZRObjectObserver: receives the events of subjects.
#pragma once

#include "hcbase/string.h"
#include "hcbase/thread_sync.h"
#include "zrlib/export.h"
#include "zrlib/frame/relaxed.h"

class ZRObservedObject;
class ZRObservedObjectEvent;

namespace zr {
class ObserverList;
struct ObserverEntry;
} // namespace zr

/// Clients derive from this class, override OnEvent and attach an object to subjects (ZRObservedObject::AttachObserver,
/// ZRAttachObserver, or for the length of a scope ZRAttachment). Detach it before it or the subject is destroyed:
/// neither destructor does that. A class that attaches itself in its constructor detaches itself in its own destructor,
/// before its members are destroyed.
///
/// Threads: an observer handles one event at a time, whichever threads and subjects send. Any thread may read and set
/// the name and the subject; the client serialises copying and assigning.
class ZR_API ZRObjectObserver {
public:
    /// Named "Untitled", attached to nothing.
    ZRObjectObserver();

    /// The copy is attached nowhere, though GetZRSubject returns what it returns for `other`, and shares its lock.
    /// Assign to an observer only while it is attached nowhere: an attachment keeps the lock that the observer had.
    ZRObjectObserver(const ZRObjectObserver& other);
    ZRObjectObserver& operator=(const ZRObjectObserver& other);
    virtual ~ZRObjectObserver();

    virtual void SetName(const HCString& name);
    [[nodiscard]] virtual HCString GetName() const;

    /// Handles an event, which belongs to the sender and is valid until the call returns. This one is a no-op.
    ///
    /// It runs on the sender's thread and delays the sender. It may attach and detach observers, itself included, and
    /// send events and messages; one that answers a message with a message is called again before it has returned. It
    /// must not destroy itself or assign to itself. An observer that it detaches may still be running on another
    /// thread: destroy that one later.
    ///
    /// The locks are taken in one order: the sending handler's, then the observer's. Three ways to break it, which
    /// deadlock two threads:
    /// - an observer of messages that observes something else too, and sends messages from here;
    /// - an observer of messages that ends a timer with a state here, beside an observer of the profiler that sends
    ///   messages;
    /// - an observer that takes a lock here under which other threads send.
    ///
    /// An exception from it passes to the sender; no lock stays held, and the observers behind it do not get the event.
    /// From an event sent by a destructor, as those of progress, of the threading switch and of timers are, it
    /// terminates the process.
    virtual void OnEvent(ZRObservedObjectEvent* event);

    /// The subject to which this observer was attached last; null when it was detached since, from whichever subject.
    [[nodiscard]] ZRObservedObject* GetZRSubject() const noexcept { return m_pSubject; }

protected:
    void SetZRSubject(ZRObservedObject* subject) { m_pSubject = subject; }

    /// The lock that is held while an event is handled. 1 on success.
    char Lock() { return m_sync.lock(); }
    char Unlock() { return m_sync.unlock(); }

private:
    friend class zr::ObserverList; // writes the subject
    friend struct zr::ObserverEntry; // shares the lock, which is held while an event is handled

    zr::Relaxed<ZRObservedObject*> m_pSubject; // not owned
    HCString m_csName;
    HCThreadSync m_sync;
};
