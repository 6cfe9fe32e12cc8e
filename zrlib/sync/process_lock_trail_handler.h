/// The lock trail handler of the process. Not exported.
#pragma once

#include "zrlib/frame/module.h"
#include "zrlib/sync/lock_trail_handler.h"

extern ZRModuleObject<ZRLockTrailHandler> g_LockTrailHandler;
