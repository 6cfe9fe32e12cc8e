/// Observers that never let an exception pass to the sender.
#pragma once

#include "zrlib/zrlib.h"

#include <exception>

namespace zrobservers {

/// A function for a ZRListener that calls a member of an observer. An event for which there is no memory is lost.
template <typename Observer> auto Quietly(Observer& observer, void (Observer::*handle)(const ZRObservedObjectEvent&))
{
    return [&observer, handle](const ZRObservedObjectEvent& event) {
        try {
            (observer.*handle)(event);
        } catch (const std::exception&) {
        }
    };
}

} // namespace zrobservers
