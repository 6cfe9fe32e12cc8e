/// HCString in streams. In its own header, so that only its users pay for <ostream>; not part of hcbase.h.
#pragma once

#include "hcbase/string.h"

#include <ostream>

/// Writes the text as a std::string_view is written, with width and fill.
inline std::ostream& operator<<(std::ostream& stream, const HCString& string) { return stream << string.View(); }
