/// Observing the subject of the process.
#pragma once

#include "zrlib/export.h"

class ZRObjectObserver;

extern "C" {

// The subject of the process sends the events of progress (progress.h) and of the threading switch; the message handler
// and the other handlers are subjects of their own. These functions are its AttachObserver and DetachObserver
// (observed_object.h) and return their results; mind that attaching returns 0 on success. Once the library's own
// objects are destroyed, at the end of the process, they are no-ops and return 0.
//
// Threads: any, at any time.

ZR_API char ZRAttachObserver(ZRObjectObserver* observer);
ZR_API char ZRDetachObserver(ZRObjectObserver* observer);
}
