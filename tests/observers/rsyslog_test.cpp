// The road off the machine: messages through spdlog's TCP sink to one syslog daemon, which sends them on to a second.

#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "zrobservers/spdlog_bridge.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <spdlog/sinks/tcp_sink.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// A port of this machine that nobody uses.
int FreePort()
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    close(listener);
    return ntohs(address.sin_port);
}

class Rsyslog : public test::Messages {
protected:
    static constexpr int kSenders = 4;

    std::string PathOf(const std::string& name) const { return m_home.Folder() + "/" + name; }

    /// A daemon that takes lines at a port, and what it does with them.
    std::unique_ptr<test::Process> Start(const std::string& name, int port, const std::string& action) const
    {
        test::WriteFile(PathOf(name + ".conf"),
            "global(workDirectory=\"" + m_home.Folder() + "\")\nmodule(load=\"imtcp\")\n"
                + "input(type=\"imtcp\" address=\"127.0.0.1\" port=\"" + std::to_string(port) + "\")\n"
                + "template(name=\"raw\" type=\"string\" string=\"%rawmsg%\\n\")\n" + action);
        auto daemon = std::make_unique<test::Process>(RSYSLOGD_PROGRAM,
            std::vector<std::string>{"-n", "-f", PathOf(name + ".conf"), "-i", PathOf(name + ".pid")});
        WaitUntil([port] { return IsTaken(port); });
        return daemon;
    }

    static bool IsTaken(int port)
    {
        const int client = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool isTaken = connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
        close(client);
        return isTaken;
    }

    static bool WaitUntil(const std::function<bool()>& condition)
    {
        for (const auto end = std::chrono::steady_clock::now() + 60s; std::chrono::steady_clock::now() < end;) {
            if (condition()) {
                return true;
            }
            std::this_thread::sleep_for(20ms);
        }
        return false;
    }

    static void Send(int first, int end)
    {
        std::vector<std::thread> senders;
        for (int sender = 0; sender < kSenders; ++sender) {
            senders.emplace_back([=] {
                for (int number = first; number < end; ++number) {
                    ZR_OUT("sender %d number %d", sender, number);
                }
            });
        }
        for (std::thread& sender : senders) {
            sender.join();
        }
    }

    /// The numbers that have arrived, by sender.
    std::map<int, std::vector<int>> Arrived() const
    {
        std::map<int, std::vector<int>> arrived;
        for (const std::string& line : test::Lines(test::ReadFile(PathOf("arrived")))) {
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
    const int port = FreePort();
    const int farPort = FreePort();
    const std::string toFar = "action(type=\"omfwd\" target=\"127.0.0.1\" port=\"" + std::to_string(farPort)
        + "\" protocol=\"tcp\" template=\"raw\" queue.type=\"LinkedList\")\n";
    const auto far =
        Start("far", farPort, "action(type=\"omfile\" file=\"" + PathOf("arrived") + "\" template=\"raw\")\n");
    auto near = Start("near", port, toFar);

    const auto logger = std::make_shared<spdlog::logger>(
        "roads", std::make_shared<spdlog::sinks::tcp_sink_mt>(spdlog::sinks::tcp_sink_config("127.0.0.1", port)));
    logger->set_pattern("<14>roads: %v");
    int failures = 0; // counted under the lock of messages
    logger->set_error_handler([&failures](const std::string&) { ++failures; });
    const ZRSpdlogBridge bridge(logger);
    Send(0, kEach);
    const auto hasAll = [this](std::size_t each) {
        const auto arrived = Arrived();
        return arrived.size() == kSenders && std::all_of(arrived.begin(), arrived.end(), [each](const auto& one) {
            return one.second.size() >= each;
        });
    };
    EXPECT_TRUE(WaitUntil([&] { return hasAll(kEach); }));
    for (const auto& [sender, numbers] : Arrived()) {
        ASSERT_EQ(numbers.size(), std::size_t{kEach}) << sender;
        for (int number = 0; number < kEach; ++number) {
            ASSERT_EQ(numbers[static_cast<std::size_t>(number)], number) << "the order of sender " << sender;
        }
    }
    EXPECT_EQ(failures, 0);

    near.reset(); // stopped, and what is sent meanwhile is lost
    Send(kEach, kEach + 10);
    EXPECT_GT(failures, 0);
    near = Start("near", port, toFar);
    Send(kEach + 10, kEach + 20);
    EXPECT_TRUE(WaitUntil([&] { return hasAll(kEach + 10); }));
    for (const auto& [sender, numbers] : Arrived()) {
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
        EXPECT_EQ(numbers.size(), std::size_t{kEach + 10}) << "all that were sent since, once";
    }
}

} // namespace
