#include "zrlib/profiling/profiler.h"

#include "hcbase/thread.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/frame/report.h"
#include "zrlib/platform/tick_counter.h"
#include "zrlib/profiling/profiler_state_handler.h"
#include "zrlib/records/profiler_state.h"
#include "zrlib/utilities/fixed_text.h"

#include <utility>

using zr::kRelaxed;

namespace {

constinit thread_local const ZRProfilerRun* t_ending = nullptr;

} // namespace

constinit std::atomic<char> ZRProfiler::m_bEnabled{1};

/// What timers do with a state or a text. Separate, so that constructor and destructor stay short where the handler is
/// off.
struct ZRProfiler::Steps {
    [[gnu::noinline]] static void PushState(const ZRProfiler& timer)
    {
        const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
        if (lease.IsAlive() && timer.m_pState != nullptr) {
            timer.m_pHandler->m_stack.Push(timer.m_pState, HCThread::GetCurrentThreadId());
        }
    }

    [[gnu::noinline]] static void FeedState(const ZRProfiler& timer, std::int64_t length, double elapsed)
    {
        // The handler is in static storage, so it can be asked even while it is being destroyed.
        const bool isObserved = zr::ModuleSeemsAlive() && timer.m_pHandler->GetObserverCount() > 0;
        const zr::ModuleLease lease(isObserved ? zr::Runs::kClientCode : zr::Runs::kOwnCodeOnly);
        const unsigned int thread = HCThread::GetCurrentThreadId();
        if (lease.IsAlive()) {
            timer.m_pHandler->m_stack.End(*timer.m_pState, thread, elapsed);
        } else {
            timer.m_pState->Update(elapsed);
        }
        if (lease.IsAlive() && isObserved) {
            const ZRProfilerRun run{timer.m_nStart, length, timer.m_nFrequency};
            const ZRProfilerRun* const outer = std::exchange(t_ending, &run); // an observer may time its own work
            timer.m_pHandler->Update(timer.m_pState);
            t_ending = outer;
        }
    }

    [[gnu::noinline]] static void Report(const ZRProfiler& timer, double elapsed)
    {
        double measured = elapsed;
        if (timer.m_pAccumulator != nullptr) {
            *timer.m_pAccumulator += elapsed;
            measured = *timer.m_pAccumulator;
        }
        const bool isBelow = timer.m_bThreshold != 0 && timer.m_dThreshold > measured;
        if (timer.m_bPrint == 0 || isBelow) {
            return;
        }
        constexpr int kDecimals = 6;
        HCString text;
        text.Format("%s : %ssecs", static_cast<const char*>(timer.m_csLocation),
            static_cast<const char*>(zr::FixedText(elapsed, kDecimals)));
        if (timer.m_pAccumulator != nullptr) {
            text.Format("%s - total %s", static_cast<const char*>(text),
                static_cast<const char*>(zr::FixedText(measured, kDecimals)));
        }
        zr::ReportTrace(text);
    }
};

ZRProfiler::ZRProfiler() { Initialise(); }

ZRProfiler::ZRProfiler(const HCString& location, double* accumulator)
    : m_bPrint(1)
    , m_csLocation(location)
    , m_pAccumulator(accumulator)
{
    Initialise();
}

ZRProfiler::ZRProfiler(const HCString& location, double threshold, double* accumulator)
    : m_bPrint(1)
    , m_csLocation(location)
    , m_bThreshold(1)
    , m_dThreshold(threshold)
    , m_pAccumulator(accumulator)
{
    Initialise();
}

ZRProfiler::ZRProfiler(ZRProfilerState* state)
    : m_pState(state)
{
    Initialise();
    m_pHandler = ZRGetProfilerStateHandler();
    if (ZRProfilerStateHandler::m_bEnabled.load(kRelaxed) != 0) {
        Steps::PushState(*this);
    }
}

void ZRProfiler::Initialise()
{
    m_nFrequency = zr::TickFrequency();
    m_nStart = zr::ReadTicks();
}

ZRProfiler::~ZRProfiler()
{
    const bool isStopwatch = m_pState == nullptr && m_pAccumulator == nullptr && m_bPrint == 0;
    if (isStopwatch || GetEnabled() == 0) {
        return;
    }
    const std::int64_t length = zr::ReadTicks() - m_nStart;
    const double elapsed = ToSeconds(length);
    if (m_pState == nullptr) {
        Steps::Report(*this, elapsed);
    } else if (m_pHandler != nullptr && ZRProfilerStateHandler::m_bEnabled.load(kRelaxed) == 0) {
        m_pState->Update(elapsed); // all that is left to do while the handler is off
    } else if (m_pHandler != nullptr) {
        Steps::FeedState(*this, length, elapsed);
    }
}

double ZRProfiler::ToSeconds(std::int64_t ticks) const
{
    return static_cast<double>(ticks) / static_cast<double>(m_nFrequency);
}

double ZRProfiler::GetElapsed() const { return ToSeconds(zr::ReadTicks() - m_nStart); }

const ZRProfilerRun* ZRProfiler::GetEnding() noexcept { return t_ending; }

int ZRProfiler::GetEnclosing(ZRProfilerState** states, int capacity)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return lease.IsAlive()
        ? ZRGetProfilerStateHandler()->m_stack.OfThread(HCThread::GetCurrentThreadId(), states, capacity)
        : 0;
}

std::int64_t ZRProfiler::GetTicks() { return zr::ReadTicks(); }

char ZRProfiler::GetEnabled() { return m_bEnabled.load(kRelaxed); }

void ZRProfiler::SetEnabled(char enabled) { m_bEnabled.store(enabled, kRelaxed); }
