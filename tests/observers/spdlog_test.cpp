#include "tests/support/messages.h"
#include "zrobservers/recorder.h"
#include "zrobservers/spdlog_bridge.h"

#include <filesystem>
#include <map>
#include <spdlog/async.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/syslog_sink.h>
#include <sstream>
#include <thread>

namespace {

using SpdlogBridge = test::Messages;

TEST_F(SpdlogBridge, GivesEveryMessageItsLevelAndItsPlace)
{
    std::ostringstream output;
    const auto logger =
        std::make_shared<spdlog::logger>("ours", std::make_shared<spdlog::sinks::ostream_sink_mt>(output));
    logger->set_pattern("%l %! %v");
    logger->set_level(spdlog::level::info);
    {
        const ZRSpdlogBridge bridge(logger);
        ZROut("a {} text", "Map::Load", 1);
        ZRWarn("b", nullptr, 1);
        ZRErrorSet(-7, "c", "Map::Check", 0, 1);
        ZRTrace("kept back", "Map::Load", 1);
    }
    ZROut("too late", nullptr, 1);
    std::string text = output.str();
    std::erase(text, '\r');
    EXPECT_EQ(text, "info Map::Load a {} text\nwarning  b\nerror Map::Check c\n");
}

TEST_F(SpdlogBridge, DoesNotGoRoundInCircles)
{
    for (const bool isAsynchronous : {false, true}) {
        const ZRRecorder recorder(*ZRGetMessageHandler());
        std::ostringstream output;
        const auto file = std::make_shared<spdlog::sinks::ostream_sink_mt>(output);
        const auto back = std::make_shared<ZRSpdlogSink>();
        const auto pool = std::make_shared<spdlog::details::thread_pool>(100, 1);
        const std::initializer_list<spdlog::sink_ptr> sinks{file, back};
        std::shared_ptr<spdlog::logger> logger = isAsynchronous
            ? std::make_shared<spdlog::async_logger>("theirs", sinks, pool, spdlog::async_overflow_policy::block)
            : std::make_shared<spdlog::logger>("theirs", sinks);
        logger->set_pattern("%v");
        logger->set_level(spdlog::level::trace);
        {
            const ZRSpdlogBridge bridge(logger);
            ZROut("of ours", "Map::Load", 1);
            logger->error("of theirs");
            logger->debug("of theirs too");
            EXPECT_TRUE(recorder.WaitFor(
                [](const ZRObservedObjectEvent& event) { return event.GetText() == "of theirs too"; }, 60'000));
        }
        const auto messages = recorder.GetMessages();
        ASSERT_EQ(messages.size(), 3U);
        EXPECT_EQ(messages[1].IsError() + messages[2].IsTrace(), 2);
        EXPECT_EQ(messages[1].GetLocation(), "theirs");
        EXPECT_EQ(test::Lines(output.str()).size(), 3U);
    }
}

TEST_F(SpdlogBridge, ReachesTheSyslogOfTheMachine)
{
    if (!std::filesystem::exists("/dev/log")) {
        GTEST_SKIP() << "this machine has no syslog socket";
    }
    const auto logger = std::make_shared<spdlog::logger>(
        "zrlib", std::make_shared<spdlog::sinks::syslog_sink_mt>("zrlib", 0, LOG_USER, false));
    logger->set_error_handler([](const std::string& reason) { ADD_FAILURE() << reason; });
    const ZRSpdlogBridge bridge(logger);
    ZROut("through the bridge", "Map::Load", 1);
}

TEST_F(SpdlogBridge, RotatesUnderFourThreads)
{
    constexpr int kEach = 2500;
    const std::string path = m_home.Folder() + "/rotating";
    {
        const auto logger = std::make_shared<spdlog::logger>(
            "rotating", std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, 20'000, 20));
        logger->set_pattern("%v");
        const ZRSpdlogBridge bridge(logger);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([thread] {
                for (int number = 0; number < kEach; ++number) {
                    ZR_OUT("%d %d", thread, number);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::map<std::string, int> seen;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_home.Folder())) {
        ++files;
        for (const std::string& line : test::Lines(test::ReadFile(entry.path().string()))) {
            ++seen[line];
        }
    }
    EXPECT_GT(files, 2);
    EXPECT_EQ(seen.size(), 4U * kEach);
    for (const auto& [line, count] : seen) {
        EXPECT_EQ(count, 1) << line;
    }
}

} // namespace
