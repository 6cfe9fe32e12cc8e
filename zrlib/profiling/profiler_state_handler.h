/// ZRProfilerStateHandler: knows which timers run, and tells observers of those that have ended.
#pragma once

#include "zrlib/export.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/profiling/profiler_state.h"
#include "zrlib/sync/thread_sync.h"
#include "zrlib/utilities/stack.h"

#include <atomic>

class ZRProfilerStateHandler;

/// The one profiler state handler of the process. The library owns it and takes it away when it is unloaded or the
/// process ends. Null when there was no memory for it.
ZR_API ZRProfilerStateHandler* ZRGetProfilerStateHandler();

/// A stack of the states whose timers run, by which a timer that ends finds its parent, and the subject of
/// ZR_EVENT_PROFILER_STATE, which carries a copy of the state, and ZR_EVENT_PROFILER_ENABLED.
///
/// It is off at first. While it is off, the stack is left alone and no state is sent; timers feed their states all the
/// same, but no parent is charged. It must not be switched while timers run: one that ends while it is off stays on the
/// stack, and its state must then outlive the handler's next use. The states are never owned.
///
/// There is one stack for all threads. Timers of several threads that overlap take each other for parents, and remove
/// each other's entries; which state is charged then is a matter of chance.
///
/// Truth values are 1 and 0 unless told otherwise. Threads: any. While the handler is on, a lock is held during Push,
/// Pop, PeekTop and Update, so while states are sent no other timer of the process can end: an observer must not wait
/// for one. What concerns observers, the name and copies is as for every subject. Once the library's own objects have
/// gone, at the end of the process, the operations do nothing and give 0.
class ZR_API ZRProfilerStateHandler : public ZRObservedObject {
public:
    ZRProfilerStateHandler();

    /// Copies share one lock.
    ZRProfilerStateHandler(const ZRProfilerStateHandler& other);
    ZRProfilerStateHandler& operator=(const ZRProfilerStateHandler& other);
    ~ZRProfilerStateHandler() override;

    /// The switch, which belongs to the process, as it was set. Observers of this handler are told of a change.
    void SetEnabled(char enabled);
    char GetEnabled() const;

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

protected:
    /// Sends a state.
    void Broadcast(ZRProfilerState& state);

    // The handler's lock, with the results of ZRThreadSync.
    char Lock(const char* location);
    char Unlock(const char* location);

    static std::atomic<char> m_bEnabled;

private:
    class Turn;
    friend class ZRProfiler; // asks for the switch when the handler may have gone

    bool IsObserved() const;

    ZRStack<ZRProfilerState*> m_stack;
    ZRThreadSync m_sync;
};
