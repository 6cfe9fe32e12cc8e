#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

namespace {

using MessageEvents = test::Messages;

TEST_F(MessageEvents, HaveTheTextsOfTheirMessageUntilAHandlerChangesOne)
{
    struct Handler : ZRMessageHandler {
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            edit(*event);
            const ZRMsg& message = event->GetMsg();
            texts.push_back(event->GetText().ToString() + "," + event->GetTextEx().ToString() + " of "
                + message.GetText().ToString() + "," + message.GetTextEx().ToString());
            EXPECT_TRUE(event->GetCode() == ZR_EVENT_MESSAGE && event->GetSource() == this);
            return 1;
        }
        void (*edit)(ZRObservedObjectEvent&) = nullptr;
        std::vector<std::string> texts;
    };
    const struct {
        void (*edit)(ZRObservedObjectEvent&);
        const char* texts; // of the event and of its message
    } rows[] = {
        {[](ZRObservedObjectEvent&) {}, "text,more of text,more"},
        {[](ZRObservedObjectEvent& event) { event.SetText("new"); }, "new,more of text,more"},
        {[](ZRObservedObjectEvent& event) { event.SetTextEx("new"); }, "text,new of text,more"},
        {[](ZRObservedObjectEvent& event) { event.SetMsg(ZRMsg("new", ZR_MSG_OUT)); }, "text,more of new,"},
    };
    const ZRListener listener(*ZRGetMessageHandler(), [](const auto&) { ADD_FAILURE() << "another handler's"; });
    for (const auto& row : rows) {
        Handler handler; // has no observers
        handler.edit = row.edit;
        ZRMsg message("text", ZR_MSG_OUT);
        message.SetTextEx("more");
        handler.BroadcastMessage(message);
        handler.OutEx("text", "more", nullptr, 1);
        EXPECT_EQ(handler.texts, std::vector<std::string>(2, row.texts));
    }
}

TEST_F(MessageEvents, TellChangesOfTheMasterSwitch)
{
    std::vector<int> told;
    const ZRListener listener(*ZRGetMessageHandler(), [&told](const ZRObservedObjectEvent& event) {
        told.push_back(event.GetState());
        EXPECT_TRUE(event.GetCode() == ZR_EVENT_MESSAGES_ENABLED && event.GetSource() == ZRGetMessageHandler());
    });
    for (const int state : {1, 0, 0, 1, 5, 1}) { // messages are on when they begin
        ZRSetMessagesEnabled(static_cast<char>(state));
    }
    EXPECT_EQ(told, (std::vector{0, 1, 5, 1}));
}

TEST_F(MessageEvents, ComeAfterTheOtherDestinationsAndMayBeAnsweredByMessages)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    HCString text("a question that is too long to lie inside its string");
    std::vector<std::string> logs;
    const ZRListener listener(*ZRGetMessageHandler(), [&](const ZRObservedObjectEvent& event) {
        logs.push_back(m_home.Log());
        text = "another text that is too long to lie inside the string";
        if (event.GetMsg().IsError() != 0) {
            ZROut("answer", nullptr, 1);
        }
    });
    ZRError(text, nullptr, 1);
    const std::string question = "ERROR - a question that is too long to lie inside its string\n";
    EXPECT_EQ(logs, (std::vector{question, question + "OUT - answer\n"}));
    EXPECT_EQ(test::TakeError(), "1 " + text.ToString() + " ZRError 0") << "as the sender's text is now";
}

TEST_F(MessageEvents, HaveOneOrderForAllObserversAndTheLog)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    std::string texts[2];
    ZRListener listeners[2];
    for (const std::size_t number : {0U, 1U}) {
        listeners[number] = ZRListener(*ZRGetMessageHandler(), [&, number](const ZRObservedObjectEvent& event) {
            texts[number] += "OUT - " + event.GetText().ToString() + "\n";
        });
    }
    test::OnThreads(8, [](int thread) {
        HCString text;
        for (int number = 0; number < 60; ++number) {
            text.Format("thread %d message %d", thread, number);
            ZROut(text, nullptr, 1);
        }
    });
    EXPECT_EQ(test::Lines(texts[0]).size(), 480U);
    EXPECT_EQ(texts[0], texts[1]);
    EXPECT_EQ(texts[0], m_home.Log());
}

#if !defined(_WIN32)
TEST_F(MessageEvents, NeedNoHeapForShortTexts)
{
    int length = 0;
    const ZRListener listener(*ZRGetMessageHandler(),
        [&length](const ZRObservedObjectEvent& event) { length = event.GetMsg().GetText().GetLength(); });
    const std::string text(39, 't');
    const long before = test::AllocationCount();
    ZROut(text.c_str(), "location", 1);
    EXPECT_EQ(test::AllocationCount(), before);
    EXPECT_EQ(length, 39);
}

TEST_F(MessageEvents, AreLostWithoutMemoryButNothingElseIs)
{
    ZRSetAllFlags(ZR_DEST_FILE | ZR_DEST_DEBUGGER);
    int count = 0;
    const ZRListener listener(*ZRGetMessageHandler(), [&count](const auto&) { ++count; });
    const std::string longText(200, 't');
    bool isWhole = false;
    for (long allocations = 0; !isWhole && allocations < 100; ++allocations) {
        SCOPED_TRACE(allocations);
        const std::string log = m_home.Log();
        const int countBefore = count;
        bool hasThrown = false;
        HFErrorClear();
        {
            const test::FailingHeap heap(allocations);
            const long before = test::AllocationCount();
            try {
                ZRErrorSet(-1, longText.c_str(), longText.c_str(), 0, 1);
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
            isWhole = test::AllocationCount() - before <= allocations;
        }
        EXPECT_EQ(count == countBefore, hasThrown) << "the sender learns that nobody was told";
        const std::string line = m_home.Log().substr(log.size());
        EXPECT_TRUE((line.empty() && !isWhole) || line == "ERROR - " + longText + "\n") << line;
        EXPECT_FALSE(isWhole && hasThrown);
        test::OnThreads(1, [](int /*thread*/) { ZROut("the lock was given back", "another thread", 1); });
    }
    EXPECT_TRUE(isWhole);
    EXPECT_EQ(test::TakeError(), "-1 " + longText + " " + longText + " 0");
}
#endif

} // namespace
