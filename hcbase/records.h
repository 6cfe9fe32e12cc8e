/// The process-wide records of the foundation, their lock and their release. Not exported.
#pragma once

#include "hcbase/reentrant_lock.h"

namespace hcbase {

struct ErrorHistory;

/// Guards the text tables, the version records, the lists of error histories, of locks and of cut lines, the complaints
/// about preferences and the account's home. Never held while client code runs, and held across fork. So a fork hook
/// that a client installed before this library was loaded must not wait for a thread inside the foundation.
extern ReentrantLock g_recordsLock;

/// Set when the library is being unloaded: from then on nothing is recorded or found.
extern bool g_recordsClosed HC_GUARDED_BY(g_recordsLock);

/// Releases one thread's error history and sets the pointer to null. Null is allowed.
void ReleaseErrors(ErrorHistory*& errors) noexcept;

/// For a forked child: if a thread of the parent was in the middle of a record, keeps only the calling thread's
/// history.
void AbandonErrorsOfOthers(ErrorHistory* own) noexcept HC_REQUIRES(g_recordsLock);

// Released at unload, on the unloading thread.

/// False when another thread is in the middle of a record. Nothing is released then, and that thread may still use its
/// thread-local storage.
bool ReleaseAllErrors() noexcept;

void ReleaseTextTables() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseVersions() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseComplaints() noexcept HC_REQUIRES(g_recordsLock);

} // namespace hcbase
