#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"
#include "zrobservers/zrobservers.h"

#include <atomic>
#include <filesystem>
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

class Observers : public test::Messages {
protected:
    ~Observers() override { ZRProgressEnable(0); }

    /// "phase name" of each event of a trace, in the order of the file.
    static Lines Names(const std::string& path)
    {
        const std::regex event("\\{\"name\":\"(.*)\",\"cat\":\"[a-z]+\",\"ph\":\"(.)\"");
        const std::string text = test::ReadFile(path);
        Lines names;
        for (std::sregex_iterator found(text.begin(), text.end(), event); found != std::sregex_iterator(); ++found) {
            names.push_back((*found)[2].str() + " " + (*found)[1].str());
        }
        return names;
    }

#if !defined(_WIN32)
    /// Whether jq can read a file and finds what is true in each value.
    bool Holds(const std::string& filter, const std::string& file) const
    {
        return test::Run("/usr/bin/jq", {"-e", filter, m_home.Path(file)}).exitCode == 0;
    }

    /// The traces of further processes.
    Lines OtherTraces() const
    {
        return test::Lines(test::Run("/bin/sh", {"-c", R"(ls "$0"/trace.?*.*)", m_home.Folder()}).output);
    }
#endif
};

TEST_F(Observers, TraceShowsTimersAsTheyWereNested)
{
    const std::string path = m_home.Path("trace.json");
    std::optional<ZRTraceFile> trace(std::in_place, path.c_str(), ZRFilter("place!=hidden"));
    ZRProgressEnable(1);
    test::OnThreads(1, [](int /*index*/) {
#if !defined(_WIN32)
        pthread_setname_np(pthread_self(), "worker");
#endif
        ZRProfilerState outer("outer");
        ZRProfilerState inner("inner \"\xC3\xA4\xFF\n");
        ZRProfilerState hidden("hidden");
        const ZRProfiler timer(&outer);
        for (ZRProfilerState* const state : {&inner, &hidden, &inner}) {
            const ZRProfiler innerTimer(state);
        }
    });
    {
        ZRProgressRun progress("loading", 4);
        ZRWarn("said at a half", "Map::Load", 3);
        progress.Step();
    }
    EXPECT_EQ(trace->GetEventCount(), 7);
    EXPECT_TRUE(trace->IsOpen());
    trace.reset();
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 0);

    const std::string inner = "X inner \\\"\xC3\xA4\xEF\xBF\xBD\\n";
    EXPECT_EQ(Names(path), (Lines{inner, inner, "X outer", "b loading", "i said at a half", "C loading", "e loading"}));
#if !defined(_WIN32)
    const char* const truths[] = {
        R"(any(.ph == "C" and .args == {percent: 25}))",
        R"(any(.ph == "i" and .s == "t" and .args == {type: "WARNING", place: "Map::Load", level: 3, code: 0}))",
        R"(any(.ph == "i" and .tid == .pid))", // the ID that the system's tools show
        R"((.[] | select(.name == "thread_name" and .args.name == "worker").tid) as $worker
            | all(.[] | select(.ph == "X"); .tid == $worker and .tid != .pid))",
        R"(map(select(.ph == "X")) | .[2].ts <= .[0].ts and .[0].ts + .[0].dur <= .[1].ts + 0.001)",
        R"(map(select(.ph == "X")) | .[1].ts + .[1].dur <= .[2].ts + .[2].dur + 0.001)",
    };
    for (const char* const truth : truths) {
        EXPECT_TRUE(Holds(truth, "trace.json")) << truth << test::ReadFile(path);
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
        const int all = ZRJsonLines::kMessages | ZRJsonLines::kTimers | ZRJsonLines::kProgress;
        const fs::path before = fs::current_path();
        fs::current_path(m_home.Folder());
        const ZRJsonLines lines("lines", all, "place!=hidden");
        fs::current_path(before);
        ZR_ERROR_SET(-5, "%s\"}\n{\"forged\":true}", text.c_str());
        ZROut("hidden", "hidden", 1);
        fs::rename(path, path + ".1");
        ZRProgressEnable(1);
        ZRProgressRun progress("run", 4);
        ZRProfilerState timed("timed");
        ZRProfilerState hidden("hidden");
        const ZRProfiler timer(&timed);
        const ZRProfiler hiddenTimer(&hidden);
        progress.Step("text");
    }
    EXPECT_EQ(test::Lines(test::ReadFile(path + ".1")).size(), 1U);
#if !defined(_WIN32)
    const char* const message = ".text == $text and .type == \"ERROR\" and .code == -5 and .forged == null"
                                " and (.time | test(\"^[0-9]{4}-..-..T..:..:..[.][0-9]{6}Z$\"))";
    const Lines words{"-e", "--arg", "text", valid + "\"}\n{\"forged\":true}", message, path + ".1"};
    EXPECT_EQ(test::Run("/usr/bin/jq", words).output, "true\n");
    const char* const others = "map([.what, .name, .title, .min, .max, .percent, .calls, .text | select(. != null)])";
    EXPECT_EQ(test::Run("/usr/bin/jq", {"-cs", others, path}).output,
        R"([["start","run"],["range","run",0,4],["update","run",1,"text"],["timed",1],)"
        R"(["range","run",0,100],["end","run",100]])"
        "\n");
#endif
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
        EXPECT_TRUE(Holds(".", file)) << file;
    }
#endif
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount() + ZRGetProfilerStateHandler()->GetObserverCount(), 0);
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 0);
}

TEST_F(Observers, ProfileKnowsWhatIsInsideOfWhat)
{
    ZRProfileTable table;
    EXPECT_EQ(table.ToText(), "");
    ZRProfilerState outer("outer;1");
    ZRProfilerState within("within, \"2\"");
    {
        const ZRProfiler around(&outer);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const ZRProfiler inside(&within);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    const ZRProfiler alone(&within); // which still runs
    const std::string stacks = table.ToStacks().ToString();
    std::smatch times; // in microseconds
    ASSERT_TRUE(std::regex_match(stacks, times, std::regex("outer:1 (\\d+)\nouter:1;within, \"2\" (\\d+)\n")))
        << stacks;
    EXPECT_GT(std::stol(times[1]), 1000);
    EXPECT_GT(std::stol(times[2]), 40'000);
    const std::string text = table.ToText().ToString();
    const bool isMostInside = std::stol(times[2]) > std::stol(times[1]); // unless the machine was very busy
    EXPECT_EQ(text.find("\nwithin") < text.find("\nouter"), isMostInside) << text;
    EXPECT_EQ(test::Lines(table.ToText(1).ToString()).size(), 2U);
    EXPECT_NE(table.ToCsv().ToString().find("\n\"within, \"\"2\"\"\",1,0."), std::string::npos);
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
                ZR_OUT("%d\nmore", step);
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
        + "]  50% 00:00 left\x1b[K\rOUT - 1\r\nmore\r\n\x1b[2AOUT - 1\x1b[K\x1b[2B\rOUT - 2\r\nmore\r\n";
    std::string drawn;
    const auto isDrawn = [&] { return (drawn = DrawnOnTerminal()) == wanted; };
    EXPECT_TRUE(test::SpinUntil(isDrawn)) << "the second comes too early to be drawn, unless it is held up: " << drawn;
}

TEST_F(Observers, ForkedChildHasATraceOfItsOwnAlsoWhenTheDiskWasFull)
{
    const std::string path = m_home.Path("trace.json");
    ZRTraceFile trace(path.c_str());
    ZR_OUT("in the parent");
    trace.Flush();
    const auto send = [&trace](const char* text, rlim_t most) {
        const rlimit limit{most, RLIM_INFINITY}; // as a disk that is full
        setrlimit(RLIMIT_FSIZE, &limit);
        ZR_OUT("%s", text);
        trace.Flush();
        return trace.IsOpen();
    };
    const auto inChild = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        constexpr int kMostFiles = 32; // one of which has the number of the trace
        const int own = open(m_home.Path("own").c_str(), O_WRONLY | O_CREAT, 0600);
        for (int file = 3; file < kMostFiles; ++file) {
            dup2(own, file);
        }
        const std::string childs = m_home.Path("trace." + std::to_string(getpid()) + ".json");
        bool isGood = trace.GetEventCount() == 0 && !send("lost", 0) && send("one", RLIM_INFINITY);
        isGood = isGood && !send("lost", fs::file_size(childs) + 20) && send("two", RLIM_INFINITY);
        isGood = isGood && fs::file_size(m_home.Path("own")) == 0;
        for (int file = 3; file < kMostFiles; ++file) {
            isGood = isGood && fcntl(file, F_GETFD) >= 0;
        }
        return isGood ? 0 : 1;
    };
    EXPECT_EQ(test::ResultOfChild(inChild), 0);
    EXPECT_EQ(Names(path), (Lines{"i in the parent"}));
    ASSERT_EQ(OtherTraces().size(), 1U);
    Lines names = Names(OtherTraces()[0]);
    std::erase_if(names, [](const std::string& name) { return name.ends_with("File too large"); });
    EXPECT_EQ(names, (Lines{"i one", "i two"}));
}

class ZrTrace : public Observers {
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "The sanitizer's library takes no library preloaded before it";
#endif
    }
};

TEST_F(ZrTrace, LeavesProgramsAlone)
{
    const struct {
        Lines words;
        int exitCode;
        const char* said;
        Lines trace;
    } cases[] = {
        {{TRACED_PROGRAM, "exit"}, 7, ": 2 events, traced in ", {"i at first", "X Work"}},
        {{TRACED_PROGRAM, "kill"}, -1, "ended before it could sum up", {"i at first", "X Work"}},
        {{TRACED_PROGRAM, "fork"}, 0, ": 4 events", {"i at first", "X Work", "i in the parent", "X Work"}},
        {{"--filter", "warn", "--profile", "--progress", TRACED_PROGRAM, "exit"}, 7, "\nWork  ", {"X Work"}},
        {{"--", LATE_PROGRAM, ZRLIB_FILE}, 0, ": 1 events", {"i late"}},
        // When no program has been started the trace that is there stays.
        {{"no such program"}, 127, "No such file", {"i late"}},
        {{"/"}, 126, "denied", {"i late"}},
        {{"--help"}, 0, "Usage: zrtrace", {"i late"}},
        {{}, 125, "no program", {"i late"}},
        {{"--unknown", "true"}, 125, "unknown option --unknown", {"i late"}},
        {{"--json"}, 125, "--json needs a file", {"i late"}},
        {{"--trace", "", "true"}, 125, "not a name of a file for --trace: ''", {"i late"}},
        {{"--json", "a;b", "true"}, 125, "not a name of a file for --json: 'a;b'", {"i late"}},
        {{"--trace", "/dev/null", "true"}, 125, "/dev/null is not a regular file", {"i late"}},
        {{"--trace", "b", "true"}, 125, "--trace is given twice", {"i late"}},
        {{"--filter"}, 125, "--filter needs a text", {"i late"}},
        {{"--filter", "a;b", "true"}, 125, "--filter needs a text", {"i late"}},
        {{"sh", "-c", "exit 3"}, 3, "nothing came from sh: ", {}},
        {{"sh", "-c", "kill $$"}, -1, "before signal 15", {}},
    };
    for (const auto& one : cases) {
        Lines words{"--trace", m_home.Path("trace.json"), "--json", m_home.Path("lines")};
        words.insert(words.end(), one.words.begin(), one.words.end());
        const auto result = test::Run(ZRTRACE_PROGRAM, words);
        EXPECT_EQ(result.exitCode, one.exitCode) << one.said;
        EXPECT_NE((result.output + result.errors).find(one.said), std::string::npos) << result.errors << one.said;
        EXPECT_EQ(Names(m_home.Path("trace.json")), one.trace) << one.said;
    }
    ASSERT_EQ(OtherTraces().size(), 1U);
    EXPECT_EQ(Names(OtherTraces()[0]), (Lines{"i in the child", "X Work"}));
    EXPECT_EQ(test::Lines(test::ReadFile(m_home.Path("lines"))).size(), 6U);
    const auto lost = test::Run(ZRTRACE_PROGRAM, {"--trace", m_home.Path("missing/trace"), TRACED_PROGRAM, "exit"});
    EXPECT_NE(lost.errors.find("could not be written"), std::string::npos) << lost.errors;
}

TEST_F(ZrTrace, IsNotNeededForObserversOfTheEnvironment)
{
    const std::string csv = m_home.Path("profile.csv");
    const test::EnvironmentGuard words("ZROBSERVERS",
        "bogus;trace;profile=" + csv + ";profile=second;stacks=" + m_home.Path("stacks")
            + ";filter=type=none;progress");
    const test::EnvironmentGuard library("LD_PRELOAD", ZROBSERVERS_FILE);
    test::Run(TRACED_PROGRAM, {"exit"});
    const std::string errors = test::Run(TRACED_PROGRAM, {"exit"}).errors;
    for (const char* word : {"word: bogus\n", "word: trace\n", "word: filter=type=none\n"}) {
        EXPECT_NE(errors.find(word), std::string::npos) << errors;
    }
    EXPECT_EQ(test::Lines(test::ReadFile(csv)).size(), 3U) << "the names of the columns come once";
    EXPECT_TRUE(test::ReadFile(m_home.Path("stacks")).starts_with("Work "));
}

TEST_F(ZrTrace, EndsAsTheProgramEnds)
{
    const struct {
        const char* script;
        const char* output;
    } cases[] = {
        {R"(trap '' CHLD; (exec "$0" sh -c 'echo out; exit 7'); echo $?)", "out\n7\n"},
        {R"("$0" sh -c 'sleep 0.2; exit 7' 2>&- | cat; echo ${PIPESTATUS[0]})", "7\n"},
        {R"("$0" bash -c 'trap "exit 42" ALRM; echo on; while :; do sleep 0.05; done' | {
            read on; pkill -ALRM -x zrtrace -P $$; cat; }; echo ${PIPESTATUS[0]})",
            "42\n"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(test::Run("/bin/bash", {"-c", one.script, ZRTRACE_PROGRAM}).output, one.output) << one.script;
    }
}

#endif

} // namespace
