/// Numbers as text. Not exported.
#pragma once

#include "hcbase/string.h"

namespace zr {

/// As printf with "%.*f" in the C locale: the decimal point is a point in every locale.
HCString FixedText(double value, int decimals);

} // namespace zr
