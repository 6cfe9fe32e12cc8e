/// The registry of the process. Not exported: clients reach it through the functions only.
#pragma once

#include "zrlib/frame/module_lease.h"
#include "zrlib/registry/object_registry.h"

extern zr::ModuleObject<ZRObjectRegistry> g_ObjectRegistry;
