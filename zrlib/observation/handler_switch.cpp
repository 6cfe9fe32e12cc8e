#include "zrlib/observation/handler_switch.h"

#include "zrlib/frame/module_lease.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observed_object_event.h"

void zr::StoreSwitch(ZRObservedObject& handler, std::atomic<char>& handlerSwitch, char enabled, std::int32_t eventCode)
{
    if (handlerSwitch.exchange(enabled, std::memory_order_relaxed) == enabled) {
        return;
    }
    const zr::ModuleLease lease;
    if (lease.IsAlive()) {
        ZRObservedObjectEvent event(eventCode);
        event.SetSource(&handler);
        event.SetState(enabled);
        event.Broadcast(&handler, 0);
    }
}
