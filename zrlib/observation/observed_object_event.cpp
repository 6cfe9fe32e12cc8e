#include "zrlib/observation/observed_object_event.h"

#include "hcbase/thread.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/sync/sync_guard.h"

#include <array>
#include <atomic>

namespace {

constexpr const char* kLocation = "ZRObservedObjectEvent::Broadcast";

void Report(const char* format, const char* name = "")
{
    HCString text;
    text.Format(format, kLocation, name); // a format may leave the name out
    ZRError(text, nullptr, 1);
}

/// Tells whether a report of a lock that failed is under way on this thread, and says so itself for as long as it
/// lives.
///
/// The report is a message, and goes to the observers of messages. If it is one of them whose lock fails, sending the
/// report fails like the message before it, and would be reported again without end. A flag in storage of each thread
/// would do, but there is none that a library can be unloaded from in safety on every system.
class LockReport {
public:
    LockReport()
    {
        const unsigned int thread = HCThread::GetCurrentThreadId();
        for (const auto& other : s_threads) {
            if (other.load(std::memory_order_relaxed) == thread) {
                return;
            }
        }
        for (auto& free : s_threads) {
            unsigned int nobody = 0;
            if (free.compare_exchange_strong(nobody, thread, std::memory_order_relaxed)) {
                m_place = &free;
                return;
            }
        }
    }
    ~LockReport()
    {
        if (m_place != nullptr) {
            m_place->store(0, std::memory_order_relaxed);
        }
    }
    LockReport(const LockReport&) = delete;
    LockReport& operator=(const LockReport&) = delete;

    /// False when one is under way already, or on as many other threads as are kept.
    bool IsFirst() const { return m_place != nullptr; }

private:
    static std::array<std::atomic<unsigned int>, 64> s_threads; // IDs of the threads that report; 0 is free

    std::atomic<unsigned int>* m_place = nullptr;
};

constinit std::array<std::atomic<unsigned int>, 64> LockReport::s_threads{};

[[gnu::noinline]] void ReportLockFailure()
{
    const LockReport report;
    if (report.IsFirst()) {
        Report("%s - lock failed");
    }
}

} // namespace

ZRObservedObjectEvent::ZRObservedObjectEvent(std::int32_t code)
    : m_nCode(code)
    , m_pSource(nullptr)
    , m_bAutoBroadcast(0)
{
}

ZRObservedObjectEvent::ZRObservedObjectEvent(std::int32_t code, ZRObservedObject* source)
    : m_nCode(code)
    , m_pSource(source)
    , m_bAutoBroadcast(1)
{
}

ZRObservedObjectEvent::ZRObservedObjectEvent(ZRObservedObject* source, const ZRMsg& message)
    : m_nCode(ZR_EVENT_MESSAGE)
    , m_pSource(source)
    , m_csText(message.m_csText)
    , m_csTextEx(message.m_csTextEx)
    , m_Msg(message)
    , m_bAutoBroadcast(0)
{
}

ZRObservedObjectEvent::ZRObservedObjectEvent(const ZRObservedObjectEvent& other)
    : m_nCode(other.m_nCode)
    , m_pSource(nullptr)
    , m_csName(other.m_csName)
    , m_csCaption(other.m_csCaption)
    , m_nCount(other.m_nCount)
    , m_csText(other.m_csText)
    , m_csTextEx(other.m_csTextEx)
    , m_nType(other.m_nType)
    , m_bState(other.m_bState)
    , m_Msg(other.m_Msg)
    , m_nMin(other.m_nMin)
    , m_nMax(other.m_nMax)
    , m_pPtr(other.m_pPtr)
    , m_LockTrail(other.m_LockTrail)
    , m_ProfilerState(other.m_ProfilerState)
    , m_bAutoBroadcast(0)
{
}

ZRObservedObjectEvent& ZRObservedObjectEvent::operator=(const ZRObservedObjectEvent& other)
{
    if (this != &other) {
        m_nCode = other.m_nCode;
        m_pSource = nullptr;
        m_csName = other.m_csName;
        m_csCaption = other.m_csCaption;
        m_nCount = other.m_nCount;
        m_csText = other.m_csText;
        m_csTextEx = other.m_csTextEx;
        m_nType = other.m_nType;
        m_bState = other.m_bState;
        m_Msg = other.m_Msg;
        m_nMin = other.m_nMin;
        m_nMax = other.m_nMax;
        m_pPtr = other.m_pPtr;
        m_LockTrail = other.m_LockTrail;
        m_ProfilerState = other.m_ProfilerState;
        m_bAutoBroadcast = 0;
    }
    return *this;
}

ZRObservedObjectEvent::~ZRObservedObjectEvent()
{
    if (m_bAutoBroadcast != 0 && m_pSource != nullptr) {
        Broadcast(m_pSource, 0);
    }
}

int ZRObservedObjectEvent::Broadcast(ZRObservedObject* source, char /*flag*/)
{
    constexpr int kNotStarted = -1;
    if (source == nullptr) {
        Report("%s - broadcast source not specified");
        return kNotStarted;
    }
    if (source->AdjustEvent(this) == 0) {
        Report("%s - broadcast halted by %s", source->GetName());
        return kNotStarted;
    }
    int handled = 0;
    const int count = source->GetObserverCount();
    for (int index = 0; index < count; ++index) {
        ZRObjectObserver* const observer = source->GetObserver(index); // null when others have been detached
        if (observer == nullptr) {
            continue;
        }
        const ZRSyncGuard guard(observer->m_sync);
        if (guard.IsHeld()) {
            observer->OnEvent(this);
            ++handled;
        } else {
            ReportLockFailure();
        }
    }
    return handled;
}
