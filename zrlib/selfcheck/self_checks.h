/// The library's self-checks.
/// Folder selfcheck: tests that any client can run, to see whether the library works where it is installed.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

extern "C" {

// Each check first turns the master switch of messages on or off, as `messages` says, and leaves it so. It reports how
// it went with messages, without location and with level 1, and returns 1 on success, otherwise 0. What it reports is
// then the last error of the thread, also with messages off.
//
// Threads: any, one check at a time. The switches that a check sets are process-wide. Errors: std::bad_alloc when there
// is no memory for a check or its messages; with less memory than a check needs it may also return 0.
//
// The check that counts messages waits for threads of its own. So it, and ZRTestAll with messages on, must not be
// called from OnEvent of an observer of messages, nor with a lock held that such an observer takes: it would deadlock.
// On Linux they may be called while a library loads; on Windows no thread starts while a DLL is being initialised.

/// Runs all checks, one after the other until the first that fails: collections, object registry, message threading.
/// With messages off the last one, which counts messages, is left out.
ZR_API int ZRTestAll(char messages);

/// Whether a ZRStack returns what was pushed.
ZR_API int ZRTestCollections(char messages);

/// Whether a registry of the check's own accepts and refuses what it should; the registry of the process is not
/// touched. The refusals are reported as any others, so the last of them is the last error of the thread. For them the
/// enabled bit of errors is cleared, and restored afterwards.
ZR_API int ZRTestObjectRegistry(char messages);

/// Whether four threads that send 384 messages each get all of them through to an observer, each exactly once. Returns
/// 0 with messages off, and when an observer throws on one of the threads.
///
/// It counts all messages sent meanwhile, by any thread, and the counters are never reset: it succeeds once per
/// process, while no other thread sends. As for every observer, no thread may send while the check begins or ends.
ZR_API int ZRTestMessageThreading(char messages);

/// Builds a path from a name and an extension, with a dot between them unless the extension is empty, for a test that
/// needs a file, in the current directory. deleteExisting: not 0 to delete a file or link of that name, if there is
/// one; when a file is there and cannot be deleted, it is reported with ZRError. Threads: any, each with a path of its
/// own. Errors: std::bad_alloc.
ZR_API void ZRPrepareTestFile(HCString& path, const HCString& name, const HCString& extension, char deleteExisting);
}
