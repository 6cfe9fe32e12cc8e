// What is there beside the long forms: messages and timers in one line, guards, listeners, and the standard types.

#include "hcbase/string_stream.h"
#include "tests/support/messages.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

struct Map {
    template <typename T> void Check(T value) const
    {
        ZR_WARN("%d is odd", value);
        const auto lambda = [](const auto& what) { ZR_ERROR_AT(7, "%d of a lambda", what); };
        lambda(value);
    }
    Map& operator<<(int value)
    {
        ZR_TIME_FUNCTION();
        ZR_TIME_SCOPE("named");
        ZR_ERROR_SET(-1001, "%d%%", value);
        return *this;
    }
};

/// Functions whose names are hard to find.
struct Odd {
    using Names = std::vector<std::string>;
    Names names;
    const char* (*initialised)() = [] {
        static constexpr auto kName = ZR_FUNCTION_NAME();
        return kName.Text();
    };

    void Add(const char* name) { names.emplace_back(name); }
    decltype(auto) Deduced() { return Add(ZR_FUNCTION_NAME().Text()); }
    template <typename T> auto Trailing(T value) -> decltype(value + 1)
    {
        Add(ZR_FUNCTION_NAME().Text());
        return value;
    }
    operator const Names&() // NOLINT(google-explicit-constructor)
    {
        Add(ZR_FUNCTION_NAME().Text());
        return names;
    }
    bool operator()(int /*value*/)
    {
        Add(ZR_FUNCTION_NAME().Text());
        return names.empty();
    }
    Odd* operator->()
    {
        Add(ZR_FUNCTION_NAME().Text());
        return this;
    }
    void (*Function())(int)
    {
        Add(ZR_FUNCTION_NAME().Text());
        return nullptr;
    }
    int (Odd::*Member())(int)
    {
        Add(ZR_FUNCTION_NAME().Text());
        return nullptr;
    }
    template <typename T> void Myoperator(T /*value*/) { Add(ZR_FUNCTION_NAME().Text()); }
};

/// Type, place, level and text of each message that it has received.
struct Received {
    std::vector<std::string> lines;
    ZRListener listener{*ZRGetMessageHandler(), [this](const ZRObservedObjectEvent& event) {
                            const ZRMsg& message = event.GetMsg();
                            HCString line;
                            line.Format("%d %s %d %s", message.GetType(),
                                static_cast<const char*>(message.GetLocation()), message.GetLevel(),
                                static_cast<const char*>(message.GetText()));
                            lines.push_back(line.ToString());
                        }};
};

using Convenience = test::Messages;

TEST_F(Convenience, MessagesSayWhereTheyAreSentAndCostNothingWhenNobodyWantsThem)
{
    int evaluations = 0;
    ZR_OUT("%d", ++evaluations);
    EXPECT_EQ(evaluations, 0) << "on, but without a destination";
    ZR_ERROR("%d", ++evaluations);
    EXPECT_EQ(test::TakeError(), "1 1 ZRError 0") << "an error is recorded all the same";
    const ZRMessageSettings settings;
    {
        Received received;
        ZRGetProfilerStateHandler()->SetEnabled(1);
        const ZRListener timers(*ZRGetProfilerStateHandler(), [&received](const ZRObservedObjectEvent& event) {
            if (event.GetCode() == ZR_EVENT_PROFILER_STATE) {
                received.lines.push_back(event.GetProfilerState().GetLocation().ToString());
            }
        });
        Map map;
        map.Check(3);
        map << 5;
        ZRListener moved(std::move(received.listener));
        ZR_TRACE_AT(2, "moved");
        moved = ZRListener();
        ZRGetProfilerStateHandler()->SetEnabled(0);
        ZR_TRACE("nobody listens");
        EXPECT_EQ(received.lines.at(5).substr(received.lines.at(5).find(' ') + 1).find("Convenience_"), 0U);
        received.lines.pop_back();
        EXPECT_EQ(received.lines,
            (std::vector<std::string>{"2 Map::Check 1 3 is odd", "4 Map::Check 7 3 of a lambda",
                "4 Map::operator<< 1 5%", "named", "Map::operator<<"}));
    }
    ZRSetMessagesEnabled(0);
    ZR_OUT("%d", ++evaluations);
    EXPECT_EQ(evaluations, 1);

    Odd odd;
    odd.Deduced();
    odd.Trailing(1);
    odd->Function();
    odd.Member();
    odd.Myoperator(odd(1));
    odd.Add(odd.initialised());
    const Odd::Names& names = odd;
    EXPECT_EQ(std::string(names.back(), 0, 20), "Odd::operator const ") << "and how the compiler goes on";
    odd.names.pop_back();
    EXPECT_EQ(odd.names,
        (Odd::Names{"Odd::Deduced", "Odd::Trailing", "Odd::operator->", "Odd::Function", "Odd::Member",
            "Odd::operator()", "Odd::Myoperator", "Odd"}));
}

TEST_F(Convenience, GuardsPutThingsBack)
{
    {
        const ZRMessageSettings settings;
        ZRSetMessagesEnabled(0);
        ZRSetAllFlags(5);
        ZRSetAllEnabled(1);
    }
    EXPECT_EQ(ZRGetMessagesEnabled(), 1);
    EXPECT_EQ(ZRGetWarnFlags() + ZRIsTraceEnabled(), 0);

    HCThreadSync one;
    HCThreadSync two;
    {
        const std::scoped_lock both(one, two);
        const std::lock_guard again(one);
        EXPECT_TRUE(one.try_lock()) << "by its holder";
        one.unlock();
        std::thread([&] { EXPECT_FALSE(std::unique_lock(two, std::try_to_lock)); }).join();
        const ZRGlobalLockGuard global("test");
        EXPECT_TRUE(global.IsHeld());
    }
    EXPECT_EQ(one.unlock() + two.unlock() + ZRGlobalThreadSync::Unlock(nullptr), 0);

    ZRProgressEnable(1);
    std::vector<std::int32_t> codes;
    const ZRListener listener([&codes](const ZRObservedObjectEvent& event) { codes.push_back(event.GetCode()); });
    try {
        ZRProgressRun run("Loading", 3);
        run.Step();
        run.Step("second");
        EXPECT_EQ(ZRProgressGetPercent(), 2);
        const ZRProgressRun inside("Reading", std::size_t{1} << 40U);
        EXPECT_EQ(ZRProgressGetRangeMax(), 3) << "there is one run";
        ZRProgressEnable(0);
        throw std::runtime_error("");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(codes.back(), ZR_EVENT_PROGRESS_END);
        EXPECT_EQ(ZRProgressGetRangeMax(), 100);
    }
    ZRProgressEnable(0);
    EXPECT_STREQ(ZREventName(codes.back()), "ZR_EVENT_PROGRESS_END");
    EXPECT_STREQ(ZRErrorName(ZR_ERROR_MATH_OVERFLOW), "ZR_ERROR_MATH_OVERFLOW");
    EXPECT_STREQ(ZRErrorName(0), "unknown");

    constexpr int kBridge = static_cast<int>(0xA04F3001);
    {
        ZRRegistration roads(0x3000, "Roads");
        EXPECT_FALSE(ZRRegistration(0x4000, "Short").Add(0x4001, "which would stay"));
        EXPECT_TRUE(roads.Add(kBridge, "Bridge") && roads.IsComplete());
        EXPECT_FALSE(roads.Add(kBridge, "Again", ZRClassID::MakeInternalID(kBridge)) || roads.IsComplete());
        const ZRRegistration refused(0x3000, "Twice");
        EXPECT_FALSE(refused.IsComplete());
    }
    {
        ZRRegistration owner(0x3000, "Roads");
        EXPECT_TRUE(owner.Add(kBridge, "Bridge"));
        {
            ZRRegistration other(0x4000, "Others");
            const ZRListener thrower(
                *ZRGetMessageHandler(), [](const ZRObservedObjectEvent&) { throw std::runtime_error(""); });
            EXPECT_THROW(other.Add(kBridge, "Third"), std::runtime_error);
        }
        EXPECT_EQ(ZRObjectIsKnown(kBridge), 1);
    }
    EXPECT_EQ(ZRRegisterLibrary(0x3000, "free again") + ZRObjectIsKnown(kBridge), 1);
    ZRUnregisterLibrary(0x3000);
}

TEST_F(Convenience, StringsAndContainersLiveAmongTheStandardTypes)
{
    HCString assigned;
    assigned = std::string("text");
    EXPECT_TRUE(assigned == std::string_view("text") && std::string("other") != assigned);
    const HCString string(std::string_view("a\0b", 3));
    EXPECT_EQ(string.View().size() + string.ToString().size(), 6U);
    EXPECT_EQ(std::count(string.begin(), string.end(), 'b'), 1);
    const std::set<HCString, std::less<>> ordered{"a", "b", "c"};
    EXPECT_TRUE(ordered.count(std::string_view("b")) == 1 && *ordered.lower_bound(std::string("bb")) == "c");
    EXPECT_EQ((std::unordered_set<HCString>{"key", HCString("key"), "other"}).size(), 2U);
    std::ostringstream stream;
    stream << HCString("text");
    EXPECT_EQ(stream.str(), "text");

    const auto check = [](auto filled) {
        auto taken = std::move(filled);
        EXPECT_EQ(std::vector<int>(taken.begin(), taken.end()), (std::vector<int>{3, 1, 2}));
        EXPECT_TRUE(filled.begin() == filled.end()); // NOLINT(bugprone-use-after-move): empty, as is promised
        filled = std::move(taken);
        EXPECT_EQ(std::count(filled.begin(), filled.end(), 2), 1);
    };
    ZRArray<int> array;
    ZRStack<int> stack;
    ZRList<int> list;
    for (const int value : {3, 1, 2}) {
        array.Append(value);
        stack.Push(value);
        list.Append(value);
    }
    check(array);
    check(stack);
    check(list);
    std::sort(array.begin(), array.end());
    EXPECT_EQ(array.GetAt(2), 3);
    ZRCodeMap<int> map;
    map[7] = 1;
    const ZRCodeMap<int> taken(std::move(map));
    EXPECT_EQ(taken.GetCount(), 1);
}

} // namespace
