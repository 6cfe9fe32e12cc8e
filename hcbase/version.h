/// Records of the loaded libraries' versions.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// Version of one library. Date and time are those of its build, as texts.
struct HCVersion {
    int major = 0;
    int minor = 0;
    int revision = 0;
    HCString date;
    HCString time;
};

extern "C" {

/// Records the version of the library `name`; it replaces an earlier record of that name. A null date or time counts as
/// empty. Returns 1, or 0 for a null name, when there is no memory, or when the library is being unloaded.
HC_API char HFVersionLoad(const char* name, int major, int minor, int revision, const char* date, const char* time);

/// Copies the record of `name` into `version` and returns 1. "HCBASE" is the foundation itself. Without a record, and
/// when there is no memory for the copy, returns 0 and leaves `version` unchanged.
HC_API char HFVersionGet(const char* name, HCVersion& version);
}
