/// Numbers as text.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

#include <cstdint>

/// `value` in the number system of `base`, 2 to 36: a minus sign for a negative number and the digits 0 to 9, a to z,
/// without leading zeros or grouping, in every locale. Any other base yields an empty text. The third argument is
/// reserved; pass 0.
[[nodiscard]] HC_API HCString HFFormat64(std::int64_t value, int base, int reserved);
