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
/// All times are in seconds; any value is accepted, negative ones and NaN too. Self time is the total less the times of
/// dependants, which are the places that ran directly inside this one.
///
/// A state starts and stops nothing; timers feed it. To start from zero, assign a new state. It must outlive every
/// timer that feeds it, and every timer that runs inside one of those.
///
/// Threads: any, at any time: several threads may feed, read, copy and assign one state. Each run counts once, the sums
/// and extremes are those of all runs, and a copy, as observers get it, is consistent. Two getters called one after the
/// other may return values of different moments: take a copy.
class ZR_API ZRProfilerState {
public:
    /// No run yet; the place is named "Unknown".
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

    /// 1 when everything is equal, with names compared case-sensitively; otherwise 0, always when a time is NaN.
    char operator==(const ZRProfilerState& other) const;

    /// Records a run of `elapsed` seconds that has ended on this thread.
    void Update(double elapsed);

    /// Subtracts the time of a dependant that has ended from the self time, which is too low, perhaps below 0, until
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

    /// The number of runs, and of dependants' runs.
    [[nodiscard]] std::int64_t GetCalls() const noexcept { return m_nCalls; }
    [[nodiscard]] std::int64_t GetDependantCalls() const noexcept { return m_nDependantCalls; }

    /// ID of the thread on which the last run ended; 0 before the first one.
    unsigned int GetThreadID() const { return m_nThreadID; }

protected:
    // Each is one step; a derived class serialises changes of several values itself.

    void SetMin(double min) { m_dMin = min; }
    void SetMax(double max) { m_dMax = max; }
    void SetTotal(double total) { m_dTotal = total; }
    void SetSelf(double self) { m_dSelf = self; }
    void SetThreadID(unsigned int threadID) { m_nThreadID = threadID; }
    void IncCalls();
    void IncDependantCalls();

private:
    friend class zr::TimerStack; // feeds states under the lock of the timers

    // Under the lock of the timers, which guards all states because it is held across fork.

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
