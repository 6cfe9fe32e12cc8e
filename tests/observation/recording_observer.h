/// An observer that records what it gets.
#pragma once

#include "zrlib/zrlib.h"

#include <functional>
#include <string>
#include <vector>

namespace test {

class RecordingObserver : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override
    {
        events.push_back(*event);
        sources.push_back(event->GetSource());
        if (then) {
            then(*event);
        }
    }

    std::vector<ZRObservedObjectEvent> events;
    std::vector<ZRObservedObject*> sources; // a copy of an event has none
    std::function<void(ZRObservedObjectEvent&)> then; // done for each event
};

} // namespace test
