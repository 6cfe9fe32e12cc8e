/// StoreSwitch: what the handlers that are subjects have in common. Not exported.
#pragma once

#include <atomic>
#include <cstdint>

class ZRObservedObject;

namespace zr {

/// Stores a handler's switch. If that changes it, notifies the observers with an event of that code, without a lock.
void StoreSwitch(ZRObservedObject& handler, std::atomic<char>& handlerSwitch, char enabled, std::int32_t eventCode);

} // namespace zr
