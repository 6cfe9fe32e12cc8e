/// The public headers of the library of ready-made observers, except from_glib.h and spdlog_bridge.h.
///
/// Each observer is an object: its constructor attaches it, and its destructor detaches it. ZRTraceFile and ZRJsonLines
/// have written all that they received when the destructor returns. A failed write is reported once, with ZRErrorSet,
/// and by IsOpen, never by an exception to the sender; later events are written again when that is possible. Threads:
/// any; observers may be constructed and destroyed while others send.
#pragma once

#include "zrobservers/background.h"
#include "zrobservers/event_queue.h"
#include "zrobservers/export.h"
#include "zrobservers/filter.h"
#include "zrobservers/flight_recorder.h"
#include "zrobservers/json_lines.h"
#include "zrobservers/profile_table.h"
#include "zrobservers/progress_bar.h"
#include "zrobservers/recorder.h"
#include "zrobservers/trace_file.h"
