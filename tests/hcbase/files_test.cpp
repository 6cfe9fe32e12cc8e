#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "hcbase/text_io.h"
#include "tests/support/surroundings.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

/// Paths in the tests' tables are written with '/'.
std::string Native(std::string path)
{
    for (char& character : path) {
        character = character == '/' ? static_cast<char>(fs::path::preferred_separator) : character;
    }
    return path;
}

class Files : public testing::Test {
protected:
    test::Home m_home;

    HCString PathOf(const char* name) const { return (m_home.Folder() + "/" + name).c_str(); }
};

TEST_F(Files, BuildsNamesWithOneSeparatorAndOneDot)
{
    const struct {
        const char* directory;
        const char* name;
        const char* extension;
        const char* expected;
    } rows[] = {
        {"/a/b", "log", "txt", "/a/b/log.txt"},
        {"/a/b/", "log", "txt", "/a/b/log.txt"},
        {"/a/b//", "/log", "txt", "/a/b/log.txt"},
        {"/", "log", "txt", "/log.txt"},
        {"", "log", "txt", "log.txt"},
        {"", "/log", "", "/log"},
        {"a", "log", "", "a/log"},
        {"a", "", "txt", "a/.txt"},
        {"\xC3\xBC", "\xE2\x82\xAC", "x", "\xC3\xBC/\xE2\x82\xAC.x"},
    };
    for (const auto& row : rows) {
        const bool hasDirectory = *row.directory != '\0';
        std::string expected = row.expected;
        if (hasDirectory) { // the separator that is put in is the system's own, those of the directory stay
            const std::size_t place = expected.rfind('/');
            expected[place] = Native("/")[0];
        }
        EXPECT_EQ(HFBuildFilename(row.directory, row.name, row.extension), expected.c_str());
    }
}

TEST_F(Files, TakesTheNameOutOfAPath)
{
    HCFileSystem files;
    for (const auto& [path, name] : {std::pair{"zr_messages", "zr_messages"}, std::pair{"/a/b.txt", "b.txt"},
             std::pair{"a/", ""}, std::pair{"", ""}, std::pair{"../x", "x"}}) {
        EXPECT_EQ(files.GetFileName(path), name);
    }
}

TEST_F(Files, TranslatesHomeOnly)
{
    EXPECT_EQ(HFTranslateName("home"), m_home.Folder().c_str());
    EXPECT_EQ(HFTranslateName("Home"), "");
    EXPECT_EQ(HFTranslateName(""), "");
    const test::EnvironmentGuard none("HCBASE_HOME", "");
#if defined(_WIN32)
    const char* const variable = "USERPROFILE";
#else
    const char* const variable = "HOME";
#endif
    {
        const test::EnvironmentGuard account(variable, "/the/account");
        EXPECT_EQ(HFTranslateName("home"), "/the/account");
    }
    const test::EnvironmentGuard account(variable, "");
    EXPECT_TRUE(fs::is_directory(static_cast<const char*>(HFTranslateName("home")))) << "the account's own";
}

TEST_F(Files, TellsAboutFiles)
{
    HCFileStatus status;
    status.size = 77;
    EXPECT_EQ(HCFileSystem::GetFileStatus(PathOf("none"), status), 0);
    EXPECT_EQ(status.size, 77);
    test::WriteFile(m_home.Folder() + "/some", "12345");
    EXPECT_NE(HCFileSystem::GetFileStatus(PathOf("some"), status), 0);
    EXPECT_EQ(status.size, 5);
    EXPECT_EQ(status.isDirectory, 0);
    EXPECT_GT(status.modified.GetSeconds(), 1'700'000'000) << "later than 2023";
    EXPECT_NE(HCFileSystem::GetFileStatus(m_home.Folder().c_str(), status), 0);
    EXPECT_EQ(status.isDirectory, 1);

    HCFileSystem files;
    EXPECT_NE(files.DelFile(PathOf("some")), 0);
    EXPECT_EQ(files.DelFile(PathOf("some")), 0);
    EXPECT_EQ(HCFileSystem::GetFileStatus(PathOf("some"), status), 0);

    EXPECT_EQ(fs::path(static_cast<const char*>(files.GetCurDirectory(""))), fs::current_path());

    std::uint64_t available = 0;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
    EXPECT_NE(files.GetDiskInfo(m_home.Folder().c_str(), &available, &total, &free), 0);
    EXPECT_LE(available, free);
    EXPECT_LE(free, total);
    EXPECT_EQ(files.GetDiskInfo(PathOf("none"), &available, nullptr, nullptr), 0);
    EXPECT_EQ(files.GetDiskInfo(nullptr, &available, nullptr, nullptr), 0);
}

TEST_F(Files, OpensAsTheModeSays)
{
    const HCString path = PathOf("text \xC3\xBC.txt");
    const std::string plainPath = static_cast<const char*>(path);
    for (const int mode : {5, 0, 1, 2, 4, 6, -1}) {
        HCTextIo file(path);
        EXPECT_EQ(file.Open(mode), 0) << mode;
        EXPECT_EQ(file.WriteString("x"), 0);
        EXPECT_EQ(file.Close(), 0);
    }
    {
        HCTextIo file(path);
        EXPECT_EQ(file.Open(3), 1);
        EXPECT_EQ(file.Open(3), 0) << "it is open already";
        EXPECT_EQ(file.WriteString("one"), 1);
        EXPECT_EQ(file.WriteString(nullptr), 1);
        EXPECT_EQ(file.Close(), 1);
        EXPECT_EQ(file.Close(), 0);
    }
    for (const int mode : {5, 3}) { // neither truncates
        HCTextIo file(path);
        EXPECT_EQ(file.Open(mode), 1);
        HCTextIo other(path);
        EXPECT_EQ(other.Open(5), 1);
        EXPECT_EQ(other.WriteString("of the other"), 1);
        EXPECT_EQ(file.WriteString("at the end"), 1);
    }
    HCFileStatus status;
    ASSERT_NE(HCFileSystem::GetFileStatus(path, status), 0);
#if defined(_WIN32)
    const std::wstring systemPath = fs::u8path(plainPath).wstring();
    std::string content;
    {
        FILE* const file = _wfopen(systemPath.c_str(), L"r");
        ASSERT_NE(file, nullptr) << "the name is UTF-8";
        for (int character = fgetc(file); character != EOF; character = fgetc(file)) {
            content += static_cast<char>(character);
        }
        fclose(file);
    }
#else
    const std::string content = test::ReadFile(plainPath);
#endif
    EXPECT_EQ(content, "one\n\nof the other\nat the end\nof the other\nat the end\n");
}

TEST_F(Files, OpenFilesMayBeMovedAndDeletedByOthers)
{
    HCTextIo file(PathOf("text"));
    ASSERT_EQ(file.Open(3), 1);
    fs::rename(m_home.Folder() + "/text", m_home.Folder() + "/moved");
    EXPECT_EQ(file.WriteString("after the move"), 1);
    EXPECT_EQ(test::ReadFile(m_home.Folder() + "/moved"), "after the move\n");
    EXPECT_TRUE(fs::remove(m_home.Folder() + "/moved"));
    EXPECT_EQ(file.Close(), 1);
}

#if !defined(_WIN32) // /proc and /dev/full exist on Linux only
TEST_F(Files, ChildrenInheritNoDescriptor)
{
    HCTextIo file(PathOf("text"));
    ASSERT_EQ(file.Open(3), 1);
    int openOnes = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone) == fs::path(m_home.Folder() + "/text")) {
            ++openOnes;
            EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
        }
    }
    EXPECT_EQ(openOnes, 1);
}

TEST_F(Files, TellWhenNotAllWasWritten)
{
    HCTextIo full("/dev/full");
    ASSERT_EQ(full.Open(5), 1);
    EXPECT_EQ(full.WriteString("x"), 0);
    EXPECT_EQ(full.Close(), 1);
}
#endif

} // namespace
