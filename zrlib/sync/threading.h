/// The switch that turns the locks of the process off.
#pragma once

#include "zrlib/export.h"

#include <atomic>

/// The switch, for what is compiled into clients. Others use the two functions below.
ZR_API extern std::atomic<char> g_bThreadingEnabled;

extern "C" {

// While the switch is 0, ZRThreadSync locks nothing; HCThreadSync and ZRGlobalThreadSync ignore it. It is initially 1,
// whatever the preferences say, and must not be changed while any lock is held: what was locked before would not be
// unlocked after.
//
// Threads: any.

/// The switch, as it was set.
[[nodiscard]] ZR_API char ZRGetThreadingEnabled();

/// Sets the switch, and notifies the observers of the process of a change with ZR_EVENT_THREADING_ENABLED
/// (ZRAttachObserver). Only where the preferences allow it (ZRMode::IsThreading); otherwise that is reported with
/// ZRError, and the switch is unchanged. An observer that throws terminates the process. A no-op once the library's own
/// objects are destroyed, at the end of the process.
ZR_API void ZRSetThreadingEnabled(char enable);
}
