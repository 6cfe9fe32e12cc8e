#include "zrlib/sync/threading.h"

#include "zrlib/frame/mode.h"
#include "zrlib/frame/module.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/sync/threading_switch.h"

constinit std::atomic<char> g_bThreadingEnabled{1};

char ZRGetThreadingEnabled() { return g_bThreadingEnabled.load(std::memory_order_relaxed); }

void ZRSetThreadingEnabled(char enable)
{
    const ZRModuleUse module;
    if (!module.Stands()) {
        return;
    }
    if (ZRMode::IsThreading() == 0) {
        ZRError("Threading is disabled by preference", nullptr, 1);
        return;
    }
    if (g_bThreadingEnabled.exchange(enable, std::memory_order_relaxed) != enable) {
        ZRObservedObjectEvent event(ZR_EVENT_THREADING_ENABLED, &g_GlobalSubject);
        event.SetState(enable);
    }
}
