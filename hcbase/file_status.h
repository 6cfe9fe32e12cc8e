/// HCFileStatus: what the file system knows about a file.
#pragma once

#include "hcbase/time.h"

#include <cstdint>

/// Filled by HCFileSystem::GetFileStatus.
struct HCFileStatus {
    HCTime created; // the last change of status where the system does not record the creation
    HCTime modified;
    HCTime accessed;
    std::int64_t size = 0; // bytes
    char isDirectory = 0;
};
