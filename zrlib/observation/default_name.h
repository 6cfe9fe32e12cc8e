/// The name of subjects and observers that were given none. Not exported.
#pragma once

#include "hcbase/string.h"

namespace zr {

/// "Untitled", from the table of texts; empty while the table is not there.
HCString DefaultName();

} // namespace zr
