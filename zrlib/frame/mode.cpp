#include "zrlib/frame/mode.h"

#include "hcbase/preference_system.h"
#include "hcbase/thread.h"
#include "zrlib/frame/relaxed.h"

#include <iterator>

using zr::kRelaxed;

constinit std::atomic<char> ZRMode::m_bThreading{0};
constinit std::atomic<char> ZRMode::m_bCacheQueueing{0};
constinit std::atomic<char> ZRMode::m_bThreadBasedCache{0};
constinit std::atomic<char> ZRMode::m_bCache{0};
constinit std::atomic<char> ZRMode::m_bForceRunInSingleThread{0};
constinit std::atomic<char> ZRMode::m_bTTStreaming{0};
constinit std::atomic<char> ZRMode::m_bThreadingChannelLocking{0};
constinit std::atomic<char> ZRMode::m_bForceMainThreadToUseStreamBasedCache{0};
constinit std::atomic<char> ZRMode::m_bOutEnabled{0};
constinit std::atomic<char> ZRMode::m_bWarnEnabled{0};
constinit std::atomic<char> ZRMode::m_bErrorEnabled{0};
constinit std::atomic<char> ZRMode::m_bTraceEnabled{0};
constinit std::atomic<char> ZRMode::m_bSendToMsgView{0};
constinit std::atomic<char> ZRMode::m_bSendToConsole{0};
constinit std::atomic<char> ZRMode::m_bSendToDebugger{0};
constinit std::atomic<char> ZRMode::m_bSendToFile{0};
constinit std::atomic<ZRThreadSync*> ZRMode::m_pSync{nullptr};

struct ZRMode::Switch {
    enum class Rule { kAlways, kOnlyWithThreading };

    std::atomic<char>& value;
    const char* key;
    char defaultValue;
    Rule rule;
};

// In the order of reading: the two that depend on threading come after it.
constinit const ZRMode::Switch ZRMode::kSwitches[16] = {
    {m_bThreading, "/Libraries/zrlib/Threading", 0, Switch::Rule::kAlways},
    {m_bCacheQueueing, "/Libraries/zrlib/CacheQueueing", 1, Switch::Rule::kOnlyWithThreading},
    {m_bThreadBasedCache, "/Libraries/zrlib/ThreadBasedCache", 1, Switch::Rule::kOnlyWithThreading},
    {m_bCache, "/Libraries/zrlib/Cache", 1, Switch::Rule::kAlways},
    {m_bForceRunInSingleThread, "/Libraries/zrlib/ForceRunInSingleThread", 0, Switch::Rule::kAlways},
    {m_bTTStreaming, "/Libraries/zrlib/TTStreaming", 0, Switch::Rule::kAlways},
    {m_bThreadingChannelLocking, "/Libraries/zrlib/ThreadingChannelLocking", 0, Switch::Rule::kAlways},
    {m_bForceMainThreadToUseStreamBasedCache, "/Libraries/zrlib/ForceMainThreadToUseStreamBasedCache", 1,
        Switch::Rule::kAlways},
    {m_bOutEnabled, "/Libraries/zrlib/OutEnabled", 0, Switch::Rule::kAlways},
    {m_bWarnEnabled, "/Libraries/zrlib/WarnEnabled", 0, Switch::Rule::kAlways},
    {m_bErrorEnabled, "/Libraries/zrlib/ErrorEnabled", 0, Switch::Rule::kAlways},
    {m_bTraceEnabled, "/Libraries/zrlib/TraceEnabled", 0, Switch::Rule::kAlways},
    {m_bSendToMsgView, "/Libraries/zrlib/SendToMsgView", 0, Switch::Rule::kAlways},
    {m_bSendToConsole, "/Libraries/zrlib/SendToConsole", 0, Switch::Rule::kAlways},
    {m_bSendToDebugger, "/Libraries/zrlib/SendToDebugger", 0, Switch::Rule::kAlways},
    {m_bSendToFile, "/Libraries/zrlib/SendToFile", 0, Switch::Rule::kAlways},
};

ZRMode::ZRMode()
{
    HCPreferenceSystem preferences;
    m_pSync.store(nullptr, kRelaxed);
    for (const Switch& row : kSwitches) {
        const bool isRead = row.rule == Switch::Rule::kAlways || IsThreading() != 0;
        row.value.store(isRead ? preferences.GetBooleanValue(row.key, row.defaultValue) : char{0}, kRelaxed);
    }
}

ZRMode::ZRMode(const ZRMode& /*other*/) {}

ZRMode& ZRMode::operator=(const ZRMode& /*other*/) { return *this; }

ZRMode::~ZRMode() = default;

char ZRMode::IsThreading() { return m_bThreading.load(kRelaxed); }
char ZRMode::IsCacheQueueing() { return m_bCacheQueueing.load(kRelaxed); }
char ZRMode::IsThreadBasedCache() { return m_bThreadBasedCache.load(kRelaxed); }
char ZRMode::IsCache() { return m_bCache.load(kRelaxed); }
char ZRMode::IsForceRunInSingleThread() { return m_bForceRunInSingleThread.load(kRelaxed); }
char ZRMode::IsTTStreaming() { return m_bTTStreaming.load(kRelaxed); }
char ZRMode::IsThreadingChannelLocking() { return m_bThreadingChannelLocking.load(kRelaxed); }
char ZRMode::IsForceMainThreadToUseStreamBasedCache() { return m_bForceMainThreadToUseStreamBasedCache.load(kRelaxed); }
char ZRMode::IsOutEnabled() { return m_bOutEnabled.load(kRelaxed); }
char ZRMode::IsWarnEnabled() { return m_bWarnEnabled.load(kRelaxed); }
char ZRMode::IsErrorEnabled() { return m_bErrorEnabled.load(kRelaxed); }
char ZRMode::IsTraceEnabled() { return m_bTraceEnabled.load(kRelaxed); }
char ZRMode::SendToMsgView() { return m_bSendToMsgView.load(kRelaxed); }
char ZRMode::SendToConsole() { return m_bSendToConsole.load(kRelaxed); }
char ZRMode::SendToDebugger() { return m_bSendToDebugger.load(kRelaxed); }
char ZRMode::SendToFile() { return m_bSendToFile.load(kRelaxed); }

void ZRMode::SetThreading(char threading) { m_bThreading.store(threading, kRelaxed); }
void ZRMode::SetCacheQueueing(char cacheQueueing) { m_bCacheQueueing.store(cacheQueueing, kRelaxed); }
void ZRMode::SetThreadBasedCache(char threadBasedCache) { m_bThreadBasedCache.store(threadBasedCache, kRelaxed); }
void ZRMode::SetCache(char cache) { m_bCache.store(cache, kRelaxed); }

void ZRMode::SetForceRunInSingleThread(char forceRunInSingleThread)
{
    m_bForceRunInSingleThread.store(forceRunInSingleThread, kRelaxed);
}

void ZRMode::SetThreadingChannelLocking(char threadingChannelLocking)
{
    m_bThreadingChannelLocking.store(threadingChannelLocking, kRelaxed);
}

void ZRMode::SetForceMainThreadToUseStreamBasedCache(char forceMainThreadToUseStreamBasedCache)
{
    m_bForceMainThreadToUseStreamBasedCache.store(forceMainThreadToUseStreamBasedCache, kRelaxed);
}

int ZRMode::GetSwitchCount() noexcept { return static_cast<int>(std::size(kSwitches)); }

const char* ZRMode::GetSwitchKey(int index) noexcept
{
    return index >= 0 && index < GetSwitchCount() ? kSwitches[index].key : nullptr;
}

char ZRMode::GetSwitch(int index) noexcept
{
    return index >= 0 && index < GetSwitchCount() ? kSwitches[index].value.load(kRelaxed) : char{0};
}

char ZRMode::IsMainThread() { return HCThread::AreSameThread(HCThread::GetCurrentThreadId(), m_main_thread); }

char ZRMode::IsWorkerThread() { return IsMainThread() != 0 ? 0 : 1; }

char ZRMode::Lock(const char* /*location*/) { return 0; }

char ZRMode::Unlock(const char* /*location*/) { return 0; }
