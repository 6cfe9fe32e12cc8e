/// The lock of ZRGlobalThreadSync. Not exported.
#pragma once

#include "hcbase/thread_sync.h"
#include "zrlib/frame/module_lease.h"

extern zr::ModuleObject<HCThreadSync> g_GlobalSync;
