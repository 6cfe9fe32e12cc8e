#include "tests/messaging/message_fixture.h"
#include "tests/support/process.h"
#include "zrobservers/zrobservers.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <optional>
#include <rapidjson/document.h>
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

    std::string PathOf(const char* name) const { return m_home.Folder() + "/" + name; }

    /// The events of a trace; what a killed process has left is closed first. Null when it is not one.
    static rapidjson::Document Events(const std::string& path)
    {
        std::string text = test::ReadFile(path);
        text += !text.empty() && text.back() == '}' ? "]" : "";
        rapidjson::Document events;
        events.Parse(text.c_str());
        if (!events.IsArray()) {
            events.SetArray();
        }
        return events;
    }

    /// "phase name", in the order of the file.
    static Lines Names(const rapidjson::Document& events)
    {
        Lines names;
        for (const auto& event : events.GetArray()) {
            if (*event["ph"].GetString() != 'M') {
                names.push_back(std::string(event["ph"].GetString()) + " " + event["name"].GetString());
            }
        }
        return names;
    }

#if !defined(_WIN32)
    /// What a further process has traced.
    Lines NamesOfOther() const
    {
        for (const auto& entry : fs::directory_iterator(m_home.Folder())) {
            const std::string name = entry.path().filename();
            if (name.rfind("trace.", 0) == 0 && name != "trace.json") {
                return Names(Events(entry.path()));
            }
        }
        return {};
    }
#endif
};

TEST_F(Observers, TraceShowsTimersAsTheyWereNested)
{
    const std::string path = PathOf("trace.json");
    std::optional<ZRTraceFile> trace(std::in_place, path.c_str());
    const auto run = [] {
        ZRProfilerState outer("outer");
        const ZRProfiler timer(&outer);
        ZRProfilerState inner("inner \"\xC3\xA4\xFF\n");
        for (int turn = 0; turn < 2; ++turn) {
            const ZRProfiler innerTimer(&inner);
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
        ZR_WARN_AT(3, "said at a half");
        progress.Step();
    }
    EXPECT_EQ(trace->GetEventCount(), 10);
    EXPECT_TRUE(trace->IsOpen());
    trace.reset();
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 0);

    const rapidjson::Document events = Events(path);
    const std::string inner = "X inner \"\xC3\xA4\xEF\xBF\xBD\n";
    EXPECT_EQ(Names(events),
        (Lines{inner, inner, "X outer", inner, inner, "X outer", "b loading", "i said at a half", "C loading",
            "e loading"}));
    std::map<int, std::vector<const rapidjson::Value*>> timers; // by thread
    for (const auto& event : events.GetArray()) {
        if (*event["ph"].GetString() == 'X') {
            timers[event["tid"].GetInt()].push_back(&event);
        } else if (*event["ph"].GetString() == 'C') {
            EXPECT_EQ(event["args"]["percent"].GetInt(), 25);
        } else if (*event["ph"].GetString() == 'i') {
            EXPECT_STREQ(event["args"]["type"].GetString(), "WARNING");
            EXPECT_EQ(event["args"]["level"].GetInt(), 3);
#if !defined(_WIN32)
            EXPECT_EQ(event["tid"].GetInt(), getpid()) << "the ID that the system's tools show";
        } else if (event["name"] == "thread_name" && event["tid"].GetInt() != getpid()) {
            EXPECT_STREQ(event["args"]["name"].GetString(), "worker");
#endif
        }
    }
    ASSERT_EQ(timers.size(), 2U);
    for (const auto& timersOfThread : timers) {
        const auto& runs = timersOfThread.second;
        const auto start = [&runs](std::size_t index) { return (*runs[index])["ts"].GetDouble(); };
        const auto end = [&](std::size_t index) { return start(index) + (*runs[index])["dur"].GetDouble(); };
        EXPECT_LE(start(2), start(0));
        EXPECT_LE(end(0), start(1) + 0.001) << "microseconds";
        EXPECT_LE(end(1), end(2) + 0.001);
    }
}

TEST_F(Observers, SayOnceThatTheyCannotWriteAndGoOnLater)
{
    const ZRRecorder errors;
    const std::string path = PathOf("missing/file");
    ZRTraceFile trace(path.c_str());
    const ZRJsonLines lines(path.c_str());
    ZR_OUT("lost");
    trace.Flush();
    EXPECT_FALSE(trace.IsOpen() || lines.IsOpen());
    EXPECT_EQ(errors.GetMessages(ZR_MSG_ERROR).size(), 2U);
    fs::create_directory(PathOf("missing"));
    ZR_OUT("written");
    EXPECT_TRUE(lines.IsOpen());
    EXPECT_NE(test::ReadFile(path).find("\"written\""), std::string::npos);
    fs::remove(path);
    ZR_OUT("written too");
    trace.Flush();
    EXPECT_TRUE(trace.IsOpen());
    EXPECT_EQ(errors.GetMessages(ZR_MSG_ERROR).size(), 2U);
}

TEST_F(Observers, JsonLinesTakeAnyText)
{
    const std::string path = PathOf("lines");
    std::string text;
    for (int byte = 1; byte < 256; ++byte) { // what is above 127 is no UTF-8
        text += static_cast<char>(byte);
    }
    {
        ZRJsonLines lines(path.c_str(), ZRJsonLines::kMessages | ZRJsonLines::kTimers | ZRJsonLines::kProgress);
        ZR_ERROR_SET(-5, "%s\"}\n{\"forged\":true}", text.c_str());
        fs::rename(path, path + ".1");
        ZRProgressEnable(1);
        const ZRProgressRun progress("run");
        ZRProfilerState state("timed");
        const ZRProfiler timer(&state);
    }
    const auto log = test::Lines(test::ReadFile(path + ".1"));
    ASSERT_EQ(log.size(), 1U);
    rapidjson::Document line;
    ASSERT_FALSE(line.Parse(log[0].c_str()).HasParseError());
    EXPECT_EQ(std::string(line["text"].GetString()).substr(0, 127), text.substr(0, 127));
    EXPECT_EQ(line["code"].GetInt(), -5);
    EXPECT_EQ(std::string(line["time"].GetString()).size(), std::string("2026-11-23T20:15:02.123456Z").size());
    EXPECT_EQ(test::Lines(test::ReadFile(path)).size(), 5U); // start, range, timer, range, end
#if !defined(_WIN32)
    const std::string filter = "select((.text|test(\"\\ufffd\")) and .type==\"ERROR\")|.forged";
    EXPECT_EQ(test::Run("/usr/bin/jq", {filter, path + ".1"}).output, "null\n");
    EXPECT_EQ(test::Run("/usr/bin/jq", {"-e", ".", path}).exitCode, 0);
#endif
}

TEST_F(Observers, FiltersTakeWhatFitsAllWords)
{
    const struct {
        const char* filter;
        const char* taken; // of the messages below
    } rows[] = {
        {"", "abcd"},
        {"warn", "b"},
        {" error,out  level<=2", "a"},
        {"level>=3", "bcd"},
        {"level=7", "c"},
        {"place=Map::*", "bc"},
        {"place=*ap::L?ad place=Draw", "bd"},
        {"place!=Map::* trace", "d"},
        {"place=*", "abcd"},
        {"place=", "a"},
    };
    for (const auto& row : rows) {
        const ZRRecorder recorder;
        const ZRFilter filter(row.filter);
        EXPECT_TRUE(filter.IsGood()) << row.filter;
        ZROut("a", nullptr, 1);
        ZRWarn("b", "Map::Load", 3);
        ZRError("c", "Map::Check", 7);
        ZRTrace("d", "Draw", 5);
        std::string taken;
        for (const ZRMsg& message : recorder.GetMessages()) {
            taken += filter.Takes(message) ? message.GetText() : "";
        }
        EXPECT_EQ(taken, row.taken) << row.filter;
    }
    for (const char* const bad : {"level<=x", "level=", "warning", "warn,trace,", "place"}) {
        EXPECT_EQ(ZRFilter(bad).IsGood(), std::string(bad) == "warn,trace,") << bad;
    }
    const ZRJsonLines errors(PathOf("lines").c_str(), ZRJsonLines::kMessages, "error");
    ZR_OUT("not this one");
    ZR_ERROR("this one");
    EXPECT_EQ(test::Lines(test::ReadFile(PathOf("lines"))).size(), 1U);
}

TEST_F(Observers, ComeAndGoWhileOthersSend)
{
    ZRSetMessagesEnabled(1);
    std::atomic<bool> isOver{false};
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 4; ++sender) {
        senders.emplace_back([&isOver] {
            ZRProfilerState state("sender");
            while (!isOver) {
                const ZRProfiler timer(&state);
                ZR_OUT("sent");
                ZRProgressUpdate(1, nullptr);
            }
        });
    }
    std::vector<std::thread> owners;
    for (const char* const name : {"one", "two"}) {
        owners.emplace_back([this, name] {
            for (int turn = 0; turn < 50; ++turn) {
                const ZRProfileTable profile;
                const ZRJsonLines lines(PathOf((std::string(name) + ".lines").c_str()).c_str(), 7);
                const ZRRecorder recorder;
                {
                    ZRTraceFile trace(PathOf(name).c_str());
                    do { // an observer is skipped when one before it is detached during the broadcast
                        ZR_OUT("%s", name);
                    } while (recorder.GetEvents().empty());
                    trace.Flush();
                }
                EXPECT_NE(Events(PathOf(name)).Size(), 0U);
            }
        });
    }
    for (std::thread& owner : owners) {
        owner.join();
    }
    isOver = true;
    for (std::thread& sender : senders) {
        sender.join();
    }
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
    EXPECT_STREQ(recorder.GetMessages(ZR_MSG_OUT).at(0).GetLocation(), "Observers_RecorderWaits_Test::TestBody");
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
    const auto stacks = test::Lines(static_cast<const char*>(table.ToStacks()));
    ASSERT_EQ(stacks.size(), 2U);
    EXPECT_EQ(stacks[0].rfind("outer:1 ", 0) + stacks[1].rfind("outer:1;inner, \"2\" ", 0), 0U);
    const long outside = std::stol(stacks[0].substr(8)); // microseconds
    const long within = std::stol(stacks[1].substr(19));
    EXPECT_GE(outside, 2000);
    EXPECT_GE(within, 5000);
    const auto text = test::Lines(static_cast<const char*>(table.ToText()));
    ASSERT_EQ(text.size(), 3U);
    EXPECT_EQ(text[1].rfind(within > outside ? "inner" : "outer", 0), 0U) << "most time of its own";
    EXPECT_EQ(test::Lines(static_cast<const char*>(table.ToText(1))).size(), 2U);
    EXPECT_NE(table.ToCsv().ToString().find("\n\"inner, \"\"2\"\"\",1,0."), std::string::npos);
}

#if !defined(_WIN32)
/// What a terminal gets for two steps with a message behind each.
std::string DrawnOnTerminal()
{
    int terminal = -1;
    int end = -1;
    EXPECT_EQ(openpty(&terminal, &end, nullptr, nullptr, nullptr), 0);
    std::FILE* const stream = fdopen(end, "w");
    const int output = dup(STDOUT_FILENO);
    dup2(end, STDOUT_FILENO);
    {
        const ZRProgressBar bar(stream);
        const ZRProgressRun run("run", 2);
        ZRSetOutFlags(ZR_DEST_CONSOLE);
        for (const char* const text : {"a", "b"}) {
            const HCString name(text);
            ZRProgressUpdate(text[0] - 'a' + 1, nullptr);
            ZROut(name, nullptr, 1);
        }
    }
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);
    close(output);
    std::fclose(stream);
    std::string drawn;
    for (char byte = 0; read(terminal, &byte, 1) == 1;) {
        drawn += byte;
    }
    close(terminal);
    return drawn;
}

TEST_F(Observers, BarKeepsBelowTheMessages)
{
    using Clock = std::chrono::steady_clock;
    std::string drawn;
    Clock::time_point start;
    do { // until nothing has held up the two steps
        start = Clock::now();
        drawn = DrawnOnTerminal();
    } while (Clock::now() - start >= std::chrono::milliseconds(100));
    const std::string half = "[" + std::string(25, '#') + std::string(25, ' ') + "]  50% 00:00 left\x1b[K\r";
    EXPECT_EQ(drawn, half + "OUT - a\r\n\x1b[A\x1b[7C\x1b[K\r\nOUT - b\r\n")
        << "the second comes too early to be drawn";
    EXPECT_EQ(ZRProgressEnabled(), 0);
}

TEST_F(Observers, TraceSurvivesAFullDisk)
{
    std::signal(SIGXFSZ, SIG_IGN); // a limit is a disk that is full
    const std::string path = PathOf("trace.json");
    std::optional<ZRTraceFile> trace(std::in_place, path.c_str());
    const auto send = [&trace](const char* text, rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
        ZR_OUT("%s", text);
        trace->Flush();
    };
    send("one", RLIM_INFINITY);
    send("two", fs::file_size(path) + 20);
    EXPECT_FALSE(trace->IsOpen());
    send("three", RLIM_INFINITY);
    trace.reset();
    const Lines names = Names(Events(path));
    EXPECT_EQ(names.front(), "i one");
    EXPECT_EQ(names.back(), "i three");
    EXPECT_EQ(std::count(names.begin(), names.end(), "i two"), 0);
}

TEST_F(Observers, ForkedChildKeepsItsFilesAndHasOneTrace)
{
    const std::string path = PathOf("trace.json");
    ZRTraceFile trace(path.c_str());
    ZR_OUT("in the parent");
    trace.Flush();
    const pid_t child = fork();
    if (child == 0) {
        bool isGood = trace.GetEventCount() == 0;
        constexpr int kMostFiles = 32; // one of which has the number of the trace
        for (int file = 3; file < kMostFiles; ++file) {
            close(file);
        }
        const int own = open(PathOf("own").c_str(), O_WRONLY | O_CREAT, 0600);
        for (int file = 3; file < kMostFiles; ++file) {
            dup2(own, file);
        }
        std::signal(SIGXFSZ, SIG_IGN);
        for (const rlim_t most : {rlim_t{0}, rlim_t{0}, RLIM_INFINITY}) {
            const rlimit limit{most, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limit);
            ZR_OUT("in the child");
            trace.Flush();
        }
        for (int file = 3; file < kMostFiles; ++file) {
            isGood = isGood && fcntl(file, F_GETFD) >= 0;
        }
        _exit(isGood && fs::file_size(PathOf("own")) == 0 && trace.IsOpen() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Names(Events(path)), (Lines{"i in the parent"}));
    const Lines names = NamesOfOther();
    EXPECT_EQ(std::count(names.begin(), names.end(), "i in the child"), 1) << "the others had no room";
    const fs::directory_iterator files(m_home.Folder());
    EXPECT_EQ(std::count_if(begin(files), end(files),
                  [](const auto& file) { return file.path().filename().string().rfind("trace.", 0) == 0; }),
        2);
}

class ZrTrace : public Observers {
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "The sanitizer's library takes no library preloaded before it";
#endif
    }
    test::ProcessResult Trace(std::vector<std::string> words)
    {
        std::vector<std::string> all{"--trace", PathOf("trace.json"), "--json", PathOf("lines")};
        all.insert(all.end(), words.begin(), words.end());
        return test::Run(ZRTRACE_PROGRAM, all);
    }
};

TEST_F(ZrTrace, LeavesProgramsAlone)
{
    const auto exits = Trace({TRACED_PROGRAM, "exit"});
    EXPECT_EQ(exits.exitCode, 7);
    EXPECT_EQ(exits.output, "");
    EXPECT_NE(exits.errors.find("2 events"), std::string::npos) << exits.errors;
    EXPECT_EQ(Names(Events(PathOf("trace.json"))), (Lines{"i at first", "X Work"}));

    EXPECT_EQ(Trace({TRACED_PROGRAM, "kill"}).exitCode, -1);
    EXPECT_EQ(Names(Events(PathOf("trace.json"))), (Lines{"i at first", "X Work"}));

    Trace({TRACED_PROGRAM, "fork"});
    EXPECT_EQ(Names(Events(PathOf("trace.json"))), (Lines{"i at first", "X Work", "i in the parent", "X Work"}));
    EXPECT_EQ(NamesOfOther(), (Lines{"i in the child", "X Work"}));

    const auto late = Trace({LATE_PROGRAM, ZRLIB_FILE});
    EXPECT_EQ(late.exitCode, 0);
    EXPECT_EQ(Names(Events(PathOf("trace.json"))), (Lines{"i late"}));

    EXPECT_EQ(Trace({"no such program"}).exitCode, 127);
    EXPECT_EQ(Names(Events(PathOf("trace.json"))), (Lines{"i late"})) << "which is still there";

    const auto foreign = Trace({"sh", "-c", "echo out; exit 3"});
    EXPECT_EQ(foreign.exitCode, 3);
    EXPECT_EQ(foreign.output, "out\n");
    EXPECT_NE(foreign.errors.find("nothing came from sh"), std::string::npos);
    EXPECT_NE(Trace({"sh", "-c", "kill $$"}).errors.find("before signal 15"), std::string::npos);
    EXPECT_EQ(test::Run(ZRTRACE_PROGRAM, {"--", "true"}).exitCode, 0);
    EXPECT_EQ(test::Run(ZRTRACE_PROGRAM, {"--help"}).exitCode, 0);
    for (const Lines& wrong : {Lines{}, {"--unknown"}, {"--trace"}, {"--trace", ""}, {"--trace", "/dev/null", "true"},
             {"--trace", "a", "--trace", "b", "true"}, {"--filter", "a;b", "true"}}) {
        EXPECT_EQ(test::Run(ZRTRACE_PROGRAM, wrong).exitCode, 125);
    }
    const auto lost = test::Run(ZRTRACE_PROGRAM, {"--trace", PathOf("missing/trace"), TRACED_PROGRAM, "exit"});
    EXPECT_NE(lost.errors.find("could not be written"), std::string::npos) << lost.errors;
}

TEST_F(ZrTrace, IsNotNeededForObserversOfTheEnvironment)
{
    const std::string csv = PathOf("profile.csv");
    const test::EnvironmentGuard words("ZROBSERVERS",
        "bogus;trace;profile=" + csv + ";profile=second;stacks=" + PathOf("stacks") + ";filter=type=none;progress");
    const test::EnvironmentGuard library("LD_PRELOAD", ZROBSERVERS_FILE);
    for (int run = 0; run < 2; ++run) {
        const std::string errors = test::Run(TRACED_PROGRAM, {"exit"}).errors;
        for (const char* word : {"word: bogus\n", "word: trace\n", "word: filter=type=none\n"}) {
            EXPECT_NE(errors.find(word), std::string::npos) << errors;
        }
    }
    EXPECT_EQ(test::Lines(test::ReadFile(csv)).size(), 3U) << "the names of the columns come once";
    EXPECT_EQ(test::ReadFile(PathOf("stacks")).find("Work "), 0U);
}

TEST_F(ZrTrace, EndsAsTheProgramEnds)
{
    const struct {
        const char* script;
        const char* output;
    } cases[] = {
        {R"(trap '' CHLD; (exec "$0" sh -c 'exit 7'); echo $?)", "7\n"},
        {R"("$0" sh -c 'sleep 0.2; exit 7' 2>&- | cat; echo ${PIPESTATUS[0]})", "7\n"},
        {R"("$0" bash -c 'trap "exit 42" ALRM; echo on; while :; do sleep 0.05; done' | {
            read on; pkill -ALRM -x zrtrace -P $$; cat; }; echo ${PIPESTATUS[0]})",
            "42\n"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(test::Run("/bin/bash", {"-c", one.script, ZRTRACE_PROGRAM}).output, one.output) << one.script;
    }
}

#if defined(SURVEY_PROGRAM)
TEST_F(ZrTrace, ShowsWhereTheTimeOfAProgramWent)
{
    const auto result =
        Trace({"--profile", "--progress", SURVEY_PROGRAM, "--threads", "4", SOURCE_FOLDER + std::string("/zrlib")});
    EXPECT_NE(result.errors.find("\nread "), std::string::npos) << result.errors;
    EXPECT_EQ(
        test::Run("/usr/bin/jq", {"-e", "map(select(.name==\"count\" and .dur>0))|length>50", PathOf("trace.json")})
            .exitCode,
        0);
}
#endif
#endif

} // namespace
