/// Timers in one line.
#pragma once

#include "zrlib/frame/function_name.h"
#include "zrlib/profiling/profiler.h"
#include "zrlib/records/profiler_state.h"

#include <new>

// Each defines a static state, which all threads and all runs of the place share, and a timer that feeds it until the
// end of the scope (ZRProfiler, ZRProfilerState). The state is never destroyed, so destructors and threads that run at
// the end of the process may be timed. Threads: any. In one scope, write each on a line of its own.
//
// g++ keeps a plug-in mapped if an inline function or a template in it has a static variable, and so if it has one of
// these timers; compile the plug-in with -fno-gnu-unique so that it can be unmapped.

/// ZR_TIME_FUNCTION(); a state named after the function, "Map::Check".
#define ZR_TIME_FUNCTION()                                                                                             \
    constexpr auto ZR_TIMER_NAME_(zrName, __LINE__) = ZR_FUNCTION_NAME();                                              \
    ZR_TIME_AS_(ZR_TIMER_NAME_(zrName, __LINE__).Text())

/// ZR_TIME_SCOPE("parse"); a state of that name, which is a literal, as the state keeps the first name that it gets.
#define ZR_TIME_SCOPE(name) ZR_TIME_AS_("" name)

// Not for clients.

namespace zr {

/// A state in its own storage, without a destructor.
class LastingState {
public:
    explicit LastingState(const char* name) { ::new (static_cast<void*>(m_storage)) ZRProfilerState(HCString(name)); }

    ZRProfilerState* Get() { return std::launder(reinterpret_cast<ZRProfilerState*>(m_storage)); }

private:
    alignas(ZRProfilerState) unsigned char m_storage[sizeof(ZRProfilerState)];
};

} // namespace zr

#define ZR_TIME_AS_(name)                                                                                              \
    static ::zr::LastingState ZR_TIMER_NAME_(zrState, __LINE__)(name);                                                 \
    const ZRProfiler ZR_TIMER_NAME_(zrTimer, __LINE__)(ZR_TIMER_NAME_(zrState, __LINE__).Get())

#define ZR_TIMER_NAME_(name, line) ZR_JOIN_(name, line)
#define ZR_JOIN_(left, right) left##right
