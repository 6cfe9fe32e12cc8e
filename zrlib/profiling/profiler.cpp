#include "zrlib/profiling/profiler.h"

#include "zrlib/frame/module.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/platform/tick_counter.h"
#include "zrlib/profiling/profiler_state.h"
#include "zrlib/profiling/profiler_state_handler.h"
#include "zrlib/utilities/fixed_text.h"

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

} // namespace

constinit std::atomic<char> ZRProfiler::m_bEnabled{1};

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
    m_pHandler = ZRGetModule()->m_pProfilerStateHandler;
    if (ZRProfilerStateHandler::m_bEnabled.load(kRelaxed) != 0) {
        PushState();
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
    const double elapsed = GetElapsed();
    if (m_pState == nullptr) {
        Report(elapsed);
    } else if (m_pHandler != nullptr && ZRProfilerStateHandler::m_bEnabled.load(kRelaxed) == 0) {
        m_pState->Update(elapsed); // all that is left to do when the handler does nothing
    } else if (m_pHandler != nullptr) {
        FeedState(elapsed);
    }
}

// Apart from their callers, so that these stay short where the handler is off.

[[gnu::noinline]] void ZRProfiler::PushState()
{
    const ZRModuleUse module;
    if (module.Stands() && m_pHandler != nullptr) {
        m_pHandler->Push(m_pState);
    }
}

[[gnu::noinline]] void ZRProfiler::FeedState(double elapsed)
{
    const ZRModuleUse module;
    if (!module.Stands()) {
        m_pState->Update(elapsed);
        return;
    }
    m_pHandler->Pop(m_pState);
    ZRProfilerState* parent = nullptr;
    if (m_pHandler->PeekTop(parent) != 0) {
        parent->RemoveDependantTime(elapsed);
    }
    m_pState->Update(elapsed);
    m_pHandler->Update(m_pState);
}

void ZRProfiler::Report(double elapsed)
{
    double measured = elapsed;
    if (m_pAccumulator != nullptr) {
        *m_pAccumulator += elapsed;
        measured = *m_pAccumulator;
    }
    const bool isBelow = m_bThreshold != 0 && m_dThreshold > measured;
    if (m_bPrint == 0 || isBelow) {
        return;
    }
    constexpr int kDecimals = 6;
    HCString text;
    text.Format("%s : %ssecs", static_cast<const char*>(m_csLocation),
        static_cast<const char*>(zr::FixedText(elapsed, kDecimals)));
    if (m_pAccumulator != nullptr) {
        text.Format("%s - total %s", static_cast<const char*>(text),
            static_cast<const char*>(zr::FixedText(measured, kDecimals)));
    }
    ZRTrace(text, nullptr, 1);
}

double ZRProfiler::GetElapsed() const
{
    return static_cast<double>(zr::ReadTicks() - m_nStart) / static_cast<double>(m_nFrequency);
}

std::int64_t ZRProfiler::GetTicks() { return zr::ReadTicks(); }

char ZRProfiler::GetEnabled() { return m_bEnabled.load(kRelaxed); }

void ZRProfiler::SetEnabled(char enabled) { m_bEnabled.store(enabled, kRelaxed); }
