#include "zrlib/sync/lock_trail_functions.h"

#include "zrlib/sync/process_lock_trail_handler.h"

namespace {

/// Calls a function with the handler of the process; a no-op when that is destroyed. The handler's own functions are
/// no-ops then too, but to call a member function of a destroyed object is undefined behaviour.
template <typename Function> auto WithHandler(Function function)
{
    using Result = decltype(function(g_LockTrailHandler.object));
    const zr::ModuleLease lease;
    return g_LockTrailHandler.IsAlive() ? function(g_LockTrailHandler.object) : Result();
}

} // namespace

ZRLockTrailHandler* ZRGetLockTrailHandler() { return &g_LockTrailHandler.object; }

ZRLockTrail* ZRAppendLockTrail()
{
    return WithHandler([](ZRLockTrailHandler& handler) { return handler.Append(); });
}

char ZRRemoveLockTrail(ZRLockTrail* trail)
{
    return WithHandler([trail](ZRLockTrailHandler& handler) { return handler.Remove(trail); });
}

void ZRLockTrailLock(ZRLockTrail* trail)
{
    WithHandler([trail](ZRLockTrailHandler& handler) { handler.Lock(trail); });
}

void ZRLockTrailUnlock(ZRLockTrail* trail)
{
    WithHandler([trail](ZRLockTrailHandler& handler) { handler.Unlock(trail); });
}

void ZRSetLockTrailEnabled(char enable)
{
    WithHandler([enable](ZRLockTrailHandler& handler) { handler.SetEnabled(enable); });
}

char ZRGetLockTrailEnabled()
{
    return WithHandler([](ZRLockTrailHandler& handler) { return handler.GetEnabled(); });
}
