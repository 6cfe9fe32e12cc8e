/// The process-wide records of the foundation, their lock and their end.
#pragma once

#include "hcbase/reentrant_lock.h"

namespace hcbase {

struct ErrorHistory;

/// Guards the text tables, the version records, the list of error histories and the complaints about preferences. Held
/// for a few instructions only, never while foreign code runs, and across fork.
extern ReentrantLock g_recordsLock;

/// Releases one thread's error history and sets the pointer to null. Null is allowed.
void ReleaseErrors(ErrorHistory*& errors) noexcept;

// What unloading releases, on the unloading thread. The lock is not taken: at the end of a Windows process it may have
// been held by a thread that is already gone.
void ReleaseAllErrors() noexcept;
void ReleaseTextTables() noexcept;
void ReleaseVersions() noexcept;
void ReleaseComplaints() noexcept;

} // namespace hcbase
