#include "benchmarks/report.h"
#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <mutex>
#include <spdlog/details/file_helper.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

using report::AddTarget;
using report::Measure;

constexpr const char* kShortText = "a short text";

/// Sets the switches of messages for a scope.
class Messages {
public:
    Messages(char enabled, short flags)
    {
        ZRSetMessagesEnabled(enabled);
        ZRSetAllFlags(flags);
    }
    ~Messages()
    {
        ZRSetMessagesEnabled(0);
        ZRSetAllFlags(0);
    }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
};

void Text(benchmark::State& state)
{
    for (auto _ : state) {
        const HCString text(kShortText);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(Text);

void OutOff(benchmark::State& state)
{
    const Messages messages(0, 0);
    for (auto _ : state) {
        const HCString text(kShortText);
        benchmark::DoNotOptimize(text);
        ZROut(text, "Benchmark", 1);
    }
}
BENCHMARK(OutOff);
const AddTarget outOff({"ZROut, messages off, beyond building the text", Measure::kDifference, "OutOff", "Text", 4});

void LiteralOff(benchmark::State& state)
{
    const Messages messages(0, 0);
    for (auto _ : state) {
        ZROut("text", "where", 1);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(LiteralOff);
const AddTarget literalOff({"ZROut of a literal, messages off", Measure::kTime, "LiteralOff", "", 1});

void MacroOff(benchmark::State& state)
{
    const Messages messages(0, 0);
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(number);
        ZR_OUT("%d of %s", number, std::to_string(number).c_str());
    }
}
BENCHMARK(MacroOff);
const AddTarget macroOff({"ZR_OUT with dear arguments, messages off", Measure::kTime, "MacroOff", "", 1});

void MacroTypeOff(benchmark::State& state)
{
    const Messages messages(1, ZR_DEST_MSGVIEW);
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(number);
        ZR_TRACE("%d of %s", number, std::to_string(number).c_str());
    }
}
BENCHMARK(MacroTypeOff);
const AddTarget macroTypeOff({"ZR_TRACE, messages on, type off", Measure::kTime, "MacroTypeOff", "", 1});

void SpdlogOff(benchmark::State& state)
{
    spdlog::set_level(spdlog::level::off); // of the default logger, which spdlog::info uses
    for (auto _ : state) {
        spdlog::info("text");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(SpdlogOff);
const AddTarget literalToSpdlog(
    {"ZROut of a literal, messages off, to spdlog off", Measure::kRatio, "LiteralOff", "SpdlogOff", 0.4});

void OutNowhere(benchmark::State& state)
{
    const Messages messages(1, 0);
    for (auto _ : state) {
        ZROut(kShortText, "Benchmark", 1);
    }
}
BENCHMARK(OutNowhere);
const AddTarget outNowhere({"ZROut, no destination, to std::recursive_mutex: lock, unlock", Measure::kRatio,
    "OutNowhere", "RecursiveMutex", 3});

/// A temporary home directory.
class Home {
public:
    Home()
        : m_folder(std::filesystem::temp_directory_path() / ("zrlib_benchmark_" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(m_folder);
        setenv("HCBASE_HOME", m_folder.c_str(), 1);
    }
    ~Home()
    {
        unsetenv("HCBASE_HOME");
        std::filesystem::remove_all(m_folder);
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    std::string PathOf(const char* name) const { return m_folder / name; }

private:
    std::filesystem::path m_folder;
};

void OutToFile(benchmark::State& state)
{
    const Home home;
    const Messages messages(1, ZR_DEST_FILE);
    ZROut("creates the file", nullptr, 1);
    for (auto _ : state) {
        ZROut(kShortText, "Benchmark", 1);
    }
}
BENCHMARK(OutToFile);

void BareCalls(benchmark::State& state)
{
    const Home home;
    const std::string path = home.PathOf("bare.txt");
    close(open(path.c_str(), O_WRONLY | O_CREAT, 0666));
    char line[] = "OUT - a short text\n";
    for (auto _ : state) {
        const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        benchmark::DoNotOptimize(write(file, line, sizeof(line) - 1));
        close(file);
    }
}
BENCHMARK(BareCalls);
const AddTarget outToFile(
    {"ZROut to the file to bare open, write, close", Measure::kRatio, "OutToFile", "BareCalls", 1.15});

/// Opens its file for each line, so that the file may be moved.
class ReopeningSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit ReopeningSink(std::string path)
        : m_path(std::move(path))
    {
    }

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        spdlog::details::file_helper file;
        file.open(m_path);
        file.write(line);
        file.close();
    }
    void flush_() override {}

private:
    std::string m_path;
};

void SpdlogReopening(benchmark::State& state)
{
    const Home home;
    spdlog::logger logger("file", std::make_shared<ReopeningSink>(home.PathOf("spdlog.txt")));
    logger.set_pattern("OUT - %v");
    for (auto _ : state) {
        logger.info(kShortText);
    }
}
BENCHMARK(SpdlogReopening);
const AddTarget fileToSpdlog({"ZROut to the file to spdlog that opens its file for each line", Measure::kRatio,
    "OutToFile", "SpdlogReopening", 0.55});

} // namespace
