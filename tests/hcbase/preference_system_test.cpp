#include "hcbase/preference_system.h"
#include "tests/support/surroundings.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class Preferences : public testing::Test {
protected:
    test::Home m_home;

    /// The value under the key for each default, as two digits: "11" and "00" for stored values, "01" for the default.
    static std::string Ask(const char* key)
    {
        HCPreferenceSystem preferences;
        const int without = preferences.GetBooleanValue(key, 0);
        const int with = preferences.GetBooleanValue(key, 1);
        return std::to_string(without) + std::to_string(with);
    }

    /// Asks twice for a boolean that the file does not have, which is to be told in one line with place and reason.
    void ExpectOneComplaint(const std::string& place, const std::string& reason) const
    {
        testing::internal::CaptureStderr();
        EXPECT_EQ(Ask("/L/K") + Ask("/L/K"), "0101");
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_EQ(test::Lines(told).size(), 1U) << told;
        EXPECT_NE(told.find(m_home.PreferencesPath() + place), std::string::npos) << told;
        EXPECT_NE(told.find(reason), std::string::npos) << told;
    }
};

TEST_F(Preferences, AnswersForTheKeysOfTheFile)
{
    test::WriteFile(m_home.PreferencesPath(),
        "\xEF\xBB\xBF# a comment\r\n[Libraries.zrlib]\r\nOn = true\r\nOff = false\r\n\"A b\" = true\r\n"
        "[Libraries]\r\nplain = true\r\n");
    const std::pair<const char*, const char*> cases[] = {
        // clang-format off
        {"/Libraries/zrlib/On", "11"}, {"/Libraries/zrlib/Off", "00"}, {"Libraries/zrlib/On", "11"},
        {"//Libraries//zrlib/On/", "11"}, {"/Libraries/zrlib/A b", "11"}, {"/Libraries/plain", "11"},
        {"/Libraries/zrlib/on", "01"}, {"/Libraries/zrlib/None", "01"}, {"/", "01"}, {"", "01"}, {nullptr, "01"},
        // clang-format on
    };
    testing::internal::CaptureStderr();
    for (const auto& [key, expected] : cases) {
        EXPECT_EQ(Ask(key), expected) << (key != nullptr ? key : "null");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "what is not there is not worth a word";
    HCPreferenceSystem preferences;
    EXPECT_EQ(preferences.GetBooleanValue("/Libraries/plain", 0), 1);
    fs::remove(m_home.PreferencesPath());
    EXPECT_EQ(preferences.GetBooleanValue("/Libraries/plain", 0), 1) << "from one state of the file";
}

TEST_F(Preferences, TellsFaultsOnceWithFileLineAndReason)
{
    std::string deep = "K = 1\n# ..\nL = [\"\"\"a\"\"\"\", {";
    for (int depth = 0; depth < 1'000'000; ++depth) {
        deep += "a.";
    }
    const std::tuple<std::string, const char*, const char*> cases[] = {
        // clang-format off
        {deep, ":3: ", "nested too deeply"},
        {"L.K = " + std::string(16, '['), ":1: ", "nested too deeply"},
        {"L.K = " + std::string(15, '[') + std::string(15, ']'), ":1: ", "an array"},
        {"[L]\nK = \"true\"\n", ":2: ", "/L/K is a text where true or false belongs"},
        {"[L]\n\nK = 1\n", ":3: ", "an integer"},
        {"[L]\nK = 1.5\n", ":2: ", "a floating-point number"},
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
    for (const auto& [content, place, reason] : cases) {
        SCOPED_TRACE(content.substr(0, 100));
        test::WriteFile(m_home.PreferencesPath(), content);
        ExpectOneComplaint(place, reason);
    }
    fs::resize_file(m_home.PreferencesPath(), 16 * 1024 * 1024 + 1);
    ExpectOneComplaint(": cannot be read: ", "");
    fs::remove(m_home.PreferencesPath());
    fs::create_directory(m_home.PreferencesPath()); // works for every account
    ExpectOneComplaint(": cannot be read: ", "");
}

TEST_F(Preferences, LieWhereTheEnvironmentSays)
{
    EXPECT_EQ(HCPreferenceSystem().GetPath(), m_home.PreferencesPath());
    const test::EnvironmentGuard direct("HCBASE_PREFERENCES", "");
#if defined(_WIN32)
    const test::EnvironmentGuard settings("APPDATA", "C:/settings");
    EXPECT_EQ(HCPreferenceSystem().GetPath(), "C:/settings\\hcbase\\preferences.toml");
#else
    const test::EnvironmentGuard home("HOME", "/home");
    for (const auto& [settings, expected] :
        {std::pair{"", "/home/.config"}, {"relative", "/home/.config"}, {"/x", "/x"}}) {
        const test::EnvironmentGuard xdg("XDG_CONFIG_HOME", settings);
        EXPECT_EQ(HCPreferenceSystem().GetPath(), std::string(expected) + "/hcbase/preferences.toml");
    }
#endif
}

} // namespace
