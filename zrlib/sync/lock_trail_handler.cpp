#include "zrlib/sync/lock_trail_handler.h"

#include "hcbase/thread.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/report.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/frame/sync_guard.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/records/lock_trail.h"
#include "zrlib/sync/lock_trail_functions.h"
#include "zrlib/sync/process_lock_trail_handler.h"

#include <memory>
#include <new>
#include <utility>

ZRLockTrailHandler::ZRLockTrailHandler() = default;

ZRLockTrailHandler::ZRLockTrailHandler(const ZRLockTrailHandler& other)
    : ZRObservedObject(other)
    , m_bEnabled(other.m_bEnabled)
    , m_sync(other.m_sync)
{
    const ZRSyncGuard guard(m_sync);
    m_Trails = other.m_Trails;
    AddListings(1);
}

ZRLockTrailHandler& ZRLockTrailHandler::operator=(const ZRLockTrailHandler& other)
{
    if (this != &other) {
        ZRLockTrailHandler copy(other); // takes what this handler lists with it, and the lock that guards it
        ZRObservedObject::operator=(other);
        m_bEnabled = copy.m_bEnabled;
        HCThreadSync former(m_sync);
        const ZRSyncGuard guard(former);
        m_Trails.Swap(copy.m_Trails);
        std::swap(m_sync, copy.m_sync);
    }
    return *this;
}

/// Takes no lock: it must not wait for a thread that holds it.
ZRLockTrailHandler::~ZRLockTrailHandler() { AddListings(-1); }

void ZRLockTrailHandler::AddListings(int count)
{
    for (ZRLockTrail* const trail : m_Trails) {
        trail->m_nListings += count;
    }
}

/// False for the handler of the process after it is destroyed. Needs a lease.
bool ZRLockTrailHandler::IsAlive() const { return this != ZRGetLockTrailHandler() || g_LockTrailHandler.IsAlive(); }

ZRLockTrail* ZRLockTrailHandler::Append()
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    if (!IsAlive()) {
        return nullptr;
    }
    const ZRSyncGuard guard(m_sync);
    try {
        auto trail = std::make_unique<ZRLockTrail>();
        const zr::ShortLockGuard data(zr::g_dataLock); // for fork
        m_Trails.Append(trail.get());
        trail->m_nListings = 1;
        return trail.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

char ZRLockTrailHandler::Remove(ZRLockTrail* trail)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    if (trail == nullptr || !IsAlive()) {
        return 0;
    }
    const ZRSyncGuard guard(m_sync);
    const zr::ShortLockGuard data(zr::g_dataLock);
    for (auto position = m_Trails.Begin(); position != m_Trails.End(); ++position) {
        ZRLockTrail* const listed = *position;
        if (listed->GetGUID().Compare(trail->GetGUID()) == 0) {
            m_Trails.Erase(position);
            if (--listed->m_nListings == 0) {
                delete listed;
            }
            return 1;
        }
    }
    return 0;
}

void ZRLockTrailHandler::Lock(ZRLockTrail* trail) { Send(trail, ZRLockTrail::kLock); }

void ZRLockTrailHandler::Unlock(ZRLockTrail* trail) { Send(trail, ZRLockTrail::kUnlock); }

void ZRLockTrailHandler::Send(const ZRLockTrail* trail, short type)
{
    if (trail != nullptr) {
        ZRLockTrail stamped(*trail);
        stamped.SetType(type);
        BroadcastLock(stamped);
    }
}

void ZRLockTrailHandler::BroadcastLock(ZRLockTrail& trail)
{
    const zr::ModuleLease lease;
    if (!IsAlive()) {
        return;
    }
    const ZRSyncGuard guard(m_sync);
    if (m_bEnabled == 0) {
        return;
    }
    ZRObservedObjectEvent event(ZR_EVENT_LOCK_TRAIL);
    event.SetSource(this);
    event.SetText(trail.GetText());
    trail.SetThreadID(HCThread::GetCurrentThreadId());
    event.SetLockTrail(trail);
    event.Broadcast(this, 0);
}

void ZRLockTrailHandler::SetEnabled(char /*enable*/)
{
    zr::ReportError("ZRLockTrailHandler::SetEnabled - not currently intended for use with release build code");
}

char ZRLockTrailHandler::Lock(const char* /*location*/) { return m_sync.lock(); }

char ZRLockTrailHandler::Unlock(const char* /*location*/) { return m_sync.unlock(); }
