#include "zrlib/sync/threading.h"

#include "zrlib/frame/mode.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/report.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"

constinit std::atomic<char> g_bThreadingEnabled{1};

char ZRGetThreadingEnabled() { return g_bThreadingEnabled.load(std::memory_order_relaxed); }

void ZRSetThreadingEnabled(char enable)
{
    const zr::ModuleLease lease;
    if (!lease.IsAlive()) {
        return;
    }
    if (ZRMode::IsThreading() == 0) {
        zr::ReportError("Threading is disabled by preference");
        return;
    }
    if (g_bThreadingEnabled.exchange(enable, std::memory_order_relaxed) != enable) {
        ZRObservedObjectEvent event(ZR_EVENT_THREADING_ENABLED, &g_GlobalSubject);
        event.SetState(enable);
    }
}
