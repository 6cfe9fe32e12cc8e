#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"
#include "zrobservers/zrobservers.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

namespace {

using WhenFull = ZREventQueue::WhenFull;

using Texts = std::vector<std::string>;
using Queue = test::Messages;
using Filter = test::Messages;

Texts TextsOf(ZREventQueue& queue)
{
    Texts texts;
    queue.Drain([&texts](const auto& event) { texts.push_back(event.GetText().ToString()); });
    return texts;
}

TEST_F(Queue, KeepsTheOrderOfEachSenderAndCountsExactly)
{
    constexpr int kSenders = 8;
    constexpr int kEach = 3000;
    for (const WhenFull whenFull : {WhenFull::kWait, WhenFull::kDropOldest, WhenFull::kDropNewest}) {
        ZREventQueue queue(*ZRGetMessageHandler(), {50, whenFull, {}, {}});
        std::atomic<int> sending{kSenders};
        std::int64_t count = 0;
        std::map<int, int> last; // number of each sender
        const auto keep = [&](const ZRObservedObjectEvent& event) {
            int& former = last[event.GetMsg().GetCode()];
            EXPECT_LT(former, std::atoi(event.GetText()));
            former = std::atoi(event.GetText());
            ++count;
        };
        test::OnThreads(kSenders + 1, [&](int sender) {
            while (sender == kSenders && sending > 0) { // the reader
                queue.WaitFor(1);
                queue.Drain(keep, 20);
            }
            for (int number = 1; sender < kSenders && number <= kEach; ++number) {
                ZRErrorSet(sender, HCString(std::to_string(number)), nullptr, 0, 1);
            }
            --sending;
        });
        while (queue.Drain(keep) > 0) {}
        EXPECT_EQ(count + queue.GetDroppedCount(), kSenders * kEach) << static_cast<int>(whenFull);
        EXPECT_TRUE(whenFull != WhenFull::kWait || queue.GetDroppedCount() == 0);
    }
}

TEST_F(Queue, TakesWhatItHasRoomFor)
{
    const struct {
        WhenFull whenFull;
        Texts kept;
        int dropped;
    } cases[] = {
        {WhenFull::kWait, {"0", "1", "2", "3", "4"}, 0}, // the reader does not wait for itself
        {WhenFull::kDropOldest, {"2", "3", "4"}, 2},
        {WhenFull::kDropNewest, {"0", "1", "2"}, 2},
    };
    for (const auto& one : cases) {
        int wakings = 0;
        ZREventQueue queue(*ZRGetMessageHandler(), {3, one.whenFull, "place!=Map::*", [&wakings] { ++wakings; }});
        EXPECT_FALSE(queue.WaitFor(0));
        for (const char* const text : {"0", "1", "2", "3", "4"}) {
            ZROut(text, nullptr, 1);
            ZROut("filtered out", "Map::Load", 1);
        }
        EXPECT_TRUE(queue.WaitFor(0));
        EXPECT_THROW(queue.Drain([](const auto&) { throw std::runtime_error("of the reader"); }), std::runtime_error);
        EXPECT_EQ(TextsOf(queue), Texts(one.kept.begin() + 1, one.kept.end()));
        EXPECT_EQ(queue.GetDroppedCount(), one.dropped);
        EXPECT_EQ(wakings, 1);
        EXPECT_EQ(ZREventQueue::GetOrigin(), nullptr);
    }
}

TEST_F(Queue, BackgroundDoesTheWorkOfOthers)
{
    const std::string path = m_home.Path("lines.json");
    std::optional<ZREventOrigin> origin;
    {
        ZRBackground background(*ZRGetMessageHandler());
        const ZRJsonLines lines(background, path.c_str());
        const auto here = std::this_thread::get_id();
        const ZRListener listener(background, [&](const ZRObservedObjectEvent& event) {
            EXPECT_NE(std::this_thread::get_id(), here);
            EXPECT_EQ(event.GetSource(), &background);
            origin = *ZREventQueue::GetOrigin();
            background.Flush(); // does nothing here
            throw std::runtime_error("which nobody hears of");
        });
        ZROut("one", "Map::Load", 1);
        background.Flush();
        EXPECT_EQ(test::Lines(test::ReadFile(path)).size(), 1U);
        ZROut("two", "Map::Load", 1);
    }
    ZROut("three", nullptr, 1);
    EXPECT_EQ(test::Lines(test::ReadFile(path)).size(), 2U) << "all is handled at the end";
    EXPECT_NE(
        test::ReadFile(path).find("\"thread\":" + std::to_string(origin.value().thread) + ","), std::string::npos);
}

TEST_F(Queue, FailureIsToldOnceAlsoWhileSendersWaitForTheBackground)
{
    const std::string folder = m_home.Path("folder");
    const ZRRecorder recorder(*ZRGetMessageHandler());
    ZRTraceFile trace((folder + "/trace.json").c_str());
    std::filesystem::create_directory(folder);
    ZRBackground background(*ZRGetMessageHandler(), {1, WhenFull::kWait, {}, {}});
    const ZRJsonLines lines(background, (folder + "/lines.json").c_str());
    std::filesystem::remove_all(folder);
    ZRFlightRecorder flights((folder + "/flight.txt").c_str());
    test::OnThreads(50, [](int /*sender*/) { ZROut("lost", nullptr, 1); });
    background.Flush();
    EXPECT_FALSE(lines.IsOpen() || trace.IsOpen() || flights.IsOpen());
    std::filesystem::create_directory(folder);
    ZROut("written", nullptr, 1);
    background.Flush();
    trace.Flush();
    EXPECT_TRUE(flights.WriteNow());
    EXPECT_TRUE(lines.IsOpen() && trace.IsOpen() && flights.IsOpen());
    EXPECT_EQ(test::Lines(test::ReadFile(folder + "/lines.json")).size(), 1U);
    EXPECT_EQ(recorder.GetMessages(ZR_MSG_ERROR).size(), 3U);
    EXPECT_EQ(background.GetDroppedCount(), 0);
}

TEST_F(Queue, RecorderOfFlightsWritesEachMessageOnce)
{
    const std::string path = m_home.Path("flight.txt");
    ZRFlightRecorder recorder(path.c_str(), {3, ZR_MSG_ERROR, false, "out,error,trace"});
    EXPECT_TRUE(recorder.WriteNow()) << "of nothing";
    ZROut("gone", nullptr, 1);
    ZROut("first", "Map::Load", 1);
    ZRTrace("a\nb \x1b[31m", "Map::Load", 3);
    ZRWarn("filtered out", nullptr, 1);
    ZRError(HCString(std::string(600, 'x')), "Map::Check", 1);
    ZROut("later", nullptr, 1);
    EXPECT_TRUE(recorder.WriteNow());
    const std::regex varying(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z \d+|process \d+)");
    EXPECT_EQ(std::regex_replace(test::ReadFile(path), varying, "*"),
        "-- 3 messages, *: a message of type ERROR\n* OUT 1 Map::Load: first\n* TRACE 3 Map::Load: a b  [31m\n"
        "* ERROR 1 Map::Check: "
            + std::string(ZRFlightRecorder::kMostBytes - 10, 'x') + "\n-- 1 messages, *: asked for\n* OUT 1 : later\n");
}

#if !defined(_WIN32)
TEST_F(Queue, ForkedChildBeginsAnew)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#endif
    ZREventQueue queue;
    ZRBackground background(*ZRGetMessageHandler());
    const ZRJsonLines lines(background, m_home.Path("lines.json").c_str());
    ZROut("of the parent", nullptr, 1);
    const auto inChild = [&] {
        ZROut("of the child", nullptr, 1);
        background.Flush();
        return TextsOf(queue) == Texts{"of the child"} ? 0 : 1;
    };
    EXPECT_EQ(test::ResultOfChild(inChild), 0);
    background.Flush();
    EXPECT_EQ(TextsOf(queue), Texts{"of the parent"});
    EXPECT_EQ(test::Lines(test::ReadFile(m_home.Path("lines.json"))).size(), 2U);
}
#endif

TEST_F(Queue, CrashLeavesTheLastMessages)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizer ends a program that crashes in its own way";
#endif
    const struct {
        const char* kind;
        bool endsBySignal;
        const char* said;
        const char* reason;
    } cases[] = {
#if defined(_WIN32)
        {"signal", false, "", "exception C0000005"},
        {"abort", false, "", "abort"},
#else
        {"signal", true, "", "signal 11"},
        {"exit", false, "exit\n", "signal 11"},
        {"once", true, "once\n", "signal 11"},
        {"background", true, "", "signal 11"},
        {"abort", true, "", "signal 06"},
        {"overflow", true, "", "signal 11"},
        {"thread", true, "", "signal 11"},
#endif
    };
    for (const auto& one : cases) {
        const auto result = test::Run(CRASHING_PROGRAM, {m_home.Path(one.kind), one.kind});
        EXPECT_NE(result.exitCode, 0) << one.kind;
        EXPECT_EQ(result.exitCode == -1, one.endsBySignal) << one.kind;
        EXPECT_NE(result.output.find(one.said), std::string::npos) << one.kind << result.output;
        const auto written = test::Lines(test::ReadFile(m_home.Path(one.kind)));
        ASSERT_EQ(written.size(), 4U) << one.kind;
        EXPECT_TRUE(written[0].ends_with(std::string(": ") + one.reason)) << written[0];
        EXPECT_TRUE(written[2].ends_with("OUT 1 main: message 4 ")) << written[2];
        EXPECT_TRUE(written[3].ends_with("TRACE 1 main: about to crash")) << written[3];
    }
}

TEST_F(Filter, TakesWhatFitsAllItsWords)
{
    const struct {
        const char* filter;
        const char* taken; // of the messages, and the timer t
    } rows[] = {
        {"", "abctd"},
        {"warn", "bt"},
        {" error,out  level<=2", "at"},
        {"level>=3", "bctd"},
        {"level=7", "ct"},
        {"error,warn warn,out level>=1 level>=3 level<=9 level<=3", "bt"},
        {"place=Map::*", "bct"},
        {"place=*ap::L?ad place=Draw", "bd"},
        {"place!=Map::* trace", "d"},
        {"place=*", "abctd"},
        {"place=", "a"},
    };
    const ZRProfileTable timersOn;
    ZRRecorder recorder;
    ZROut("a", nullptr, 1);
    ZRWarn("b", "Map::Load", 3);
    ZRError("c", "Map::Check", 7);
    ZRProfilerState state("Map::Time");
    std::make_unique<ZRProfiler>(&state).reset();
    const auto isLast = [](const ZRObservedObjectEvent& event) { return event.GetText() == "d"; };
    EXPECT_FALSE(recorder.WaitFor(isLast, 1));
    std::thread last([] { ZRTrace("d", "Draw", 5); });
    EXPECT_TRUE(recorder.WaitFor(isLast, 60'000));
    last.join();
    EXPECT_EQ(recorder.GetMessages(ZR_MSG_WARN | ZR_MSG_TRACE).size(), 2U);
    for (const auto& row : rows) {
        const ZRFilter filter(row.filter);
        EXPECT_TRUE(filter.IsGood()) << row.filter;
        std::string taken;
        for (const ZRObservedObjectEvent& event : recorder.GetEvents()) {
            if (filter.Takes(event)) {
                taken += event.GetCode() == ZR_EVENT_MESSAGE ? event.GetText().ToString() : "t";
            }
        }
        EXPECT_EQ(taken, row.taken) << row.filter;
    }
    for (const char* const bad : {"level<=x", "level=", "level>=3x", "warning", "place"}) {
        EXPECT_FALSE(ZRFilter(bad).IsGood()) << bad;
    }
    EXPECT_TRUE(ZRFilter("warn,trace,").IsGood());
    recorder.Clear();
    EXPECT_TRUE(recorder.GetEvents().empty());
}

TEST(ZrInfo, TellsWhetherAllIsSound)
{
    const test::Home home;
    const struct {
        const char* preferences;
        int exitCode;
        const char* said;
    } cases[] = {
        {"[Libraries.zrlib]\nOutEnabled = true\n[Libraries.other]\nx = 1\n", 0,
            "line 4: /Libraries/other/x is not for ZRLib"},
        {"[Libraries.zrlib]\n\nOutEnable = true\n", 1, "line 3: /Libraries/zrlib/OutEnable is unknown"},
        {"[Libraries.zrlib]\nOutEnabled = 1\n", 1, "line 2: /Libraries/zrlib/OutEnabled is neither true nor false"},
        {"[Libraries.zrlib\n", 1, "cannot be read"},
    };
    for (const auto& one : cases) {
        test::WriteFile(home.PreferencesPath(), one.preferences);
        const auto result = test::Run(ZRINFO_PROGRAM, {});
        EXPECT_EQ(result.exitCode, one.exitCode) << result.output;
        EXPECT_NE(result.output.find(one.said), std::string::npos) << result.output;
        EXPECT_NE(result.output.find("self-checks  sound"), std::string::npos) << result.output;
    }
    EXPECT_EQ(test::Run(ZRINFO_PROGRAM, {"--what"}).exitCode, 125);
}

} // namespace
