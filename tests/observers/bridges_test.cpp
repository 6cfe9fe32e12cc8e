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

using FromGlib = test::Messages;

TEST_F(FromGlib, BecomesMessagesWhileTheObjectExists)
{
    const ZRRecorder recorder(*ZRGetMessageHandler());
    const ZRListener answering(*ZRGetMessageHandler(),
        [](const auto&) { g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "MESSAGE", "left to GLib"); });
    std::optional<ZRFromGlib> messages;
    for (int turn = 0; turn < 2; ++turn) {
        messages.emplace();
        g_message("a %d", turn);
        messages.reset();
        g_message("left to GLib");
    }
    messages.emplace();
    g_critical("b");
    g_warning("c");
    g_debug("d");
    g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "CODE_FUNC", "Load", "MESSAGE", "e");
    std::string seen;
    for (const ZRMsg& message : recorder.GetMessages()) {
        seen += std::to_string(message.GetType()) + " " + message.GetText().ToString() + " "
            + message.GetLocation().ToString() + "\n";
    }
    EXPECT_EQ(seen, "1 a 0 Roads\n1 a 1 Roads\n4 b Roads\n2 c Roads\n8 d Roads\n1 e Load\n");
}

using SpdlogBridge = test::Messages;

TEST_F(SpdlogBridge, GivesEveryMessageItsLevelAndItsPlace)
{
    for (const bool isBehind : {false, true}) {
        std::ostringstream output;
        const auto logger =
            std::make_shared<spdlog::logger>("ours", std::make_shared<spdlog::sinks::ostream_sink_mt>(output));
        logger->set_pattern("%l %! %v");
        logger->set_level(spdlog::level::info);
        {
            ZRBackground background(*ZRGetMessageHandler());
            const ZRFilter filter("place!=Draw");
            const auto bridge = isBehind ? ZRSpdlogBridge(background, logger, filter) : ZRSpdlogBridge(logger, filter);
            ZROut("a {} text", "Map::Load", 1);
            ZRWarn("b", nullptr, 1);
            ZRErrorSet(-7, "c", "Map::Check", 0, 1);
            ZRTrace("kept back", "Map::Load", 1);
            ZROut("filtered out", "Draw", 1);
        }
        ZROut("too late", nullptr, 1);
        EXPECT_EQ(output.str(), "info Map::Load a {} text\nwarning  b\nerror Map::Check c\n") << isBehind;
    }
}

TEST_F(SpdlogBridge, DoesNotGoRoundInCircles)
{
    for (const bool isAsynchronous : {false, true}) {
        const ZRRecorder recorder(*ZRGetMessageHandler());
        std::ostringstream output;
        const std::initializer_list<spdlog::sink_ptr> sinks{
            std::make_shared<spdlog::sinks::ostream_sink_mt>(output), std::make_shared<ZRSpdlogSink>()};
        const auto pool = std::make_shared<spdlog::details::thread_pool>(100, 1);
        const std::shared_ptr<spdlog::logger> logger = isAsynchronous
            ? std::make_shared<spdlog::async_logger>("theirs", sinks, pool, spdlog::async_overflow_policy::block)
            : std::make_shared<spdlog::logger>("theirs", sinks);
        logger->set_pattern("%v");
        logger->set_level(spdlog::level::trace);
        {
            const ZRSpdlogBridge bridge(logger);
            ZROut("of ours", "Map::Load", 1);
            logger->critical("of theirs");
            logger->log({"a.cpp", 1, "Draw"}, spdlog::level::warn, "with a place");
            logger->info("of theirs");
            logger->debug("last");
            EXPECT_TRUE(
                recorder.WaitFor([](const ZRObservedObjectEvent& event) { return event.GetText() == "last"; }, 60'000));
        }
        std::string seen;
        for (const ZRMsg& message : recorder.GetMessages()) {
            seen += std::to_string(message.GetType()) + " " + message.GetLocation().ToString() + ";";
        }
        EXPECT_EQ(seen, "1 Map::Load;4 theirs;2 Draw;1 theirs;8 theirs;");
        EXPECT_EQ(test::Lines(output.str()).size(), 5U);
    }
}

/// The road off the machine: messages through spdlog's TCP sink to one syslog daemon, which sends them on to a second.
constexpr int kSenders = 4;

using Numbers = std::map<int, std::vector<int>>; // by sender, in the order of their arrival

class Rsyslog : public test::Messages {
protected:
    static bool IsTaken(int port)
    {
        return test::Run("/bin/bash", {"-c", "exec 3<>/dev/tcp/127.0.0.1/" + std::to_string(port)}).exitCode == 0;
    }

    /// A daemon that takes lines at a port, and what it does with them.
    std::unique_ptr<test::Process> Start(const std::string& name, int port, const std::string& action) const
    {
        const std::string path = m_home.Path(name);
        test::WriteFile(path + ".conf",
            "global(workDirectory=\"" + m_home.Folder() + "\")\nmodule(load=\"imtcp\")\n"
                + "input(type=\"imtcp\" address=\"127.0.0.1\" port=\"" + std::to_string(port) + "\")\n"
                + "template(name=\"raw\" type=\"string\" string=\"%rawmsg%\\n\")\n" + action + "\n");
        const std::vector<std::string> arguments{"-n", "-f", path + ".conf", "-i", path + ".pid"};
        auto daemon = std::make_unique<test::Process>(RSYSLOGD_PROGRAM, arguments);
        EXPECT_TRUE(test::SpinUntil([port] { return IsTaken(port); }));
        return daemon;
    }

    static void Send(int first, int end)
    {
        test::OnThreads(kSenders, [=](int sender) {
            for (int number = first; number < end; ++number) {
                ZR_OUT("sender %d number %d", sender, number);
            }
        });
    }

    Numbers Arrived() const
    {
        Numbers arrived;
        for (const std::string& line : test::Lines(test::ReadFile(m_home.Path("arrived")))) {
            int sender = 0;
            int number = 0;
            if (std::sscanf(line.c_str(), "<14>roads: sender %d number %d", &sender, &number) == 2) {
                arrived[sender].push_back(number);
            }
        }
        return arrived;
    }
};

TEST_F(Rsyslog, TakesEveryLineOnceAndGoesOnAfterARestart)
{
    constexpr int kEach = 2500;
    int port = 10'000 + static_cast<int>(getpid()) % 20'000;
    while (IsTaken(port) || IsTaken(port + 1)) {
        port += 2;
    }
    const auto far =
        Start("far", port + 1, "action(type=\"omfile\" file=\"" + m_home.Path("arrived") + "\" template=\"raw\")");
    const std::string toFar = "action(type=\"omfwd\" target=\"127.0.0.1\" port=\"" + std::to_string(port + 1)
        + "\" protocol=\"tcp\" template=\"raw\" queue.type=\"LinkedList\")";
    auto near = Start("near", port, toFar);

    const auto logger = std::make_shared<spdlog::logger>(
        "roads", std::make_shared<spdlog::sinks::tcp_sink_mt>(spdlog::sinks::tcp_sink_config("127.0.0.1", port)));
    logger->set_pattern("<14>roads: %v");
    int failures = 0; // counted under the lock of messages
    logger->set_error_handler([&failures](const std::string&) { ++failures; });
    const ZRSpdlogBridge bridge(logger);
    Numbers wanted;
    const auto sendAndWait = [&](int first, int end) {
        Send(first, end);
        for (int number = first; number < end; ++number) {
            for (int sender = 0; sender < kSenders; ++sender) {
                wanted[sender].push_back(number);
            }
        }
        EXPECT_TRUE(test::SpinUntil([&] { return Arrived() == wanted; })) << "each once and in the order of its sender";
    };
    sendAndWait(0, kEach);
    EXPECT_EQ(failures, 0);

    near.reset(); // stopped, and what is sent meanwhile is lost
    Send(kEach, kEach + 10);
    EXPECT_GT(failures, 0);
    near = Start("near", port, toFar);
    sendAndWait(kEach + 10, kEach + 20);
}

} // namespace
