/// Reports for the folders below messaging, which defines these functions. Not exported.
#pragma once

#include "hcbase/string.h"

namespace zr {

// As the message functions of the same names (messaging/message_functions.h), without a location and with level 1.

void ReportOut(const HCString& text);
void ReportWarn(const HCString& text);
void ReportError(const HCString& text);
void ReportTrace(const HCString& text);

/// As ZRErrorSet, with level 1 and not chained.
void ReportErrorSet(int code, const char* text, const char* location);

/// Whether messages are on, so that a report may reach somebody.
bool ReportsAreOn();

} // namespace zr
