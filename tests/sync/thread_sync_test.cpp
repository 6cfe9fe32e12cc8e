#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"

#include <atomic>
#include <chrono>
#include <regex>
#include <stdexcept>
#include <thread>

namespace {

using test::RecordingObserver;

constexpr double kNever = 1e9; // seconds

/// Waits until another thread has had a lock, which is to be free.
void TakeOnAnotherThread(HCThreadSync& sync)
{
    std::thread([&sync] {
        sync.lock();
        sync.unlock();
    }).join();
}

/// Whether this thread holds a lock that it is to hold once at least. Gives up all its holds.
bool IsHeldAndGiveUp(HCThreadSync& sync)
{
    std::atomic<bool> isTaken = false;
    std::thread thread([&] {
        sync.lock();
        isTaken = true;
        sync.unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const bool isHeld = !isTaken;
    while (sync.unlock() != 0) {}
    thread.join();
    return isHeld;
}

class ThreadSync : public test::Messages {
protected:
    ThreadSync()
    {
        ZRMode::SetThreading(1);
        ZRGetMessageHandler()->AttachObserver(&m_messages, 1);
    }
    ~ThreadSync() override
    {
        ZRGetMessageHandler()->DetachObserver(&m_messages, 1);
        ZRSetThreadingEnabled(1);
        ZRMode::SetThreading(0);
    }

    /// The messages since the last time, numbers that differ from run to run replaced.
    std::string TakeMessages()
    {
        std::string texts;
        for (const ZRObservedObjectEvent& event : m_messages.events) {
            texts += event.GetMsg().IsWarn() != 0 ? "W " : event.GetMsg().IsOut() != 0 ? "O " : "E ";
            texts += static_cast<const char*>(event.GetText());
            texts += event.GetMsg().GetLocation() == "" && event.GetMsg().GetLevel() == 1 ? "\n" : " at some place\n";
        }
        m_messages.events.clear();
        HCString thread;
        thread.Format("thread %04X", m_worker);
        texts = std::regex_replace(texts, std::regex(static_cast<const char*>(thread)), "THREAD");
        return std::regex_replace(texts, std::regex(R"(\d+\.\d{6}, )"), "TIME ");
    }

    /// Does something on a worker thread.
    void OnWorker(const std::function<void()>& action)
    {
        std::thread([&] {
            m_worker = HCThread::GetCurrentThreadId();
            action();
        }).join();
    }

    RecordingObserver m_messages;
    unsigned int m_worker = 0; // ID of the last one
};

TEST_F(ThreadSync, StartsActiveAndSilent)
{
    ZRThreadSync sync;
    EXPECT_EQ(sync.GetActive(), 1);
    EXPECT_EQ(sync.GetReport(), 0);
    EXPECT_EQ(sync.GetVerbose(), 0);
    EXPECT_EQ(sync.GetWarningThreshold(), 0.01);
    sync.SetActive(2);
    sync.SetReport(3);
    sync.SetVerbose(4);
    sync.SetWarningThreshold(5);
    ZRThreadSync copy(sync);
    ZRThreadSync assigned;
    assigned = sync;
    for (const ZRThreadSync* same : {&sync, &copy, &assigned}) {
        EXPECT_EQ(same->GetActive(), 2);
        EXPECT_EQ(same->GetReport(), 3);
        EXPECT_EQ(same->GetVerbose(), 4);
        EXPECT_EQ(same->GetWarningThreshold(), 5);
    }
    sync.Lock(nullptr, nullptr);
    EXPECT_TRUE(IsHeldAndGiveUp(copy)) << "copies share the lock";
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
        sync.SetReport(1);
        ZRSetThreadingEnabled(row.threading);
        EXPECT_EQ(sync.Lock("a", nullptr), 1);
        EXPECT_EQ(sync.Lock("a", nullptr), 1);
        EXPECT_EQ(sync.Unlock("a", nullptr), 1);
        if (row.locks) {
            EXPECT_TRUE(IsHeldAndGiveUp(sync));
        }
        EXPECT_EQ(sync.Unlock("a", nullptr), row.locks ? 0 : 1) << "one too many";
        TakeOnAnotherThread(sync);
        ZRSetThreadingEnabled(1);
    }
}

TEST_F(ThreadSync, ReportsWaitsOfWorkerThreads)
{
    const struct {
        const char* what;
        char report;
        char verbose;
        double threshold;
        const char* location;
        const char* messages;
    } rows[] = {
        {"silent", 0, 1, -1, "place", ""},
        {"short", 1, 0, kNever, "place", ""},
        {"long", 1, 0, -1, "place", "W place got lock, elapsed TIME THREAD\n"},
        {"attempts", 1, 1, kNever, "100%s", "O 100%s awaiting lock, count = 0, THREAD\n"},
        {"all", 1, 1, -1, nullptr, "O ? awaiting lock, count = 0, THREAD\nW ? got lock, elapsed TIME THREAD\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ZRThreadSync sync;
        sync.SetReport(row.report);
        sync.SetVerbose(row.verbose);
        sync.SetWarningThreshold(row.threshold);
        const auto lockAndUnlock = [&] {
            EXPECT_EQ(sync.Lock(row.location, nullptr), 1);
            EXPECT_EQ(sync.Unlock(row.location, nullptr), 1);
            EXPECT_EQ(sync.Unlock(row.location, nullptr), 0) << "which does not count";
        };
        OnWorker(lockAndUnlock);
        EXPECT_EQ(TakeMessages(), row.messages);
        lockAndUnlock();
        EXPECT_EQ(TakeMessages(), "") << "the main thread never waits long";
    }
    EXPECT_EQ(ZRThreadSync::GetMainThread(), HCThread::GetCurrentThreadId());
    EXPECT_EQ(ZRThreadSync::IsMainThread(), 1);
    EXPECT_EQ(ZRThreadSync::IsNotMainThread(), 0);
    OnWorker([] { EXPECT_EQ(ZRThreadSync::IsMainThread() + 2 * ZRThreadSync::IsNotMainThread(), 2); });
}

TEST_F(ThreadSync, CountsItsHolds)
{
    ZRThreadSync sync;
    sync.SetVerbose(1);
    sync.SetReport(1);
    sync.SetWarningThreshold(kNever);
    OnWorker([&] {
        for (int turn = 0; turn < 3; ++turn) {
            sync.Lock("a", nullptr);
        }
        sync.Unlock("a", nullptr);
        sync.Lock("a", nullptr);
        while (sync.Unlock("a", nullptr) != 0) {}
        sync.Lock("a", nullptr);
        sync.Unlock("a", nullptr);
    });
    std::string expected;
    for (const int count : {0, 1, 2, 2, 0}) {
        expected += "O a awaiting lock, count = " + std::to_string(count) + ", THREAD\n";
    }
    EXPECT_EQ(TakeMessages(), expected);
}

TEST_F(ThreadSync, MeasuresTheWholeWait)
{
    ZRThreadSync sync;
    sync.SetReport(1);
    sync.SetVerbose(1);
    sync.SetWarningThreshold(0.02);
    std::atomic<bool> waits = false;
    m_messages.then = [&waits](auto&) { waits = true; };
    sync.Lock(nullptr, nullptr);
    std::thread waiting([&] {
        m_worker = HCThread::GetCurrentThreadId();
        sync.Lock("worker", nullptr);
        sync.Unlock("worker", nullptr);
    });
    while (!waits) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    sync.Unlock(nullptr, nullptr);
    waiting.join();
    EXPECT_EQ(TakeMessages(), "O worker awaiting lock, count = 1, THREAD\nW worker got lock, elapsed TIME THREAD\n");
}

TEST_F(ThreadSync, TellsItsTrailBeforeAndAfterTheLockIsHeld)
{
    struct Enabled : ZRLockTrailHandler {
        Enabled() { m_bEnabled = 1; }
    };
    ZRLockTrailHandler& handler = *ZRGetLockTrailHandler();
    handler = Enabled();
    ZRThreadSync sync;
    sync.SetWarningThreshold(-1);
    ZRLockTrail trail;
    RecordingObserver observer;
    std::string steps;
    observer.then = [&](ZRObservedObjectEvent& event) {
        TakeOnAnotherThread(sync);
        steps += event.GetLockTrail().IsLock() != 0 ? "lock " : "unlock ";
        steps += TakeMessages();
    };
    handler.AttachObserver(&observer, 1);
    const auto lockAndUnlock = [&] {
        sync.Lock("a", &trail);
        steps += TakeMessages() + "held ";
        sync.Unlock("a", &trail);
        sync.Unlock("a", &trail); // which fails
    };
    const struct {
        char active;
        char report;
        const char* steps;
    } rows[] = {{1, 0, "lock held unlock unlock "}, {0, 1, "held "},
        {1, 1, "lock O a awaiting lock, count = 0, THREAD\nW a got lock, elapsed TIME THREAD\nheld unlock unlock "}};
    for (const auto& row : rows) {
        sync.SetActive(row.active);
        sync.SetReport(row.report);
        sync.SetVerbose(row.report);
        OnWorker(lockAndUnlock);
        EXPECT_EQ(steps, row.steps);
        steps.clear();
    }
    handler = ZRLockTrailHandler();
}

TEST_F(ThreadSync, IsNotHeldWhenAReportThrows)
{
    ZRThreadSync sync;
    sync.SetReport(1);
    sync.SetWarningThreshold(-1);
    m_messages.then = [](auto&) { throw std::runtime_error("no"); };
    OnWorker([&] { EXPECT_THROW(sync.Lock("a", nullptr), std::runtime_error); });
    m_messages.then = nullptr;
    TakeOnAnotherThread(sync);
    sync.SetVerbose(1);
    m_messages.events.clear();
    OnWorker([&] { EXPECT_EQ(sync.Lock("a", nullptr) + sync.Unlock("a", nullptr), 2); });
    EXPECT_EQ(TakeMessages().find("O a awaiting lock, count = 0"), 0U);
}

TEST_F(ThreadSync, KeepsThreadsApart)
{
    constexpr int kThreads = 8;
    constexpr int kTurns = 2000;
    ZRThreadSync sync;
    int sum = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < kTurns; ++turn) {
                sync.Lock("a", nullptr);
                sync.Lock("a", nullptr);
                ++sum;
                sync.Unlock("a", nullptr);
                sync.Unlock("a", nullptr);
                sync.Unlock("a", nullptr); // once too often
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum, kThreads * kTurns);
    sync.SetReport(1);
    sync.SetVerbose(1);
    sync.SetWarningThreshold(kNever);
    OnWorker([&] { sync.Lock("a", nullptr), sync.Unlock("a", nullptr); });
    EXPECT_EQ(TakeMessages(), "O a awaiting lock, count = 0, THREAD\n");
}

TEST_F(ThreadSync, TheSwitchObeysThePreferenceAndTellsOfChanges)
{
    RecordingObserver observer;
    char seen = 0;
    observer.then = [&](auto&) { seen = ZRGetThreadingEnabled(); };
    ZRAttachObserver(&observer);
    const struct {
        char isAllowed;
        char set;
        char now;
        std::size_t events;
        const char* messages;
    } rows[] = {
        {0, 0, 1, 0, "E Threading is disabled by preference\n"},
        {0, 1, 1, 0, "E Threading is disabled by preference\n"},
        {1, 1, 1, 0, ""},
        {1, 0, 0, 1, ""},
        {1, 0, 0, 0, ""},
        {1, 5, 5, 1, ""},
        {1, 1, 1, 1, ""},
    };
    for (const auto& row : rows) {
        ZRMode::SetThreading(row.isAllowed);
        ZRSetThreadingEnabled(row.set);
        EXPECT_EQ(ZRGetThreadingEnabled(), row.now);
        EXPECT_EQ(TakeMessages(), row.messages);
        ASSERT_EQ(observer.events.size(), row.events);
        if (row.events != 0) {
            EXPECT_EQ(observer.events.front().GetCode(), ZR_EVENT_THREADING_ENABLED);
            EXPECT_EQ(observer.events.front().GetState(), row.now);
            EXPECT_EQ(observer.sources.back(), observer.GetZRSubject());
            EXPECT_EQ(seen, row.now) << "the switch comes first";
        }
        observer.events.clear();
    }
    ZRDetachObserver(&observer);
}

TEST_F(ThreadSync, TheGlobalLockIgnoresTheSwitch)
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
    EXPECT_EQ(ZRGlobalThreadSync::Unlock("a"), 1);
    EXPECT_EQ(ZRGlobalThreadSync::Unlock("a"), 1);
    EXPECT_EQ(ZRGlobalThreadSync::Unlock("a"), 0);
    EXPECT_EQ(TakeMessages(), "");
}

} // namespace
