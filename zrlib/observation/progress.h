/// Progress: long-running code reports how far it has come, without knowing who shows it.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

// One state for the process, and one run at a time. Each command writes the state and then sends an event from the
// subject of the process (ZRAttachObserver), so an observer reads the new state. No value is checked: a range may be
// reversed, and percents may be any numbers. Nothing is reset when a run starts or ends.
//
// Once the library's own objects are destroyed, at the end of the process, commands are no-ops and the texts are empty.
//
// Threads: any, at any time. Observers run on the thread that calls the command, without a lock of the progress state,
// so the events of two threads' commands come in any order.

/// Title of the latest run.
[[nodiscard]] ZR_API HCString ZRProgressGetTitle();

/// The last text that was passed to ZRProgressUpdate.
[[nodiscard]] ZR_API HCString ZRProgressGetUpdateText();

extern "C" {

/// The switch for all of it, initially 0. While it is 0 every other command is ignored, and a run that is under way
/// waits until it is on again. Sends no event.
ZR_API void ZRProgressEnable(char enable);
[[nodiscard]] ZR_API char ZRProgressEnabled();

/// Begins a run. Within a run, sets a new title. Sends ZR_EVENT_PROGRESS_START.
ZR_API void ZRProgressStart(const HCString& title);

// The others are ignored unless a run is under way.

/// The ends of the run's range; initially 0 and 100. Sends ZR_EVENT_PROGRESS_RANGE.
ZR_API void ZRProgressSetRange(int min, int max);

/// Whether the text is to be shown; initially 1. Sends ZR_EVENT_PROGRESS_TEXT_VISIBLE.
ZR_API void ZRProgressSetTextVisible(char visible);

/// How far the run has come. text: null to keep the last one. Sends ZR_EVENT_PROGRESS_UPDATE, with an empty text for
/// null.
ZR_API void ZRProgressUpdate(int percent, HCString* text);

/// Ends the run. Sends ZR_EVENT_PROGRESS_END with 100 percent; the percents that are kept are unchanged.
ZR_API void ZRProgressEnd();

[[nodiscard]] ZR_API int ZRProgressGetRangeMin();
[[nodiscard]] ZR_API int ZRProgressGetRangeMax();
[[nodiscard]] ZR_API int ZRProgressGetPercent();
[[nodiscard]] ZR_API char ZRProgressGetTextVisible();
}
