/// HCString in streams. In a header of its own, so that nobody else pays for <ostream>; not part of hcbase.h.
#pragma once

#include "hcbase/string.h"

#include <ostream>

/// Writes the text as a std::string_view is written, with width and fill.
inline std::ostream& operator<<(std::ostream& stream, const HCString& string) { return stream << string.View(); }
