#include "tests/support/messages.h"
#include "tests/support/threads.h"
#include "zrobservers/recorder.h"

#include <functional>
#include <regex>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

constexpr double kNever = 1e9; // seconds

/// Whether another thread can take a lock now.
bool IsFree(HCThreadSync& sync)
{
    bool isFree = false;
    test::OnThreads(1, [&](int /*thread*/) {
        isFree = sync.try_lock();
        if (isFree) {
            sync.unlock();
        }
    });
    return isFree;
}

class ThreadSync : public test::Messages {
protected:
    ThreadSync() { ZRMode::SetThreading(1); }
    ~ThreadSync() override
    {
        ZRSetThreadingEnabled(1);
        ZRMode::SetThreading(0);
    }

    /// The messages since the last time, numbers that differ from run to run replaced.
    std::string TakeMessages()
    {
        std::string texts;
        for (const ZRMsg& message : m_messages.GetMessages()) {
            EXPECT_TRUE(message.GetLocation() == "" && message.GetLevel() == 1);
            texts += std::to_string(message.GetType()) + " " + message.GetText().ToString() + "\n";
        }
        m_messages.Clear();
        HCString thread;
        thread.Format("thread %04X", m_worker);
        texts = std::regex_replace(texts, std::regex(static_cast<const char*>(thread)), "THREAD");
        return std::regex_replace(texts, std::regex(R"(\d+\.\d{6}, )"), "TIME ");
    }

    /// Does something on a worker thread.
    void OnWorker(const std::function<void()>& action)
    {
        test::OnThreads(1, [&](int /*thread*/) {
            m_worker = HCThread::GetCurrentThreadId();
            action();
        });
    }

    ZRRecorder m_messages{*ZRGetMessageHandler()};
    unsigned int m_worker = 0; // ID of the last one
};

TEST_F(ThreadSync, CopiesShareTheLockAndHaveSettingsOfTheirOwn)
{
    const auto settings = [](const ZRThreadSync& of) {
        return std::tuple(of.GetActive(), of.GetReport(), of.GetVerbose(), of.GetWarningThreshold());
    };
    ZRThreadSync sync;
    EXPECT_EQ(settings(sync), std::tuple(1, 0, 0, 0.01));
    sync.SetActive(2);
    sync.SetReport(3);
    sync.SetVerbose(4);
    sync.SetWarningThreshold(5);
    ZRThreadSync copy(sync);
    ZRThreadSync assigned;
    assigned = sync;
    for (ZRThreadSync* const same : {&copy, &assigned}) {
        EXPECT_EQ(settings(*same), std::tuple(2, 3, 4, 5.0));
        sync.Lock(nullptr, nullptr);
        EXPECT_EQ(same->unlock(), 1);
        EXPECT_EQ(sync.Unlock(nullptr, nullptr), 0) << "given up already";
        sync.lock();
        EXPECT_EQ(sync.Unlock(nullptr, nullptr), 1) << "held, however it was taken";
        same->SetActive(0);
    }
    EXPECT_EQ(sync.GetActive(), 2);
}

TEST_F(ThreadSync, LocksUnlessItIsSwitchedOff)
{
    ZRThreadSync sync;
    const struct {
        const char* what;
        char active;
        char threading;
        bool locks;
    } rows[] = {{"on", 1, 1, true}, {"off", 0, 1, false}, {"all off", 1, 0, false}, {"both off", 0, 0, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        sync.SetActive(row.active);
        ZRSetThreadingEnabled(row.threading);
        {
            const ZRLockGuard guard(sync);
            EXPECT_TRUE(guard.IsHeld());
            EXPECT_EQ(IsFree(sync), !row.locks);
        }
        EXPECT_TRUE(IsFree(sync));
        EXPECT_EQ(sync.Lock("a", nullptr), 1);
        EXPECT_EQ(sync.Lock("a", nullptr), 1);
        EXPECT_EQ(sync.Unlock("a", nullptr), 1);
        OnWorker([&] { EXPECT_EQ(sync.Unlock("a", nullptr), row.locks ? 0 : 1) << "held by another"; });
        EXPECT_EQ(sync.Unlock("a", nullptr), 1);
        EXPECT_EQ(sync.Unlock("a", nullptr), row.locks ? 0 : 1) << "one too many";
        EXPECT_TRUE(IsFree(sync));
    }
}

TEST_F(ThreadSync, ReportsWaitsOfWorkerThreads)
{
    const struct {
        char report;
        char verbose;
        double threshold;
        const char* location;
        const char* messages;
    } rows[] = {
        {0, 1, -1, "place", ""},
        {1, 0, kNever, "place", ""},
        {1, 0, -1, "place", "2 place got lock, elapsed TIME THREAD\n"},
        {1, 1, kNever, "100%s", "1 100%s awaiting lock, count = 0, THREAD\n"},
        {1, 1, -1, nullptr, "1 ? awaiting lock, count = 0, THREAD\n2 ? got lock, elapsed TIME THREAD\n"},
    };
    ZRThreadSync sync;
    for (const auto& row : rows) {
        sync.SetReport(row.report);
        sync.SetVerbose(row.verbose);
        sync.SetWarningThreshold(row.threshold);
        const auto lockAndUnlock = [&] {
            EXPECT_EQ(sync.Lock(row.location, nullptr), 1);
            EXPECT_EQ(sync.Unlock(row.location, nullptr), 1);
        };
        OnWorker(lockAndUnlock);
        EXPECT_EQ(TakeMessages(), row.messages);
        lockAndUnlock();
        EXPECT_EQ(TakeMessages(), "") << "the main thread is never timed";
    }
}

TEST_F(ThreadSync, TellsTheMainThreadFromOthers)
{
    const auto ask = [] {
        return std::tuple(ZRThreadSync::IsMainThread(), ZRThreadSync::IsNotMainThread(), ZRMode::IsMainThread(),
            ZRMode::IsWorkerThread());
    };
    EXPECT_EQ(ask(), std::tuple(1, 0, 1, 0));
    OnWorker([&ask] { EXPECT_EQ(ask(), std::tuple(0, 1, 0, 1)); });
    EXPECT_EQ(ZRThreadSync::GetMainThread(), HCThread::GetCurrentThreadId());
}

TEST_F(ThreadSync, CountsItsHolds)
{
    ZRThreadSync sync;
    sync.SetVerbose(1);
    sync.SetWarningThreshold(kNever);
    OnWorker([&] {
        {
            const ZRLockGuard unreported(sync);
            sync.SetReport(1);
            const ZRLockGuard second(sync, "1");
            sync.Lock("2", nullptr);
            sync.Unlock("2", nullptr);
            static_cast<void>(ZRLockGuard(sync, "2"));
        }
        EXPECT_EQ(sync.Unlock("a", nullptr), 0) << "which does not count";
        static_cast<void>(ZRLockGuard(sync, "0"));
    });
    std::string expected;
    for (const std::string count : {"1", "2", "2", "0"}) {
        expected += "1 " + count + " awaiting lock, count = " + count + ", THREAD\n";
    }
    EXPECT_EQ(TakeMessages(), expected);
}

TEST_F(ThreadSync, TellsItsTrailBeforeAndAfterTheLockIsHeld)
{
    struct Enabled : ZRLockTrailHandler {
        Enabled() { m_bEnabled = 1; }
    };
    ZRLockTrailHandler& handler = *ZRGetLockTrailHandler();
    handler = Enabled();
    ZRThreadSync sync;
    sync.SetWarningThreshold(kNever);
    ZRLockTrail trail;
    std::string steps;
    const ZRListener listener(handler, [&](const ZRObservedObjectEvent& event) {
        EXPECT_TRUE(IsFree(sync));
        steps += event.GetLockTrail().IsLock() != 0 ? "lock " : "unlock ";
    });
    const struct {
        char active;
        char report;
        const char* steps;
    } rows[] = {{1, 0, "lock held unlock unlock "}, {1, 1, "lock held unlock unlock "}, {0, 1, "held "}};
    for (const auto& row : rows) {
        sync.SetActive(row.active);
        sync.SetReport(row.report);
        OnWorker([&] {
            {
                const ZRLockGuard guard(sync, "a", &trail);
                steps += "held ";
            }
            sync.Unlock("a", &trail); // which fails
        });
        EXPECT_EQ(std::exchange(steps, ""), row.steps) << int{row.active} << ", " << int{row.report};
    }
    handler = ZRLockTrailHandler();
}

TEST_F(ThreadSync, IsNotHeldWhenAReportThrows)
{
    ZRThreadSync sync;
    sync.SetReport(1);
    sync.SetWarningThreshold(-1);
    {
        const ZRListener thrower(*ZRGetMessageHandler(), [](const auto&) { throw std::runtime_error("no"); });
        OnWorker([&] { EXPECT_THROW(sync.Lock("a", nullptr), std::runtime_error); });
    }
    EXPECT_TRUE(IsFree(sync));
    sync.SetVerbose(1);
    m_messages.Clear();
    OnWorker([&] { const ZRLockGuard guard(sync, "a"); });
    EXPECT_EQ(TakeMessages().find("1 a awaiting lock, count = 0"), 0U);
}

TEST_F(ThreadSync, SwitchObeysThePreferenceAndTellsOfChanges)
{
    const std::string refusal = "4 Threading is disabled by preference\n";
    std::string told; // the state in the event, and that which the observer finds
    const ZRListener listener([&](const ZRObservedObjectEvent& event) {
        EXPECT_EQ(event.GetCode(), ZR_EVENT_THREADING_ENABLED);
        told += std::to_string(event.GetState()) + std::to_string(ZRGetThreadingEnabled());
    });
    const struct {
        char isAllowed;
        char set;
        char now;
        std::string told;
    } rows[] = {{0, 0, 1, refusal}, {0, 1, 1, refusal}, {1, 1, 1, ""}, {1, 0, 0, "00"}, {1, 0, 0, ""}, {1, 5, 5, "55"},
        {1, 1, 1, "11"}};
    for (const auto& row : rows) {
        ZRMode::SetThreading(row.isAllowed);
        ZRSetThreadingEnabled(row.set);
        EXPECT_EQ(ZRGetThreadingEnabled(), row.now);
        EXPECT_EQ(std::exchange(told, "") + TakeMessages(), row.told) << int{row.isAllowed} << ", " << int{row.set};
    }
}

TEST_F(ThreadSync, OfTheProcessIgnoresTheSwitch)
{
    EXPECT_EQ(ZRGlobalThreadSync::GetVerbose(), 0);
    EXPECT_EQ(ZRGlobalThreadSync::GetWarningThreshold(), 1.0);
    ZRGlobalThreadSync::SetVerbose(7);
    ZRGlobalThreadSync::SetWarningThreshold(-2);
    EXPECT_EQ(ZRGlobalThreadSync::GetVerbose(), 7);
    EXPECT_EQ(ZRGlobalThreadSync::GetWarningThreshold(), -2);
    ZRSetThreadingEnabled(0);
    EXPECT_EQ(ZRGlobalThreadSync::Lock("a"), 1);
    EXPECT_EQ(ZRGlobalThreadSync::Lock(nullptr), 1);
    OnWorker([] { EXPECT_EQ(ZRGlobalThreadSync::Unlock("b"), 0) << "held by another"; });
    for (const int isHeld : {1, 1, 0}) {
        EXPECT_EQ(ZRGlobalThreadSync::Unlock("a"), isHeld);
    }
    EXPECT_EQ(TakeMessages(), "");
    ZRGlobalThreadSync::SetVerbose(0);
    ZRGlobalThreadSync::SetWarningThreshold(1);
}

} // namespace
