/// ZRObservedObject: sends events to its observers.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/utilities/array.h"

class ZRObjectObserver;
class ZRObservedObjectEvent;

/// A subject: a list of observers, which get the events that are sent from it (observed_object_event.h), in the order
/// in which they were attached. The observers are not owned, and are not told when the subject goes.
///
/// A null observer is reported with ZRErrorSet, with code 0, and gives 0. Truth values are 1 and 0.
///
/// Threads: no lock. Nobody may attach or detach while another thread sends from the subject or changes it; an observer
/// may, on the sender's own thread, while it handles an event.
class ZR_API ZRObservedObject {
public:
    /// Named "Untitled", without observers.
    ZRObservedObject();

    /// The copy has the same observers, which are not told.
    ZRObservedObject(const ZRObservedObject& other);
    ZRObservedObject& operator=(const ZRObservedObject& other);
    virtual ~ZRObservedObject();

    /// Adds an observer behind the others. Mind the result: 0 when it has been attached now, 1 when it was before. The
    /// flag has no effect.
    virtual char AttachObserver(ZRObjectObserver* observer, char flag);

    /// Removes an observer, if it is there. Gives 1. The flag has no effect.
    virtual char DetachObserver(ZRObjectObserver* observer, char flag);

    /// For derived classes; does nothing, and the library never calls it.
    virtual void Update(int value);

    /// Called at the start of each broadcast from this subject. A derived class may change the event, or give 0 to stop
    /// it, which is reported. Gives 1 here.
    virtual char AdjustEvent(ZRObservedObjectEvent* event);

    virtual void SetName(const HCString& name);
    virtual HCString GetName() const;

    int GetObserverCount() const { return m_Observers.GetSize(); }

    /// The observer at an index from 0; null when there is none.
    ZRObjectObserver* GetObserver(int index) const { return m_Observers.GetAt(index); }

    char IsAttached(ZRObjectObserver* observer) const;

protected:
    /// Back to no observers and the name "Untitled". The observers are not told.
    void Initialise();

private:
    ZRArray<ZRObjectObserver*> m_Observers;
    HCString m_csName;
};
