#include "zrlib/observation/observed_object_event.h"

#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/report.h"
#include "zrlib/observation/object_observer.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/observer_call.h"

namespace {

constexpr const char* kLocation = "ZRObservedObjectEvent::Broadcast";

void Report(const char* format, const char* name = "")
{
    HCString text;
    text.Format(format, kLocation, name); // a format may leave the name out
    zr::ReportError(text);
}

// A report of a failed lock is a message to the observers of messages. If the lock is that of one of them, the report
// fails as the message before it did, and would be reported again without end.
constinit thread_local bool t_reportsLockFailure = false;

[[gnu::noinline]] void ReportLockFailure()
{
    if (!t_reportsLockFailure) {
        struct Reporting {
            Reporting() { t_reportsLockFailure = true; }
            ~Reporting() { t_reportsLockFailure = false; }
        };
        const Reporting reporting;
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
    , m_Msg(message)
    , m_bAutoBroadcast(0)
    , m_bTextOfMsg(1)
{
}

ZRObservedObjectEvent::ZRObservedObjectEvent(
    ZRObservedObject* source, const HCString& text, short type, const char* location, short level)
    : m_nCode(ZR_EVENT_MESSAGE)
    , m_pSource(source)
    , m_Msg(text, type, location, level)
    , m_bAutoBroadcast(0)
    , m_bTextOfMsg(1)
{
}

ZRObservedObjectEvent::ZRObservedObjectEvent(const ZRObservedObjectEvent& other)
    : ZRObservedObjectEvent(other.m_nCode)
{
    *this = other;
}

ZRObservedObjectEvent& ZRObservedObjectEvent::operator=(const ZRObservedObjectEvent& other)
{
    if (this != &other) {
        m_nCode = other.m_nCode;
        m_pSource = nullptr;
        m_csName = other.m_csName;
        m_csCaption = other.m_csCaption;
        m_nCount = other.m_nCount;
        m_csText = other.GetText();
        m_csTextEx = other.GetTextEx();
        m_bTextOfMsg = 0;
        m_nType = other.m_nType;
        m_bState = other.m_bState;
        m_Msg = other.m_Msg;
        m_nMin = other.m_nMin;
        m_nMax = other.m_nMax;
        m_pPtr = other.m_pPtr;
        m_LockTrail = other.GetLockTrail();
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
    const zr::ModuleLease lease; // for its seat
    return BroadcastFrom(lease.GetSeat(), source);
}

/// The seat belongs to the calling thread and is not used by another broadcast.
int ZRObservedObjectEvent::BroadcastFrom(zr::Seat& seat, ZRObservedObject* source)
{
    constexpr int kNotStarted = -1;
    if (source == nullptr) {
        Report("%s - broadcast source not specified");
        return kNotStarted;
    }
    using Outcome = zr::ObserverCall::Outcome;
    zr::ObserverCall call(seat, source->m_Observers);
    if (source->AdjustEvent(this) == 0) {
        Report("%s - broadcast halted by %s", source->GetName());
        return kNotStarted;
    }
    int handled = 0;
    const int count = source->GetObserverCount();
    for (int index = 0; index < count; ++index) {
        const Outcome outcome = call.Do(index, [this](ZRObjectObserver& observer) { observer.OnEvent(this); });
        handled += outcome == Outcome::kHandled ? 1 : 0;
        if (outcome == Outcome::kLockFailed) {
            ReportLockFailure();
        }
    }
    return handled;
}
