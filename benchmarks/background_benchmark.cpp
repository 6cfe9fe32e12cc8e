// Messages that are handled on another thread or passed to spdlog, compared with spdlog itself: one, two and four
// senders.

#include "benchmarks/report.h"
#include "benchmarks/shared.h"
#include "zrlib/zrlib.h"
#include "zrobservers/spdlog_bridge.h"
#include "zrobservers/zrobservers.h"

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/ringbuffer_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/tcp_sink.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using report::AddTarget;
using report::Measure;

constexpr int kBurst = 1000; // messages sent at once by each sender; the queues have room for those of all senders
constexpr int kCapacity = 8192;

using SinkMaker = spdlog::sink_ptr (*)();

spdlog::sink_ptr FileSink() { return std::make_shared<spdlog::sinks::basic_file_sink_mt>(PathOf("sink.txt"), true); }
spdlog::sink_ptr RotatingSink()
{
    return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(PathOf("rotating.txt"), 10'000'000, 2);
}

/// A sink connected to a server in this process that discards what it receives, until the end of the program.
spdlog::sink_ptr TcpSink()
{
    static const int port = [] {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0) {
            std::abort();
        }
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
        listen(listener, 8);
        std::thread([listener] {
            while (true) {
                const int client = accept(listener, nullptr, nullptr);
                std::thread([client] {
                    std::array<char, 65536> buffer{};
                    while (read(client, buffer.data(), buffer.size()) > 0) {}
                    close(client);
                }).detach();
            }
        }).detach();
        return static_cast<int>(ntohs(address.sin_port));
    }();
    return std::make_shared<spdlog::sinks::tcp_sink_mt>(spdlog::sinks::tcp_sink_config("127.0.0.1", port));
}

/// An object that all threads of one benchmark share. The first thread constructs and destroys it.
template <typename Shared> class SharedByAll {
public:
    template <typename Make> SharedByAll(const benchmark::State& state, Make make)
        : m_isFirst(state.thread_index() == 0)
    {
        if (m_isFirst) {
            make(s_shared);
        }
    }
    ~SharedByAll()
    {
        if (m_isFirst) {
            s_shared.reset();
        }
    }
    SharedByAll(const SharedByAll&) = delete;
    SharedByAll& operator=(const SharedByAll&) = delete;

    Shared& operator*() { return *s_shared; }

private:
    static inline std::optional<Shared> s_shared;
    bool m_isFirst;
};

/// Measures what a burst costs its sender. `finish` waits for the other threads, outside the measured time.
template <typename Send, typename Finish> void SendBursts(benchmark::State& state, Send send, Finish finish)
{
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        for (int number = 0; number < kBurst; ++number) {
            send();
        }
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        finish();
    }
}

struct Background {
    explicit Background(SinkMaker make)
        : logger(std::make_shared<spdlog::logger>("background", make()))
        , bridge(background, logger)
    {
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(0);
        logger->set_pattern("%v");
    }
    ~Background() { ZRSetMessagesEnabled(0); }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    std::shared_ptr<spdlog::logger> logger;
    ZRBackground background{*ZRGetMessageHandler()};
    ZRSpdlogBridge bridge;
};

void ToBackground(benchmark::State& state, SinkMaker make)
{
    SharedByAll<Background> shared(state, [make](auto& all) { all.emplace(make); });
    SendBursts(
        state, [] { ZROut(kText, "Benchmark", 1); }, [&shared] { (*shared).background.Flush(); });
    if (state.thread_index() == 0) {
        state.counters["lost"] = static_cast<double>((*shared).background.GetDroppedCount());
    }
}

struct Asynchronous {
    explicit Asynchronous(SinkMaker make)
        : pool(std::make_shared<spdlog::details::thread_pool>(kCapacity, 1))
        , logger(std::make_shared<spdlog::async_logger>("async", make(), pool, spdlog::async_overflow_policy::block))
    {
        logger->set_pattern("%v");
    }

    std::shared_ptr<spdlog::details::thread_pool> pool;
    std::shared_ptr<spdlog::async_logger> logger;
};

void ToAsynchronousSpdlog(benchmark::State& state, SinkMaker make)
{
    SharedByAll<Asynchronous> shared(state, [make](auto& all) { all.emplace(make); });
    SendBursts(
        state, [&shared] { (*shared).logger->info(kText); },
        [&shared] {
            while ((*shared).pool->queue_size() != 0) {
                std::this_thread::yield();
            }
        });
    if (state.thread_index() == 0) {
        state.counters["lost"] = static_cast<double>((*shared).pool->overrun_counter());
    }
}

/// A bridge on the sender's thread.
struct Bridge {
    explicit Bridge(SinkMaker make)
        : logger(std::make_shared<spdlog::logger>("bridge", make()))
        , bridge(logger)
    {
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(0);
        logger->set_pattern("%v");
    }
    ~Bridge() { ZRSetMessagesEnabled(0); }
    Bridge(const Bridge&) = delete;
    Bridge& operator=(const Bridge&) = delete;

    std::shared_ptr<spdlog::logger> logger;
    ZRSpdlogBridge bridge;
};

void ToBridge(benchmark::State& state, SinkMaker make)
{
    SharedByAll<Bridge> shared(state, [make](auto& all) { all.emplace(make); });
    SendBursts(
        state, [] { ZROut(kText, "Benchmark", 1); }, [] {});
}

void ToSpdlog(benchmark::State& state, SinkMaker make)
{
    SharedByAll<std::shared_ptr<spdlog::logger>> shared(state, [make](auto& all) {
        all.emplace(std::make_shared<spdlog::logger>("spdlog", make()));
        (*all)->set_pattern("%v");
    });
    SendBursts(
        state, [&shared] { (*shared)->info(kText); }, [] {});
}

void ToFlightRecorder(benchmark::State& state)
{
    const ZRFlightRecorder recorder(PathOf("flight.txt").c_str());
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
    }
}
void ToRingOfSpdlog(benchmark::State& state)
{
    spdlog::logger logger("ring", std::make_shared<spdlog::sinks::ringbuffer_sink_mt>(1000));
    for (auto _ : state) {
        logger.info(kText);
    }
}

/// Sends messages to an observer with a filter.
void ToListener(benchmark::State& state, const ZRFilter& filter)
{
    const ZRListener listener(*ZRGetMessageHandler(),
        [&filter](const ZRObservedObjectEvent& event) { benchmark::DoNotOptimize(filter.Takes(event.GetMsg())); });
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(0);
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
    }
    ZRSetMessagesEnabled(0);
}
void ToNoFilter(benchmark::State& state) { ToListener(state, ZRFilter()); }
void ToFilter(benchmark::State& state) { ToListener(state, "warn,error level<=3 place=Map::*"); }
void LockOfTheLibrary(benchmark::State& state)
{
    HCThreadSync lock;
    for (auto _ : state) {
        lock.lock();
        lock.unlock();
    }
}

#define BY_ONE_TWO_AND_FOUR(function, sink, name)                                                                      \
    BENCHMARK_CAPTURE(function, sink, sink)->Name(name "ByOne")->UseManualTime();                                      \
    BENCHMARK_CAPTURE(function, sink, sink)->Name(name "ByTwo")->Threads(2)->UseManualTime();                          \
    BENCHMARK_CAPTURE(function, sink, sink)->Name(name "ByFour")->Threads(4)->UseManualTime()

BY_ONE_TWO_AND_FOUR(ToBackground, FileSink, "BackgroundToFile");
BY_ONE_TWO_AND_FOUR(ToAsynchronousSpdlog, FileSink, "AsynchronousSpdlogToFile");
BY_ONE_TWO_AND_FOUR(ToBridge, RotatingSink, "BridgeToRotatingFile");
BY_ONE_TWO_AND_FOUR(ToSpdlog, RotatingSink, "SpdlogToRotatingFile");
BY_ONE_TWO_AND_FOUR(ToBridge, TcpSink, "BridgeToTcp");
BY_ONE_TWO_AND_FOUR(ToSpdlog, TcpSink, "SpdlogToTcp");
BENCHMARK(ToFlightRecorder);
BENCHMARK(ToRingOfSpdlog);
BENCHMARK(ToNoFilter);
BENCHMARK(ToFilter);
BENCHMARK(LockOfTheLibrary);

const AddTarget backgroundTargets[] = {
    AddTarget({"message to a background, to spdlog's asynchronous logger", Measure::kRatio, "BackgroundToFileByOne",
        "AsynchronousSpdlogToFileByOne", 0.6}),
    AddTarget({"message to a background, to spdlog's asynchronous logger: two senders", Measure::kRatio,
        "BackgroundToFileByTwo", "AsynchronousSpdlogToFileByTwo", 0.6}),
    AddTarget({"message to a background, to spdlog's asynchronous logger: four senders", Measure::kRatio,
        "BackgroundToFileByFour", "AsynchronousSpdlogToFileByFour", 0.6}),
    AddTarget({"rotating file through the bridge, to spdlog alone", Measure::kRatio, "BridgeToRotatingFileByOne",
        "SpdlogToRotatingFileByOne", 2}),
    AddTarget({"rotating file through the bridge, to spdlog alone: two senders", Measure::kRatio,
        "BridgeToRotatingFileByTwo", "SpdlogToRotatingFileByTwo", 2}),
    AddTarget({"rotating file through the bridge, to spdlog alone: four senders", Measure::kRatio,
        "BridgeToRotatingFileByFour", "SpdlogToRotatingFileByFour", 2}),
    AddTarget(
        {"TCP through the bridge, to spdlog alone", Measure::kRatio, "BridgeToTcpByOne", "SpdlogToTcpByOne", 1.2}),
    AddTarget({"TCP through the bridge, to spdlog alone: two senders", Measure::kRatio, "BridgeToTcpByTwo",
        "SpdlogToTcpByTwo", 1.2}),
    AddTarget({"TCP through the bridge, to spdlog alone: four senders", Measure::kRatio, "BridgeToTcpByFour",
        "SpdlogToTcpByFour", 1.2}),
    AddTarget({"message to a flight recorder, to spdlog's ring buffer", Measure::kRatio, "ToFlightRecorder",
        "ToRingOfSpdlog", 1}),
    AddTarget({"a filter that keeps a message back, beyond one that takes all", Measure::kDifference, "ToFilter",
        "ToNoFilter", 10}),
    AddTarget({"for comparison: a lock, taken and given", Measure::kTime, "LockOfTheLibrary", "", 20}),
};

} // namespace
