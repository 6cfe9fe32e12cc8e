/// Quietly: keeps exceptions of observers from the sender. Not exported.
#pragma once

#include "zrlib/zrlib.h"

#include <cerrno>
#include <exception>

namespace zrobservers {

/// A function for a ZRListener that calls a member of an observer. An event for which there is no memory is lost, and
/// the sender's errno is preserved.
template <typename Observer> auto Quietly(Observer& observer, void (Observer::*handle)(const ZRObservedObjectEvent&))
{
    return [&observer, handle](const ZRObservedObjectEvent& event) {
        const int error = errno;
        try {
            (observer.*handle)(event);
        } catch (const std::exception&) {
        }
        errno = error;
    };
}

} // namespace zrobservers
