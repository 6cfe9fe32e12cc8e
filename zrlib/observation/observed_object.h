/// ZRObservedObject: a subject, which sends events to its observers.
/// Folder observation: subjects, observers, events and progress. Messages, timers and locks report through it.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/observation/observer_list.h"

class ZRObjectObserver;
class ZRObservedObjectEvent;

/// A list of observers, which receive the events sent from the subject (observed_object_event.h), in the order in which
/// they were attached. The observers are not owned, and are not notified when the subject is destroyed.
///
/// A null observer is reported with ZRErrorSet, with code 0, and the call returns 0. Truth values are 1 and 0.
///
/// Threads: any, at any time, also while others send from the subject. An observer that another thread attaches or
/// detaches during a broadcast may or may not get that event; for changes by the sending thread itself, from OnEvent,
/// see ZRObservedObjectEvent::Broadcast. Assigning to a subject and destroying it wait for other threads' broadcasts
/// that are under way, as DetachObserver does; nobody may begin one on a subject that is being destroyed. A derived
/// class whose AdjustEvent uses its own members ensures that no broadcast is under way when they are destroyed.
class ZR_API ZRObservedObject {
public:
    /// Named "Untitled", without observers.
    ZRObservedObject();

    /// The copy has the same observers, which are not notified.
    ZRObservedObject(const ZRObservedObject& other);
    ZRObservedObject& operator=(const ZRObservedObject& other);
    virtual ~ZRObservedObject();

    /// Adds an observer behind the others. Mind the result: 0 when it has been attached now, 1 when it was attached
    /// before. The flag has no effect.
    virtual char AttachObserver(ZRObjectObserver* observer, char flag);

    /// Removes an observer if it is attached. Returns 1. The flag has no effect.
    ///
    /// When it returns, no OnEvent of this observer for an event of this subject runs or will start on any thread, so
    /// the observer may be destroyed. For that it waits for at most the one OnEvent that is running, and never for
    /// threads that wait to send. So do not hold a lock that OnEvent takes, nor the observer's own
    /// (ZRObjectObserver::Lock), while detaching. A call from within OnEvent, of whatever observer, does not wait,
    /// because two observers that detach each other would deadlock: a call that is already running then continues, and
    /// no other starts.
    virtual char DetachObserver(ZRObjectObserver* observer, char flag);

    /// For derived classes; a no-op that the library never calls.
    virtual void Update(int value);

    /// Called at the start of each broadcast from this subject. A derived class may change the event, or return 0 to
    /// stop it, which is reported. This one returns 1.
    virtual char AdjustEvent(ZRObservedObjectEvent* event);

    virtual void SetName(const HCString& name);
    [[nodiscard]] virtual HCString GetName() const;

    [[nodiscard]] int GetObserverCount() const noexcept { return m_Observers.GetCount(); }

    /// The observer at an index from 0; null when there is none.
    [[nodiscard]] ZRObjectObserver* GetObserver(int index) const;

    [[nodiscard]] char IsAttached(ZRObjectObserver* observer) const;

protected:
    /// Removes all observers, without notifying them, and sets the name to "Untitled".
    void Initialise();

private:
    friend class ZRObservedObjectEvent; // calls the observers

    zr::ObserverList m_Observers;
    HCString m_csName;
};
