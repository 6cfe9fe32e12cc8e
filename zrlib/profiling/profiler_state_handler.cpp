#include "zrlib/profiling/profiler_state_handler.h"

#include "zrlib/frame/module.h"
#include "zrlib/observation/observed_object_event.h"

#include <optional>

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

/// A scope in which the handler is locked, does not go, and is on if this says so. The operations ask the switch before
/// they make one, so that timers cost little while nobody wants to see them.
class ZRProfilerStateHandler::Turn {
public:
    Turn(ZRProfilerStateHandler& handler, const char* location)
    {
        if (m_module.Stands()) {
            m_hold.emplace(handler.m_sync, location);
            m_isOn = handler.GetEnabled() != 0;
        }
    }

    explicit operator bool() const { return m_isOn; }

private:
    ZRModuleUse m_module;
    std::optional<Hold> m_hold;
    bool m_isOn = false;
};

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

char ZRProfilerStateHandler::Push(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return 0;
    }
    const Turn turn(*this, "ZRProfilerStateHandler::Push");
    if (!turn) {
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
    const Turn turn(*this, "ZRProfilerStateHandler::Pop");
    ZRProfilerState* top = nullptr;
    return turn && m_stack.Pop(top) != 0 && top == state ? 1 : 0;
}

char ZRProfilerStateHandler::PeekTop(ZRProfilerState*& state)
{
    if (GetEnabled() == 0) {
        return 0;
    }
    const Turn turn(*this, "ZRProfilerStateHandler::PeekTop");
    return turn ? m_stack.Peek(state) : char{0};
}

void ZRProfilerStateHandler::Update(ZRProfilerState* state)
{
    if (GetEnabled() == 0 || state == nullptr) {
        return;
    }
    if (const Turn turn(*this, "ZRProfilerStateHandler::Update"); turn && IsObserved()) {
        ZRProfilerState copy(*state);
        Broadcast(copy);
    }
}

/// Whether anybody may see an event: an observer, or AdjustEvent of a class that a client derived.
bool ZRProfilerStateHandler::IsObserved() const
{
    return GetObserverCount() > 0 || this != ZRGetModule()->m_pProfilerStateHandler;
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
