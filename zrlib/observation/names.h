/// The names of subjects and observers, and texts that threads share. Not exported.
#pragma once

#include "hcbase/string.h"

namespace zr {

/// The name of those that were given none: "Untitled", from the table of texts; empty while the table is not there.
HCString DefaultName();

// A name, or a text of progress, that other threads may read and write. Throw std::bad_alloc.

HCString ReadText(const HCString& name);
void WriteText(HCString& name, const HCString& value);

} // namespace zr
