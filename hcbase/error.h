/// The last error of each thread.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// One recorded error.
struct HCError {
    int code = 0;
    HCString text;
    HCString location;
    char chain = 0; // as passed; not 0: the record before it belongs to it
};

extern "C" {

/// Records an error as the calling thread's newest. With `chain` not 0 the records before it are kept, at most 16 in
/// all, and the oldest is dropped first; with 0 they are all dropped. Null texts count as empty; the texts are copied.
/// Returns 1, or 0 when there is no memory for the record or the library is being unloaded.
HC_API char HFErrorSet(int code, const char* text, const char* location, char chain);

/// Copies the calling thread's newest record into `error` and returns 1; without one, returns 0 and leaves `error`
/// unchanged. Reading does not remove the record. Throws std::bad_alloc when there is no memory for the copy.
HC_API char HFErrorGet(HCError& error);

/// The same for the record `steps` before the newest: 1 is the one before it, 0 the newest itself. Returns 0 when there
/// are not that many and for a negative `steps`.
HC_API char HFErrorGetPrevious(int steps, HCError& error);

/// Drops all records of the calling thread.
HC_API void HFErrorClear();
}
