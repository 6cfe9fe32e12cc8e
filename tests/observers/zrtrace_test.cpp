#include "tests/observers/traces.h"
#include "tests/support/process.h"

namespace {

using Lines = std::vector<std::string>;

class ZrTrace : public test::Traces {
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
    for (int run = 0; run < 2; ++run) {
        const std::string errors = test::Run(TRACED_PROGRAM, {"exit"}).errors;
        for (const char* word : {"word: bogus\n", "word: trace\n", "word: filter=type=none\n"}) {
            EXPECT_NE(errors.find(word), std::string::npos) << errors;
        }
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
        {R"("$0" sh -c 'echo out; exit 7'; echo $?)", "out\n7\n"},
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

} // namespace
