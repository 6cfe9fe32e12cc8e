/// ZRModule: the object that ties the library together. Not exported.
#pragma once

#include "hcbase/text_table.h"
#include "zrlib/platform/single_threaded.h"

#include <atomic>
#include <thread>

class ZRMessageHandler;
class ZRMode;
class ZRProfilerStateHandler;

/// There is one, in static storage (startup.cpp). Its fields are zero before it is built, do not change while the
/// library is loaded, and keep their values when it is gone.
class ZRModule {
public:
    ZRModule();
    ~ZRModule();
    ZRModule(const ZRModule&) = delete;
    ZRModule& operator=(const ZRModule&) = delete;

    /// A text of the library's table (text_codes.h); null when there is no such text and while there is no table.
    const char* FindText(int code) const noexcept
    {
        const char* text = nullptr;
        HFTextGet(m_hText, code, &text);
        return text;
    }

    HCTextHandle m_hText; // of ZRTextTable
    ZRMode* m_pMode; // owned
    ZRMessageHandler* m_pMessageHandler; // owned; the one message handler of the process
    ZRProfilerStateHandler* m_pProfilerStateHandler; // owned; the one profiler state handler of the process

private:
    void ApplySwitches();
};

extern ZRModule g_Module;

/// Never null, and valid before the module is built.
inline ZRModule* ZRGetModule() { return &g_Module; }

/// Keeps the module's handlers, though not its text table, and what is kept in a ZRModuleObject in place for the length
/// of a scope in which a thread uses one of them.
///
/// A thread or a static object may send a message while, or after, the library's own objects go. The module does not
/// wait for anybody when it goes; it leaves an object that is in use at that moment where it is.
class ZRModuleUse {
public:
    ZRModuleUse() noexcept
    {
        AddUsers(1);
        m_stands = s_stands.load();
    }
    ~ZRModuleUse() { AddUsers(-1); }
    ZRModuleUse(const ZRModuleUse&) = delete;
    ZRModuleUse& operator=(const ZRModuleUse&) = delete;

    /// Whether the module stood when this object was made. If so, its handlers stay until this object goes.
    bool Stands() const { return m_stands; }

    /// Whether the module stands as far as this thread has heard. Keeps nothing in place.
    static bool ModuleSeemsToStand() noexcept { return s_stands.load(std::memory_order_relaxed); }

private:
    friend class ZRModule;
    template <typename Object> friend class ZRModuleObject;

    static void AddUsers(int count) noexcept
    {
        if (zr::IsSingleThreaded()) {
            s_users.store(s_users.load(std::memory_order_relaxed) + count, std::memory_order_relaxed);
        } else {
            s_users.fetch_add(count);
        }
    }

    // A forked child inherits the uses of its parent's other threads. It then leaves its handlers where they are when
    // it unloads the library, since they may be half changed.

    // Two threads that each write one of these and then read the other must not both miss what the other wrote, hence
    // the sequentially consistent order of those steps.
    static std::atomic<bool> s_stands;
    static std::atomic<int> s_users;

    bool m_stands;
};

/// An object in static storage that is left where it is when it should go while a ZRModuleUse is there.
template <typename Object> class ZRModuleObject {
public:
    ZRModuleObject()
        : object()
    {
        m_state = State::kStands;
    }
    ~ZRModuleObject()
    {
        m_state = State::kGoing;
        if (ZRModuleUse::s_users == 0) {
            m_state = State::kAbsent;
            object.~Object();
        } else {
            m_state = State::kStands; // for good
        }
    }
    ZRModuleObject(const ZRModuleObject&) = delete;
    ZRModuleObject& operator=(const ZRModuleObject&) = delete;

    /// Whether the object is there. To be asked within a ZRModuleUse, and holds until its end.
    bool Stands() const
    {
        State state = m_state;
        while (state == State::kGoing) { // which is decided at once
            std::this_thread::yield();
            state = m_state;
        }
        return state == State::kStands;
    }

    union {
        Object object;
    };

private:
    enum class State : char { kAbsent, kGoing, kStands };

    std::atomic<State> m_state{State::kAbsent};
};
