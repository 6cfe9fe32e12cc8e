#include "tests/messaging/message_fixture.h"
#include "tests/support/process.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

class LogFile : public test::Messages {
protected:
    LogFile() { ZRSetAllFlags(ZR_DEST_CONSOLE | ZR_DEST_FILE); }

    /// Sends one message that must reach the console whatever becomes of the file.
    static void SendToConsoleAtLeast(const char* text)
    {
        EXPECT_EQ(Console([text] { ZROut(text, "LogFile", 1); }), "OUT - " + std::string(text) + "\n");
    }
};

TEST_F(LogFile, IsCreatedAndThenAppendedTo)
{
    SendToConsoleAtLeast("one");
    EXPECT_EQ(m_home.Log(), "OUT - one\n");
    SendToConsoleAtLeast("two");
    fs::rename(m_home.LogPath(), m_home.Folder() + "/old");
    SendToConsoleAtLeast("three");
    EXPECT_EQ(m_home.Log(), "OUT - three\n") << "moved between two messages";
    fs::remove(m_home.LogPath());
    test::WriteFile(m_home.LogPath(), "of an earlier run\n");
    SendToConsoleAtLeast("four");
    EXPECT_EQ(m_home.Log(), "of an earlier run\nOUT - four\n");
    EXPECT_EQ(test::ReadFile(m_home.Folder() + "/old"), "OUT - one\nOUT - two\n");
}

TEST_F(LogFile, FollowsTheHomeFromMessageToMessage)
{
    const test::Home other;
    SendToConsoleAtLeast("to the other");
    EXPECT_EQ(other.Log(), "OUT - to the other\n");
    EXPECT_EQ(m_home.Log(), "");
}

TEST_F(LogFile, TakesTextsOfAnySizeAndContent)
{
    std::string huge(1'000'000, 'x');
    const std::string texts[] = {
        "", huge, "100% %s %n", "\xE2\x82\xAC\xC3\xBC", "\x01\x1B[0m\t", "two\nlines", "\xFF\xFE"};
    std::string expected;
    for (const std::string& text : texts) {
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
    constexpr int kEach = 500;
    test::WriteFile(m_home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nSendToFile = true\n");
    std::vector<std::unique_ptr<test::Process>> processes;
    for (int number = 0; number < 4; ++number) {
        processes.push_back(
            std::make_unique<test::Process>(PROBE_PROGRAM, std::vector{"storm=" + std::to_string(kEach)}));
    }
    std::atomic<bool> isOver{false};
    int moved = 0;
    const auto nameOfMoved = [this](int number) { return m_home.Folder() + "/moved" + std::to_string(number); };
    std::thread mover([&] {
        for (std::error_code error; !isOver; std::this_thread::yield()) {
            fs::rename(m_home.LogPath(), nameOfMoved(moved), error);
            moved += error ? 0 : 1;
        }
    });
    for (const auto& process : processes) {
        EXPECT_EQ(process->Wait().exitCode, 0);
    }
    isOver = true;
    mover.join();
    std::string log;
    for (int number = 0; number < moved; ++number) {
        log += test::ReadFile(nameOfMoved(number));
    }
    std::map<std::string, int> nextOfThread;
    for (const std::string& line : test::Lines(log + m_home.Log())) { // "OUT - GUID-a 17"
        ASSERT_EQ(line.rfind("OUT - ", 0), 0U) << line;
        ASSERT_GT(line.size(), 45U) << line;
        EXPECT_EQ(line.substr(45), std::to_string(nextOfThread[line.substr(6, 38)]++)) << line;
    }
    EXPECT_EQ(nextOfThread.size(), 8U);
    for (const auto& [thread, count] : nextOfThread) {
        EXPECT_EQ(count, kEach) << thread;
    }
}

TEST_F(LogFile, HoldsEveryMessageThatReturnedBeforeTheProcessWasKilled)
{
    test::WriteFile(m_home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nSendToFile = true\n");
    test::Process process(PROBE_PROGRAM, {"endless"});
    while (test::Lines(process.OutputSoFar()).size() < 200) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    process.Kill();
    const test::ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitCode, -1);
    const std::size_t returned = static_cast<std::size_t>(std::count(result.output.begin(), result.output.end(), '\n'));
    const auto lines = test::Lines(m_home.Log());
    ASSERT_GE(lines.size(), returned);
    for (std::size_t number = 0; number < returned; ++number) { // a kill can cut the write of the one after them
        EXPECT_EQ(lines[number], "OUT - endless " + std::to_string(number));
    }
}

#if !defined(_WIN32)
TEST_F(LogFile, EndsALineThatAFullDiskHasCut)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    const auto setLimit = [](rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    std::signal(SIGXFSZ, SIG_IGN); // a limit is a disk that is full
    setLimit(15);
    ZROut("one", nullptr, 1);
    errno = 77;
    ZROut("two", nullptr, 1);
    EXPECT_EQ(errno, 77);
    ZROut("three", nullptr, 1);
    setLimit(RLIM_INFINITY);
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
    std::thread foreign([&isOver] {
        while (!isOver) {
            syscall(SYS_write, STDOUT_FILENO, "foreign", 7); // the sanitiser calls write itself a race with open
        }
    });
    std::thread reader([&isOver] { // of the preferences, which opens files too
        while (!isOver) {
            const ZRMode mode;
        }
    });
    for (int line = 0; line < 999; ++line) {
        ZROut("ours", nullptr, 1);
    }
    isOver = true;
    foreign.join();
    reader.join();
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_EQ(m_home.Log().size(), 1000 * std::string("OUT - ours\n").size());
}

/// Runs the probe as a user who is not the superuser. Gives what it printed, and its complaints.
class LogOfAnotherUser : public LogFile {
protected:
    static constexpr uid_t kUser = 65534;

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
    const std::string program = m_home.Folder() + "/probe";
    fs::copy_file(PROBE_PROGRAM, program);
    ASSERT_EQ(chown(program.c_str(), kUser, kUser), 0);
    fs::permissions(program, fs::perms::all | fs::perms::set_uid);
    test::WriteFile(m_home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nSendToFile = true\n");
    const test::EnvironmentGuard home("HOME", m_home.Folder());
    const test::EnvironmentGuard settings("XDG_CONFIG_HOME", m_home.Folder());
    const test::ProcessResult result = test::Run(program, {"state", "home"});
    const passwd* const account = getpwuid(kUser);
    EXPECT_EQ(result.output,
        "messages=0 enabled=0000 flags=0,0,0,0\nhome=" + std::string(account != nullptr ? account->pw_dir : "") + "\n");
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
#endif

TEST_F(LogFile, KeepsNoDescriptorOpen)
{
#if defined(_WIN32)
    GTEST_SKIP() << "there is no list of the process's files to count";
#else
    const auto openFiles = [] {
        const fs::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    ZRSetAllFlags(ZR_DEST_FILE);
    const auto before = openFiles();
    for (int number = 0; number < 1000; ++number) {
        ZROut("text", nullptr, 1);
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(test::Lines(m_home.Log()).size(), 1000U);
#endif
}

TEST_F(LogFile, TakesMessagesOfAChildThatWasForkedWhileAnotherThreadSent)
{
#if defined(_WIN32)
    GTEST_SKIP() << "Windows has no fork";
#elif defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers' own locks do not survive fork";
#else
    ZRSetAllFlags(ZR_DEST_FILE);
    std::atomic<bool> isOver{false};
    std::thread sender([&isOver] {
        while (!isOver) {
            ZRError("of the parent", nullptr, 1);
        }
    });
    constexpr int kChildren = 50;
    for (int number = 0; number < kChildren; ++number) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(20); // ends a child that hangs
            ZRError("of a child", nullptr, 1);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status));
    }
    isOver = true;
    sender.join();
    const auto lines = test::Lines(m_home.Log());
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "ERROR - of a child"), kChildren);
#endif
}

} // namespace
