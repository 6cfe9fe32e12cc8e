/// The process-wide records of the foundation, their lock and their end.
#pragma once

#include "hcbase/reentrant_lock.h"

namespace hcbase {

struct ErrorHistory;

/// Guards the text tables, the version records, the lists of error histories, of locks and of cut lines, the complaints
/// about preferences and the account's home. Never held while a client's code runs, and held across fork. So a client's
/// own fork hook that ran before this library was loaded must not wait for a thread that is inside the foundation.
extern ReentrantLock g_recordsLock;

/// Set when the library is being unloaded: from then on nothing is recorded and nothing is found.
extern bool g_recordsClosed HC_GUARDED_BY(g_recordsLock);

/// Releases one thread's error history and sets the pointer to null. Null is allowed.
void ReleaseErrors(ErrorHistory*& errors) noexcept;

/// For a forked child: if a thread of the parent was in the middle of a record, keeps the calling thread's history
/// only.
void AbandonErrorsOfOthers(ErrorHistory* own) noexcept HC_REQUIRES(g_recordsLock);

// What unloading releases, on the unloading thread.

/// False when another thread is in the middle of a record. Nothing is released then, and it may still use what the
/// system keeps for each thread.
bool ReleaseAllErrors() noexcept;

void ReleaseTextTables() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseVersions() noexcept HC_REQUIRES(g_recordsLock);
void ReleaseComplaints() noexcept HC_REQUIRES(g_recordsLock);

} // namespace hcbase
