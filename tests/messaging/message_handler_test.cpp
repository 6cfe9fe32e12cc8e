#include "tests/support/messages.h"
#include "zrobservers/recorder.h"

#include <iterator>
#include <string>
#include <vector>

namespace {

using H = ZRMessageHandler;

std::string Fields(const ZRMsg& message)
{
    HCString fields;
    fields.Format("%s|%s|%d|%d|%s|%d|%d at %d by %u", static_cast<const char*>(message.GetText()),
        static_cast<const char*>(message.GetTextEx()), message.GetType(), message.GetDestination(),
        static_cast<const char*>(message.GetLocation()), message.GetChainToPrevious(), message.GetCode(),
        message.GetLevel(), message.GetThreadID());
    return fields.ToString();
}

TEST(Msg, IsEqualWhenAllNineFieldsAre)
{
    EXPECT_EQ(Fields(ZRMsg()), "||1|0||0|0 at 0 by 0");
    const ZRMsg original("text", "extended", ZR_MSG_ERROR);
    EXPECT_EQ(Fields(original), "text|extended|4|0||0|0 at 0 by 0");
    ZRMsg all(original);
    void (*const changes[])(ZRMsg&) = {
        [](ZRMsg& message) { message.SetText("TEXT"); },
        [](ZRMsg& message) { message.SetTextEx("x"); },
        [](ZRMsg& message) { message.SetType(3); },
        [](ZRMsg& message) { message.SetDestination(-1); },
        [](ZRMsg& message) { message.SetLocation("here"); },
        [](ZRMsg& message) { message.SetChainToPrevious(1); },
        [](ZRMsg& message) { message.SetCode(-65840); },
        [](ZRMsg& message) { message.SetLevel(7); },
        [](ZRMsg& message) { message.SetThreadID(0xFFFFFFFFU); },
    };
    for (const auto& change : changes) {
        ZRMsg changed(original);
        EXPECT_EQ(changed, original);
        change(changed);
        EXPECT_NE(changed, original) << "change " << &change - changes;
        change(all);
    }
    ZRMsg assigned;
    assigned = all;
    EXPECT_EQ(Fields(assigned), "TEXT|x|3|-1|here|1|-65840 at 7 by 4294967295");
}

using MessageHandler = test::Messages;

TEST_F(MessageHandler, CarriesWhatItIsGivenInAnyWay)
{
    const struct {
        bool takesAnyLevel;
        void (*send)(H& handler, short level);
        const char* fields; // without level and thread
        const char* error = "none"; // that it leaves
    } ways[] = {
        {false, [](H&, short level) { ZROut("t", "here", level); }, "t||1|0|here|0|0"},
        {false, [](H&, short level) { ZRWarn("t", nullptr, level); }, "t||2|0||0|0"},
        {false, [](H&, short level) { ZRError("t", "here", level); }, "t||4|0|here|0|0", "1 t ZRError 0"},
        {false, [](H&, short level) { ZRTrace("t", "here", level); }, "t||8|0|here|0|0"},
        {false, [](H&, short level) { ZROutEx("t", "x", "here", level); }, "t|x|1|0|here|0|0"},
        {false, [](H&, short level) { ZRWarnEx("t", "x", "here", level); }, "t|x|2|0|here|0|0"},
        {false, [](H&, short level) { ZRErrorEx("t", "x", "here", level); }, "t|x|4|0|here|0|0", "1 t ZRError 0"},
        {false, [](H&, short level) { ZRTraceEx("t", "x", "here", level); }, "t|x|8|0|here|0|0"},
        {true, [](H&, short level) { ZRErrorSet(-9, "t", "a", 1, level); }, "t||4|0|a|1|-9", "-9 t a 1"},
        {true, [](H&, short level) { EXPECT_EQ(ZRErrorSet(-1, nullptr, nullptr, 0, level), 0); }, "||4|0||0|-1",
            "-1   0"},
        {true, [](H& handler, short level) { handler.Out(nullptr, "here", level); }, "||1|0|here|0|0"},
        {true, [](H& handler, short level) { handler.Warn("t", nullptr, level); }, "t||2|0||0|0"},
        {true, [](H& handler, short level) { handler.Error("t", "here", -9, 1, level); }, "t||4|0|here|1|-9"},
        {true, [](H& handler, short level) { handler.Trace("t", "here", level); }, "t||8|0|here|0|0"},
        {true, [](H& handler, short level) { handler.OutEx("t", "x", "here", level); }, "t|x|1|0|here|0|0"},
        {true, [](H& handler, short level) { handler.WarnEx("t", "x", "here", level); }, "t|x|2|0|here|0|0"},
        {true, [](H& handler, short level) { handler.ErrorEx("t", "x", "here", 5, 1, level); }, "t|x|4|0|here|1|5"},
        {true, [](H& handler, short level) { handler.TraceEx("t", "x", "here", level); }, "t|x|8|0|here|0|0"},
    };
    ZRRecorder recorder(*ZRGetMessageHandler());
    for (const auto& way : ways) {
        for (const int level : {INT16_MIN, 0, 1, 7, 8, INT16_MAX}) {
            const bool isTaken = way.takesAnyLevel || (level >= 1 && level <= 7);
            const std::string place = " at " + std::to_string(level) + " by ";
            SCOPED_TRACE(way.fields + place);
            recorder.Clear();
            way.send(*ZRGetMessageHandler(), static_cast<short>(level));
            EXPECT_EQ(test::TakeError(), isTaken ? way.error : "none");
            std::string recorded;
            for (const ZRMsg& message : recorder.GetMessages()) {
                recorded += Fields(message);
            }
            EXPECT_EQ(recorded, isTaken ? way.fields + place + std::to_string(HCThread::GetCurrentThreadId()) : "");
        }
    }
}

struct Type {
    short type;
    char (ZRMsg::*is)() const;
    std::string word;
    void (*send)(const HCString&, const char*, short);
    void (*setEnabled)(char);
    void (*setFlags)(short);
    void (*setFlag[4])(char);
};

const Type kTypes[] = {
    {ZR_MSG_OUT, &ZRMsg::IsOut, "OUT", ZROut, ZRSetOutEnabled, ZRSetOutFlags,
        {H::SetOutMsgView, H::SetOutConsole, H::SetOutDebugger, H::SetOutFile}},
    {ZR_MSG_WARN, &ZRMsg::IsWarn, "WARNING", ZRWarn, ZRSetWarnEnabled, ZRSetWarnFlags,
        {H::SetWarnMsgView, H::SetWarnConsole, H::SetWarnDebugger, H::SetWarnFile}},
    {ZR_MSG_ERROR, &ZRMsg::IsError, "ERROR", ZRError, ZRSetErrorEnabled, ZRSetErrorFlags,
        {H::SetErrorMsgView, H::SetErrorConsole, H::SetErrorDebugger, H::SetErrorFile}},
    {ZR_MSG_TRACE, &ZRMsg::IsTrace, "TRACE", ZRTrace, ZRSetTraceEnabled, ZRSetTraceFlags,
        {H::SetTraceMsgView, H::SetTraceConsole, H::SetTraceDebugger, H::SetTraceFile}},
};

TEST_F(MessageHandler, SendsEachTypeWhereItsFlagWordSays)
{
    std::string expectedLog;
    for (const Type& type : kTypes) {
        for (short flags = 0; flags < 16; ++flags) {
            SCOPED_TRACE(type.word + std::to_string(flags));
            EXPECT_EQ((ZRMsg("", flags).*type.is)(), flags == type.type); // whose numbers the loop goes through as well
            ZRSetAllFlags(static_cast<short>(~flags)); // the words of the other types have no say
            type.setFlags(flags);
            const std::string line = type.word + " - 100% %d \xC3\xBC\n";
            testing::internal::CaptureStderr();
            const std::string console = Console([&] { type.send("100% %d \xC3\xBC", "test", 1); });
            const std::string debugger = testing::internal::GetCapturedStderr();
#if !defined(_WIN32) // there the debugger's output goes to a debugger, of which there is none
            EXPECT_EQ(debugger, flags & ZR_DEST_DEBUGGER ? line : "");
#endif
            EXPECT_EQ(console, flags & ZR_DEST_CONSOLE ? line : "");
            expectedLog += flags & ZR_DEST_FILE ? line : "";
            EXPECT_EQ(m_home.Log(), expectedLog);
        }
    }
}

TEST_F(MessageHandler, SendsAMessageOfAnUnknownTypeNowhereAndNoneWhileMessagesAreOff)
{
    H& handler = *ZRGetMessageHandler();
    ZRSetAllFlags(ZR_DEST_MSGVIEW | ZR_DEST_CONSOLE | ZR_DEST_FILE);
    ZRSetAllEnabled(1);
    for (const int number : {0, 3, 15, -1}) {
        const auto type = static_cast<short>(number);
        const ZRRecorder recorder(handler);
        ZRMsg message("text", type);
        EXPECT_EQ(Console([&] { handler.BroadcastMessage(message); }), "");
        EXPECT_EQ(recorder.GetEvents().back().GetMsg(), message) << "but to observers";
        EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
        EXPECT_EQ(H::IsTypeEnabled(type), 0);
        EXPECT_EQ(H::IsDestinationEnabled(ZR_DEST_FILE, type), 0);
        EXPECT_EQ(H::IsDestinationEnabled(type, ZR_MSG_OUT), 0) << "nor is this one destination";
    }
    ZRMsg message("text", ZR_MSG_OUT);
    const ZRRecorder recorder(handler);
    ZRSetMessagesEnabled(0);
    handler.BroadcastMessage(message);
    ZRError("off", nullptr, 1);
    EXPECT_EQ(test::TakeError(), "1 off ZRError 0") << "recorded all the same";
    EXPECT_EQ(message.GetThreadID(), 0U);
    EXPECT_EQ(m_home.Log(), "");
    ZRSetMessagesEnabled(5); // any value but 0 is on, and is kept
    EXPECT_EQ(handler.GetEnabled(), 5);
    EXPECT_EQ(recorder.GetEvents(ZR_EVENT_MESSAGES_ENABLED).back().GetState(), 5);
    EXPECT_EQ(Console([&] { handler.BroadcastMessage(message); }), "OUT - text\n");
    EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
}

TEST_F(MessageHandler, ChangesOneSwitchAtATime)
{
    char (*const queries[])(short) = {H::IsMsgViewEnabled, H::IsConsoleEnabled, H::IsDebuggerEnabled, H::IsFileEnabled};
    for (std::size_t index = 0; index < std::size(kTypes); ++index) {
        for (std::size_t place = 0; place < 4; ++place) {
            for (const bool isOn : {false, true}) {
                const Type& type = kTypes[index];
                const int bit = 1 << place;
                SCOPED_TRACE(type.word + std::to_string(place));
                ZRSetAllEnabled(isOn ? 0 : 1);
                ZRSetAllFlags(isOn ? 0 : -1);
                type.setEnabled(isOn ? 9 : 0);
                type.setFlag[place](isOn ? 2 : 0);
                std::vector<int> expected(4, isOn ? 0 : -1);
                expected.resize(8, isOn ? 0 : 1);
                expected[index] = isOn ? bit : ~bit;
                expected[index + 4] = isOn ? 1 : 0;
                EXPECT_EQ(expected,
                    (std::vector<int>{ZRGetOutFlags(), ZRGetWarnFlags(), ZRGetErrorFlags(), ZRGetTraceFlags(),
                        ZRIsOutEnabled(), ZRIsWarnEnabled(), ZRIsErrorEnabled(), ZRIsTraceEnabled()}));
                EXPECT_EQ(queries[place](type.type), isOn ? 1 : 0);
                EXPECT_EQ(H::GetFlagFromType(type.type, static_cast<short>(bit)), isOn ? 1 : 0);
                type.setFlags(static_cast<short>(isOn ? ~bit : -1));
                EXPECT_EQ(H::GetFlagFromType(type.type, static_cast<short>(bit)), 0) << "it needs both switches";
            }
        }
    }
}

TEST_F(MessageHandler, CopiesAndDerivedClassesShareTheRoute)
{
    struct Derived : ZRMessageHandler {
        using ZRMessageHandler::AppendToFile;
        using ZRMessageHandler::Lock;
        using ZRMessageHandler::Unlock;
    };
    Derived own;
    EXPECT_EQ(own.Unlock("here"), 0);
    EXPECT_EQ(own.Lock("here"), 1);
    const Derived copy(own);
    own = copy;
    ZRSetOutFlags(ZR_DEST_CONSOLE);
    EXPECT_EQ(Console([&] { own.Out("text", nullptr, 1); }), "OUT - text\n");
    EXPECT_EQ(own.Unlock("here"), 1);
    EXPECT_EQ(own.AppendToFile("line"), 1);
    EXPECT_EQ(m_home.Log(), "line\n");
}

} // namespace
