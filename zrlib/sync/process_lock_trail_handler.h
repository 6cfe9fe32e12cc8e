/// The lock trail handler of the process. Not exported.
#pragma once

#include "zrlib/frame/module_lease.h"
#include "zrlib/sync/lock_trail_handler.h"

extern zr::ModuleObject<ZRLockTrailHandler> g_LockTrailHandler;
