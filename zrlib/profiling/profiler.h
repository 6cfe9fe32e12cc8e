/// ZRProfiler: a timer for a scope.
/// Folder profiling: timers, the macros that place them, and the handler that reports their times to observers.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

#include <atomic>
#include <cstdint>

class ZRProfilerState;
class ZRProfilerStateHandler;

/// When a timer that feeds a state has run, in ticks (ZRProfiler::GetTicks).
struct ZRProfilerRun {
    std::int64_t start;
    std::int64_t length;
    std::int64_t ticksPerSecond;
};

/// Reads the clock when constructed and again when destroyed, and then does one of three things with the time between:
/// nothing, when its owner only wants GetElapsed; sends a trace message; or feeds a state (ZRProfilerState).
///
/// All times are in seconds. The clock is steady, and counts on while the process sleeps. Reporting time does not count
/// for the timer itself; it counts for enclosing timers only.
///
/// While timers are off (SetEnabled), the destructor is a no-op; the moment of destruction decides. They must not be
/// switched off while a timer feeds a state and the handler is on: the state then stays on the stack
/// (ZRProfilerStateHandler).
///
/// If an observer throws in a timer's destructor, or memory runs out there, std::terminate is called.
///
/// Threads: a timer belongs to the thread that runs its scope. A state may be shared by threads; a shared accumulator
/// is the caller's to guard. Both must outlive the timer. A copy is a timer of its own with the start of the original;
/// but it is not on the stack, so one that feeds a state removes another timer's entry when it is destroyed. Nor does
/// assignment touch the stack: a timer that fed a state before leaves that state there.
class ZR_API ZRProfiler {
public:
    /// A stopwatch: reports nothing.
    ZRProfiler();

    /// Sends "LOCATION : 1.500000secs" when destroyed, as a trace message. accumulator: null, or a total to which the
    /// time is added first and which the message shows too: "LOCATION : 1.500000secs - total 3.500000".
    ZRProfiler(const HCString& location, double* accumulator);

    /// The same, unless the time, or the total if there is one, is below the threshold. The total grows in any case.
    ZRProfiler(const HCString& location, double threshold, double* accumulator);

    /// Feeds a state. The constructor pushes it on the stack of the process (ZRProfilerStateHandler). The destructor
    /// pops it, subtracts its time from the self time of the state beneath, records the run in its own state, and sends
    /// that to the observers of the handler; while the handler is off, it only records the run. Null is a no-op.
    ///
    /// Throws std::bad_alloc when the stack cannot grow.
    ZRProfiler(ZRProfilerState* state);

    ZRProfiler(const ZRProfiler& other) = default;
    ZRProfiler& operator=(const ZRProfiler& other) = default;
    virtual ~ZRProfiler();

    /// Time since the timer was constructed.
    [[nodiscard]] double GetElapsed() const;

    /// The clock itself: counts that grow steadily, with an unspecified start and rate.
    [[nodiscard]] static std::int64_t GetTicks();

    // For observers of ZR_EVENT_PROFILER_STATE, whose state holds sums only.

    /// The run that is reported to the observer on this thread. Valid until OnEvent returns; null outside it.
    [[nodiscard]] static const ZRProfilerRun* GetEnding() noexcept;

    /// Stores the states whose timers run on this thread, the innermost first and at most `capacity` of them. Returns
    /// how many there are. The timer that is ending is not among them. While the handler is off there are none.
    static int GetEnclosing(ZRProfilerState** states, int capacity);

    [[nodiscard]] double* GetAccumulator() const noexcept { return m_pAccumulator; }
    [[nodiscard]] ZRProfilerState* GetState() const noexcept { return m_pState; }

    /// The handler that this timer reports to; null unless it feeds a state.
    [[nodiscard]] ZRProfilerStateHandler* GetHandler() const noexcept { return m_pHandler; }

    /// The switch for all timers, as it was set; initially 1.
    [[nodiscard]] static char GetEnabled();
    static void SetEnabled(char enabled);

protected:
    static std::atomic<char> m_bEnabled;

private:
    struct Steps;

    void Initialise();
    double ToSeconds(std::int64_t ticks) const;

    std::int64_t m_nFrequency = 0; // ticks in a second
    std::int64_t m_nStart = 0; // ticks
    ZRProfilerState* m_pState = nullptr; // not owned
    ZRProfilerStateHandler* m_pHandler = nullptr; // not owned
    char m_bPrint = 0; // a message is sent at the end
    HCString m_csLocation;
    char m_bThreshold = 0; // there is one
    double m_dThreshold = 0;
    double* m_pAccumulator = nullptr; // not owned
};
