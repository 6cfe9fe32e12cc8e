/// The process-wide records of the foundation, their lock and their end.
#pragma once

#include "hcbase/reentrant_lock.h"

namespace hcbase {

struct ErrorHistory;

/// Guards the text tables, the version records, the lists of error histories and of locks, and the complaints about
/// preferences. Never held while a client's code runs, and held across fork. So a client's own fork hook that ran
/// before this library was loaded must not wait for a thread that is inside the foundation.
extern ReentrantLock g_recordsLock;

/// Set when the library is being unloaded: from then on nothing is recorded and nothing is found.
extern bool g_recordsClosed HC_GUARDED_BY(g_recordsLock);

/// Releases one thread's error history and sets the pointer to null. Null is allowed.
void ReleaseErrors(ErrorHistory*& errors) noexcept;

// What unloading releases, on the unloading thread.
void ReleaseAllErrors() noexcept;
void ReleaseTextTables() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseVersions() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseComplaints() noexcept HC_REQUIRES(g_recordsLock);

} // namespace hcbase
