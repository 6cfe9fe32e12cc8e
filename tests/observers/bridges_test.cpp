#define G_LOG_DOMAIN "Roads"

#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"
#include "zrobservers/background.h"
#include "zrobservers/from_glib.h"
#include "zrobservers/recorder.h"
#include "zrobservers/spdlog_bridge.h"

#include <map>
#include <optional>
#include <spdlog/async.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/sinks/tcp_sink.h>
#include <sstream>

namespace {

using Bridges = test::Messages;

/// "type place text" of each message.
std::string Seen(const ZRRecorder& recorder)
{
    std::string seen;
    for (const ZRMsg& message : recorder.GetMessages()) {
        seen += std::to_string(message.GetType()) + " " + message.GetLocation().ToString() + " "
            + message.GetText().ToString() + "\n";
    }
    return seen;
}

TEST_F(Bridges, MakeMessagesOfGlibsWhileTheObjectExists)
{
    const ZRRecorder recorder(*ZRGetMessageHandler());
    const auto leave = [](const auto& /*event*/) {
        g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "MESSAGE", "left to GLib");
    };
    const ZRListener answering(*ZRGetMessageHandler(), leave);
    std::optional<ZRFromGlib> messages(std::in_place);
    g_message("a");
    messages.reset();
    g_message("left to GLib");
    messages.emplace();
    g_critical("b");
    g_warning("c");
    g_debug("d");
    g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "CODE_FUNC", "Load", "MESSAGE", "e");
    EXPECT_EQ(Seen(recorder), "1 Roads a\n4 Roads b\n2 Roads c\n8 Roads d\n1 Load e\n");
}

TEST_F(Bridges, GiveSpdlogEveryMessageWithItsLevelAndItsPlace)
{
    for (const bool isBehind : {false, true}) {
        std::ostringstream output;
        const auto sink = std::make_shared<spdlog::sinks::ostream_sink_mt>(output);
        const auto logger = std::make_shared<spdlog::logger>("ours", sink);
        logger->set_pattern("%l %! %v");
        {
            ZRBackground background(*ZRGetMessageHandler());
            const ZRFilter filter("place!=Draw");
            const auto bridge = isBehind ? ZRSpdlogBridge(background, logger, filter) : ZRSpdlogBridge(logger, filter);
            ZROut("a {} text", "Map::Load", 1);
            ZRWarn("b", nullptr, 1);
            ZRErrorSet(-7, "c", "Map::Check", 0, 1);
            ZRTrace("below the level of the logger", "Map::Load", 1);
            ZROut("filtered out", "Draw", 1);
        }
        ZROut("too late", nullptr, 1);
        EXPECT_EQ(output.str(), "info Map::Load a {} text\nwarning  b\nerror Map::Check c\n") << isBehind;
    }
}

TEST_F(Bridges, DoNotSendInCircles)
{
    for (const bool isAsynchronous : {false, true}) {
        const ZRRecorder recorder(*ZRGetMessageHandler());
        std::ostringstream output;
        const std::initializer_list<spdlog::sink_ptr> sinks{
            std::make_shared<spdlog::sinks::ostream_sink_mt>(output), std::make_shared<ZRSpdlogSink>()};
        const auto pool = std::make_shared<spdlog::details::thread_pool>(100, 1);
        const auto logger = isAsynchronous ? std::make_shared<spdlog::async_logger>("theirs", sinks, pool)
                                           : std::make_shared<spdlog::logger>("theirs", sinks);
        logger->set_pattern("%v");
        logger->set_level(spdlog::level::trace);
        const ZRSpdlogBridge bridge(logger);
        ZROut("a", "Map::Load", 1);
        logger->critical("b");
        logger->log({"a.cpp", 1, "Draw"}, spdlog::level::warn, "c");
        logger->info("d");
        logger->debug("e");
        EXPECT_TRUE(recorder.WaitFor([](const auto& event) { return event.GetText() == "e"; }, 60'000));
        EXPECT_EQ(Seen(recorder), "1 Map::Load a\n4 theirs b\n2 Draw c\n1 theirs d\n8 theirs e\n");
        EXPECT_EQ(output.str(), "a\nb\nc\nd\ne\n");
    }
}

bool IsTaken(int port)
{
    return test::Run("/bin/bash", {"-c", "exec 3<>/dev/tcp/127.0.0.1/" + std::to_string(port)}).exitCode == 0;
}

/// A syslog daemon that takes lines at a port, and what it does with them.
std::unique_ptr<test::Process> StartDaemon(const std::string& path, int port, const std::string& action)
{
    const std::string input = "module(load=\"imtcp\")\ninput(type=\"imtcp\" address=\"127.0.0.1\" port=\"";
    const std::string raw = "\")\ntemplate(name=\"raw\" type=\"string\" string=\"%rawmsg%\\n\")\n";
    test::WriteFile(path + ".conf", input + std::to_string(port) + raw + "action(template=\"raw\" " + action + ")\n");
    const std::vector<std::string> arguments{"-n", "-f", path + ".conf", "-i", path + ".pid"};
    auto daemon = std::make_unique<test::Process>(RSYSLOGD_PROGRAM, arguments);
    EXPECT_TRUE(test::SpinUntil([port] { return IsTaken(port); }));
    return daemon;
}

TEST_F(Bridges, LeadToADaemonThatSendsEveryLineOnAndMayBeRestarted)
{
    constexpr int kSenders = 4;
    constexpr int kEach = 2500;
    const std::string path = m_home.Path("arrived");
    int port = 10'000 + static_cast<int>(getpid()) % 20'000;
    while (IsTaken(port) || IsTaken(port + 1)) {
        port += 2;
    }
    const auto far = StartDaemon(m_home.Path("far"), port + 1, "type=\"omfile\" file=\"" + path + "\"");
    const std::string toFar = "type=\"omfwd\" target=\"127.0.0.1\" protocol=\"tcp\" queue.type=\"LinkedList\" port=\""
        + std::to_string(port + 1) + "\"";
    auto near = StartDaemon(m_home.Path("near"), port, toFar);

    const auto logger = std::make_shared<spdlog::logger>(
        "roads", std::make_shared<spdlog::sinks::tcp_sink_mt>(spdlog::sinks::tcp_sink_config("127.0.0.1", port)));
    logger->set_pattern("<14>roads: %v");
    int failures = 0; // counted under the lock of messages
    logger->set_error_handler([&failures](const std::string&) { ++failures; });
    const ZRSpdlogBridge bridge(logger);
    const auto sendAndWait = [&path](int first, int end) {
        test::OnThreads(kSenders, [=](int sender) {
            for (int number = first; number < end; ++number) {
                ZR_OUT("sender %d number %d", sender, number);
            }
        });
        const auto isThere = [&] {
            return std::ssize(test::Lines(test::ReadFile(path))) >= std::ptrdiff_t{kSenders} * end;
        };
        EXPECT_TRUE(test::SpinUntil(isThere));
    };
    sendAndWait(0, kEach);
    EXPECT_EQ(failures, 0);

    near.reset(); // stopped, and what is sent meanwhile is lost
    EXPECT_TRUE(test::SpinUntil([&failures] {
        ZR_OUT("lost");
        return failures > 0;
    }));
    near = StartDaemon(m_home.Path("near"), port, toFar);
    sendAndWait(kEach, kEach + 10);
    std::map<int, int> next; // number of each sender
    for (const std::string& line : test::Lines(test::ReadFile(path))) {
        int sender = -1;
        std::sscanf(line.c_str(), "<14>roads: sender %d", &sender);
        EXPECT_EQ(line, "<14>roads: sender " + std::to_string(sender) + " number " + std::to_string(next[sender]++));
    }
}

} // namespace
