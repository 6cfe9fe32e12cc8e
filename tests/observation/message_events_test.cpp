#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "tests/support/allocations.h"

#include <thread>

namespace {

using test::RecordingObserver;

class MessageEvents : public test::Messages {
protected:
    MessageEvents() { ZRGetMessageHandler()->AttachObserver(&m_observer, 1); }
    ~MessageEvents() override { ZRGetMessageHandler()->DetachObserver(&m_observer, 1); }

    RecordingObserver m_observer;
};

TEST_F(MessageEvents, CarryTheWholeMessage)
{
    ZRMessageHandler& handler = *ZRGetMessageHandler();
    ZRMsg ofNoType("three", 3);
    const struct {
        std::function<void()> send;
        const char* text;
        const char* textEx;
        int type;
        const char* location;
        int level;
        int code;
        int chain;
    } rows[] = {
        {[] { ZROut("a", nullptr, 1); }, "a", "", ZR_MSG_OUT, "", 1, 0, 0},
        {[] { ZRWarnEx("a", "b", "here", 7); }, "a", "b", ZR_MSG_WARN, "here", 7, 0, 0},
        {[] { ZRErrorSet(-65840, "a", "here", 1, -3); }, "a", "", ZR_MSG_ERROR, "here", -3, -65840, 1},
        {[&] { handler.ErrorEx("a", "b", "here", 5, 1, 9); }, "a", "b", ZR_MSG_ERROR, "here", 9, 5, 1},
        {[] { ZRTrace("a", "here", 2); }, "a", "", ZR_MSG_TRACE, "here", 2, 0, 0},
        {[&] { handler.BroadcastMessage(ofNoType); }, "three", "", 3, "", 0, 0, 0},
    };
    for (const auto& row : rows) {
        row.send();
        ASSERT_EQ(m_observer.events.size(), 1U);
        const ZRObservedObjectEvent& event = m_observer.events.front();
        const ZRMsg message = event.GetMsg();
        EXPECT_EQ(event.GetCode(), ZR_EVENT_MESSAGE);
        EXPECT_EQ(m_observer.sources.front(), &handler);
        EXPECT_TRUE(event.GetText() == row.text && message.GetText() == row.text);
        EXPECT_TRUE(event.GetTextEx() == row.textEx && message.GetTextEx() == row.textEx);
        EXPECT_EQ(message.GetType(), row.type);
        EXPECT_EQ(message.GetLocation(), row.location);
        EXPECT_EQ(message.GetLevel(), row.level);
        EXPECT_EQ(message.GetCode(), row.code);
        EXPECT_EQ(message.GetChainToPrevious(), row.chain);
        EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
        m_observer.events.clear();
        m_observer.sources.clear();
    }
    EXPECT_EQ(ofNoType.GetThreadID(), HCThread::GetCurrentThreadId());
    ZRSetMessagesEnabled(0);
    ZRMsg unsent("u", ZR_MSG_OUT);
    handler.BroadcastMessage(unsent);
    EXPECT_EQ(unsent.GetThreadID(), 0U);
}

TEST_F(MessageEvents, TellChangesOfTheMasterSwitch)
{
    const int states[] = {1, 0, 0, 1, 5, 1}; // messages are on when they begin
    std::vector<int> told;
    for (const int state : states) {
        ZRSetMessagesEnabled(static_cast<char>(state));
    }
    for (const ZRObservedObjectEvent& event : m_observer.events) {
        EXPECT_EQ(event.GetCode(), ZR_EVENT_MESSAGES_ENABLED);
        told.push_back(event.GetState());
    }
    EXPECT_EQ(told, (std::vector<int>{0, 1, 5, 1}));
    EXPECT_EQ(m_observer.sources.front(), ZRGetMessageHandler());
}

TEST_F(MessageEvents, ComeAfterTheOtherDestinationsAndMayBeAnsweredByMessages)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    std::vector<std::size_t> linesBefore;
    m_observer.then = [&](ZRObservedObjectEvent& event) {
        linesBefore.push_back(test::Lines(m_home.Log()).size());
        if (event.GetText() == "question") {
            ZROut("answer", nullptr, 1);
        }
    };
    ZROut("question", nullptr, 1);
    EXPECT_EQ(linesBefore, (std::vector<std::size_t>{1, 2}));
    ASSERT_EQ(m_observer.events.size(), 2U);
    EXPECT_EQ(m_observer.events[1].GetText(), "answer");
}

TEST_F(MessageEvents, MayChangeTheTextOfTheSender)
{
    HCString text("an error text that is too long to lie inside its string");
    m_observer.then = [&](ZRObservedObjectEvent&) { text = "another text that is too long to lie inside the string"; };
    ZRError(text, nullptr, 1);
    EXPECT_EQ(test::TakeError(), "1 " + std::string(text) + " ZRError 0");
}

TEST_F(MessageEvents, ReachAHandlerOfAClientThatAdjustsThem)
{
    class Handler : public ZRMessageHandler {
    public:
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            texts += static_cast<const char*>(event->GetText());
            return 1;
        }
        std::string texts;
    };
    Handler handler;
    handler.Out("unobserved", nullptr, 1);
    EXPECT_EQ(handler.texts, "unobserved");
    EXPECT_TRUE(m_observer.events.empty());
}

TEST_F(MessageEvents, HaveOneOrderForAllObserversAndTheLog)
{
    constexpr int kThreads = 8;
    constexpr int kMessages = 60;
    RecordingObserver second;
    ZRGetMessageHandler()->AttachObserver(&second, 1);
    ZRSetAllFlags(ZR_DEST_FILE);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            HCString text;
            for (int number = 0; number < kMessages; ++number) {
                text.Format("thread %d message %d", thread, number);
                ZROut(text, nullptr, 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ZRGetMessageHandler()->DetachObserver(&second, 1);
    std::vector<std::string> lines[2];
    for (const auto& [observer, texts] : {std::pair{&m_observer, &lines[0]}, std::pair{&second, &lines[1]}}) {
        for (const ZRObservedObjectEvent& event : observer->events) {
            texts->push_back("OUT - " + std::string(event.GetText()));
        }
    }
    EXPECT_EQ(lines[0].size(), static_cast<std::size_t>(kThreads * kMessages));
    EXPECT_EQ(lines[0], lines[1]);
    EXPECT_EQ(lines[0], test::Lines(m_home.Log()));
}

#if !defined(_WIN32)
TEST_F(MessageEvents, NeedNoHeapForShortTexts)
{
    class Reader : public ZRObjectObserver {
    public:
        void OnEvent(ZRObservedObjectEvent* event) override { length += event->GetMsg().GetText().GetLength(); }
        int length = 0;
    };
    Reader reader;
    ZRGetMessageHandler()->DetachObserver(&m_observer, 1);
    ZRGetMessageHandler()->AttachObserver(&reader, 1);
    const std::string text(39, 't');
    const long before = test::AllocationCount();
    ZROut(text.c_str(), "location", 1);
    EXPECT_EQ(test::AllocationCount(), before);
    EXPECT_EQ(reader.length, 39);
    ZRGetMessageHandler()->DetachObserver(&reader, 1);
}

TEST_F(MessageEvents, AreLostWithoutMemoryButNothingElseIs)
{
    class Counter : public ZRObjectObserver {
    public:
        void OnEvent(ZRObservedObjectEvent* /*event*/) override { ++count; }
        int count = 0;
    };
    Counter counter;
    ZRGetMessageHandler()->DetachObserver(&m_observer, 1);
    ZRGetMessageHandler()->AttachObserver(&counter, 1);
    ZRSetAllFlags(ZR_DEST_FILE | ZR_DEST_DEBUGGER);
    const std::string longText(200, 't');
    bool isWhole = false;
    for (long allocations = 0; !isWhole; ++allocations) {
        SCOPED_TRACE(allocations);
        ASSERT_LT(allocations, 100);
        const int seen = counter.count;
        const std::size_t written = m_home.Log().size();
        bool hasThrown = false;
        HFErrorClear();
        long atEnd = 0;
        {
            const test::FailingHeap heap(allocations);
            const long before = test::AllocationCount();
            try {
                ZRErrorSet(-1, longText.c_str(), longText.c_str(), 0, 1);
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
            atEnd = test::AllocationCount() - before;
        }
        EXPECT_EQ(counter.count == seen, hasThrown) << "the sender learns that nobody was told";
        const std::size_t line = m_home.Log().size() - written;
        EXPECT_TRUE(line == 0 || line == longText.size() + 9) << line << ": whole lines only";
        isWhole = atEnd <= allocations;
        if (isWhole) {
            EXPECT_EQ(hasThrown ? "lost" : test::TakeError(), "-1 " + longText + " " + longText + " 0");
            EXPECT_GT(line, 0U);
        }
        std::thread([] { ZROut("the next one", "another thread", 1); }).join(); // the lock was given back
    }
    ZRGetMessageHandler()->DetachObserver(&counter, 1);
}
#endif

} // namespace
