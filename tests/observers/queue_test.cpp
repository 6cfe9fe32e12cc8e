#include "tests/messaging/message_fixture.h"
#include "tests/support/process.h"
#include "zrobservers/zrobservers.h"

#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using WhenFull = ZREventQueue::WhenFull;

class Queue : public test::Messages {
protected:
    std::string PathOf(const char* name) const { return m_home.Folder() + "/" + name; }

    static ZREventQueue::Options Full(WhenFull whenFull, int capacity)
    {
        ZREventQueue::Options options;
        options.whenFull = whenFull;
        options.capacity = capacity;
        return options;
    }

    static std::vector<std::string> TextsOf(ZREventQueue& queue)
    {
        std::vector<std::string> texts;
        queue.Drain([&texts](const auto& event) { texts.push_back(event.GetText().ToString()); });
        return texts;
    }
};

TEST_F(Queue, KeepsTheOrderOfEachSenderAndCountsExactly)
{
    constexpr int kSenders = 8;
    constexpr int kEach = 3000;
    for (const WhenFull whenFull : {WhenFull::kWait, WhenFull::kDropOldest, WhenFull::kDropNewest}) {
        ZREventQueue queue(*ZRGetMessageHandler(), Full(whenFull, 50));
        std::atomic<bool> isOver{false};
        std::map<int, std::vector<int>> seen; // by sender
        std::thread reader([&] {
            const auto keep = [&seen](const ZRObservedObjectEvent& event) {
                seen[event.GetMsg().GetCode()].push_back(std::atoi(event.GetMsg().GetText()));
            };
            while (!isOver) {
                queue.WaitFor(1);
                queue.Drain(keep, 20);
            }
            while (queue.Drain(keep) > 0) {}
        });
        std::vector<std::thread> senders;
        for (int sender = 1; sender <= kSenders; ++sender) {
            senders.emplace_back([sender] {
                for (int number = 0; number < kEach; ++number) {
                    ZRErrorSet(sender, HCString(std::to_string(number)), nullptr, 0, 1);
                }
            });
        }
        for (std::thread& sender : senders) {
            sender.join();
        }
        isOver = true;
        reader.join();
        std::int64_t count = queue.GetDroppedCount();
        for (const auto& [sender, numbers] : seen) {
            count += static_cast<std::int64_t>(numbers.size());
            EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end())) << sender;
        }
        EXPECT_EQ(count, kSenders * kEach) << static_cast<int>(whenFull);
        if (whenFull == WhenFull::kWait) {
            EXPECT_EQ(queue.GetDroppedCount(), 0);
        }
    }
}

TEST_F(Queue, TakesWhatItHasRoomFor)
{
    using Texts = std::vector<std::string>;
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
        ZREventQueue::Options options = Full(one.whenFull, 3);
        options.filter = "out place!=Map::*";
        options.notify = [&wakings] { ++wakings; };
        ZREventQueue queue(*ZRGetMessageHandler(), options);
        EXPECT_FALSE(queue.WaitFor(0));
        for (int number = 0; number < 5; ++number) {
            ZROut(HCString(std::to_string(number)), nullptr, 1);
            ZROut("filtered out", "Map::Load", 1);
            ZRWarn("filtered out", nullptr, 1);
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
    const std::string path = PathOf("lines.json");
    {
        ZRBackground background(*ZRGetMessageHandler());
        const ZRJsonLines lines(background, path.c_str());
        const auto here = std::this_thread::get_id();
        std::optional<ZREventOrigin> origin;
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
        ASSERT_TRUE(origin);
        EXPECT_NE(test::ReadFile(path).find("\"thread\":" + std::to_string(origin->thread) + ","), std::string::npos);
        ZROut("two", "Map::Load", 1);
    }
    ZROut("three", nullptr, 1);
    EXPECT_EQ(test::Lines(test::ReadFile(path)).size(), 2U) << "all is handled at the end";
}

TEST_F(Queue, BackgroundMayTellAFailureWhileSendersWait)
{
    const ZRRecorder recorder(*ZRGetMessageHandler());
    ZRBackground background(*ZRGetMessageHandler(), Full(WhenFull::kWait, 1));
    const ZRJsonLines lines(background, PathOf("missing/lines.json").c_str());
    std::vector<std::thread> senders(4);
    for (std::thread& sender : senders) {
        sender = std::thread([] {
            for (int number = 0; number < 200; ++number) {
                ZROut("lost", nullptr, 1);
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    background.Flush();
    EXPECT_FALSE(lines.IsOpen());
    EXPECT_EQ(recorder.GetMessages(ZR_MSG_ERROR).size(), 1U);
    EXPECT_EQ(background.GetDroppedCount(), 0);
}

TEST_F(Queue, RecorderOfFlightsWritesEachMessageOnce)
{
    const std::string path = PathOf("flight.txt");
    const auto shown = [&path] {
        return std::regex_replace(
            test::ReadFile(path), std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z \d+|process \d+)"), "*");
    };
    ZRFlightRecorder::Options options;
    options.count = 3;
    options.filter = "out,error,trace";
    ZRFlightRecorder recorder(path.c_str(), options);
    EXPECT_TRUE(recorder.WriteNow());
    EXPECT_EQ(shown(), "") << "there is nothing";
    ZROut("gone", nullptr, 1);
    ZROut("first", "Map::Load", 1);
    ZRTrace("a\nb \x1b[31m", "Map::Load", 3);
    ZRWarn("filtered out", nullptr, 1);
    ZRError(HCString(std::string(600, 'x')), "Map::Check", 1);
    const std::string written = "-- 3 messages, *: a message of type ERROR\n* OUT 1 Map::Load: first\n"
                                "* TRACE 3 Map::Load: a b  [31m\n* ERROR 1 Map::Check: "
        + std::string(ZRFlightRecorder::kMostBytes - 10, 'x') + "\n";
    EXPECT_EQ(shown(), written);
    ZROut("later", nullptr, 1);
    EXPECT_TRUE(recorder.WriteNow());
    EXPECT_EQ(shown(), written + "-- 1 messages, *: asked for\n* OUT 1 : later\n");

    const ZRRecorder seen(*ZRGetMessageHandler());
    ZRFlightRecorder lost(PathOf("missing/flight.txt").c_str());
    ZRError("one", nullptr, 1);
    ZRError("two", nullptr, 1);
    EXPECT_FALSE(lost.IsOpen());
    EXPECT_EQ(seen.GetMessages().size(), 3U) << "the failure is told once";
}

#if !defined(_WIN32)
TEST_F(Queue, ForkedChildBeginsAnew)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#endif
    ZREventQueue queue;
    ZRBackground background(*ZRGetMessageHandler());
    const ZRJsonLines lines(background, PathOf("lines.json").c_str());
    ZROut("of the parent", nullptr, 1);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        ZROut("of the child", nullptr, 1);
        background.Flush();
        const auto texts = TextsOf(queue);
        _exit(texts.size() == 1 && texts[0] == "of the child" ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    background.Flush();
    EXPECT_EQ(TextsOf(queue), std::vector<std::string>{"of the parent"});
    EXPECT_EQ(test::Lines(test::ReadFile(PathOf("lines.json"))).size(), 2U);
}

TEST_F(Queue, CrashLeavesTheLastMessages)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizer ends a program that crashes in its own way";
#endif
    const struct {
        const char* kind;
        const char* output;
        const char* reason;
    } cases[] = {
        {"signal", "139\n", "signal 11"},
        {"earlier", "earlier\n11\n", "signal 11"},
        {"once", "once\n139\n", "signal 11"},
        {"background", "139\n", "signal 11"},
        {"abort", "134\n", "signal 06"},
        {"overflow", "139\n", "signal 11"},
        {"thread", "139\n", "signal 11"},
    };
    for (const auto& one : cases) {
        const std::string path = PathOf(one.kind);
        const auto result =
            test::Run("/bin/sh", {"-c", R"("$0" "$1" "$2"; echo $?)", CRASHING_PROGRAM, path, one.kind});
        EXPECT_EQ(result.output, one.output) << one.kind;
        const auto written = test::Lines(test::ReadFile(path));
        ASSERT_EQ(written.size(), 4U) << one.kind;
        EXPECT_NE(written[0].find(std::string(": ") + one.reason), std::string::npos) << written[0];
        EXPECT_NE(written[2].find("OUT 1 main: message 4 "), std::string::npos) << written[2];
        EXPECT_NE(written[3].find("TRACE 1 Crash: about to crash"), std::string::npos) << written[3];
    }
}
#endif

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
