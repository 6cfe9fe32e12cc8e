/// The library's one table of fixed texts.
#pragma once

#include "hcbase/text_table.h"

/// 78 rows and an end row with a null text. Their numbers are named in text_codes.h.
extern const HCTextRow ZRTextTable[];
