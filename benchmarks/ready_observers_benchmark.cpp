// The ready-made observers, compared with spdlog and sinks that do the same work, on one and two threads.

#include "benchmarks/report.h"
#include "benchmarks/shared.h"
#include "zrlib/zrlib.h"
#include "zrobservers/zrobservers.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/ringbuffer_sink.h>
#include <spdlog/spdlog.h>
#include <string>

namespace {

using report::AddTarget;
using report::Measure;

constexpr const char* kJsonPattern =
    R"({"time":"%Y-%m-%dT%H:%M:%S.%fZ","type":"%l","place":"%!","thread":%t,"process":%P,"text":"%v"})";
constexpr const char* kTracePattern =
    R"({"name":"%v","cat":"message","ph":"i","ts":%F,"pid":%P,"tid":%t,"args":{"type":"%l"}},)";

/// An observer that all threads of one benchmark share. The first thread turns messages on and
/// constructs the observer, and undoes both.
template <typename Observer> class Observed {
public:
    template <typename Make> Observed(const benchmark::State& state, Make make)
        : m_isFirst(state.thread_index() == 0)
    {
        if (m_isFirst) {
            ZRSetMessagesEnabled(1);
            ZRSetAllFlags(0);
            make(s_observer);
        }
    }
    ~Observed()
    {
        if (m_isFirst) {
            s_observer.reset();
            ZRSetMessagesEnabled(0);
        }
    }
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

private:
    static inline std::optional<Observer> s_observer;
    bool m_isFirst;
};

void SendMessages(benchmark::State& state)
{
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
    }
}

void RunTimers(benchmark::State& state)
{
    ZRProfilerState timed("a measured place");
    for (auto _ : state) {
        const ZRProfiler timer(&timed);
    }
}

/// For the cost of sending alone.
struct Nobody : ZRObjectObserver {
    void OnEvent(ZRObservedObjectEvent* event) override { benchmark::DoNotOptimize(event); }
};
struct NobodysMessages {
    Nobody observer;
    ZRAttachment attachment{*ZRGetMessageHandler(), observer};
};
struct NobodysTimers {
    NobodysTimers() { ZRGetProfilerStateHandler()->SetEnabled(1); }
    ~NobodysTimers() { ZRGetProfilerStateHandler()->SetEnabled(0); }
    NobodysTimers(const NobodysTimers&) = delete;
    NobodysTimers& operator=(const NobodysTimers&) = delete;

    Nobody observer;
    ZRAttachment attachment{*ZRGetProfilerStateHandler(), observer};
};

void MessageToNobody(benchmark::State& state)
{
    const Observed<NobodysMessages> observed(state, [](auto& observer) { observer.emplace(); });
    SendMessages(state);
}
void MessageToTrace(benchmark::State& state)
{
    const Observed<ZRTraceFile> observed(state, [](auto& observer) { observer.emplace(PathOf("trace.json").c_str()); });
    SendMessages(state);
}
void TimerToNobody(benchmark::State& state)
{
    const Observed<NobodysTimers> observed(state, [](auto& observer) { observer.emplace(); });
    RunTimers(state);
}
void TimerToTrace(benchmark::State& state)
{
    const Observed<ZRTraceFile> observed(state, [](auto& observer) { observer.emplace(PathOf("trace.json").c_str()); });
    RunTimers(state);
}
void TimerToTable(benchmark::State& state)
{
    const Observed<ZRProfileTable> observed(state, [](auto& observer) { observer.emplace(); });
    RunTimers(state);
}
void MessageToJsonLine(benchmark::State& state)
{
    const Observed<ZRJsonLines> observed(state, [](auto& observer) { observer.emplace(PathOf("lines.json").c_str()); });
    SendMessages(state);
    std::filesystem::remove(PathOf("lines.json"));
}
void MessageToLogLine(benchmark::State& state)
{
    setenv("HCBASE_HOME", std::filesystem::temp_directory_path().c_str(), 1);
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(ZR_DEST_FILE);
    SendMessages(state);
    ZRSetAllFlags(0);
    ZRSetMessagesEnabled(0);
    std::filesystem::remove(PathOf("zr_messages.txt"));
}
void MessageToRecorder(benchmark::State& state)
{
    ZRRecorder recorder;
    int kept = 0;
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
        if (++kept == 1000) {
            kept = 0;
            recorder.Clear();
        }
    }
}

template <typename Sink>
void LogTo(benchmark::State& state, std::shared_ptr<Sink> sink, const char* pattern, bool flushes)
{
    static std::unique_ptr<spdlog::logger> logger; // shared by all threads
    if (state.thread_index() == 0) {
        logger = std::make_unique<spdlog::logger>("benchmark", std::move(sink));
        logger->set_pattern(pattern);
        logger->flush_on(flushes ? spdlog::level::info : spdlog::level::off);
    }
    for (auto _ : state) {
        logger->info(kText);
    }
    if (state.thread_index() == 0) {
        logger.reset();
    }
}

auto FileSink(const char* name) { return std::make_shared<spdlog::sinks::basic_file_sink_mt>(PathOf(name), true); }

void SpdlogToTrace(benchmark::State& state) { LogTo(state, FileSink("spdlog.json"), kTracePattern, false); }
void SpdlogToJsonLine(benchmark::State& state) { LogTo(state, FileSink("spdlog.lines"), kJsonPattern, true); }
void SpdlogToRecorder(benchmark::State& state)
{
    LogTo(state, std::make_shared<spdlog::sinks::ringbuffer_sink_mt>(1000), "%v", false);
}

#define BY_ONE_AND_TWO(function)                                                                                       \
    BENCHMARK(function);                                                                                               \
    BENCHMARK(function)->Name(#function "ByTwo")->Threads(2)->UseRealTime()

BY_ONE_AND_TWO(MessageToNobody);
BY_ONE_AND_TWO(MessageToTrace);
BY_ONE_AND_TWO(TimerToNobody);
BY_ONE_AND_TWO(TimerToTrace);
BY_ONE_AND_TWO(SpdlogToTrace);
BY_ONE_AND_TWO(MessageToJsonLine);
BY_ONE_AND_TWO(SpdlogToJsonLine);
BENCHMARK(MessageToLogLine);
BENCHMARK(MessageToRecorder);
BENCHMARK(SpdlogToRecorder);
BENCHMARK(TimerToTable);

const AddTarget readyObserversTargets[] = {
    AddTarget({"trace of a timer, beyond sending it", Measure::kDifference, "TimerToTrace", "TimerToNobody", 250}),
    AddTarget(
        {"trace of a message, beyond sending it", Measure::kDifference, "MessageToTrace", "MessageToNobody", 250}),
    AddTarget({"trace of a timer, beyond sending it: two threads", Measure::kDifference, "TimerToTraceByTwo",
        "TimerToNobodyByTwo", 250}),
    AddTarget({"trace of a message, to spdlog to a file", Measure::kRatio, "MessageToTrace", "SpdlogToTrace", 1}),
    AddTarget({"trace of a message, to spdlog to a file: two threads", Measure::kRatio, "MessageToTraceByTwo",
        "SpdlogToTraceByTwo", 1}),
    AddTarget(
        {"JSON line, to the plain line of the log", Measure::kRatio, "MessageToJsonLine", "MessageToLogLine", 1.2}),
    AddTarget({"JSON line, to spdlog flushing a file that it keeps open", Measure::kRatio, "MessageToJsonLine",
        "SpdlogToJsonLine", 10}),
    AddTarget({"JSON line, to spdlog flushing a file that it keeps open: two threads", Measure::kRatio,
        "MessageToJsonLineByTwo", "SpdlogToJsonLineByTwo", 10}),
    AddTarget({"message to a recorder, to spdlog to a ring buffer", Measure::kRatio, "MessageToRecorder",
        "SpdlogToRecorder", 5}),
    AddTarget({"timer to a profile table", Measure::kTime, "TimerToTable", "", 1000}),
};

} // namespace
