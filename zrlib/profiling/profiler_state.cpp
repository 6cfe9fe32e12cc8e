#include "zrlib/profiling/profiler_state.h"

#include "hcbase/thread.h"

ZRProfilerState::~ZRProfilerState() = default;

char ZRProfilerState::operator==(const ZRProfilerState& other) const
{
    return m_nCalls == other.m_nCalls && m_nDependantCalls == other.m_nDependantCalls && m_dTotal == other.m_dTotal
            && m_dSelf == other.m_dSelf && m_dMax == other.m_dMax && m_dMin == other.m_dMin
            && m_nThreadID == other.m_nThreadID && m_csLocation == other.m_csLocation
        ? 1
        : 0;
}

void ZRProfilerState::Update(double elapsed)
{
    IncCalls();
    if (elapsed > m_dMax) {
        m_dMax = elapsed;
    }
    if (m_dMin > elapsed) {
        m_dMin = elapsed;
    }
    m_dSelf += elapsed;
    m_dTotal += elapsed;
    m_nThreadID = HCThread::GetCurrentThreadId();
}

void ZRProfilerState::RemoveDependantTime(double elapsed)
{
    IncDependantCalls();
    m_dSelf -= elapsed;
}
