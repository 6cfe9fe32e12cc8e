/// ZRProfilerStateHandler: knows the running timers and notifies observers of those that have ended.
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

/// The profiler state handler of the process. The library owns it and destroys it when it is unloaded or the process
/// ends. Never null once the library is loaded.
[[nodiscard]] ZR_API ZRProfilerStateHandler* ZRGetProfilerStateHandler();

/// A stack of the states whose timers run, by which a timer that ends finds its parent, and the subject of
/// ZR_EVENT_PROFILER_STATE, which carries a copy of the state, and ZR_EVENT_PROFILER_ENABLED.
///
/// Initially off. While it is off, the stack is unchanged and no state is sent; timers still feed their states, but no
/// parent is charged. A timer that ends while it is off, or while timers are (ZRProfiler::SetEnabled), leaves its state
/// on the stack for good. Once the handler is on again, no timer charges what was there before, so that the state may
/// be destroyed; but Pop and PeekTop still return its address. The states are never owned.
///
/// There is one stack for all threads. Push, Pop and PeekTop act on its top, whoever has pushed it. A timer itself pops
/// the topmost entry of its own thread and charges the one of its thread that is then topmost, so timers of different
/// threads do not affect each other. In a child of fork, the entries of threads that it does not have are dropped.
///
/// Truth values are 1 and 0 unless stated otherwise. Threads: any, at any time. While a state is sent a lock is held,
/// which Push, Pop, PeekTop and Update take too, and so does every timer that ends and has something to send: an
/// observer must not wait for one. Observers attach and detach as at every subject, without that lock. The client
/// serialises copying, assigning and destroying a handler of its own. Once the library's own objects are destroyed, at
/// the end of the process, the operations are no-ops and return 0.
class ZR_API ZRProfilerStateHandler : public ZRObservedObject {
public:
    ZRProfilerStateHandler();

    /// Copies share one lock.
    ZRProfilerStateHandler(const ZRProfilerStateHandler& other);
    ZRProfilerStateHandler& operator=(const ZRProfilerStateHandler& other);
    ~ZRProfilerStateHandler() override;

    /// The switch, which is process-wide, as it was set. Observers of this handler are notified of a change.
    void SetEnabled(char enabled);
    [[nodiscard]] char GetEnabled() const;

    /// Pushes a state. Returns 0 when the handler is off and for null. Throws std::bad_alloc or std::length_error when
    /// the stack cannot grow.
    char Push(ZRProfilerState* state);

    /// Pops the top state, whichever it is. Returns 1 if it was this one. When the handler is off and for null, nothing
    /// is popped and the result is 0, as on an empty stack.
    char Pop(ZRProfilerState* state);

    /// Stores the top state in `state`. Returns 0 when the handler is off or the stack is empty, and leaves `state`
    /// unchanged.
    char PeekTop(ZRProfilerState*& state);

    using ZRObservedObject::Update;

    /// Sends a copy of a state to the observers. A no-op when the handler is off, and for null.
    void Update(ZRProfilerState* state);

    /// Lets Update(NULL) compile: to the compiler NULL is a number that is neither an int nor a pointer.
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
    /// Sends a state. A no-op when the handler is off.
    void Broadcast(ZRProfilerState& state);

    // The handler's lock, with the results of ZRThreadSync.
    char Lock(const char* location);
    char Unlock(const char* location);

    static std::atomic<char> m_bEnabled;

private:
    class LockedWhileEnabled;
    friend class ZRProfiler; // its steps act on the entries of its own thread

    zr::TimerStack m_stack;
    ZRThreadSync m_sync;
};
