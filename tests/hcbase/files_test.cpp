#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "hcbase/text_io.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "tests/support/threads.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
protected:
    test::Home m_home;
    const HCString m_path = (m_home.Folder() + "/text \xC3\xBC.txt").c_str();
    const fs::path m_systemPath = fs::path(m_home.Folder()) / u8"text \u00FC.txt"; // the same
};

TEST_F(Files, BuildsNamesWithOneSeparatorAndOneDot)
{
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        // clang-format off: with | for the system's separator
        {"/a/b", "log", "txt", "/a/b|log.txt"}, {"/a/b/", "log", "txt", "/a/b|log.txt"},
        {"/a/b//", "/log", "txt", "/a/b|log.txt"}, {"/", "//log", "txt", "|log.txt"}, {"", "log", "txt", "log.txt"},
        {"", "/log", "", "/log"}, {"a", "log", "", "a|log"}, {"a", "", "txt", "a|.txt"},
        {"\xC3\xBC", "\xE2\x82\xAC", "x", "\xC3\xBC|\xE2\x82\xAC.x"},
        // clang-format on
    };
    for (const auto& [directory, name, extension, withBar] : cases) {
        std::string expected = withBar;
        std::replace(expected.begin(), expected.end(), '|', static_cast<char>(fs::path::preferred_separator));
        EXPECT_EQ(HFBuildFilename(directory, name, extension), expected);
    }
    for (const auto& [path, name] : {std::pair{"log", "log"}, {"/a/b.txt", "b.txt"}, {"a/", ""}, {"", ""}}) {
        EXPECT_EQ(HCFileSystem().GetFileName(path), name);
    }
}

TEST_F(Files, TranslatesHomeOnly)
{
    EXPECT_EQ(HFTranslateName("home"), m_home.Folder());
    EXPECT_EQ(HFTranslateName("Home"), "");
    const test::EnvironmentGuard none("HCBASE_HOME", "");
    for (const std::string account : {"/the/account", ""}) {
        const test::EnvironmentGuard onLinux("HOME", account);
        const test::EnvironmentGuard onWindows("USERPROFILE", account);
        const std::string home = HFTranslateName("home").ToString();
        EXPECT_TRUE(account.empty() ? fs::is_directory(home) : home == account) << home;
    }
}

TEST_F(Files, TellsAboutFilesAndDeletesThem)
{
    HCFileStatus status;
    status.size = 77;
    EXPECT_EQ(HCFileSystem::GetFileStatus(m_path, status), 0);
    EXPECT_EQ(status.size, 77);
    std::ofstream(m_systemPath) << "12345";
    EXPECT_EQ(HCFileSystem::GetFileStatus(m_path, status), 1);
    EXPECT_EQ(status.size, 5);
    EXPECT_EQ(status.isDirectory, 0);
    for (const HCTime& time : {status.created, status.modified, status.accessed}) {
        EXPECT_GT(time.GetSeconds(), 1'700'000'000) << "later than 2023";
    }
#if !defined(_WIN32) // which has other functions for it
    const timespec times[] = {{1'000'000'001, 123'456'789}, {1'000'000'002, 987'654'321}};
    ASSERT_EQ(utimensat(AT_FDCWD, m_path, times, 0), 0);
    HCFileSystem::GetFileStatus(m_path, status);
    EXPECT_EQ(status.accessed.GetSeconds(), times[0].tv_sec);
    EXPECT_EQ(status.accessed.GetNanoseconds(), times[0].tv_nsec);
    EXPECT_EQ(status.modified.GetSeconds(), times[1].tv_sec);
    EXPECT_GT(status.created.GetSeconds(), 1'700'000'000);
#endif
    EXPECT_EQ(HCFileSystem::GetFileStatus(m_home.Folder().c_str(), status), 1);
    EXPECT_EQ(status.isDirectory, 1);
    EXPECT_EQ(HCFileSystem().DelFile(m_path), 1);
    EXPECT_FALSE(fs::exists(m_systemPath));
    EXPECT_EQ(HCFileSystem().DelFile(m_path), 0);
    EXPECT_EQ(fs::path(HCFileSystem().GetCurDirectory("").ToString()), fs::current_path());
}

TEST_F(Files, TellHowMuchRoomIsOnTheirDisk)
{
    std::string path = m_home.Folder();
    std::uint64_t available = 0;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
    const auto tellsTheTruth = [&] { // at some moment: others may be writing at the same time
        const fs::space_info space = fs::space(m_home.Folder());
        return HCFileSystem().GetDiskInfo(path.c_str(), &available, &total, &free) == 1 && total == space.capacity
            && available == space.available && free == space.free;
    };
    EXPECT_TRUE(test::SpinUntil(tellsTheTruth));
    EXPECT_EQ(HCFileSystem().GetDiskInfo(path.c_str(), nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(HCFileSystem().GetDiskInfo(nullptr, &total, &total, &total), 0);
    EXPECT_EQ(HCFileSystem().GetDiskInfo(m_path, &total, &total, &total), 0) << "there is no such file";
#if !defined(_WIN32)
    while (path.size() < 10'000) { // more than the system takes in one piece
        path += "/.";
    }
    EXPECT_TRUE(test::SpinUntil(tellsTheTruth));
#endif
}

TEST_F(Files, GrowLineByLine)
{
    HCTextIo file(m_path);
    for (const int mode : {5, 0, 1, 2, 4, 6, -1}) {
        EXPECT_EQ(file.Open(mode), 0) << mode;
    }
    EXPECT_EQ(file.WriteString("x"), 0);
    EXPECT_EQ(file.Close(), 0);
    for (const int mode : {3, 5, 3}) { // none truncates
        EXPECT_EQ(file.Open(mode), 1);
        EXPECT_EQ(file.Open(mode), 0) << "it is open already";
        HCTextIo other{HCString(m_path)};
        EXPECT_EQ(other.Open(5), 1);
        EXPECT_EQ(other.WriteString("other"), 1);
        EXPECT_EQ(file.WriteString(nullptr), 1);
        EXPECT_EQ(other.WriteString("end"), 1);
        EXPECT_EQ(file.Close(), 1);
    }
    EXPECT_EQ(file.Open(5), 1);
    std::ifstream reader(m_systemPath);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "other\n\nend\nother\n\nend\nother\n\nend\n");
    reader.close();
#if !defined(_WIN32) // where there is no such program
    const std::string ofChild = test::Run("/bin/ls", {"-l", "/proc/self/fd"}).output;
    EXPECT_NE(ofChild.find("1 -> "), std::string::npos) << ofChild;
    EXPECT_EQ(ofChild.find(m_home.Folder()), std::string::npos) << "a child inherits no open file: " << ofChild;
#endif
    EXPECT_TRUE(fs::remove(m_systemPath)) << "an open file";
}

} // namespace
