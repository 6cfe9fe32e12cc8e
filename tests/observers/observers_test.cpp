#include "tests/observers/traces.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"
#include "zrobservers/zrobservers.h"

#include <atomic>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;
using Observers = test::Traces;

TEST_F(Observers, TraceShowsTimersAsTheyWereNested)
{
    const std::string path = m_home.Path("trace.json");
    std::optional<ZRTraceFile> trace(std::in_place, path.c_str(), ZRFilter("place!=hidden"));
    const auto run = [] {
        ZRProfilerState outer("outer");
        ZRProfilerState inner("inner \"\xC3\xA4\xFF\n");
        ZRProfilerState hidden("hidden");
        const ZRProfiler timer(&outer);
        for (ZRProfilerState* const state : {&inner, &hidden, &inner}) {
            const ZRProfiler innerTimer(state);
        }
    };
    std::thread([&run] {
#if !defined(_WIN32)
        pthread_setname_np(pthread_self(), "worker");
#endif
        run();
    }).join();
    run();
    ZRProgressEnable(1);
    {
        ZRProgressRun progress("loading", 4);
        ZRWarn("said at a half", "Map::Load", 3);
        progress.Step();
    }
    EXPECT_EQ(trace->GetEventCount(), 10);
    EXPECT_TRUE(trace->IsOpen());
    trace.reset();
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 0);

    const std::string inner = "X inner \\\"\xC3\xA4\xEF\xBF\xBD\\n";
    EXPECT_EQ(Names(path),
        (Lines{inner, inner, "X outer", inner, inner, "X outer", "b loading", "i said at a half", "C loading",
            "e loading"}));
#if !defined(_WIN32)
    const char* const truths[] = {
        R"(any(.ph == "C" and .args == {percent: 25}))",
        R"(any(.ph == "i" and .s == "t" and .args == {type: "WARNING", place: "Map::Load", level: 3, code: 0}))",
        R"(any(.ph == "i" and .tid == .pid))", // the ID that the system's tools show
        R"(any(.name == "thread_name" and .args.name == "worker" and .tid != .pid))",
        R"(map(select(.ph == "X")) | .[0].tid == .[2].tid and .[2].tid != .[3].tid)",
        R"(map(select(.ph == "X")) | all(.[0:3], .[3:6]; .[2].ts <= .[0].ts))",
        R"(map(select(.ph == "X")) | all(.[0:3], .[3:6]; .[0].ts + .[0].dur <= .[1].ts + 0.001))",
        R"(map(select(.ph == "X")) | all(.[0:3], .[3:6]; .[1].ts + .[1].dur <= .[2].ts + .[2].dur + 0.001))",
    };
    for (const char* const truth : truths) {
        EXPECT_TRUE(test::Holds(truth, path)) << truth << test::ReadFile(path);
    }
#endif
}

TEST_F(Observers, JsonLinesTakeAnyText)
{
    const std::string path = m_home.Path("lines");
    std::string text;
    std::string valid;
    for (int byte = 1; byte < 256; ++byte) {
        text += static_cast<char>(byte);
        valid += byte < 128 ? std::string(1, text.back()) : "\xEF\xBF\xBD"; // as what is above is no UTF-8
    }
    {
        ZRJsonLines lines(path.c_str(), ZRJsonLines::kMessages | ZRJsonLines::kTimers | ZRJsonLines::kProgress);
        ZR_ERROR_SET(-5, "%s\"}\n{\"forged\":true}", text.c_str());
        fs::rename(path, path + ".1");
        ZRProgressEnable(1);
        ZRProgressRun progress("run", 4);
        ZRProfilerState state("timed");
        const ZRProfiler timer(&state);
        progress.Step("text");
    }
    EXPECT_EQ(test::Lines(test::ReadFile(path + ".1")).size(), 1U);
    EXPECT_EQ(test::Lines(test::ReadFile(path)).size(), 6U);
#if !defined(_WIN32)
    const char* const message = ".text == $text and .type == \"ERROR\" and .code == -5 and .forged == null"
                                " and (.time | test(\"^[0-9]{4}-..-..T..:..:..[.][0-9]{6}Z$\"))";
    const Lines words{"-e", "--arg", "text", valid + "\"}\n{\"forged\":true}", message, path + ".1"};
    EXPECT_EQ(test::Run("/usr/bin/jq", words).output, "true\n");
    const char* const others = "[.what, .name, .title, .min, .max, .percent, .calls, .text] | map(select(. != null))";
    EXPECT_EQ(test::Run("/usr/bin/jq", {"-c", others, path}).output,
        R"(["start","run"]
["range","run",0,4]
["update","run",1,"text"]
["timed",1]
["range","run",0,100]
["end","run",100]
)");
#endif
}

TEST_F(Observers, FiltersTakeWhatFitsAllWords)
{
    const struct {
        const char* filter;
        const char* taken; // of the messages, and the timer t
    } rows[] = {
        {"", "abcdt"},
        {"warn", "bt"},
        {" error,out  level<=2", "at"},
        {"level>=3", "bcdt"},
        {"level=7", "ct"},
        {"place=Map::*", "bct"},
        {"place=*ap::L?ad place=Draw", "bd"},
        {"place!=Map::* trace", "d"},
        {"place=*", "abcdt"},
        {"place=", "a"},
    };
    const ZRProfileTable timersOn;
    const ZRRecorder recorder;
    ZROut("a", nullptr, 1);
    ZRWarn("b", "Map::Load", 3);
    ZRError("c", "Map::Check", 7);
    ZRTrace("d", "Draw", 5);
    ZRProfilerState state("Map::Time");
    std::make_unique<ZRProfiler>(&state).reset();
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
    const ZRJsonLines errors(m_home.Path("lines").c_str(), ZRJsonLines::kMessages, "error");
    ZR_OUT("not this one");
    ZR_ERROR("this one");
    EXPECT_EQ(test::Lines(test::ReadFile(m_home.Path("lines"))).size(), 1U);
}

TEST_F(Observers, ComeAndGoWhileOthersSend)
{
    constexpr int kOwners = 2;
    std::atomic<int> owners{kOwners};
    test::OnThreads(kOwners + 4, [this, &owners](int index) {
        const std::string path = m_home.Path(std::to_string(index));
        for (int turn = 0; index < kOwners && turn < 50; ++turn) {
            const ZRProfileTable profile;
            const ZRJsonLines lines((path + ".lines").c_str(), 7);
            const ZRRecorder recorder;
            ZRTraceFile trace(path.c_str());
            do { // an observer is skipped when one before it is detached during the broadcast
                ZR_OUT("of an owner");
            } while (recorder.GetEvents().empty());
            trace.Flush();
        }
        owners -= index < kOwners ? 1 : 0;
        ZRProfilerState state("sender");
        while (owners > 0) {
            const ZRProfiler timer(&state);
            ZR_OUT("sent");
            ZRProgressUpdate(1, nullptr);
        }
    });
#if !defined(_WIN32)
    for (const char* const file : {"0", "1", "0.lines", "1.lines"}) {
        EXPECT_TRUE(test::Holds(".", m_home.Path(file))) << file;
    }
#endif
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount() + ZRGetProfilerStateHandler()->GetObserverCount(), 0);
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 0);
}

TEST_F(Observers, RecorderWaits)
{
    ZRRecorder recorder;
    const auto isLast = [](const ZRObservedObjectEvent& event) { return event.GetText() == "last"; };
    EXPECT_FALSE(recorder.WaitFor(isLast, 1));
    std::thread sender([] {
        ZR_TRACE("first");
        ZR_OUT("last");
    });
    EXPECT_TRUE(recorder.WaitFor(isLast, 60'000));
    sender.join();
    EXPECT_EQ(recorder.GetMessages(ZR_MSG_TRACE).size(), 1U);
    recorder.Clear();
    EXPECT_TRUE(recorder.GetEvents().empty());
}

TEST_F(Observers, ProfileKnowsWhatIsInsideOfWhat)
{
    ZRProfileTable table;
    EXPECT_EQ(table.ToText(), "");
    ZRProfilerState outer("outer;1");
    ZRProfilerState inner("inner, \"2\"");
    const auto spin = [](int milliseconds) {
        const ZRProfiler clock;
        while (clock.GetElapsed() * 1000 < milliseconds) {}
    };
    {
        const ZRProfiler around(&outer);
        spin(2);
        const ZRProfiler inside(&inner);
        spin(5);
    }
    const ZRProfiler alone(&inner); // which still runs
    const std::string stacks = table.ToStacks().ToString();
    std::smatch times;
    ASSERT_TRUE(std::regex_match(stacks, times, std::regex("outer:1 (\\d+)\nouter:1;inner, \"2\" (\\d+)\n"))) << stacks;
    const long outside = std::stol(times[1]); // microseconds
    const long within = std::stol(times[2]);
    EXPECT_GE(outside, 2000);
    EXPECT_GE(within, 5000);
    const auto text = test::Lines(table.ToText().ToString());
    ASSERT_EQ(text.size(), 3U);
    EXPECT_TRUE(text[1].starts_with(within > outside ? "inner" : "outer")) << "most time of its own";
    EXPECT_EQ(test::Lines(table.ToText(1).ToString()).size(), 2U);
    EXPECT_NE(table.ToCsv().ToString().find("\n\"inner, \"\"2\"\"\",1,0."), std::string::npos);
}

#if !defined(_WIN32)
/// What a terminal gets for two steps with a message behind each.
std::string DrawnOnTerminal()
{
    std::fflush(stdout);
    int terminal = -1;
    if (forkpty(&terminal, nullptr, nullptr, nullptr) == 0) {
        {
            const ZRProgressBar bar(stdout);
            const ZRProgressRun run("run", 2);
            ZRSetOutFlags(ZR_DEST_CONSOLE);
            for (const int step : {1, 2}) {
                ZRProgressUpdate(step, nullptr);
                ZR_OUT("%d", step);
            }
        }
        std::exit(ZRProgressEnabled());
    }
    std::string drawn;
    for (char byte = 0; read(terminal, &byte, 1) == 1;) {
        drawn += byte;
    }
    close(terminal);
    int status = -1;
    wait(&status);
    EXPECT_EQ(status, 0) << "progress is off again";
    return drawn;
}

TEST_F(Observers, BarKeepsBelowTheMessages)
{
    const std::string wanted = "[" + std::string(25, '#') + std::string(25, ' ')
        + "]  50% 00:00 left\x1b[K\rOUT - 1\r\n\x1b[A\x1b[7C\x1b[K\r\nOUT - 2\r\n";
    std::string drawn;
    const auto isDrawn = [&] { return (drawn = DrawnOnTerminal()) == wanted; };
    EXPECT_TRUE(test::SpinUntil(isDrawn)) << "the second comes too early to be drawn, unless it is held up: " << drawn;
}

void LimitFiles(rlim_t bytes) // as a disk that is full
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(Observers, TraceSurvivesAFullDisk)
{
    const std::string path = m_home.Path("trace.json");
    std::optional<ZRTraceFile> trace(std::in_place, path.c_str());
    const auto send = [&trace](const char* text, rlim_t bytes) {
        LimitFiles(bytes);
        ZR_OUT("%s", text);
        trace->Flush();
    };
    send("one", RLIM_INFINITY);
    send("two", fs::file_size(path) + 20);
    EXPECT_FALSE(trace->IsOpen());
    send("three", RLIM_INFINITY);
    trace.reset();
    const Lines names = Names(path);
    EXPECT_EQ(names.front(), "i one");
    EXPECT_EQ(names.back(), "i three");
    EXPECT_EQ(std::count(names.begin(), names.end(), "i two"), 0);
}

TEST_F(Observers, ForkedChildKeepsItsFilesAndHasOneTrace)
{
    const std::string path = m_home.Path("trace.json");
    ZRTraceFile trace(path.c_str());
    ZR_OUT("in the parent");
    trace.Flush();
    const auto inChild = [&] {
        const std::int64_t countAtFirst = trace.GetEventCount();
        constexpr int kMostFiles = 32; // one of which has the number of the trace
        const int own = open(m_home.Path("own").c_str(), O_WRONLY | O_CREAT, 0600);
        for (int file = 3; file < kMostFiles; ++file) {
            dup2(own, file);
        }
        for (const rlim_t most : {rlim_t{0}, rlim_t{0}, RLIM_INFINITY}) {
            LimitFiles(most);
            ZR_OUT("in the child");
            trace.Flush();
        }
        bool isGood = countAtFirst == 0 && trace.IsOpen() && fs::file_size(m_home.Path("own")) == 0;
        for (int file = 3; file < kMostFiles; ++file) {
            isGood = isGood && fcntl(file, F_GETFD) >= 0;
        }
        return isGood ? 0 : 1;
    };
    EXPECT_EQ(test::ResultOfChild(inChild), 0);
    EXPECT_EQ(Names(path), (Lines{"i in the parent"}));
    const Lines others = OtherTraces();
    ASSERT_EQ(others.size(), 1U);
    const Lines names = Names(others[0]);
    EXPECT_EQ(std::count(names.begin(), names.end(), "i in the child"), 1) << "the others had no room";
}
#endif

} // namespace
