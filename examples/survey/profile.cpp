#include "profile.h"

#include <algorithm>
#include <vector>

Profile::Profile()
    : m_attachment(*ZRGetProfilerStateHandler(), *this)
{
    ZRGetProfilerStateHandler()->SetEnabled(1);
}

Profile::~Profile()
{
    ZRGetProfilerStateHandler()->SetEnabled(0);
    m_attachment.Detach(); // before what it is told goes
}

void Profile::OnEvent(ZRObservedObjectEvent* event)
{
    if (event->GetCode() == ZR_EVENT_PROFILER_STATE) {
        const ZRProfilerState& state = event->GetProfilerState();
        m_states[static_cast<const char*>(state.GetLocation())] = state;
    }
}

void Profile::Report() const
{
    std::vector<ZRProfilerState> states;
    states.reserve(m_states.size());
    for (const auto& [place, state] : m_states) {
        states.push_back(state);
    }
    std::sort(states.begin(), states.end(),
        [](const ZRProfilerState& left, const ZRProfilerState& right) { return left.GetSelf() > right.GetSelf(); });

    HCString line;
    line.Format("%-8s %8s %11s %11s %11s %11s", "Phase", "calls", "total s", "self s", "shortest s", "longest s");
    ZROut(line, "Profile::Report", 1);
    for (const ZRProfilerState& state : states) {
        line.Format("%-8s %8lld %11.6f %11.6f %11.6f %11.6f", static_cast<const char*>(state.GetLocation()),
            static_cast<long long>(state.GetCalls()), state.GetTotal(), state.GetSelf(), state.GetMin(),
            state.GetMax());
        ZROut(line, "Profile::Report", 1);
    }
}
