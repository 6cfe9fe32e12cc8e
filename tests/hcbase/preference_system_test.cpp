#include "hcbase/preference_system.h"
#include "tests/support/surroundings.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

class Preferences : public testing::Test {
protected:
    test::Home m_home;

    void Store(const std::string& content) const { test::WriteFile(m_home.PreferencesPath(), content); }

    /// The value under the key for each default, as two digits: "11" and "00" for stored values, "01" for the default.
    static std::string Ask(const char* key)
    {
        HCPreferenceSystem preferences;
        const int without = preferences.GetBooleanValue(key, 0);
        const int with = preferences.GetBooleanValue(key, 1);
        return std::to_string(without) + std::to_string(with);
    }
};

TEST_F(Preferences, AnswersForTheKeysOfTheFile)
{
    Store("\xEF\xBB\xBF# a comment\r\n[Libraries.zrlib]\r\nOn = true\r\nOff = false\r\n\"A b\" = true\r\n"
          "[Libraries]\r\nplain = true\r\n");
    const struct {
        const char* key;
        const char* expected;
    } rows[] = {
        {"/Libraries/zrlib/On", "11"},
        {"/Libraries/zrlib/Off", "00"},
        {"Libraries/zrlib/On", "11"},
        {"//Libraries//zrlib/On/", "11"},
        {"/Libraries/zrlib/A b", "11"},
        {"/Libraries/plain", "11"},
        {"/Libraries/zrlib/on", "01"},
        {"/Libraries/zrlib/None", "01"},
        {"/", "01"},
        {"", "01"},
        {nullptr, "01"},
    };
    testing::internal::CaptureStderr();
    for (const auto& row : rows) {
        EXPECT_EQ(Ask(row.key), row.expected) << (row.key != nullptr ? row.key : "null");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "what is not there is not worth a word";
}

TEST_F(Preferences, TellsFaultsOnceWithFileLineAndReason)
{
    struct {
        const char* content;
        const char* place;
        const char* reason;
    } rows[] = {
        // clang-format off
        {"", "", ""}, // below
        {"[L]\nK = \"true\"\n", ":2: ", "/L/K is a text where true or false belongs"},
        {"[L]\n\nK = 1\n", ":3: ", "an integer"},
        {"[L]\nK = 1.5\n", ":2: ", "a floating-point number"},
        {"[L]\nK = [true]\n", ":2: ", "an array"},
        {"[L.K]\n", ":1: ", "a table"},
        {"L = true\n", ":1: ", "/L is a boolean where a table belongs"},
        {"\n[[L]]\nK = true\n", ":2: ", "/L is an array where a table belongs"},
        {"L.K = 2026-01-01\n", ":1: ", "a date or time"},
        {"[L]\nK = yes\n", ":2: ", "could not determine value type"},
        {"[L]\nK = true\n[L]\nK = false\n", ":3: ", "cannot redefine"},
        {"[L]\nK = true\n[unfinished\n", ":3: ", "expected ']'"},
        {"[L]\nK = true\n\xFF\xFE\n", ":3: ", "not UTF-8"},
        {"# \xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80\n# \xC0\xAF\n", ":2: ", "not UTF-8"}, // overlong
        {"# \xED\xA0\x80\n", ":1: ", "not UTF-8"}, // half of a pair of surrogates
        {"\n\n\n# \xF4\x90\x80\x80\n", ":4: ", "not UTF-8"}, // beyond the last character
        {"\n\n\n\n# \xE2\x82", ":5: ", "not UTF-8"}, // cut off
        // clang-format on
    };
    std::string deepKey = "K = 1\n# ..\nL = [\"\"\"a\"\"\"\", {";
    for (int depth = 0; depth < 1'000'000; ++depth) {
        deepKey += "a.";
    }
    rows[0] = {deepKey.c_str(), ":3: ", "nested too deeply"};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.content).substr(0, 100));
        Store(row.content);
        testing::internal::CaptureStderr();
        EXPECT_EQ(Ask("/L/K"), "01");
        EXPECT_EQ(Ask("/L/K"), "01");
        const auto lines = test::Lines(testing::internal::GetCapturedStderr());
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_NE(lines[0].find(m_home.PreferencesPath() + row.place), std::string::npos) << lines[0];
        EXPECT_NE(lines[0].find(row.reason), std::string::npos) << lines[0];
    }
}

TEST_F(Preferences, TellsWhenTheFileCannotBeRead)
{
    fs::create_directory(m_home.PreferencesPath()); // a folder in its place: works for every account
    testing::internal::CaptureStderr();
    EXPECT_EQ(Ask("/L/K"), "01");
    const auto lines = test::Lines(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find(m_home.PreferencesPath() + ": cannot be read: "), std::string::npos) << lines[0];
}

TEST_F(Preferences, LieWhereTheEnvironmentSays)
{
    const std::string content = "K = true\n";
    const test::EnvironmentGuard direct("HCBASE_PREFERENCES", "");
#if defined(_WIN32)
    const test::EnvironmentGuard settings("APPDATA", m_home.Folder() + "/settings");
    EXPECT_EQ(Ask("/K"), "01");
    fs::create_directories(m_home.Folder() + "/settings/hcbase");
    test::WriteFile(m_home.Folder() + "/settings/hcbase/preferences.toml", content);
    EXPECT_EQ(Ask("/K"), "11");
#else
    const test::EnvironmentGuard home("HOME", m_home.Folder() + "/home");
    const test::EnvironmentGuard relative("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(Ask("/K"), "01");
    fs::create_directories(m_home.Folder() + "/home/.config/hcbase");
    test::WriteFile(m_home.Folder() + "/home/.config/hcbase/preferences.toml", content);
    EXPECT_EQ(Ask("/K"), "11") << "a relative XDG_CONFIG_HOME counts as not set";
    const test::EnvironmentGuard settings("XDG_CONFIG_HOME", m_home.Folder() + "/xdg");
    EXPECT_EQ(Ask("/K"), "01");
    fs::create_directories(m_home.Folder() + "/xdg/hcbase");
    test::WriteFile(m_home.Folder() + "/xdg/hcbase/preferences.toml", content);
    EXPECT_EQ(Ask("/K"), "11");
#endif
}

} // namespace
