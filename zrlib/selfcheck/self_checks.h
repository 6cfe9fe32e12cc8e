/// The library's checks of itself, which any client can run.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

extern "C" {

// Each check turns the master switch of messages on or off first, as `messages` says, and leaves it so. It tells how it
// went with messages, without location and of level 1, and gives 1 when all was well, otherwise 0. What it reports is
// afterwards the last error of the thread, also with messages off.
//
// Threads: any, one check at a time. The switches that a check sets belong to the process. Errors: std::bad_alloc when
// there is no memory for a check or its messages; with less of it than a check needs it may also give 0.
//
// The check that counts messages waits for threads of its own. So it, and ZRTestAll with messages on, must not be
// called from OnEvent of an observer of messages, nor with a lock held that such an observer takes: it would wait for
// ever. On Linux they may be called while a library loads; on Windows no thread starts as long as a DLL is being
// initialised.

/// All checks, one after the other until the first that fails: collections, object registry, message threading. With
/// messages off the last one, which counts messages, is left out.
ZR_API int ZRTestAll(char messages);

/// Whether a ZRStack gives back what it was given.
ZR_API int ZRTestCollections(char messages);

/// Whether a registry of the check's own accepts what it should and refuses what it should; the registry of the process
/// is not touched. The refusals are reported as any others, so the last of them is the last error of the thread. For
/// them the enabled bit of errors is cleared, and put back afterwards.
ZR_API int ZRTestObjectRegistry(char messages);

/// Whether four threads that send 384 messages each get all of them through to an observer, each just once. With
/// messages off it gives 0, and when an observer throws on one of the threads.
///
/// All that is sent meanwhile is counted, by whomever, and the counts run on: a good result can be had once in a
/// process, while no other thread sends. As for every observer, nobody may send while the check begins or ends.
ZR_API int ZRTestMessageThreading(char messages);

/// Makes a path of a name and an extension, with a dot between them unless the extension is empty, for a test that
/// needs a file, in the current directory. deleteExisting: not 0 to delete a file or link of that name, if there is
/// one; when a file is there and cannot be deleted, ZRError says so. Threads: any, each with a path of its own. Errors:
/// std::bad_alloc.
ZR_API void ZRPrepareTestFile(HCString& path, const HCString& name, const HCString& extension, char deleteExisting);
}
