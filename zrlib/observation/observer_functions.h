/// Observing the subject of the process.
#pragma once

#include "zrlib/export.h"

class ZRObjectObserver;

extern "C" {

// The subject of the process sends the events of progress (progress.h) and of the threading switch; the message handler
// and the other handlers are subjects of their own. These are its AttachObserver and DetachObserver
// (observed_object.h), which tell the results; mind that attaching gives 0 when all is well. Once the library's own
// objects have gone, at the end of the process, they do nothing and give 0.
//
// Threads: any, at any time.

ZR_API char ZRAttachObserver(ZRObjectObserver* observer);
ZR_API char ZRDetachObserver(ZRObjectObserver* observer);
}
