#include "tests/support/messages.h"
#include "tests/support/threads.h"
#include "zrobservers/recorder.h"

#include <regex>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

constexpr double kNever = 1e9; // seconds

/// Does something on a worker thread. The messages meanwhile, with numbers that differ from run to run replaced.
template <typename Action> std::string MessagesOf(Action action)
{
    const ZRRecorder recorder(*ZRGetMessageHandler());
    HCString thread;
    test::OnThreads(1, [&](int /*thread*/) {
        thread.Format("thread %04X", HCThread::GetCurrentThreadId());
        action();
    });
    std::string texts;
    for (const ZRMsg& message : recorder.GetMessages()) {
        EXPECT_TRUE(message.GetLocation() == "" && message.GetLevel() == 1);
        texts += std::to_string(message.GetType()) + " " + message.GetText().ToString() + "\n";
    }
    texts = std::regex_replace(texts, std::regex(static_cast<const char*>(thread)), "THREAD");
    return std::regex_replace(texts, std::regex(R"(\d+\.\d{6}, )"), "TIME ");
}

class ThreadSync : public test::Messages {
protected:
    ThreadSync() { ZRMode::SetThreading(1); }
    ~ThreadSync() override
    {
        ZRSetThreadingEnabled(1);
        ZRMode::SetThreading(0);
    }
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
    sync.SetActive(1);
    EXPECT_EQ(settings(copy), std::tuple(2, 3, 4, 5.0));
    ZRThreadSync same;
    same = sync;
    sync.Lock(nullptr, nullptr);
    EXPECT_EQ(copy.unlock(), 1);
    EXPECT_EQ(sync.Unlock(nullptr, nullptr), 0) << "given up already";
    same.lock();
    EXPECT_EQ(sync.Unlock(nullptr, nullptr), 1) << "held, however it was taken";
}

TEST_F(ThreadSync, LocksUnlessItIsSwitchedOff)
{
    ZRThreadSync sync;
    const struct {
        char active;
        char threading;
        bool locks;
    } rows[] = {{1, 1, true}, {0, 1, false}, {1, 0, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        sync.SetActive(row.active);
        ZRSetThreadingEnabled(row.threading);
        const char whenNotHeld = row.locks ? 0 : 1;
        {
            const ZRLockGuard guard(sync);
            EXPECT_EQ(sync.Lock("a", nullptr), 1);
            EXPECT_TRUE(guard.IsHeld() && test::IsFree(sync) != row.locks);
            test::OnThreads(
                1, [&](int /*thread*/) { EXPECT_EQ(sync.Unlock("a", nullptr), whenNotHeld) << "by another"; });
            EXPECT_EQ(sync.Unlock("a", nullptr), 1);
        }
        EXPECT_EQ(sync.Unlock("a", nullptr), whenNotHeld) << "one too many";
        EXPECT_TRUE(test::IsFree(sync));
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
        EXPECT_EQ(MessagesOf([&] { const ZRLockGuard guard(sync, row.location); }), row.messages);
    }
    EXPECT_EQ(ZRThreadSync::GetMainThread(), HCThread::GetCurrentThreadId());
    test::OnThreads(
        1, [](int /*thread*/) { EXPECT_TRUE(ZRMode::IsWorkerThread() == 1 && ZRMode::IsMainThread() == 0); });
    const ZRListener listener(*ZRGetMessageHandler(), [](const auto&) { ADD_FAILURE() << "the main thread is timed"; });
    const ZRLockGuard guard(sync, "a");
}

TEST_F(ThreadSync, CountsItsHoldsAndHasNoneWhenAReportThrows)
{
    ZRThreadSync sync;
    sync.SetReport(1);
    sync.SetWarningThreshold(-1);
    {
        const ZRListener thrower(*ZRGetMessageHandler(), [](const auto&) { throw std::runtime_error("no"); });
        test::OnThreads(1, [&](int /*thread*/) { EXPECT_THROW(sync.Lock("a", nullptr), std::runtime_error); });
    }
    EXPECT_TRUE(test::IsFree(sync));
    sync.SetReport(0);
    sync.SetVerbose(1);
    sync.SetWarningThreshold(kNever);
    const std::string messages = MessagesOf([&sync] {
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
    EXPECT_EQ(messages, expected);
}

TEST_F(ThreadSync, SwitchObeysThePreferenceAndTellsOfChanges)
{
    const std::string refusal = "1 Threading is disabled by preference ZRError 0";
    std::string told; // the state in the event, and that which the observer finds
    const ZRListener listener([&](const ZRObservedObjectEvent& event) {
        EXPECT_EQ(event.GetCode(), ZR_EVENT_THREADING_ENABLED);
        told += std::to_string(event.GetState()) + std::to_string(ZRGetThreadingEnabled()) + " ";
    });
    const struct {
        char isAllowed;
        char set;
        char now;
        std::string told;
    } rows[] = {{0, 0, 1, refusal}, {0, 1, 1, refusal}, {1, 1, 1, "none"}, {1, 0, 0, "00 none"}, {1, 0, 0, "none"},
        {1, 5, 5, "55 none"}, {1, 1, 1, "11 none"}};
    for (const auto& row : rows) {
        ZRMode::SetThreading(row.isAllowed);
        ZRSetThreadingEnabled(row.set);
        EXPECT_EQ(ZRGetThreadingEnabled(), row.now);
        EXPECT_EQ(std::exchange(told, "") + test::TakeError(), row.told) << int{row.isAllowed} << ", " << int{row.set};
    }
}

TEST_F(ThreadSync, OfTheProcessIgnoresTheSwitch)
{
    EXPECT_TRUE(ZRGlobalThreadSync::GetVerbose() == 0 && ZRGlobalThreadSync::GetWarningThreshold() == 1.0);
    ZRGlobalThreadSync::SetVerbose(7);
    ZRGlobalThreadSync::SetWarningThreshold(-2);
    EXPECT_TRUE(ZRGlobalThreadSync::GetVerbose() == 7 && ZRGlobalThreadSync::GetWarningThreshold() == -2);
    ZRSetThreadingEnabled(0);
    EXPECT_EQ(ZRGlobalThreadSync::Lock("a"), 1);
    test::OnThreads(1, [](int /*thread*/) { EXPECT_EQ(ZRGlobalThreadSync::Unlock("b"), 0) << "held by another"; });
    EXPECT_EQ(ZRGlobalThreadSync::Unlock(nullptr), 1);
    EXPECT_EQ(ZRGlobalThreadSync::Unlock("a"), 0);
    ZRGlobalThreadSync::SetVerbose(0);
    ZRGlobalThreadSync::SetWarningThreshold(1);
}

} // namespace
