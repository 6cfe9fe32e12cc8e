/// The names of subjects and observers, and texts that threads share. Not exported.
#pragma once

#include "hcbase/string.h"

namespace zr {

/// The default name of subjects and observers: "Untitled", from the table of texts; empty without the table.
HCString DefaultName();

// A name, or a text of progress, that other threads may read and write. Both throw std::bad_alloc.

HCString ReadText(const HCString& name);
void WriteText(HCString& name, const HCString& value);

} // namespace zr
