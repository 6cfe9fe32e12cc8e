// What is there beside the long forms: messages and timers in one line, guards, listeners, and the standard types.

#include "hcbase/string_stream.h"
#include "tests/support/messages.h"

#include <climits>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using Convenience = test::Messages;
using Texts = std::vector<std::string>;

template <std::size_t size> std::string NameIn(const char (&signature)[size])
{
    return zr::FunctionName(signature, "fallback").Text();
}

TEST(FunctionName, IsWhatAPersonWouldWrite)
{
    // As g++ writes them
    EXPECT_EQ(NameIn("decltype(auto) {anonymous}::Odd::Deduced()"), "Odd::Deduced");
    EXPECT_EQ(NameIn("decltype ((value + 1)) Trailing(T) [with T = int; decltype ((value + 1)) = int]"), "Trailing");
    EXPECT_EQ(NameIn("int decltypes()"), "decltypes");
    EXPECT_EQ(NameIn("bool Odd::operator()(int)"), "Odd::operator()");
    EXPECT_EQ(NameIn("bool Odd::operator<(const Odd&) const"), "Odd::operator<");
    EXPECT_EQ(NameIn("{anonymous}::Odd* {anonymous}::Odd::operator->()"), "Odd::operator->");
    EXPECT_EQ(NameIn("void Odd::Myoperator(T) [with T = bool]"), "Odd::Myoperator");
    EXPECT_EQ(NameIn("void (* {anonymous}::Odd::Function())(int)"), "Odd::Function");
    EXPECT_EQ(NameIn("int (& Odd::Row())[3]"), "Odd::Row");
    EXPECT_EQ(NameIn("const std::vector<std::pair<int, int> >& Odd::Reference() const"), "Odd::Reference");
    EXPECT_EQ(NameIn("{anonymous}::Odd::Call<bool>(bool)::<lambda(auto:1)> [with auto:1 = int]"), "Odd::Call");
    EXPECT_EQ(NameIn("{anonymous}::Odd::<lambda()>"), "Odd");
    EXPECT_EQ(NameIn("<lambda()>"), "fallback");
    // As clang does
    EXPECT_EQ(NameIn("const Names &(anonymous namespace)::Odd::operator const std::vector<int> &()"),
        "Odd::operator const std::vector<int> &");
    EXPECT_EQ(NameIn("int ((anonymous namespace)::Odd::*(anonymous namespace)::Odd::Member())(int)"), "Odd::Member");
    EXPECT_EQ(NameIn("void (anonymous namespace)::Grid<std::pair<int, int>>::Fill(V) [T = int]"), "Grid::Fill");
}

TEST_F(Convenience, MessagesCostNothingWhenNobodyWantsThem)
{
    int evaluations = 0;
    ZR_OUT("%d", ++evaluations);
    EXPECT_EQ(evaluations, 0) << "on, but without a destination";
    ZR_ERROR("%d", ++evaluations);
    EXPECT_EQ(test::TakeError(), "1 1 ZRError 0") << "an error is recorded all the same";
    const ZRListener listener(*ZRGetMessageHandler(), [](const ZRObservedObjectEvent&) {});
    ZR_OUT("%d", ++evaluations);
    ZRSetMessagesEnabled(0);
    ZR_OUT("%d", ++evaluations);
    EXPECT_EQ(evaluations, 2);
}

struct Map {
    template <typename T> void Check(T value) const
    {
        ZR_TIME_FUNCTION();
        ZR_TIME_SCOPE("named");
        ZR_WARN("%d is odd", value);
        const auto lambda = [](const auto& what) { ZR_ERROR_AT(7, "%d of a lambda", what); };
        lambda(value);
        ZR_ERROR_SET(-1001, "%d%%", value);
    }
};

TEST_F(Convenience, MessagesAndTimersSayWhereTheyAre)
{
    Texts texts;
    ZRListener listener(*ZRGetMessageHandler(), [&texts](const ZRObservedObjectEvent& event) {
        const ZRMsg& message = event.GetMsg();
        texts.push_back(std::to_string(message.GetType()) + " " + message.GetLocation().ToString().substr(0, 10) + " "
            + std::to_string(message.GetLevel()) + " " + message.GetText().ToString());
    });
    ZRGetProfilerStateHandler()->SetEnabled(1);
    const ZRListener timers(*ZRGetProfilerStateHandler(), [&texts](const ZRObservedObjectEvent& event) {
        texts.push_back(event.GetProfilerState().GetLocation().ToString());
    });
    Map().Check(3);
    EXPECT_EQ(test::TakeError(), "-1001 3% Map::Check 0");
    ZRListener moved(std::move(listener));
    ZR_TRACE_AT(2, "moved");
    moved = ZRListener();
    ZR_TRACE("nobody listens");
    EXPECT_EQ(texts,
        (Texts{"2 Map::Check 1 3 is odd", "4 Map::Check 7 3 of a lambda", "4 Map::Check 1 3%", "named", "Map::Check",
            "8 Convenienc 2 moved"}));
    ZRGetProfilerStateHandler()->SetEnabled(0);
}

TEST_F(Convenience, GuardsPutBackWhatTheyFound)
{
    const auto set = [](short flags, char enabled, char warnEnabled) {
        ZRSetOutFlags(flags);
        ZRSetWarnFlags(static_cast<short>(flags + 1));
        ZRSetErrorFlags(static_cast<short>(flags + 2));
        ZRSetTraceFlags(static_cast<short>(flags + 3));
        ZRSetAllEnabled(enabled);
        ZRSetWarnEnabled(warnEnabled);
    };
    set(2, 0, 1);
    {
        const ZRMessageSettings settings;
        ZRSetMessagesEnabled(0);
        set(8, 1, 0);
        const ZRGlobalLockGuard global("test");
        EXPECT_TRUE(global.IsHeld());
    }
    EXPECT_EQ((std::vector<int>{ZRGetMessagesEnabled(), ZRGetOutFlags(), ZRGetWarnFlags(), ZRGetErrorFlags(),
                  ZRGetTraceFlags(), ZRIsOutEnabled(), ZRIsWarnEnabled(), ZRIsErrorEnabled(), ZRIsTraceEnabled()}),
        (std::vector<int>{1, 2, 3, 4, 5, 0, 1, 0, 0}));
    EXPECT_EQ(ZRGlobalThreadSync::Unlock(nullptr), 0) << "it is not held";
}

TEST_F(Convenience, RunsOfProgressEndByThemselves)
{
    ZRProgressEnable(1);
    Texts seen;
    const ZRListener listener([&seen](const ZRObservedObjectEvent& event) {
        seen.push_back(ZREventName(event.GetCode()) + (" " + std::to_string(event.GetCount())));
    });
    try {
        ZRProgressRun run("Loading", std::size_t{1} << 40U);
        run.Step();
        run.Step("second");
        const ZRProgressRun inside("Reading", 3);
        EXPECT_EQ(ZRProgressGetRangeMax(), INT_MAX) << "clamped, and of the one run that there is";
        ZRProgressEnable(0);
        throw std::runtime_error("");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(ZRProgressGetRangeMax(), 100);
    }
    EXPECT_EQ(seen,
        (Texts{"ZR_EVENT_PROGRESS_START 0", "ZR_EVENT_PROGRESS_RANGE 0", "ZR_EVENT_PROGRESS_UPDATE 1",
            "ZR_EVENT_PROGRESS_UPDATE 2", "ZR_EVENT_PROGRESS_RANGE 0", "ZR_EVENT_PROGRESS_END 100"}));
    EXPECT_EQ(ZRProgressEnabled(), 0) << "as it was set";
    EXPECT_STREQ(ZRErrorName(ZR_ERROR_MATH_OVERFLOW), "ZR_ERROR_MATH_OVERFLOW");
    EXPECT_STREQ(ZRErrorName(0), "unknown");
}

TEST_F(Convenience, RegistrationsTakeBackWhatTheyMade)
{
    constexpr int kBridge = static_cast<int>(0xA04F3001);
    {
        ZRRegistration roads(0x3000, "Roads");
        EXPECT_FALSE(ZRRegistration(0x4000, "Short").Add(0x4001, "which would stay"));
        EXPECT_TRUE(roads.Add(kBridge, "Bridge") && roads.IsComplete());
        EXPECT_FALSE(roads.Add(kBridge, "Again", ZRClassID::MakeInternalID(kBridge)) || roads.IsComplete());
        EXPECT_FALSE(ZRRegistration(0x3000, "Twice").IsComplete());
        {
            ZRRegistration other(0x4000, "Others");
            const ZRListener thrower(
                *ZRGetMessageHandler(), [](const ZRObservedObjectEvent&) { throw std::runtime_error(""); });
            EXPECT_THROW(other.Add(kBridge, "Third"), std::runtime_error);
        }
        EXPECT_EQ(ZRObjectIsKnown(kBridge), 1) << "of the one that has it";
    }
    EXPECT_EQ(ZRRegisterLibrary(0x3000, "free again") + ZRObjectIsKnown(kBridge), 1);
    ZRUnregisterLibrary(0x3000);
}

TEST_F(Convenience, StringsAreKeysAndAreWrittenToStreams)
{
    EXPECT_EQ((std::unordered_set<HCString>{"key", HCString("key"), "other"}).size(), 2U);
    std::ostringstream stream;
    stream << std::setw(6) << HCString("text");
    EXPECT_EQ(stream.str(), "  text");
}

} // namespace
