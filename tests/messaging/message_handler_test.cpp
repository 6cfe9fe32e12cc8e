#include "tests/support/messages.h"
#include "tests/support/allocations.h"

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using MessageHandler = test::Messages;

TEST_F(MessageHandler, SendsEachTypeWhereItsFlagWordSays)
{
    const struct {
        short type;
        const char* word;
        void (*setFlags)(short);
        void (*send)(const HCString&, const char*, short);
    } types[] = {
        {ZR_MSG_OUT, "OUT", ZRSetOutFlags, ZROut},
        {ZR_MSG_WARN, "WARNING", ZRSetWarnFlags, ZRWarn},
        {ZR_MSG_ERROR, "ERROR", ZRSetErrorFlags, ZRError},
        {ZR_MSG_TRACE, "TRACE", ZRSetTraceFlags, ZRTrace},
    };
    std::string expectedLog;
    for (const auto& type : types) {
        for (short flags = 0; flags < 16; ++flags) {
            SCOPED_TRACE(type.word + std::to_string(flags));
            ZRSetAllFlags(static_cast<short>(~flags)); // the words of the other types have no say
            type.setFlags(flags);
            const std::string line = type.word + std::string(" - 100% %d \xC3\xBC\n");
#if !defined(_WIN32) // there the debugger's output goes to a debugger, of which there is none
            testing::internal::CaptureStderr();
#endif
            const std::string console = Console([&] { type.send("100% %d \xC3\xBC", "test", 1); });
#if !defined(_WIN32)
            EXPECT_EQ(testing::internal::GetCapturedStderr(), flags & ZR_DEST_DEBUGGER ? line : "");
#endif
            EXPECT_EQ(console, flags & ZR_DEST_CONSOLE ? line : "");
            expectedLog += flags & ZR_DEST_FILE ? line : "";
            EXPECT_EQ(m_home.Log(), expectedLog);
        }
    }
}

TEST_F(MessageHandler, SendsTheFirstTextOnly)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    ZRMessageHandler* const handler = ZRGetMessageHandler();
    EXPECT_EQ(Console([&] {
        handler->OutEx("out", "more", nullptr, 0);
        handler->WarnEx("warn", "more", "here", 99);
        handler->ErrorEx("error", "more", nullptr, -65840, 1, -1);
        handler->TraceEx("trace", "more", nullptr, 1);
        handler->Error("plain", nullptr, -65840, 1, 1);
        handler->Out(static_cast<const char*>(nullptr), nullptr, 1);
    }),
        "OUT - out\nWARNING - warn\nERROR - error\nTRACE - trace\nERROR - plain\nOUT - \n");
}

TEST_F(MessageHandler, SendsAMessageOfAnUnknownTypeNowhere)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_DEBUGGER | ZR_DEST_FILE);
    for (const int type : {0, 3, 5, 15, 16, -1}) {
        ZRMsg message("text", static_cast<short>(type));
        EXPECT_EQ(Console([&] { ZRGetMessageHandler()->BroadcastMessage(message); }), "");
        EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
    }
    EXPECT_EQ(m_home.Log(), "");
}

TEST_F(MessageHandler, LeavesTheMessageAloneWhileMessagesAreOff)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_FILE);
    ZRMsg message("text", ZR_MSG_OUT);
    ZRSetMessagesEnabled(0);
    EXPECT_EQ(Console([&] { ZRGetMessageHandler()->BroadcastMessage(message); }), "");
    EXPECT_EQ(message.GetThreadID(), 0U);
    ZRSetMessagesEnabled(-3); // any value but 0 is on, and is kept
    EXPECT_EQ(ZRGetMessageHandler()->GetEnabled(), -3);
    EXPECT_EQ(Console([&] { ZRGetMessageHandler()->BroadcastMessage(message); }), "OUT - text\n");
    EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
    EXPECT_EQ(m_home.Log(), "OUT - text\n");
}

TEST_F(MessageHandler, DeliversWhateverTheEnabledBitsSay)
{
    ZRSetOutFlags(ZR_DEST_CONSOLE);
    ZRSetOutEnabled(0);
    EXPECT_EQ(Console([] { ZROut("text", nullptr, 1); }), "OUT - text\n");
    EXPECT_EQ(ZRMessageHandler::IsConsoleEnabled(ZR_MSG_OUT), 1);
    EXPECT_EQ(ZRMessageHandler::GetFlagFromType(ZR_MSG_OUT, ZR_DEST_CONSOLE), 0);
    ZRSetOutEnabled(1);
    EXPECT_EQ(ZRMessageHandler::GetFlagFromType(ZR_MSG_OUT, ZR_DEST_CONSOLE), 1);
    EXPECT_EQ(ZRMessageHandler::GetFlagFromType(ZR_DEST_CONSOLE, ZR_MSG_OUT), 0);
}

TEST_F(MessageHandler, SetsAndClearsOneBitOfOneWord)
{
    using Setter = void (*)(char);
    using H = ZRMessageHandler;
    const struct {
        short type;
        short (*get)();
        Setter setters[4];
    } rows[] = {
        {1, H::GetOutFlags, {H::SetOutMsgView, H::SetOutConsole, H::SetOutDebugger, H::SetOutFile}},
        {2, H::GetWarnFlags, {H::SetWarnMsgView, H::SetWarnConsole, H::SetWarnDebugger, H::SetWarnFile}},
        {4, H::GetErrorFlags, {H::SetErrorMsgView, H::SetErrorConsole, H::SetErrorDebugger, H::SetErrorFile}},
        {8, H::GetTraceFlags, {H::SetTraceMsgView, H::SetTraceConsole, H::SetTraceDebugger, H::SetTraceFile}},
    };
    char (*const queries[])(short) = {H::IsMsgViewEnabled, H::IsConsoleEnabled, H::IsDebuggerEnabled, H::IsFileEnabled};
    const auto sumOfWords = [&] {
        int sum = 0;
        for (const auto& row : rows) {
            sum += row.get();
        }
        return sum;
    };
    for (const auto& row : rows) {
        for (int place = 0; place < 4; ++place) {
            const auto bit = static_cast<short>(1 << place);
            H::SetAllFlags(0);
            row.setters[place](2); // any value but 0 is true
            EXPECT_EQ(row.get(), bit);
            EXPECT_EQ(sumOfWords(), bit) << "no other word changed";
            EXPECT_EQ(queries[place](row.type), 1);
            EXPECT_EQ(H::IsDestinationEnabled(bit, row.type), 1);
            H::SetAllFlags(-1);
            row.setters[place](0);
            EXPECT_EQ(row.get(), ~bit);
            EXPECT_EQ(sumOfWords(), -3 + ~bit);
            EXPECT_EQ(queries[place](row.type), 0);
        }
    }
}

TEST_F(MessageHandler, AnswersForSingleBitsOnly)
{
    ZRSetAllFlags(-1);
    ZRSetAllEnabled(1);
    for (int weight = -40; weight < 40; ++weight) {
        const auto bit = static_cast<short>(weight);
        const bool isType = weight == 1 || weight == 2 || weight == 4 || weight == 8;
        const bool isBit = isType || weight == 16 || weight == 32;
        EXPECT_EQ(ZRMessageHandler::IsDestinationEnabled(bit, ZR_MSG_OUT), isBit) << weight;
        EXPECT_EQ(ZRMessageHandler::IsDestinationEnabled(ZR_DEST_FILE, bit), isType) << weight;
        EXPECT_EQ(ZRMessageHandler::IsTypeEnabled(bit), isType) << weight;
    }
    EXPECT_EQ(ZRMessageHandler::IsDestinationEnabled(INT16_MIN, ZR_MSG_OUT), 1) << "the highest bit is one too";
}

TEST_F(MessageHandler, ShowsAllDestinationsTheSameOrder)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_FILE);
    const std::string console = Console([] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([thread] {
                for (int number = 0; number < 200; ++number) {
                    HCString text;
                    text.Format("%d of thread %d", number, thread);
                    ZRTrace(text, nullptr, 1);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    EXPECT_EQ(std::count(console.begin(), console.end(), '\n'), 800);
    EXPECT_EQ(console, m_home.Log());
}

TEST_F(MessageHandler, NeedsNoHeapForAShortMessageWithoutDestination)
{
#if defined(_WIN32)
    GTEST_SKIP() << "allocations inside a library cannot be counted there";
#endif
    const HCString text("thirty-nine characters are still short.");
    ASSERT_EQ(text.GetLength(), 39);
    const long before = test::AllocationCount();
    ZROutEx(text, text, "MessageHandler::NeedsNoHeap", 1);
    EXPECT_EQ(test::AllocationCount(), before);
}

TEST_F(MessageHandler, CopiesAndDerivedClassesShareTheRoute)
{
    class Derived : public ZRMessageHandler {
    public:
        char Append(const char* text) { return AppendToFile(text); }
        char LockIt() { return Lock(nullptr); }
        char UnlockIt() { return Unlock(nullptr); }
    };
    Derived own;
    EXPECT_EQ(own.UnlockIt(), 0);
    EXPECT_EQ(own.LockIt(), 1);
    const Derived copy(own);
    own = copy;
    ZRSetOutFlags(ZR_DEST_CONSOLE);
    EXPECT_EQ(Console([&] { own.Out("text", nullptr, 1); }), "OUT - text\n");
    EXPECT_EQ(own.UnlockIt(), 1);
    EXPECT_EQ(own.Append("line"), 1);
    EXPECT_EQ(m_home.Log(), "line\n");
}

} // namespace
