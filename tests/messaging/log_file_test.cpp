#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"

#include <algorithm>
#include <atomic>
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
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
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

TEST_F(LogFile, IsCreatedAndThenAppendedTo)
{
    SendToConsoleAtLeast("one");
    SendToConsoleAtLeast("two");
    fs::rename(m_home.LogPath(), m_home.Folder() + "/old");
    SendToConsoleAtLeast("three");
    EXPECT_EQ(m_home.Log(), "OUT - three\n") << "moved between two messages";
    test::WriteFile(m_home.LogPath(), "of an earlier run\n");
    SendToConsoleAtLeast("four");
    EXPECT_EQ(m_home.Log(), "of an earlier run\nOUT - four\n");
    EXPECT_EQ(test::ReadFile(m_home.Folder() + "/old"), "OUT - one\nOUT - two\n");
    const test::Home other;
    SendToConsoleAtLeast("");
    EXPECT_EQ(other.Log(), "OUT - \n");
}

TEST_F(LogFile, TakesTextsOfAnySizeAndContent)
{
    std::string expected;
    for (const std::string& text : {std::string(1'000'000, 'x'), std::string("100% %s %n"),
             std::string("\x01\x1B[0m\t"), std::string("two\nlines"), std::string("\xE2\x82\xAC\xFF\xFE")}) {
        SendToConsoleAtLeast(text.c_str());
        expected += "OUT - " + text + "\n";
    }
    EXPECT_EQ(m_home.Log(), expected);
}

TEST_F(LogFile, ThatCannotBeWrittenLosesNothingElse)
{
    fs::create_directory(m_home.LogPath());
    SendToConsoleAtLeast("the log is a folder");
    fs::remove(m_home.LogPath());
    {
        const test::EnvironmentGuard missing("HCBASE_HOME", m_home.Folder() + "/missing");
        SendToConsoleAtLeast("its folder is missing");
    }
#if !defined(_WIN32) // links and permissions are another matter there
    fs::create_symlink("/dev/full", m_home.LogPath());
    SendToConsoleAtLeast("its device is full");
    fs::remove(m_home.LogPath());
    fs::permissions(m_home.Folder(), fs::perms::owner_read | fs::perms::owner_exec);
    SendToConsoleAtLeast("its folder is not writable"); // the superuser may write all the same
    fs::permissions(m_home.Folder(), fs::perms::owner_all);
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
    std::atomic<bool> isOver{false};
    int moved = 0;
    const auto nameOfMoved = [this](int number) { return m_home.Folder() + "/moved" + std::to_string(number); };
    std::thread mover([&] {
        for (std::error_code error; !isOver; std::this_thread::yield()) {
            fs::rename(m_home.LogPath(), nameOfMoved(moved), error);
            moved += error ? 0 : 1;
        }
    });
    test::OnThreads(4, [](int) { EXPECT_EQ(test::Run(PROBE_PROGRAM, {"storm=500"}).exitCode, 0); });
    isOver = true;
    mover.join();
    std::string log;
    for (int number = 0; number < moved; ++number) {
        log += test::ReadFile(nameOfMoved(number));
    }
    std::map<std::string, int> nextOfThread;
    for (const std::string& line : test::Lines(log + m_home.Log())) { // "OUT - GUID-a 17"
        ASSERT_GT(line.size(), 45U) << line;
        ASSERT_EQ(line, "OUT - " + line.substr(6, 39) + std::to_string(nextOfThread[line.substr(6, 38)]++));
    }
    EXPECT_EQ(nextOfThread.size(), 8U);
    for (const auto& [thread, count] : nextOfThread) {
        EXPECT_EQ(count, 500) << thread;
    }
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
}

TEST_F(LogFile, DoesNotTakeThePlaceOfStandardOutput)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    const int output = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    ZROut("ours", nullptr, 1); // notices it
    std::atomic<bool> isOver{false};
    test::OnThreads(3, [&isOver](int thread) {
        for (int line = 0; thread == 2 && line < 999; ++line) {
            ZROut("ours", nullptr, 1);
        }
        while (thread == 1 && !isOver) {
            syscall(SYS_write, STDOUT_FILENO, "foreign", 7); // the sanitiser calls write itself a race with open
        }
        while (thread == 0 && !isOver) {
            const ZRMode mode; // reads the preferences, which opens files too
        }
        isOver = true;
    });
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_EQ(m_home.Log().size(), 1000 * std::string("OUT - ours\n").size());
}

/// For what only the superuser can try: to become another user.
class LogOfAnotherUser : public LogFile {
protected:
    void SetUp() override
    {
        fs::path folder = fs::path(ZRLIB_FILE).parent_path();
        for (; folder != folder.parent_path(); folder = folder.parent_path()) {
            if ((fs::status(folder).permissions() & fs::perms::others_exec) == fs::perms::none) {
                GTEST_SKIP() << "other users cannot reach the libraries";
            }
        }
        if (geteuid() != 0) {
            GTEST_SKIP() << "not the superuser, who can become somebody else";
        }
        fs::permissions(m_home.Folder(), fs::perms::all);
    }

private:
    const test::EnvironmentGuard m_counts{"GCOV_PREFIX", m_home.Folder()}; // which this user may write
};

TEST_F(LogOfAnotherUser, IsNotChosenByWhoeverStartsAProgramWithMoreRights)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer ends a program with more rights, whose leaks it may not look for";
#endif
    constexpr uid_t kUser = 65534;
    const std::string program = m_home.Folder() + "/probe";
    fs::copy_file(PROBE_PROGRAM, program);
    ASSERT_EQ(chown(program.c_str(), kUser, kUser), 0);
    fs::permissions(program, fs::perms::all | fs::perms::set_uid);
    const test::EnvironmentGuard home("HOME", m_home.Folder());
    const test::EnvironmentGuard settings("XDG_CONFIG_HOME", m_home.Folder());
    const passwd* const account = getpwuid(kUser);
    const std::string accountsHome = account != nullptr ? account->pw_dir : "";
    EXPECT_EQ(test::Run(program, {"state", "home"}).output,
        "messages=0 enabled=0000 flags=0,0,0,0\nhome=" + accountsHome + "\n");
    EXPECT_EQ(test::Run(PROBE_PROGRAM, {"state"}).output, "messages=1 enabled=1000 flags=8,8,8,8\n");
}

TEST_F(LogOfAnotherUser, IsLostWithOneComplaintWhenNobodyKnowsAHome)
{
    const fs::path before = fs::current_path();
    fs::current_path(m_home.Folder());
    const test::EnvironmentGuard ours("HCBASE_HOME", "");
    const test::EnvironmentGuard home("HOME", "");
    const test::ProcessResult result = test::Run(PROBE_PROGRAM, {"user=54321", "on=8", "out=one", "out=two"});
    EXPECT_EQ(result.errors, "hcbase: home: unknown: neither the environment nor the account has one\n");
    EXPECT_FALSE(fs::exists(m_home.LogPath()));
    fs::current_path(before);
}

TEST_F(LogFile, KeepsNoDescriptorOpen)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    const auto openFiles = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
    const auto before = openFiles();
    for (int number = 0; number < 100; ++number) {
        ZROut("text", nullptr, 1);
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(test::Lines(m_home.Log()).size(), 100U);
}

TEST_F(LogFile, TakesMessagesOfAChildThatWasForkedWhileAnotherThreadSent)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#endif
    ZRSetAllFlags(ZR_DEST_FILE);
    std::atomic<bool> isOver{false};
    std::thread sender([&isOver] {
        while (!isOver) {
            ZRError("of the parent", nullptr, 1);
        }
    });
    for (int child = 0; child < 50; ++child) {
        EXPECT_EQ(test::ResultOfChild([] { return ZRErrorSet(1, "of a child", nullptr, 0, 1); }), 0);
    }
    isOver = true;
    sender.join();
    EXPECT_EQ(std::ranges::count(test::Lines(m_home.Log()), "ERROR - of a child"), 50);
}
#endif

} // namespace
