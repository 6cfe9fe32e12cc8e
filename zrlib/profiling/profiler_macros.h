/// Timers in one line.
#pragma once

#include "zrlib/frame/function_name.h"
#include "zrlib/profiling/profiler.h"
#include "zrlib/records/profiler_state.h"

// Each makes a static state, which all threads and all runs of the place share, and a timer that feeds it until the end
// of the scope (ZRProfiler, ZRProfilerState). Threads: any. In a scope each stands on a line of its own.

/// ZR_TIME_FUNCTION(); a state named like the function, "Map::Check".
#define ZR_TIME_FUNCTION() ZR_TIME_SCOPE(ZR_FUNCTION_NAME().Text())

/// ZR_TIME_SCOPE("parse"); a state of that name.
#define ZR_TIME_SCOPE(name)                                                                                            \
    static ZRProfilerState ZR_TIMER_NAME_(zrState, __LINE__){HCString(name)};                                          \
    const ZRProfiler ZR_TIMER_NAME_(zrTimer, __LINE__)(&ZR_TIMER_NAME_(zrState, __LINE__))

// Not for clients.

#define ZR_TIMER_NAME_(name, line) ZR_JOIN_(name, line)
#define ZR_JOIN_(left, right) left##right
