/// ModuleLease: keeps the library's own objects alive while it is held. Not exported.
#pragma once

#include "zrlib/frame/seats.h"
#include "zrlib/platform/fork_hooks.h"

#include <atomic>
#include <thread>

namespace zr {

/// True while the module (startup/module.h) is alive: from the construction of its handlers to their destruction.
extern std::atomic<bool> g_moduleIsAlive;

/// Whether the module is alive as far as this thread can see without synchronising.
inline bool ModuleSeemsAlive() noexcept { return g_moduleIsAlive.load(std::memory_order_relaxed); }

/// What runs while a lease is held. The only thread of a process needs no protection while it runs the library's code.
enum class Runs { kClientCode, kOwnCodeOnly };

/// RAII: while one exists and IsAlive, the handlers of the module and the objects in a ModuleObject are not destroyed.
/// Code that may run during or after static destruction, on another thread or in a static object, creates one first.
/// The module's destruction waits for nobody: an object that is leased then is never destroyed.
///
/// fork: a child does not inherit the leases of its parent's other threads.
class ModuleLease {
public:
    /// Throws std::bad_alloc when very many threads are inside the library and there is no memory for another seat.
    explicit ModuleLease(Runs runs = Runs::kClientCode)
        : m_seat(runs == Runs::kClientCode || !IsSingleThreaded() ? &Seats::Take() : nullptr)
        , m_isAlive(g_moduleIsAlive.load())
    {
    }
    ~ModuleLease()
    {
        if (m_seat != nullptr) {
            Seats::Leave(*m_seat);
        }
    }
    ModuleLease(const ModuleLease&) = delete;
    ModuleLease& operator=(const ModuleLease&) = delete;

    bool IsAlive() const noexcept { return m_isAlive; }

    /// The seat of the thread. Only for a lease with Runs::kClientCode.
    Seat& GetSeat() const noexcept { return *m_seat; }

private:
    Seat* m_seat; // not owned
    bool m_isAlive;
};

/// An object in static storage that is not destroyed when its destruction is due while somebody holds a lease.
template <typename Object> class ModuleObject {
public:
    ModuleObject()
        : object()
    {
        m_state = State::kAlive;
    }
    ~ModuleObject()
    {
        m_going = ForkGeneration();
        m_state = State::kGoing;
        if (!Seats::IsAnyTaken()) {
            m_state = State::kAbsent;
            object.~Object();
        } else {
            m_state = State::kAlive; // for good
        }
    }
    ModuleObject(const ModuleObject&) = delete;
    ModuleObject& operator=(const ModuleObject&) = delete;

    /// Whether the object is alive. Ask within a lease; the answer holds until its end.
    bool IsAlive() const
    {
        State state = m_state;
        while (state == State::kGoing && m_going == ForkGeneration()) { // decided in a moment
            std::this_thread::yield();
            state = m_state;
        }
        return state != State::kAbsent; // a child forked meanwhile keeps it
    }

    union {
        Object object;
    };

private:
    enum class State : char { kAbsent, kGoing, kAlive };

    std::atomic<State> m_state{State::kAbsent};
    std::atomic<std::uint32_t> m_going{0}; // fork generation of the process that destroys it
};

} // namespace zr
