/// For programs that use the library at times when not all of it is there.
#pragma once

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

/// Uses each part of the library once, all but the registry's tables and the self-checks.
inline void UseEverything(const char* text)
{
    ZROut(text, text, 1);
    ZRErrorSet(-1, text, text, 0, 1);
    ZRDumpRegistry();
    ZRProfilerState state(text);
    const ZRProfiler timer(&state);
    ZRGlobalThreadSync::Lock(text);
    ZRThreadSync sync;
    sync.Lock(text, nullptr);
    ZRRemoveLockTrail(ZRAppendLockTrail());
    ZRProgressEnable(1);
    ZRProgressStart(text);
    sync.Unlock(text, nullptr);
    ZRGlobalThreadSync::Unlock(text);
    ZRMath::Divide(1, 0);
}
