#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

class LogFile : public test::Messages {
protected:
    LogFile()
    {
        ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_FILE);
        test::WriteFile(m_home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nSendToFile = true\n");
    }

    /// Sends one message that must reach the console whatever becomes of the file.
    static void SendToConsoleAtLeast(const char* text)
    {
        EXPECT_EQ(Console([text] { ZROut(text, "LogFile", 1); }), "OUT - " + std::string(text) + "\n");
    }
};

TEST_F(LogFile, ThatCannotBeWrittenLosesNothingElse)
{
    fs::create_directory(m_home.LogPath());
    SendToConsoleAtLeast("the log is a folder");
    fs::remove(m_home.LogPath());
#if !defined(_WIN32) // which has other links and pipes
    fs::create_symlink("/dev/full", m_home.LogPath());
    SendToConsoleAtLeast("its device is full");
    fs::remove(m_home.LogPath());
    mkfifo(m_home.LogPath().c_str(), 0600);
    SendToConsoleAtLeast("it is a pipe that nobody reads");
    fs::remove(m_home.LogPath());
#endif
    SendToConsoleAtLeast("everything is well again");
    EXPECT_EQ(m_home.Log(), "OUT - everything is well again\n");
}

TEST_F(LogFile, KeepsEveryLineOfSeveralProcessesWholeThoughItIsMovedMeanwhile)
{
#if defined(_WIN32)
    if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr) {
        GTEST_SKIP() << "Wine appends in two steps, of which another process can get in between";
    }
#endif
    int moved = 0;
    const auto nameOfMoved = [this](int number) { return m_home.Path("moved" + std::to_string(number)); };
    std::jthread mover([&](const std::stop_token& end) {
        for (std::error_code error; !end.stop_requested(); std::this_thread::yield()) {
            fs::rename(m_home.LogPath(), nameOfMoved(moved), error);
            moved += error ? 0 : 1;
        }
    });
    test::OnThreads(4, [](int) { EXPECT_EQ(test::Run(PROBE_PROGRAM, {"storm=500"}).exitCode, 0); });
    mover.request_stop();
    mover.join();
    std::string log;
    for (int number = 0; number < moved; ++number) {
        log += test::ReadFile(nameOfMoved(number));
    }
    const auto lines = test::Lines(log + m_home.Log());
    EXPECT_EQ(lines.size(), 4U * 2 * 500);
    std::map<std::string, int> nextOfThread;
    for (const std::string& line : lines) { // "OUT - GUID-a 17"
        const std::string thread = line.substr(0, line.rfind(' '));
        ASSERT_EQ(line, thread + " " + std::to_string(nextOfThread[thread]++));
    }
    EXPECT_EQ(nextOfThread.size(), 8U);
}

TEST_F(LogFile, HoldsEveryMessageThatReturnedBeforeTheProcessWasKilled)
{
    test::Process process(PROBE_PROGRAM, {"endless"});
    EXPECT_TRUE(test::SpinUntil([&process] { return test::Lines(process.OutputSoFar()).size() >= 200; }));
    process.Kill();
    const test::ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitCode, -1);
    const auto returned = std::ranges::count(result.output, '\n');
    const auto lines = test::Lines(m_home.Log());
    ASSERT_GE(std::ssize(lines), returned);
    for (int number = 0; number < returned; ++number) { // a kill can cut the write of the one after them
        EXPECT_EQ(lines[static_cast<std::size_t>(number)], "OUT - endless " + std::to_string(number));
    }
}

#if !defined(_WIN32)
TEST_F(LogFile, EndsALineThatAFullDiskHasCut)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    const auto openFiles = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
    const auto openBefore = openFiles();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{15, RLIM_INFINITY}; // a limit is a disk that is full
    setrlimit(RLIMIT_FSIZE, &limit);
    ZROut("one", nullptr, 1);
    errno = 77;
    ZROut("two", nullptr, 1);
    EXPECT_EQ(errno, 77);
    ZROut("three", nullptr, 1);
    limit.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_FSIZE, &limit);
    ZROut("four", nullptr, 1);
    ZROut("five", nullptr, 1);
    EXPECT_EQ(m_home.Log(), "OUT - one\nOUT -\nOUT - four\nOUT - five\n");
    EXPECT_EQ(openFiles(), openBefore);
}

TEST_F(LogFile, LiesOnlyWhereTheUserOfTheProgramIsAtHome)
{
    constexpr uid_t kUser = 65534;
    const std::string program = m_home.Path("probe");
    fs::copy_file(PROBE_PROGRAM, program);
    if (chown(program.c_str(), kUser, kUser) != 0) {
        GTEST_SKIP() << "not the superuser, who can become somebody else";
    }
    const test::EnvironmentGuard counts("GCOV_PREFIX", m_home.Folder()); // which the other user may write
    fs::permissions(m_home.Folder(), fs::perms::all);
    const fs::path before = fs::current_path();
    fs::current_path(m_home.Folder());
    {
        const test::EnvironmentGuard ours("HCBASE_HOME", "");
        const test::EnvironmentGuard home("HOME", "");
        EXPECT_EQ(test::Run(PROBE_PROGRAM, {"user=54321", "on=8", "out=one", "out=two"}).errors,
            "hcbase: home: unknown: neither the environment nor the account has one\n");
        EXPECT_FALSE(fs::exists(m_home.LogPath())) << "nor in the current folder";
    }
    fs::current_path(before);
#if !defined(__SANITIZE_ADDRESS__) // which ends a program with more rights, whose leaks it may not look for
    fs::permissions(program, fs::perms::all | fs::perms::set_uid);
    const test::EnvironmentGuard settings("XDG_CONFIG_HOME", m_home.Folder());
    const test::EnvironmentGuard home("HOME", m_home.Folder());
    const test::ProcessResult result = test::Run(program, {"state", "home"});
    if (result.exitCode == 127) {
        GTEST_SKIP() << "other users cannot reach the libraries: " << result.errors;
    }
    EXPECT_TRUE(result.output.starts_with("messages=0 enabled=0000 flags=0,0,0,0\nhome=")) << result.output;
    EXPECT_EQ(result.output.find(m_home.Folder()), std::string::npos) << result.output;
    EXPECT_EQ(test::Run(PROBE_PROGRAM, {"state"}).output, "messages=1 enabled=1000 flags=8,8,8,8\n");
#endif
}
#endif

} // namespace
