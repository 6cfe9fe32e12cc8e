#include "zrlib/profiling/profiler_state_handler.h"

#include "hcbase/thread.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/observation/handler_switch.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/sync/lock_guard.h"

/// A scope in which the handler is locked and stays alive; true if the handler is on. The operations test the switch
/// before they construct one, so that timers cost little while nobody observes them.
class ZRProfilerStateHandler::LockedWhileEnabled {
public:
    LockedWhileEnabled(ZRProfilerStateHandler& handler, const char* location)
        : m_location(location)
    {
        if (m_lease.IsAlive()) {
            m_sync = handler.m_sync.Lock(location, nullptr) != 0 ? &handler.m_sync : nullptr;
            m_isOn = handler.GetEnabled() != 0;
        }
    }
    ~LockedWhileEnabled()
    {
        if (m_sync != nullptr) {
            m_sync->Unlock(m_location, nullptr);
        }
    }
    LockedWhileEnabled(const LockedWhileEnabled&) = delete;
    LockedWhileEnabled& operator=(const LockedWhileEnabled&) = delete;

    explicit operator bool() const { return m_isOn; }

private:
    zr::ModuleLease m_lease;
    ZRThreadSync* m_sync = nullptr; // not owned; null when it is not held
    const char* m_location; // not owned
    bool m_isOn = false;
};

constinit std::atomic<char> ZRProfilerStateHandler::m_bEnabled{0};

ZRProfilerStateHandler::ZRProfilerStateHandler() = default;

ZRProfilerStateHandler::ZRProfilerStateHandler(const ZRProfilerStateHandler& other) = default;

ZRProfilerStateHandler& ZRProfilerStateHandler::operator=(const ZRProfilerStateHandler& other) = default;

ZRProfilerStateHandler::~ZRProfilerStateHandler() = default;

char ZRProfilerStateHandler::GetEnabled() const { return m_bEnabled.load(std::memory_order_relaxed); }

void ZRProfilerStateHandler::SetEnabled(char enabled)
{
    if ((GetEnabled() != 0) != (enabled != 0)) {
        m_stack.BeginTurn(); // timers that end while the handler is off leave their states on the stack
    }
    zr::StoreSwitch(*this, m_bEnabled, enabled, ZR_EVENT_PROFILER_ENABLED);
}

char ZRProfilerStateHandler::Push(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return 0;
    }
    const LockedWhileEnabled turn(*this, "ZRProfilerStateHandler::Push");
    if (!turn) {
        return 0;
    }
    m_stack.Push(state, HCThread::GetCurrentThreadId());
    return 1;
}

char ZRProfilerStateHandler::Pop(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return 0;
    }
    const LockedWhileEnabled turn(*this, "ZRProfilerStateHandler::Pop");
    return turn && m_stack.Pop() == state ? 1 : 0;
}

char ZRProfilerStateHandler::PeekTop(ZRProfilerState*& state)
{
    if (GetEnabled() == 0) {
        return 0;
    }
    const LockedWhileEnabled turn(*this, "ZRProfilerStateHandler::PeekTop");
    ZRProfilerState* const top = turn ? m_stack.Top() : nullptr;
    state = top != nullptr ? top : state;
    return top != nullptr ? 1 : 0;
}

void ZRProfilerStateHandler::Update(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return;
    }
    if (const LockedWhileEnabled turn(*this, "ZRProfilerStateHandler::Update");
        turn && (GetObserverCount() > 0 || this != ZRGetProfilerStateHandler())) { // who may adjust the event
        ZRProfilerState copy(*state);
        Broadcast(copy);
    }
}

void ZRProfilerStateHandler::Broadcast(ZRProfilerState& state)
{
    const ZRLockGuard guard(m_sync, "ZRProfilerStateHandler::Broadcast");
    if (GetEnabled() == 0) {
        return;
    }
    ZRObservedObjectEvent event(ZR_EVENT_PROFILER_STATE);
    event.SetSource(this);
    event.SetProfilerState(state);
    event.Broadcast(this, 0);
}

char ZRProfilerStateHandler::Lock(const char* location) { return m_sync.Lock(location, nullptr); }

char ZRProfilerStateHandler::Unlock(const char* location) { return m_sync.Unlock(location, nullptr); }
