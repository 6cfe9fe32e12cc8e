/// Internal: how a registry finds its entries.
#pragma once

#include "zrlib/registry/class_id_index.h"
#include "zrlib/registry/code_index.h"
#include "zrlib/registry/object_registry.h"

/// Finds entries without walking the ring of objects.
struct ZRObjectRegistry::Index {
    zr::CodeIndex byCode;
    zr::ClassIDIndex byClassID;
};
