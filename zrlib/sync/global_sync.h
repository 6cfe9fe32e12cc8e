/// The lock of ZRGlobalThreadSync. Not exported.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/frame/module.h"

extern ZRModuleObject<HCThreadSync> g_GlobalSync;
