/// ZRLockTrailHandler: holds the records of locks and sends their events.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/containers/list.h"
#include "zrlib/export.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/observation/observed_object.h"

class ZRLockTrail;

/// The records that clients have asked for, and the subject of ZR_EVENT_LOCK_TRAIL. There is one for the process
/// (lock_trail_functions.h).
///
/// Lock trails are dormant: nothing enables the handler, so no event is sent. The list works all the same.
///
/// Truth values are 1 and 0. Threads: any, for records and events. A lock is held while an event is sent. For
/// observers, the name and copies the rules of every subject apply.
class ZR_API ZRLockTrailHandler : public ZRObservedObject {
public:
    ZRLockTrailHandler();

    /// Copies share one lock and list the same records; a record is destroyed when the last handler that lists it
    /// removes it.
    ZRLockTrailHandler(const ZRLockTrailHandler& other);
    ZRLockTrailHandler& operator=(const ZRLockTrailHandler& other);

    /// Leaves the records alive; those that no other handler lists are never destroyed.
    ~ZRLockTrailHandler() override;

    /// Creates a record. The handler owns it until Remove. Null when there is no memory for it.
    ZRLockTrail* Append();

    /// Destroys the record with the identity of `trail`, which may be the record itself or a copy. Returns 0 when there
    /// is none and for null.
    char Remove(ZRLockTrail* trail);

    // Notify observers that a lock is being taken, or was released. What is sent is a copy. Null is a no-op.

    void Lock(ZRLockTrail* trail);
    void Unlock(ZRLockTrail* trail);

    /// Writes the ID of the calling thread into a record and sends it. A no-op unless the handler is enabled.
    void BroadcastLock(ZRLockTrail& trail);

    /// Not supported: reports an error with ZRError and changes nothing.
    void SetEnabled(char enable);
    [[nodiscard]] char GetEnabled() const noexcept { return m_bEnabled; }

protected:
    /// The handler's lock. 1 on success. The location has no effect.
    char Lock(const char* location);
    char Unlock(const char* location);

    zr::Relaxed<char> m_bEnabled;

private:
    void Send(const ZRLockTrail* trail, short type);
    void AddListings(int count);
    bool IsAlive() const;

    HCThreadSync m_sync;
    ZRList<ZRLockTrail*> m_Trails; // the records belong to the handlers that list them
};
