/// SwitchOn: keeps a switch on while an observer needs it. Not exported.
#pragma once

#include "zrlib/zrlib.h"

#include <mutex>

namespace zrobservers {

/// While one or more exist the switch is on; the last one destroyed turns it off, unless it was on before the first.
template <char (*get)(), void (*set)(char)> class SwitchOn {
public:
    SwitchOn()
    {
        const std::lock_guard guard(Lock());
        if (s_users++ == 0) {
            s_former = get();
            set(1);
        }
    }
    ~SwitchOn()
    {
        const std::lock_guard guard(Lock());
        if (--s_users == 0 && s_former == 0) {
            set(0);
        }
    }
    SwitchOn(const SwitchOn&) = delete;
    SwitchOn& operator=(const SwitchOn&) = delete;

private:
    /// Re-entrant, because setting a switch calls observers.
    static HCThreadSync& Lock()
    {
        static HCThreadSync lock;
        return lock;
    }

    static inline int s_users = 0;
    static inline char s_former = 0;
};

inline char GetProfilerSwitch() { return ZRGetProfilerStateHandler()->GetEnabled(); }
inline void SetProfilerSwitch(char enabled) { ZRGetProfilerStateHandler()->SetEnabled(enabled); }

using ProfilerOn = SwitchOn<GetProfilerSwitch, SetProfilerSwitch>;
using ProgressOn = SwitchOn<ZRProgressEnabled, ZRProgressEnable>;
using MessagesOn = SwitchOn<ZRGetMessagesEnabled, ZRSetMessagesEnabled>;

} // namespace zrobservers
