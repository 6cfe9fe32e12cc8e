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
    fields.Format("%s|%s|%d|%d|%u|%d|%s|%d|%d", static_cast<const char*>(message.GetText()),
        static_cast<const char*>(message.GetTextEx()), message.GetType(), message.GetLevel(), message.GetThreadID(),
        message.GetDestination(), static_cast<const char*>(message.GetLocation()), message.GetChainToPrevious(),
        message.GetCode());
    return fields.ToString();
}

TEST(Msg, IsEqualWhenAllNineFieldsAre)
{
    EXPECT_EQ(Fields(ZRMsg()), "||1|0|0|0||0|0");
    EXPECT_EQ(Fields(ZRMsg("text", "extended", ZR_MSG_TRACE)), "text|extended|8|0|0|0||0|0");
    const ZRMsg original("text", ZR_MSG_ERROR);
    ZRMsg all(original);
    const struct {
        void (*change)(ZRMsg&);
        const char* fields;
    } rows[] = {
        {[](ZRMsg& message) { message.SetText("TEXT"); }, "TEXT||4|0|0|0||0|0"},
        {[](ZRMsg& message) { message.SetTextEx("x"); }, "text|x|4|0|0|0||0|0"},
        {[](ZRMsg& message) { message.SetType(3); }, "text||3|0|0|0||0|0"},
        {[](ZRMsg& message) { message.SetLevel(7); }, "text||4|7|0|0||0|0"},
        {[](ZRMsg& message) { message.SetThreadID(0xFFFFFFFFU); }, "text||4|0|4294967295|0||0|0"},
        {[](ZRMsg& message) { message.SetDestination(-1); }, "text||4|0|0|-1||0|0"},
        {[](ZRMsg& message) { message.SetLocation("here"); }, "text||4|0|0|0|here|0|0"},
        {[](ZRMsg& message) { message.SetChainToPrevious(1); }, "text||4|0|0|0||1|0"},
        {[](ZRMsg& message) { message.SetCode(-65840); }, "text||4|0|0|0||0|-65840"},
    };
    for (const auto& row : rows) {
        ZRMsg changed(original);
        EXPECT_EQ(changed, original);
        row.change(changed);
        EXPECT_NE(changed, original);
        EXPECT_EQ(Fields(changed), row.fields);
        row.change(all);
    }
    ZRMsg assigned;
    assigned = all;
    EXPECT_EQ(Fields(assigned), "TEXT|x|3|7|4294967295|-1|here|1|-65840");
    for (short type = -1; type <= 16; ++type) {
        const ZRMsg message("", type);
        EXPECT_EQ(message.IsOut(), type == 1);
        EXPECT_EQ(message.IsWarn(), type == 2);
        EXPECT_EQ(message.IsError(), type == 4);
        EXPECT_EQ(message.IsTrace(), type == 8);
    }
}

/// A way to send a message: the word of its type, its fields without level and thread, and the error that it leaves.
struct Way {
    const char* word;
    void (*send)(H& handler, short level);
    std::string fields;
    const char* error = "none";
};

class MessageHandler : public test::Messages {
protected:
    void CheckAtAllLevels(const Way& way, bool takesAny)
    {
        ZRRecorder recorder(m_handler);
        const std::string line = std::string(way.word) + " - " + way.fields.substr(0, way.fields.find('|')) + "\n";
        for (const int level : {INT16_MIN, -1, 0, 1, 4, 7, 8, INT16_MAX}) {
            SCOPED_TRACE(way.word + (" with " + way.fields) + " at level " + std::to_string(level));
            const bool isTaken = takesAny || (level >= 1 && level <= 7);
            for (const bool isOn : {false, true}) {
                ZRSetMessagesEnabled(isOn ? 1 : 0);
                recorder.Clear();
                EXPECT_EQ(
                    Console([&] { way.send(m_handler, static_cast<short>(level)); }), isOn && isTaken ? line : "");
                EXPECT_EQ(test::TakeError(), isTaken ? way.error : "none") << "recorded in any case";
                ASSERT_EQ(recorder.GetMessages().size(), isOn && isTaken ? 1U : 0U);
            }
            for (ZRMsg message : recorder.GetMessages()) {
                EXPECT_EQ(message.GetLevel(), level);
                EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
                message.SetLevel(0);
                message.SetThreadID(0);
                EXPECT_EQ(Fields(message), way.fields);
            }
        }
    }

    H& m_handler = *ZRGetMessageHandler();
};

TEST_F(MessageHandler, CarriesWhatItIsGivenInAnyWay)
{
    const Way functions[] = {
        {"OUT", [](H&, short level) { ZROut("t", "here", level); }, "t||1|0|0|0|here|0|0"},
        {"WARNING", [](H&, short level) { ZRWarn("t", nullptr, level); }, "t||2|0|0|0||0|0"},
        {"ERROR", [](H&, short level) { ZRError("t", "here", level); }, "t||4|0|0|0|here|0|0", "1 t ZRError 0"},
        {"TRACE", [](H&, short level) { ZRTrace("t", "here", level); }, "t||8|0|0|0|here|0|0"},
        {"OUT", [](H&, short level) { ZROutEx("t", "x", "here", level); }, "t|x|1|0|0|0|here|0|0"},
        {"WARNING", [](H&, short level) { ZRWarnEx("t", "x", "here", level); }, "t|x|2|0|0|0|here|0|0"},
        {"ERROR", [](H&, short level) { ZRErrorEx("t", "x", "a", level); }, "t|x|4|0|0|0|a|0|0", "1 t ZRError 0"},
        {"TRACE", [](H&, short level) { ZRTraceEx("t", "x", "here", level); }, "t|x|8|0|0|0|here|0|0"},
    };
    const Way takingAnyLevel[] = {
        {"ERROR", [](H&, short level) { ZRErrorSet(-9, "t", "a", 1, level); }, "t||4|0|0|0|a|1|-9", "-9 t a 1"},
        {"ERROR", [](H&, short level) { EXPECT_EQ(ZRErrorSet(-1, nullptr, nullptr, 0, level), 0); }, "||4|0|0|0||0|-1",
            "-1   0"},
        {"OUT", [](H& handler, short level) { handler.Out(nullptr, "here", level); }, "||1|0|0|0|here|0|0"},
        {"WARNING", [](H& handler, short level) { handler.Warn("t", nullptr, level); }, "t||2|0|0|0||0|0"},
        {"ERROR", [](H& handler, short level) { handler.Error("t", "here", -9, 1, level); }, "t||4|0|0|0|here|1|-9"},
        {"TRACE", [](H& handler, short level) { handler.Trace("t", "here", level); }, "t||8|0|0|0|here|0|0"},
        {"OUT", [](H& handler, short level) { handler.OutEx("t", "x", "here", level); }, "t|x|1|0|0|0|here|0|0"},
        {"WARNING", [](H& handler, short level) { handler.WarnEx("t", "x", "a", level); }, "t|x|2|0|0|0|a|0|0"},
        {"ERROR", [](H& handler, short level) { handler.ErrorEx("t", "x", "a", 5, 1, level); }, "t|x|4|0|0|0|a|1|5"},
        {"TRACE", [](H& handler, short level) { handler.TraceEx("t", "x", "a", level); }, "t|x|8|0|0|0|a|0|0"},
    };
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    for (const Way& way : functions) {
        CheckAtAllLevels(way, false);
    }
    for (const Way& way : takingAnyLevel) {
        CheckAtAllLevels(way, true);
    }
}

struct Type {
    short type;
    std::string word;
    void (*send)(const HCString&, const char*, short);
    void (*setEnabled)(char);
    void (*setFlags)(short);
    void (*setFlag[4])(char);
};

const Type kTypes[] = {
    {ZR_MSG_OUT, "OUT", ZROut, ZRSetOutEnabled, ZRSetOutFlags,
        {H::SetOutMsgView, H::SetOutConsole, H::SetOutDebugger, H::SetOutFile}},
    {ZR_MSG_WARN, "WARNING", ZRWarn, ZRSetWarnEnabled, ZRSetWarnFlags,
        {H::SetWarnMsgView, H::SetWarnConsole, H::SetWarnDebugger, H::SetWarnFile}},
    {ZR_MSG_ERROR, "ERROR", ZRError, ZRSetErrorEnabled, ZRSetErrorFlags,
        {H::SetErrorMsgView, H::SetErrorConsole, H::SetErrorDebugger, H::SetErrorFile}},
    {ZR_MSG_TRACE, "TRACE", ZRTrace, ZRSetTraceEnabled, ZRSetTraceFlags,
        {H::SetTraceMsgView, H::SetTraceConsole, H::SetTraceDebugger, H::SetTraceFile}},
};

TEST_F(MessageHandler, SendsEachTypeWhereItsFlagWordSays)
{
    std::string expectedLog;
    for (const Type& type : kTypes) {
        for (short flags = 0; flags < 16; ++flags) {
            SCOPED_TRACE(type.word + std::to_string(flags));
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
    ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_DEBUGGER | ZR_DEST_FILE);
    const ZRRecorder recorder(m_handler);
    for (const int type : {0, 3, 5, 15, 16, -1}) {
        ZRMsg message("text", static_cast<short>(type));
        EXPECT_EQ(Console([&] { m_handler.BroadcastMessage(message); }), "");
        EXPECT_EQ(recorder.GetEvents().back().GetMsg(), message) << "but to observers";
        EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
    }
    EXPECT_EQ(m_home.Log(), "");
    ZRMsg message("text", ZR_MSG_OUT);
    ZRSetMessagesEnabled(0);
    EXPECT_EQ(Console([&] { m_handler.BroadcastMessage(message); }), "");
    EXPECT_EQ(message.GetThreadID(), 0U);
    ZRSetMessagesEnabled(-3); // any value but 0 is on, and is kept
    EXPECT_EQ(m_handler.GetEnabled(), -3);
    EXPECT_EQ(Console([&] { m_handler.BroadcastMessage(message); }), "OUT - text\n");
    EXPECT_EQ(message.GetThreadID(), HCThread::GetCurrentThreadId());
    EXPECT_EQ(m_home.Log(), "OUT - text\n");
}

TEST_F(MessageHandler, ChangesOneSwitchAtATime)
{
    char (*const queries[])(short) = {H::IsMsgViewEnabled, H::IsConsoleEnabled, H::IsDebuggerEnabled, H::IsFileEnabled};
    const auto switches = [] {
        return std::vector<int>{ZRGetOutFlags(), ZRGetWarnFlags(), ZRGetErrorFlags(), ZRGetTraceFlags(),
            ZRIsOutEnabled(), ZRIsWarnEnabled(), ZRIsErrorEnabled(), ZRIsTraceEnabled()};
    };
    for (std::size_t index = 0; index < std::size(kTypes); ++index) {
        const Type& type = kTypes[index];
        for (const bool isOn : {true, false}) {
            ZRSetAllEnabled(isOn ? 0 : 1);
            type.setEnabled(isOn ? 9 : 0);
            for (int place = 0; place < 4; ++place) {
                SCOPED_TRACE(type.word + std::to_string(place));
                const auto bit = static_cast<short>(1 << place);
                ZRSetAllFlags(isOn ? 0 : -1);
                type.setFlag[place](isOn ? 2 : 0);
                std::vector<int> expected(4, isOn ? 0 : -1);
                expected.resize(8, isOn ? 0 : 1);
                expected[index] = isOn ? bit : ~bit;
                expected[index + 4] = isOn ? 1 : 0;
                EXPECT_EQ(switches(), expected);
                EXPECT_EQ(queries[place](type.type), isOn ? 1 : 0);
                EXPECT_EQ(H::GetFlagFromType(type.type, bit), isOn ? 1 : 0);
            }
        }
        type.setFlags(-1); // the enabled bit is off
        EXPECT_EQ(H::GetFlagFromType(type.type, ZR_DEST_FILE), 0);
    }
}

TEST_F(MessageHandler, AnswersForSingleBitsOnly)
{
    ZRSetAllFlags(-1);
    ZRSetAllEnabled(1);
    for (short bit = -40; bit < 40; ++bit) {
        const bool isType = bit == 1 || bit == 2 || bit == 4 || bit == 8;
        const bool isBit = isType || bit == 16 || bit == 32;
        EXPECT_EQ(H::IsDestinationEnabled(bit, ZR_MSG_OUT), isBit ? 1 : 0) << bit;
        EXPECT_EQ(H::IsDestinationEnabled(ZR_DEST_FILE, bit), isType ? 1 : 0) << bit;
        EXPECT_EQ(H::IsTypeEnabled(bit), isType ? 1 : 0) << bit;
    }
    EXPECT_EQ(H::IsDestinationEnabled(INT16_MIN, ZR_MSG_OUT), 1) << "the highest bit is one too";
    EXPECT_EQ(H::GetFlagFromType(16, ZR_MSG_OUT), 0) << "the type comes first";
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
