/// ZRProfilerState: the times of one place in a program.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/frame/relaxed.h"

#include <cstdint>
#include <limits>

namespace zr {
class TimerStack;
}

/// How often a named place in a program ran, how long it took in all and by itself, and its shortest and longest run.
/// All times are in seconds; any value is taken as it is, negative ones and NaN too. Self time is the total less the
/// times of dependants, which are the places that ran directly inside this one.
///
/// A state starts and stops nothing; timers feed it. To count anew, assign a new state. It must outlive every timer
/// that feeds it, and every timer that runs inside one of those.
///
/// Threads: any, at any time: one state may be fed, read, copied and assigned to by several threads. Each run counts
/// once, the sums and extremes are those of all runs, and a copy, as observers get it, is consistent. Two getters
/// called one after the other may tell of different moments: take a copy.
class ZR_API ZRProfilerState {
public:
    /// No run yet; the place is called "Unknown".
    ZRProfilerState()
        : m_csLocation("Unknown")
    {
    }
    ZRProfilerState(const HCString& location)
        : m_csLocation(location)
    {
    }

    ZRProfilerState(const ZRProfilerState& other);
    ZRProfilerState& operator=(const ZRProfilerState& other);
    virtual ~ZRProfilerState();

    /// 1 when everything is equal, the name by case; otherwise 0, as always when a time is NaN.
    char operator==(const ZRProfilerState& other) const;

    /// Records a run of so many seconds that has ended on this thread.
    void Update(double elapsed);

    /// Takes the time of a dependant that has ended out of the self time, which stands too low, below 0 perhaps, until
    /// the run of this state itself ends.
    void RemoveDependantTime(double elapsed);

    /// The name of the place.
    [[nodiscard]] HCString GetLocation() const;

    /// The shortest run; 1.7976931348623157e308, the largest double, before the first one.
    [[nodiscard]] double GetMin() const noexcept { return m_dMin; }

    /// The longest run; -1.7976931348623157e308 before the first one.
    [[nodiscard]] double GetMax() const noexcept { return m_dMax; }

    [[nodiscard]] double GetTotal() const noexcept { return m_dTotal; }
    [[nodiscard]] double GetSelf() const noexcept { return m_dSelf; }

    /// Number of runs, and of dependants' runs.
    [[nodiscard]] std::int64_t GetCalls() const noexcept { return m_nCalls; }
    [[nodiscard]] std::int64_t GetDependantCalls() const noexcept { return m_nDependantCalls; }

    /// ID of the thread on which the last run ended; 0 before the first one.
    unsigned int GetThreadID() const { return m_nThreadID; }

protected:
    // Each is one step; a class that changes several at once is its own to serialise.

    void SetMin(double min) { m_dMin = min; }
    void SetMax(double max) { m_dMax = max; }
    void SetTotal(double total) { m_dTotal = total; }
    void SetSelf(double self) { m_dSelf = self; }
    void SetThreadID(unsigned int threadID) { m_nThreadID = threadID; }
    void IncCalls();
    void IncDependantCalls();

private:
    friend class zr::TimerStack; // feeds states under the lock of the timers

    // Under the lock of the timers, which guards all states: it is held across fork.

    void Record(double elapsed, unsigned int threadID);
    void Charge(double elapsed);
    void CopyNumbers(const ZRProfilerState& other);

    HCString m_csLocation;
    zr::Relaxed<double> m_dMin = std::numeric_limits<double>::max();
    zr::Relaxed<double> m_dMax = std::numeric_limits<double>::lowest();
    zr::Relaxed<double> m_dTotal = 0;
    zr::Relaxed<double> m_dSelf = 0;
    zr::Relaxed<std::int64_t> m_nCalls = 0;
    zr::Relaxed<std::int64_t> m_nDependantCalls = 0;
    zr::Relaxed<unsigned int> m_nThreadID = 0;
};
