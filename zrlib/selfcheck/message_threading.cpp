#include "hcbase/thread.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/observation/observed_object_event.h"
#include "zrlib/records/msg.h"
#include "zrlib/selfcheck/self_checks.h"
#include "zrlib/selfcheck/test_observer.h"

namespace {

constexpr int kThreads = 4;
constexpr int kIterations = 96; // of each thread, each with one message of each type

/// The exit code of a thread that has sent all its messages.
constexpr int ExitCode(int thread)
{
    constexpr int kStep = 111;
    return thread * kStep;
}

template <int thread> void SendAll()
{
    ZRMessageHandler& handler = *ZRGetMessageHandler();
    for (int iteration = kIterations - 1; iteration >= 0; --iteration) {
        HCString text;
        text.Format("T%d OUT - %d", thread, iteration);
        handler.Out(text, nullptr, 1);
        text.Format("T%d WARN - %d", thread, iteration);
        handler.Warn(text, nullptr, 1);
        text.Format("T%d ERROR - %d", thread, iteration);
        handler.Error(text, nullptr, 0, 0, 1);
        text.Format("T%d TRACE - %d", thread, iteration);
        handler.Trace(text, nullptr, 1);
    }
}

template <int thread> unsigned int TestThread(void* /*argument*/)
{
    try {
        SendAll<thread>();
    } catch (...) { // from a client's observer, or out of memory; would end the process
        return 0;
    }
    return ExitCode(
        thread); // ExitThread would wait for the loader of the system, which may be at work around the check
}

/// Starts the threads, waits for those that were started, and returns whether all have ended well.
bool RunThreads(HCThread (&threads)[kThreads])
{
    static constexpr unsigned int (*kFunctions[kThreads])(void*) = {
        TestThread<1>, TestThread<2>, TestThread<3>, TestThread<4>};
    int started = 0;
    while (started < kThreads && threads[started].CreateThread(kFunctions[started], nullptr) != 0) {
        ++started;
    }
    bool allEndedWell = started == kThreads;
    for (int index = 0; index < started; ++index) {
        int exitCode = 0;
        allEndedWell = threads[index].GetExitCode(&exitCode) != 0 && exitCode == ExitCode(index + 1) && allEndedWell;
    }
    return allEndedWell;
}

/// Reports what was counted, while the observer still counts.
bool CountsAreRight()
{
    constexpr int kExpected = kIterations * kThreads; // of each type
    const TestObserver& observer = g_TestObserver.object;
    const int out = observer.m_nOutCount;
    const int warn = observer.m_nWarnCount;
    const int error = observer.m_nErrorCount;
    const int trace = observer.m_nTraceCount;
    const bool areRight = out == kExpected && warn == kExpected && error == kExpected && trace == kExpected;
    HCString text;
    text.Format("Out %d, Warn %d, Error %d, Trace %d", out, warn, error, trace);
    if (areRight) {
        ZROut(text, nullptr, 1);
    } else {
        ZRError(text, nullptr, 1);
    }
    return areRight;
}

/// Attaches the observer for the length of a scope.
class Attachment {
public:
    explicit Attachment(ZRMessageHandler& handler)
        : m_handler(handler)
    {
        m_handler.AttachObserver(&g_TestObserver.object, 1);
    }
    ~Attachment() { m_handler.DetachObserver(&g_TestObserver.object, 1); }
    Attachment(const Attachment&) = delete;
    Attachment& operator=(const Attachment&) = delete;

private:
    ZRMessageHandler& m_handler;
};

bool AllMessagesArrive(HCThread (&threads)[kThreads])
{
    const zr::ModuleLease lease;
    if (!lease.IsAlive() || !g_TestObserver.IsAlive()) {
        return false;
    }
    ZRMessageHandler* handler = ZRGetMessageHandler();
    if (handler == nullptr) { // out of memory
        return false;
    }
    const Attachment attachment(*handler);
    return RunThreads(threads) && CountsAreRight();
}

} // namespace

void TestObserver::OnEvent(ZRObservedObjectEvent* event)
{
    if (event->GetCode() != ZR_EVENT_MESSAGE) {
        return;
    }
    switch (event->GetMsg().GetType()) {
    case ZR_MSG_OUT:
        m_nOutCount = m_nOutCount + 1;
        break;
    case ZR_MSG_WARN:
        m_nWarnCount = m_nWarnCount + 1;
        break;
    case ZR_MSG_ERROR:
        m_nErrorCount = m_nErrorCount + 1;
        break;
    case ZR_MSG_TRACE:
        m_nTraceCount = m_nTraceCount + 1;
        break;
    default:
        break;
    }
}

int ZRTestMessageThreading(char messages)
{
    ZRSetMessagesEnabled(messages);
    HCThread threads[kThreads];
    if (!AllMessagesArrive(threads)) {
        ZRError("MessageThreading test failed", nullptr, 1);
        return 0;
    }
    ZROut("MessageThreading test OK", nullptr, 1);
    return 1;
}
