#include "benchmarks/report.h"
#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using report::AddTarget;
using report::Measure;

constexpr const char* kText = "a short text";

/// Sets the switches for the length of a benchmark.
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
        const HCString text(kText);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(Text);

void OutOff(benchmark::State& state)
{
    const Messages messages(0, 0);
    for (auto _ : state) {
        const HCString text(kText);
        benchmark::DoNotOptimize(text);
        ZROut(text, "Benchmark", 1);
    }
}
BENCHMARK(OutOff);
const AddTarget outOff({"ZROut, messages off, beyond building the text", Measure::kDifference, "OutOff", "Text", 4});

void OutNowhere(benchmark::State& state)
{
    const Messages messages(1, 0);
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
    }
}
BENCHMARK(OutNowhere);
const AddTarget outNowhere({"ZROut, no destination, to std::recursive_mutex: lock, unlock", Measure::kRatio,
    "OutNowhere", "RecursiveMutex", 3});

/// A home of the benchmark's own.
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
        ZROut(kText, "Benchmark", 1);
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
        struct stat status {};
        benchmark::DoNotOptimize(stat(path.c_str(), &status));
        const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        benchmark::DoNotOptimize(write(file, line, sizeof(line) - 1));
        close(file);
    }
}
BENCHMARK(BareCalls);
const AddTarget outToFile(
    {"ZROut to the file to stat, open, write, close", Measure::kRatio, "OutToFile", "BareCalls", 1.15});

} // namespace
