/// The lock trail handler of the process.
#pragma once

#include "zrlib/export.h"

class ZRLockTrail;
class ZRLockTrailHandler;

/// The one lock trail handler of the process, which the library owns. Never null.
[[nodiscard]] ZR_API ZRLockTrailHandler* ZRGetLockTrailHandler();

extern "C" {

// The operations of that handler (lock_trail_handler.h). Once it is destroyed, at the end of the process, they and
// those operations are no-ops that return 0 or null.
//
// Threads: any.

ZR_API ZRLockTrail* ZRAppendLockTrail();
ZR_API char ZRRemoveLockTrail(ZRLockTrail* trail);
ZR_API void ZRLockTrailLock(ZRLockTrail* trail);
ZR_API void ZRLockTrailUnlock(ZRLockTrail* trail);
ZR_API void ZRSetLockTrailEnabled(char enable);
[[nodiscard]] ZR_API char ZRGetLockTrailEnabled();
}
