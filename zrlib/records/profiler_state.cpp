#include "zrlib/records/profiler_state.h"

#include "hcbase/thread.h"
#include "zrlib/frame/short_lock_guard.h"

using zr::ShortLockGuard;

ZRProfilerState::ZRProfilerState(const ZRProfilerState& other)
{
    const ShortLockGuard guard(zr::g_timersLock);
    m_csLocation = other.m_csLocation;
    CopyNumbers(other);
}

ZRProfilerState& ZRProfilerState::operator=(const ZRProfilerState& other)
{
    if (this != &other) {
        const ZRProfilerState copy(other);
        const ShortLockGuard guard(zr::g_timersLock);
        m_csLocation = copy.m_csLocation;
        CopyNumbers(copy);
    }
    return *this;
}

ZRProfilerState::~ZRProfilerState() = default;

void ZRProfilerState::CopyNumbers(const ZRProfilerState& other)
{
    m_dMin = other.m_dMin;
    m_dMax = other.m_dMax;
    m_dTotal = other.m_dTotal;
    m_dSelf = other.m_dSelf;
    m_nCalls = other.m_nCalls;
    m_nDependantCalls = other.m_nDependantCalls;
    m_nThreadID = other.m_nThreadID;
}

char ZRProfilerState::operator==(const ZRProfilerState& other) const
{
    const ZRProfilerState left(*this);
    const ZRProfilerState right(other);
    return left.m_nCalls == right.m_nCalls && left.m_nDependantCalls == right.m_nDependantCalls
            && left.m_dTotal == right.m_dTotal && left.m_dSelf == right.m_dSelf && left.m_dMax == right.m_dMax
            && left.m_dMin == right.m_dMin && left.m_nThreadID == right.m_nThreadID
            && left.m_csLocation.Compare(right.m_csLocation) == 0
        ? 1
        : 0;
}

HCString ZRProfilerState::GetLocation() const
{
    const ShortLockGuard guard(zr::g_timersLock);
    return m_csLocation;
}

void ZRProfilerState::Update(double elapsed)
{
    const unsigned int thread = HCThread::GetCurrentThreadId();
    const ShortLockGuard guard(zr::g_timersLock);
    Record(elapsed, thread);
}

void ZRProfilerState::Record(double elapsed, unsigned int threadID)
{
    m_nCalls = m_nCalls + 1;
    if (elapsed > m_dMax) {
        m_dMax = elapsed;
    }
    if (m_dMin > elapsed) {
        m_dMin = elapsed;
    }
    m_dSelf = m_dSelf + elapsed;
    m_dTotal = m_dTotal + elapsed;
    m_nThreadID = threadID;
}

void ZRProfilerState::RemoveDependantTime(double elapsed)
{
    const ShortLockGuard guard(zr::g_timersLock);
    Charge(elapsed);
}

void ZRProfilerState::Charge(double elapsed)
{
    m_nDependantCalls = m_nDependantCalls + 1;
    m_dSelf = m_dSelf - elapsed;
}

void ZRProfilerState::IncCalls()
{
    const ShortLockGuard guard(zr::g_timersLock);
    m_nCalls = m_nCalls + 1;
}

void ZRProfilerState::IncDependantCalls()
{
    const ShortLockGuard guard(zr::g_timersLock);
    m_nDependantCalls = m_nDependantCalls + 1;
}
