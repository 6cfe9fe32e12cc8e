#include "zrlib/sync/lock_trail_functions.h"

#include "zrlib/frame/module.h"
#include "zrlib/sync/lock_trail_handler.h"
#include "zrlib/sync/process_lock_trail_handler.h"

namespace {

/// Does something with the handler unless it has gone, and gives the result, or nothing's own value.
template <typename Action> auto Ask(Action action)
{
    const ZRModuleUse use;
    using Result = decltype(action(g_LockTrailHandler.object));
    return g_LockTrailHandler.Stands() ? action(g_LockTrailHandler.object) : Result();
}

} // namespace

ZRLockTrailHandler* ZRGetLockTrailHandler() { return &g_LockTrailHandler.object; }

ZRLockTrail* ZRAppendLockTrail()
{
    return Ask([](ZRLockTrailHandler& handler) { return handler.Append(); });
}

char ZRRemoveLockTrail(ZRLockTrail* trail)
{
    return Ask([trail](ZRLockTrailHandler& handler) { return handler.Remove(trail); });
}

void ZRLockTrailLock(ZRLockTrail* trail)
{
    Ask([trail](ZRLockTrailHandler& handler) { handler.Lock(trail); });
}

void ZRLockTrailUnlock(ZRLockTrail* trail)
{
    Ask([trail](ZRLockTrailHandler& handler) { handler.Unlock(trail); });
}

void ZRSetLockTrailEnabled(char enable)
{
    Ask([enable](ZRLockTrailHandler& handler) { handler.SetEnabled(enable); });
}

char ZRGetLockTrailEnabled()
{
    return Ask([](ZRLockTrailHandler& handler) { return handler.GetEnabled(); });
}
