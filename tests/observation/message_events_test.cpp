#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <utility>

namespace {

using MessageEvents = test::Messages;

TEST_F(MessageEvents, HaveTheTextsOfTheirMessageUntilAHandlerChangesOne)
{
    struct Handler : ZRMessageHandler {
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            edit(*event);
            texts = {event->GetText(), event->GetTextEx(), event->GetMsg().GetText(), event->GetMsg().GetTextEx()};
            return event->GetSource() == this ? 1 : 0;
        }
        void (*edit)(ZRObservedObjectEvent&) = nullptr;
        std::vector<HCString> texts;
    };
    const struct {
        void (*edit)(ZRObservedObjectEvent&);
        std::vector<HCString> texts; // of the event and of its message
    } rows[] = {
        {[](ZRObservedObjectEvent&) {}, {"text", "more", "text", "more"}},
        {[](ZRObservedObjectEvent& event) { event.SetText("new"); }, {"new", "more", "text", "more"}},
        {[](ZRObservedObjectEvent& event) { event.SetTextEx("new"); }, {"text", "new", "text", "more"}},
        {[](ZRObservedObjectEvent& event) { event.SetMsg(ZRMsg("new", 1)); }, {"text", "more", "new", ""}},
    };
    for (const auto& row : rows) {
        Handler handler; // has no observers
        handler.edit = row.edit;
        ZRMsg message("text", "more", ZR_MSG_OUT);
        handler.BroadcastMessage(message);
        EXPECT_EQ(std::exchange(handler.texts, {}), row.texts) << "row " << &row - rows;
        handler.OutEx("text", "more", nullptr, 1);
        EXPECT_EQ(handler.texts, row.texts) << "row " << &row - rows;
    }
    EXPECT_EQ(test::TakeError(), "none") << "of an event that has another source";
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

TEST_F(MessageEvents, ComeInTheOrderOfTheLog)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    std::string texts;
    const ZRListener listener(*ZRGetMessageHandler(),
        [&texts](const ZRObservedObjectEvent& event) { texts += "OUT - " + event.GetText().ToString() + "\n"; });
    test::OnThreads(8, [](int thread) {
        for (int number = 0; number < 60; ++number) {
            ZROut(HCString(std::to_string(100 * thread + number)), nullptr, 1);
        }
    });
    EXPECT_EQ(test::Lines(texts).size(), 480U);
    EXPECT_EQ(texts, m_home.Log());
}

#if !defined(_WIN32)
TEST_F(MessageEvents, NeedNoHeapForShortTexts)
{
    const ZRListener listener(*ZRGetMessageHandler(), [](const auto&) {});
    const std::string text(39, 't');
    const long before = test::AllocationCount();
    ZROut(text.c_str(), "location", 1);
    EXPECT_EQ(test::AllocationCount(), before);
}

TEST_F(MessageEvents, AreLostWithoutMemoryButNothingElseIs)
{
    ZRSetAllFlags(ZR_DEST_FILE | ZR_DEST_DEBUGGER);
    int count = 0;
    const ZRListener listener(*ZRGetMessageHandler(), [&count](const auto&) { ++count; });
    const std::string text(200, 't');
    bool isWhole = false;
    for (long allocations = 0; !isWhole && allocations < 100; ++allocations) {
        SCOPED_TRACE(allocations);
        test::WriteFile(m_home.LogPath(), "");
        int thrown = 0;
        count = 0;
        try {
            const test::FailingHeap heap(allocations);
            ZRErrorSet(-1, text.c_str(), text.c_str(), 0, 1);
        } catch (const std::bad_alloc&) {
            ++thrown;
        }
        EXPECT_EQ(count + thrown, 1) << "the sender learns that nobody was told";
        const std::string log = m_home.Log();
        EXPECT_TRUE(log.empty() || log == "ERROR - " + text + "\n") << log;
        isWhole = test::TakeError() == "-1 " + text + " " + text + " 0" && count == 1 && !log.empty();
        test::OnThreads(1, [](int /*thread*/) { ZROut("the lock was given back", "another thread", 1); });
    }
    EXPECT_TRUE(isWhole);
}
#endif

} // namespace
