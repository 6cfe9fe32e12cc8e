/// Everything public of the library of ready-made observers.
///
/// Each observer is an object: constructed it is attached, destroyed it is detached and has written all that it got.
/// What cannot be written is told once with ZRErrorSet and by IsOpen, never by an exception into the sender; what comes
/// later is written again when that is possible. Threads: any; they may be constructed and destroyed while others send.
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
