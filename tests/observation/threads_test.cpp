// Every part of the library from several threads at once.

#include "zrlib/zrlib.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

/// Runs a step again and again on threads of its own while it exists.
class Others {
public:
    explicit Others(std::vector<void (*)()> steps)
    {
        for (void (*step)() : steps) {
            m_threads.emplace_back([this, step] {
                while (!m_isOver) {
                    step();
                }
            });
        }
    }
    ~Others()
    {
        m_isOver = true;
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

private:
    std::atomic<bool> m_isOver{false};
    std::vector<std::thread> m_threads;
};

/// Must not be called when it is detached.
class Guest : public ZRObjectObserver {
public:
    ~Guest() override { isWelcome = false; }

    void OnEvent(ZRObservedObjectEvent* event) override
    {
        calls += 1;
        faults += isWelcome ? 0 : 1;
        length += event->GetText().GetLength();
    }

    std::atomic<bool> isWelcome{true};
    std::atomic<int> length{0};
    static inline std::atomic<int> calls{0};
    static inline std::atomic<int> faults{0};
};

ZRObservedObject g_ownSubject;

class Threads : public testing::Test {
protected:
    Threads()
    {
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(0);
        ZRProgressEnable(1);
        ZRGetProfilerStateHandler()->SetEnabled(1);
        Guest::calls = 0;
        Guest::faults = 0;
    }
    ~Threads() override
    {
        ZRSetMessagesEnabled(0);
        ZRGetProfilerStateHandler()->SetEnabled(0);
        ZRProgressEnable(0);
    }

    static void SendAll()
    {
        static ZRProfilerState state("sent");
        ZROut("a message whose text is too long to lie inside its string", "Threads", 1);
        {
            const ZRProfiler timer(&state);
        }
        ZRProgressStart("a run");
        ZRProgressUpdate(50, nullptr);
        ZRObservedObjectEvent event(1);
        event.Broadcast(&g_ownSubject, 0);
    }
};

TEST_F(Threads, ObserversComeAndGoWhileOthersSend)
{
    constexpr int kRounds = 1000; // for each of two threads
    ZRObservedObject* const subjects[] = {ZRGetMessageHandler(), &g_ownSubject, ZRGetProfilerStateHandler()};
    {
        const Others senders({SendAll, SendAll, SendAll, [] { ZRGetMessageHandler()->SetName("another name"); }});
        const auto visit = [&subjects] {
            for (int round = 0; round < kRounds; ++round) {
                auto guest = std::make_unique<Guest>(); // destroyed right behind its detachment
                for (ZRObservedObject* const subject : subjects) {
                    const ZRAttachment attachment(*subject, *guest);
                    static_cast<void>(subject->GetObserver(0));
                    EXPECT_EQ(subject->IsAttached(guest.get()), 1);
                }
                ZRAttachment attachment(*guest);
                ZRAttachment moved(std::move(attachment));
                const ZRObservedObject copy(*subjects[round % 3]);
                moved.Detach();
                guest->isWelcome = false;
            }
        };
        std::thread second(visit);
        visit();
        second.join();
        while (Guest::calls == 0) { // on a busy machine no round may have met an event
            Guest guest;
            const ZRAttachment attachment(g_ownSubject, guest);
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(Guest::faults, 0);
    for (const ZRObservedObject* const subject : subjects) {
        EXPECT_EQ(subject->GetObserverCount(), 0);
    }
    ZRGetMessageHandler()->SetName("Untitled");
}

/// Detaches another observer, or itself, when it is called.
class Rival : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override { event->GetSource()->DetachObserver(rival, 1); }

    ZRObjectObserver* rival = this;
};

TEST_F(Threads, ObserversThatDetachEachOtherDoNotWaitForEachOther)
{
    ZRObservedObject subject;
    Rival one;
    Rival two;
    one.rival = &two;
    two.rival = &one;
    const auto send = [&] {
        for (int round = 0; round < 2000; ++round) {
            subject.AttachObserver(&one, 1);
            subject.AttachObserver(&two, 1);
            ZRObservedObjectEvent event(1);
            event.SetSource(&subject);
            event.Broadcast(&subject, 0);
        }
    };
    std::thread other(send);
    send();
    other.join();
    subject.DetachObserver(&one, 1);
    subject.DetachObserver(&two, 1);
}

TEST_F(Threads, DetachingWaitsForTheCallThatRunsAndForNoQueue)
{
    struct Slow : ZRObjectObserver {
        void OnEvent(ZRObservedObjectEvent* /*event*/) override
        {
            ++calls;
            isRunning = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            isRunning = false;
        }
        std::atomic<int> calls{0};
        std::atomic<bool> isRunning{false};
    };
    Slow slow;
    ZRGetMessageHandler()->AttachObserver(&slow, 1);
    const Others senders({SendAll, SendAll, SendAll, SendAll});
    while (!slow.isRunning) {
        std::this_thread::yield();
    }
    const int callsBefore = slow.calls;
    ZRGetMessageHandler()->DetachObserver(&slow, 1);
    EXPECT_FALSE(slow.isRunning);
    EXPECT_LT(slow.calls, callsBefore + 20) << "four senders wait for their turn all the time";
}

TEST_F(Threads, HundredsAreInObserversAtOnce)
{
    static constexpr int kThreads = 200;
    static std::atomic<int> inside{0};
    static std::atomic<int> met{0};
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    std::vector<std::thread> threads(kThreads);
    for (std::thread& thread : threads) {
        thread = std::thread([end] {
            ZRObservedObject subject;
            const ZRListener listener(subject, [end](const ZRObservedObjectEvent& /*event*/) {
                ++inside;
                while (inside < kThreads && std::chrono::steady_clock::now() < end) {
                    std::this_thread::yield();
                }
                met += inside == kThreads ? 1 : 0;
            });
            ZRObservedObjectEvent(1).Broadcast(&subject, 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(met, kThreads);
}

TEST_F(Threads, TimersOfSeveralThreadsDoNotMeet)
{
    static ZRProfilerState shared("shared");
    static constexpr int kRuns = 2000;
    const auto run = [](ZRProfilerState& outer, ZRProfilerState& inner) {
        for (int count = 0; count < kRuns; ++count) {
            const ZRProfiler around(&outer);
            const ZRProfiler within(&inner);
            const ZRProfiler feeding(&shared);
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&run] {
            ZRProfilerState outer("outer");
            ZRProfilerState inner("inner");
            run(outer, inner);
            EXPECT_EQ(outer.GetDependantCalls(), kRuns);
            EXPECT_EQ(inner.GetDependantCalls(), kRuns);
            EXPECT_GE(outer.GetSelf(), 0);
            EXPECT_GE(inner.GetSelf(), 0);
        });
    }
    while (shared.GetCalls() < 4L * kRuns) {
        const ZRProfilerState copy(shared);
        EXPECT_TRUE(
            copy.GetCalls() == 0 || copy.GetMin() * static_cast<double>(copy.GetCalls()) <= copy.GetTotal() * 1.001);
        EXPECT_LE(copy.GetTotal(), std::max(0.0, copy.GetMax()) * static_cast<double>(copy.GetCalls()) * 1.001);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared.GetCalls(), 4 * kRuns);
    EXPECT_EQ(shared.GetDependantCalls(), 0);
    ZRProfilerState* top = nullptr;
    EXPECT_EQ(ZRGetProfilerStateHandler()->PeekTop(top), 0) << "nothing is left behind";
}

TEST_F(Threads, TheRegistryServesAll)
{
    const auto work = [](int library) {
        const int first = ZRObjectEntry::OBJECTBASE | library;
        for (int round = 0; round < 200; ++round) {
            EXPECT_EQ(ZRRegisterLibrary(library, "a library"), 1);
            for (int object = 0; object < 20; ++object) {
                EXPECT_EQ(
                    ZRRegisterFactoryObject(first + object, "an object", ZRClassID::MakeInternalID(first + object)), 1);
                EXPECT_EQ(ZRObjectIsKnown(first + object), 1);
                EXPECT_STREQ(ZRGetObjectName(first + object, nullptr), "an object");
            }
            HCString unknown;
            unknown.Format("object with ID 0x%08X", static_cast<unsigned int>(first | 0xFFF));
            EXPECT_STREQ(ZRGetObjectName(first | 0xFFF, nullptr), unknown);
            static_cast<void>(ZRGetRegisteredObjectID(ZRGetRegisteredObjectCount() / 2));
            for (int object = 0; object < 20; ++object) {
                EXPECT_EQ(ZRUnregisterObject(first + object), 1);
            }
            EXPECT_EQ(ZRUnregisterLibrary(library), 1);
        }
    };
    struct LooksUp : ZRObjectObserver { // a registry that holds a lock while it reports would wait for itself
        void OnEvent(ZRObservedObjectEvent* /*event*/) override
        {
            ZRRegisterLibrary(0xF000, "Other");
            static_cast<void>(ZRGetRegisteredObjectCount());
            ZRUnregisterLibrary(0xF000);
        }
    };
    LooksUp observer;
    const ZRAttachment attachment(*ZRGetMessageHandler(), observer);
    const Others others({[] { ZRDumpRegistry(); }});
    std::thread second(work, 0x2000);
    work(0x3000);
    second.join();
}

TEST_F(Threads, ProgressTextsAreWhole)
{
    const char* const titles[] = {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "b"};
    ZRProgressStart(titles[1]);
    const Others others({[] { ZRProgressStart("aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"); },
        [] {
            ZRProgressStart("b");
            ZRProgressEnd();
        }});
    for (int count = 0; count < 5000; ++count) {
        const HCString title = ZRProgressGetTitle();
        ASSERT_TRUE(title == titles[0] || title == titles[1]) << static_cast<const char*>(title);
    }
}

#if !defined(_WIN32)
/// Does what the documentation of ZRObjectObserver::OnEvent forbids, and does not come back.
void TakeTheLocksOfMessagesAndTimersInBothOrders()
{
    std::atomic<int> inside{0};
    const auto meet = [&inside] {
        ++inside;
        while (inside < 2) {
            std::this_thread::yield();
        }
    };
    const auto time = [] {
        ZRProfilerState state;
        const ZRProfiler timer(&state);
    };
    const ZRListener ofMessages(*ZRGetMessageHandler(), [&](const ZRObservedObjectEvent& /*event*/) {
        meet();
        time(); // waits for the observer of the profiler
    });
    const ZRListener ofTimers(*ZRGetProfilerStateHandler(), [&](const ZRObservedObjectEvent& /*event*/) {
        meet();
        ZROut("waits for the observer of messages", nullptr, 1);
    });
    std::thread(time).detach();
    ZROut("a message", nullptr, 1);
}

TEST_F(Threads, AnObserverOfMessagesThatEndsATimerMeetsOneOfTimersThatSends)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#endif
    const pid_t child = fork();
    if (child == 0) {
        alarm(1);
        TakeTheLocksOfMessagesAndTimersInBothOrders();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        << "no deadlock any more: then the documentation need not warn of it";
}

TEST_F(Threads, AForkedChildHasItsOwnThreadOnly)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#endif
    static ZRProfilerState state("of a thread that stays behind");
    const auto sendAndVisit = [] {
        SendAll();
        const auto guest = std::make_unique<Guest>(); // a child does not have the stacks of other threads
        const ZRAttachment attachment(g_ownSubject, *guest);
        const ZRProfiler timer(&state);
        ZRRegisterLibrary(0x4000, "a library");
        ZRUnregisterLibrary(0x4000);
    };
    const Others others({sendAndVisit, sendAndVisit, sendAndVisit});
    for (int number = 0; number < 50; ++number) {
        ZRProfilerState outer("outer");
        const ZRProfiler timer(&outer);
        const pid_t child = fork();
        if (child == 0) {
            alarm(20); // ends a child that hangs
            ZRProfilerState* top = nullptr;
            bool isRight = ZRGetProfilerStateHandler()->PeekTop(top) == 1 && top == &outer;
            {
                ZRProfilerState inner("inner");
                const ZRProfiler within(&inner);
            }
            isRight = isRight && outer.GetDependantCalls() == 1;
            std::thread(sendAndVisit).join();
            sendAndVisit();
            _exit(isRight ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        ASSERT_EQ(status, 0);
    }
}
#endif

} // namespace
