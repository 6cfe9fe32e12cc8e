/// Records of which version of which library is loaded.
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

/// Records the version of the library `name`; an earlier record of that name is replaced. Null for date or time counts
/// as empty. Gives 1, or 0 for a null name, when there is no memory, or when the library is being unloaded.
HC_API char HFVersionLoad(const char* name, int major, int minor, int revision, const char* date, const char* time);

/// Copies the record of `name` into `version` and gives 1. "HCBASE" is the foundation itself. Without one, and when
/// there is no memory for the copy, gives 0 and leaves `version` as it is.
HC_API char HFVersionGet(const char* name, HCVersion& version);
}
