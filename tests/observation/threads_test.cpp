// Every part of the library from several threads at once.

#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <algorithm>
#include <atomic>
#include <memory>

#if !defined(_WIN32)
#include <sys/syscall.h>
#endif

namespace {

/// Runs a step again and again on a thread of its own while the result exists.
std::jthread Repeating(void (*step)())
{
    return std::jthread([step](const std::stop_token& end) {
        while (!end.stop_requested()) {
            step();
        }
    });
}

/// Must not be called when it is not welcome any more.
class Guest : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* /*event*/) override
    {
        calls += 1;
        EXPECT_TRUE(isWelcome);
    }

    std::atomic<bool> isWelcome{true};
    static inline std::atomic<int> calls{0};
};

ZRObservedObject g_ownSubject;

class Threads : public test::Messages {
protected:
    Threads()
    {
        ZRProgressEnable(1);
        ZRGetProfilerStateHandler()->SetEnabled(1);
    }
    ~Threads() override
    {
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
        ZRProgressStart(kTitle);
        ZRProgressUpdate(50, nullptr);
        ZRObservedObjectEvent event(1);
        event.Broadcast(&g_ownSubject, 0);
        ZRRegisterLibrary(0x4000, "a library");
        ZRUnregisterLibrary(0x4000);
    }

    static constexpr const char* kTitle = "a run whose title is too long to lie inside its string";
};

TEST_F(Threads, ObserversComeAndGoWhileOthersSend)
{
    ZRObservedObject* const subjects[] = {ZRGetMessageHandler(), &g_ownSubject, ZRGetProfilerStateHandler()};
    ZRProgressStart(kTitle);
    {
        // A registry that holds a lock while it reports would wait for itself.
        const ZRListener asksBack(*ZRGetMessageHandler(), [](const ZRObservedObjectEvent& /*event*/) {
            ZRRegisterLibrary(0xF000, "Other");
            ZRUnregisterLibrary(0xF000);
        });
        const std::jthread others[] = {Repeating(SendAll), Repeating(SendAll), Repeating(ZRDumpRegistry),
            Repeating([] { ZRGetMessageHandler()->SetName("another name"); }),
            Repeating([] { ZRProgressStart("a short title"); })};
        test::OnThreads(2, [&subjects](int thread) {
            for (int round = 0; round < 1000 || Guest::calls == 0; ++round) { // on a busy machine none may be called
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
                const HCString title = ZRProgressGetTitle();
                EXPECT_TRUE(title == kTitle || title == "a short title") << title.ToString();
                EXPECT_EQ(ZRGetObjectName(thread, nullptr), "object with ID 0x0000000" + std::to_string(thread));
            }
        });
    }
    for (const ZRObservedObject* const subject : subjects) {
        EXPECT_EQ(subject->GetObserverCount(), 0);
    }
    ZRGetMessageHandler()->SetName("Untitled");
}

TEST_F(Threads, ObserversThatDetachEachOtherDoNotWaitForEachOther)
{
    struct Rival : ZRObjectObserver {
        void OnEvent(ZRObservedObjectEvent* event) override { event->GetSource()->DetachObserver(rival, 1); }
        ZRObjectObserver* rival = nullptr;
    };
    Rival one;
    Rival two;
    one.rival = &two;
    two.rival = &one;
    ZRObservedObject subject;
    test::OnThreads(2, [&](int /*thread*/) {
        for (int round = 0; round < 2000; ++round) {
            subject.AttachObserver(&one, 1);
            subject.AttachObserver(&two, 1);
            const ZRObservedObjectEvent event(1, &subject);
        }
    });
}

TEST_F(Threads, SubjectsThatAreDestroyedWaitForTheirBroadcasts)
{
    static std::atomic<bool> isInside{false};
    struct Slow : ZRObservedObject {
        char AdjustEvent(ZRObservedObjectEvent* /*event*/) override
        {
            isInside = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            isInside = false;
            return 1;
        }
    };
    auto subject = std::make_unique<Slow>();
    const std::jthread sender([&subject] { ZRObservedObjectEvent(1).Broadcast(subject.get(), 0); });
    EXPECT_TRUE(test::SpinUntil([] { return isInside.load(); }));
    subject.reset();
    EXPECT_FALSE(isInside);
}

TEST_F(Threads, ObserversHandleOneEventAtATimeAndDetachingWaitsForNoQueue)
{
    const std::jthread senders[] = {Repeating(SendAll), Repeating(SendAll), Repeating(SendAll), Repeating(SendAll)};
    for (ZRObservedObject* const subject : {&g_ownSubject, static_cast<ZRObservedObject*>(ZRGetMessageHandler())}) {
        std::atomic<int> calls{0};
        std::atomic<bool> isRunning{false};
        ZRListener slow(*subject, [&](const ZRObservedObjectEvent& /*event*/) {
            EXPECT_FALSE(isRunning.exchange(true));
            ++calls;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            isRunning = false;
        });
        EXPECT_TRUE(test::SpinUntil([&] { return calls > 1 && isRunning; }));
        const int callsBefore = calls;
        slow.Detach();
        EXPECT_FALSE(isRunning);
        EXPECT_LT(calls, callsBefore + 20) << "four senders wait for their turn all the time";
    }
}

TEST_F(Threads, HundredsAreInObserversAtOnce)
{
    static constexpr int kThreads = 200;
    std::atomic<int> inside{0};
    test::OnThreads(kThreads, [&inside](int /*thread*/) {
        ZRObservedObject subject;
        const ZRListener listener(subject, [&inside](const ZRObservedObjectEvent& /*event*/) {
            ++inside;
            EXPECT_TRUE(test::SpinUntil([&inside] { return inside == kThreads; }));
        });
        ZRObservedObjectEvent(1).Broadcast(&subject, 0);
    });
}

#if !defined(_WIN32)
TEST_F(Threads, TheLogDoesNotTakeThePlaceOfStandardOutput)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    const int output = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    ZROut("ours", nullptr, 1); // notices it
    {
        const std::jthread others[] = {
            Repeating([] { syscall(SYS_write, STDOUT_FILENO, "foreign", 7); }), // write itself is a race for sanitizers
            Repeating([] { const ZRMode readsPreferences; })}; // which opens files too
        for (int line = 1; line < 1000; ++line) {
            ZROut("ours", nullptr, 1);
        }
    }
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_EQ(m_home.Log().size(), 1000 * std::string("OUT - ours\n").size());
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
    };
    ZRSetTraceFlags(ZR_DEST_FILE);
    const std::jthread others[] = {
        Repeating(sendAndVisit), Repeating(sendAndVisit), Repeating([] { ZRTrace("of the parent", nullptr, 1); })};
    for (int number = 0; number < 50; ++number) {
        ZRProfilerState outer("outer");
        const ZRProfiler timer(&outer);
        ASSERT_EQ(test::ResultOfChild([&] {
            std::thread(sendAndVisit).join();
            sendAndVisit(); // with two timers
            ZRTrace("of a child", nullptr, 1);
            ZRProfilerState* top = nullptr;
            const bool isRight =
                ZRGetProfilerStateHandler()->PeekTop(top) == 1 && top == &outer && outer.GetDependantCalls() == 2;
            return isRight ? 0 : 1;
        }),
            0);
    }
    EXPECT_EQ(std::ranges::count(test::Lines(m_home.Log()), "TRACE - of a child"), 50);
}
#endif

} // namespace
