#include "zrlib/profiling/profiler_state_handler.h"

#include "zrlib/frame/module.h"
#include "zrlib/observation/observed_object_event.h"

namespace {

/// Holds a lock for the length of a scope.
class Hold {
public:
    Hold(ZRThreadSync& sync, const char* location)
        : m_sync(sync)
        , m_location(location)
    {
        m_sync.Lock(m_location, nullptr);
    }
    ~Hold() { m_sync.Unlock(m_location, nullptr); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    ZRThreadSync& m_sync; // not owned
    const char* m_location; // not owned
};

} // namespace

constinit std::atomic<char> ZRProfilerStateHandler::m_bEnabled{0};

ZRProfilerStateHandler* ZRGetProfilerStateHandler() { return ZRGetModule()->m_pProfilerStateHandler; }

ZRProfilerStateHandler::ZRProfilerStateHandler() = default;

ZRProfilerStateHandler::ZRProfilerStateHandler(const ZRProfilerStateHandler& other) = default;

ZRProfilerStateHandler& ZRProfilerStateHandler::operator=(const ZRProfilerStateHandler& other) = default;

ZRProfilerStateHandler::~ZRProfilerStateHandler() = default;

char ZRProfilerStateHandler::GetEnabled() const { return m_bEnabled.load(std::memory_order_relaxed); }

void ZRProfilerStateHandler::SetEnabled(char enabled)
{
    if (m_bEnabled.exchange(enabled, std::memory_order_relaxed) == enabled) {
        return;
    }
    const ZRModuleUse module;
    if (module.Stands()) {
        ZRObservedObjectEvent event(ZR_EVENT_PROFILER_ENABLED);
        event.SetSource(this);
        event.SetState(enabled);
        event.Broadcast(this, 0);
    }
}

// Each operation asks the switch before it takes the lock, so that timers cost little while nobody wants to see them,
// and again when it has it. In between it makes sure that the handler does not go.

char ZRProfilerStateHandler::Push(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return 0;
    }
    const ZRModuleUse module;
    if (!module.Stands()) {
        return 0;
    }
    const Hold hold(m_sync, "ZRProfilerStateHandler::Push");
    if (GetEnabled() == 0) {
        return 0;
    }
    m_stack.Push(state);
    return 1;
}

char ZRProfilerStateHandler::Pop(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return 0;
    }
    const ZRModuleUse module;
    if (!module.Stands()) {
        return 0;
    }
    const Hold hold(m_sync, "ZRProfilerStateHandler::Pop");
    ZRProfilerState* top = nullptr;
    return GetEnabled() != 0 && m_stack.Pop(top) != 0 && top == state ? 1 : 0;
}

char ZRProfilerStateHandler::PeekTop(ZRProfilerState*& state)
{
    if (GetEnabled() == 0) {
        return 0;
    }
    const ZRModuleUse module;
    if (!module.Stands()) {
        return 0;
    }
    const Hold hold(m_sync, "ZRProfilerStateHandler::PeekTop");
    return GetEnabled() != 0 ? m_stack.Peek(state) : char{0};
}

void ZRProfilerStateHandler::Update(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return;
    }
    const ZRModuleUse module;
    if (!module.Stands()) {
        return;
    }
    const Hold hold(m_sync, "ZRProfilerStateHandler::Update");
    ZRProfilerState copy(*state);
    Broadcast(copy);
}

void ZRProfilerStateHandler::Broadcast(ZRProfilerState& state)
{
    const Hold hold(m_sync, "ZRProfilerStateHandler::Broadcast");
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
