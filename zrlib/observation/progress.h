/// Progress: code that takes long tells how far it has come, whoever shows it.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

// One state for the process, and one run at a time. Each command writes the state and then sends an event from the
// subject of the process (ZRAttachObserver), so an observer finds the new state. No value is tested: a range may be
// upside down, and percents may be any numbers. Nothing is reset when a run starts or ends.
//
// Once the library's own objects have gone, at the end of the process, commands do nothing and the texts are empty.
//
// Threads: any, at any time. Observers run on the thread that calls the command, without a lock of the progress state,
// so the events of two threads' commands come in any order.

/// Title of the latest run.
[[nodiscard]] ZR_API HCString ZRProgressGetTitle();

/// The last text that was given to ZRProgressUpdate.
[[nodiscard]] ZR_API HCString ZRProgressGetUpdateText();

extern "C" {

/// The switch for all of it, 0 at first. While it is 0 every other command is ignored, and a run that is under way
/// waits for it to come on again. Sends no event.
ZR_API void ZRProgressEnable(char enable);
[[nodiscard]] ZR_API char ZRProgressEnabled();

/// Begins a run. Within a run: the run has a new title. Sends ZR_EVENT_PROGRESS_START.
ZR_API void ZRProgressStart(const HCString& title);

// The others are ignored unless a run is under way.

/// The numbers between which the run goes; 0 and 100 at first. Sends ZR_EVENT_PROGRESS_RANGE.
ZR_API void ZRProgressSetRange(int min, int max);

/// Whether the text is to be shown; 1 at first. Sends ZR_EVENT_PROGRESS_TEXT_VISIBLE.
ZR_API void ZRProgressSetTextVisible(char visible);

/// How far the run has come. text: null to keep the last one. Sends ZR_EVENT_PROGRESS_UPDATE, whose text is empty then.
ZR_API void ZRProgressUpdate(int percent, HCString* text);

/// Ends the run. Sends ZR_EVENT_PROGRESS_END with 100 percent; the percents that are kept stay as they were.
ZR_API void ZRProgressEnd();

[[nodiscard]] ZR_API int ZRProgressGetRangeMin();
[[nodiscard]] ZR_API int ZRProgressGetRangeMax();
[[nodiscard]] ZR_API int ZRProgressGetPercent();
[[nodiscard]] ZR_API char ZRProgressGetTextVisible();
}
