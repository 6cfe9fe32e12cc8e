/// ZRProfilerStateHandler: knows which timers run, and tells observers of those that have ended.
#pragma once

#include "zrlib/export.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/profiling/timer_stack.h"
#include "zrlib/records/profiler_state.h"
#include "zrlib/sync/thread_sync.h"

#include <atomic>
#include <cstddef>
#include <type_traits>

class ZRProfilerStateHandler;

/// The one profiler state handler of the process. The library owns it and takes it away when it is unloaded or the
/// process ends. Never null once the library is loaded.
[[nodiscard]] ZR_API ZRProfilerStateHandler* ZRGetProfilerStateHandler();

/// A stack of the states whose timers run, by which a timer that ends finds its parent, and the subject of
/// ZR_EVENT_PROFILER_STATE, which carries a copy of the state, and ZR_EVENT_PROFILER_ENABLED.
///
/// It is off at first. While it is off, the stack is left alone and no state is sent; timers feed their states all the
/// same, but no parent is charged. A timer that ends while it is off, or while timers are (ZRProfiler::SetEnabled),
/// leaves its state on the stack for good. When the handler is on again no timer charges what was there before, so that
/// the state may go; but Pop and PeekTop still give its address. The states are never owned.
///
/// There is one stack for all threads, and Push, Pop and PeekTop act on its top, whoever has put it there. A timer
/// itself takes the topmost entry of its own thread off and charges the one of its thread that is then topmost, so
/// timers of several threads do not meet. In a child of fork the entries of threads that did not come along are gone.
///
/// Truth values are 1 and 0 unless told otherwise. Threads: any, at any time. While a state is sent a lock is held,
/// which Push, Pop, PeekTop and Update take too, and every timer that ends and has something to send: an observer must
/// not wait for one. Observers come and go as at every subject, without that lock. Copying, assigning and destroying a
/// handler of one's own is the client's to serialise. Once the library's own objects have gone, at the end of the
/// process, the operations do nothing and give 0.
class ZR_API ZRProfilerStateHandler : public ZRObservedObject {
public:
    ZRProfilerStateHandler();

    /// Copies share one lock.
    ZRProfilerStateHandler(const ZRProfilerStateHandler& other);
    ZRProfilerStateHandler& operator=(const ZRProfilerStateHandler& other);
    ~ZRProfilerStateHandler() override;

    /// The switch, which belongs to the process, as it was set. Observers of this handler are told of a change.
    void SetEnabled(char enabled);
    [[nodiscard]] char GetEnabled() const;

    /// Puts a state on the stack. 0 when the handler is off and for null. Throws std::bad_alloc or std::length_error
    /// when the stack cannot grow.
    char Push(ZRProfilerState* state);

    /// Takes the top state off the stack, whichever it is. 1 when it was this one. When the handler is off and for null
    /// nothing is taken, and the result is 0, as on an empty stack.
    char Pop(ZRProfilerState* state);

    /// The top state. 0 when the handler is off or the stack is empty; `state` is left alone then.
    char PeekTop(ZRProfilerState*& state);

    using ZRObservedObject::Update;

    /// Sends a copy of a state to the observers. Nothing happens when the handler is off, and for null.
    void Update(ZRProfilerState* state);

    /// Lets Update(NULL) compile, since NULL is a number to the compiler that is neither an int nor a pointer.
    template <typename Number, typename = std::enable_if_t<std::is_same_v<Number, decltype(NULL)>>>
    void Update(Number number)
    {
        if (number == 0) {
            Update(static_cast<ZRProfilerState*>(nullptr));
        } else {
            static_cast<ZRObservedObject*>(this)->Update(static_cast<int>(number));
        }
    }

protected:
    /// Sends a state.
    void Broadcast(ZRProfilerState& state);

    // The handler's lock, with the results of ZRThreadSync.
    char Lock(const char* location);
    char Unlock(const char* location);

    static std::atomic<char> m_bEnabled;

private:
    class LockedWhileEnabled;
    friend class ZRProfiler; // its steps on the stack are for its own thread

    zr::TimerStack m_stack;
    ZRThreadSync m_sync;
};
