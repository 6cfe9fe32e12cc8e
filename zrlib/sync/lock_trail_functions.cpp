#include "zrlib/sync/lock_trail_functions.h"

#include "zrlib/sync/process_lock_trail_handler.h"

ZRLockTrailHandler* ZRGetLockTrailHandler() { return &g_LockTrailHandler.object; }

// The operations themselves are no-ops when the handler is destroyed.

ZRLockTrail* ZRAppendLockTrail() { return ZRGetLockTrailHandler()->Append(); }

char ZRRemoveLockTrail(ZRLockTrail* trail) { return ZRGetLockTrailHandler()->Remove(trail); }

void ZRLockTrailLock(ZRLockTrail* trail) { ZRGetLockTrailHandler()->Lock(trail); }

void ZRLockTrailUnlock(ZRLockTrail* trail) { ZRGetLockTrailHandler()->Unlock(trail); }

void ZRSetLockTrailEnabled(char enable) { ZRGetLockTrailHandler()->SetEnabled(enable); }

char ZRGetLockTrailEnabled() { return ZRGetLockTrailHandler()->GetEnabled(); }
