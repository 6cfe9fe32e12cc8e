#include "zrlib/sync/thread_sync.h"

#include "hcbase/string.h"
#include "hcbase/thread.h"
#include "zrlib/frame/report.h"
#include "zrlib/platform/thread_mark.h"
#include "zrlib/platform/tick_counter.h"
#include "zrlib/sync/lock_trail_functions.h"
#include "zrlib/utilities/fixed_text.h"

namespace {

bool ShouldNotify(const ZRLockTrail* trail) { return trail != nullptr && ZRGetLockTrailEnabled() != 0; }

} // namespace

ZRThreadSync::ZRThreadSync() = default;

ZRThreadSync::ZRThreadSync(const ZRThreadSync& other) = default;

ZRThreadSync& ZRThreadSync::operator=(const ZRThreadSync& other) = default;

ZRThreadSync::~ZRThreadSync() = default;

/// The two steps with their count, which changes only while the lock is held, as an atomic addition would cost as much
/// as the lock. So it is decremented before the release, and only by a thread to which Lock gave the lock. Inlined, as
/// a call would be a good part of the cost.
struct ZRThreadSync::Counted {
    [[gnu::always_inline]] static char Lock(ZRThreadSync& sync)
    {
        const char isLocked = sync.lock();
        if (isLocked != 0) {
            sync.m_nLockCount = sync.m_nLockCount + 1;
            sync.m_nHolder = zr::ThreadMark();
        }
        return isLocked;
    }

    [[gnu::always_inline]] static char Unlock(ZRThreadSync& sync)
    {
        const std::uintptr_t self = zr::ThreadMark();
        const bool isHolder = sync.m_nHolder == self;
        if (!isHolder && sync.unlock() == 0) {
            return 0;
        }
        const int count = sync.m_nLockCount;
        sync.m_nLockCount = count - 1;
        if (!isHolder) {
            return 1; // was locked with `lock`
        }
        if (count == 1) {
            sync.m_nHolder = 0;
        }
        if (sync.unlock() == 0) { // was released with `unlock`
            sync.m_nLockCount = count;
            sync.m_nHolder = self;
            return 0;
        }
        return 1;
    }
};

char ZRThreadSync::Lock(const char* location, ZRLockTrail* trail)
{
    if (!IsOn()) {
        return 1;
    }
    if (m_bReport != 0 && IsNotMainThread() != 0) {
        return LockTimed(location, trail);
    }
    if (ShouldNotify(trail)) {
        ZRLockTrailLock(trail);
    }
    return Counted::Lock(*this);
}

char ZRThreadSync::LockTimed(const char* location, ZRLockTrail* trail)
{
    const std::int64_t start = zr::ReadTicks();
    const char* const place = location != nullptr ? location : "?";
    const unsigned int thread = HCThread::GetCurrentThreadId();
    if (m_bVerbose != 0) {
        HCString text;
        text.Format("%s awaiting lock, count = %d, thread %04X", place, static_cast<int>(m_nLockCount), thread);
        zr::ReportOut(text);
    }
    if (ShouldNotify(trail)) {
        ZRLockTrailLock(trail);
    }
    const char isLocked = Counted::Lock(*this);
    if (zr::SecondsSince(start) > m_dWarningThreshold) {
        try {
            HCString text;
            text.Format("%s got lock, elapsed %s, thread %04X", place,
                static_cast<const char*>(zr::FixedText(zr::SecondsSince(start), 6)), thread);
            zr::ReportWarn(text);
        } catch (...) {
            if (isLocked != 0) {
                Counted::Unlock(*this);
            }
            throw;
        }
    }
    return isLocked;
}

char ZRThreadSync::Unlock(const char* /*location*/, ZRLockTrail* trail)
{
    if (!IsOn()) {
        return 1;
    }
    const char isUnlocked = Counted::Unlock(*this);
    if (ShouldNotify(trail)) {
        ZRLockTrailUnlock(trail);
    }
    return isUnlocked;
}

unsigned int ZRThreadSync::GetMainThread() { return m_main_thread; }

char ZRThreadSync::IsMainThread()
{
    return HCThread::AreSameThread(HCThread::GetCurrentThreadId(), m_main_thread) ? 1 : 0;
}

char ZRThreadSync::IsNotMainThread() { return IsMainThread() == 0 ? 1 : 0; }
