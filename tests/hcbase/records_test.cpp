#include "hcbase/format.h"
#include "hcbase/text_table.h"
#include "hcbase/version.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace {

const char* TextOf(HCTextHandle handle, int code)
{
    const char* text = "left over";
    const char found = HFTextGet(handle, code, &text);
    EXPECT_EQ(found != 0, text != nullptr);
    return text;
}

TEST(TextTable, FindsTextsByCode)
{
    // Codes with equal low bits, neighbours, the bounds, 0 before the end row, and one code twice.
    const HCTextRow rows[] = {{0, "zero"}, {65536, "a"}, {131072, "b"}, {-1, "minus"}, {INT32_MAX, "most"},
        {INT32_MIN, "least"}, {1, "one"}, {2, ""}, {1, "again"}, {0, nullptr}};
    const HCTextHandle handle = HFTextCreateEmbedded("texts", rows, 0);
    for (std::size_t row = 0; row < 8; ++row) {
        EXPECT_STREQ(TextOf(handle, rows[row].code), rows[row].text);
    }
    EXPECT_EQ(TextOf(handle, 196608), nullptr);
    EXPECT_EQ(TextOf(0, 0), nullptr);
    EXPECT_EQ(TextOf(~HCTextHandle{0}, 0), nullptr);
    EXPECT_EQ(HFTextGet(handle, 0, nullptr), 0);
    EXPECT_EQ(HFTextRelease(handle), 1);
    EXPECT_EQ(HFTextRelease(handle), 0);
    EXPECT_EQ(TextOf(handle, 0), nullptr);
}

TEST(TextTable, FindsTheNewestTableOfANameAmongAsManyAsThereMayBe)
{
    const HCTextRow rows[] = {{7, "seven"}, {0, nullptr}};
    EXPECT_EQ(HFTextCreateEmbedded(nullptr, rows, 0), 0U);
    EXPECT_EQ(HFTextCreateEmbedded("many", nullptr, 0), 0U);
    std::string name = "many"; // which is copied
    const HCTextHandle first = HFTextCreateEmbedded(name.c_str(), rows, 0);
    name = "none";
    EXPECT_EQ(HFTextFind("many"), first);
    for (int table = 1; table < 1024; ++table) {
        EXPECT_NE(HFTextCreateEmbedded("many", rows, 0), 0U);
    }
    EXPECT_NE(HFTextFind("many"), first);
    EXPECT_EQ(HFTextCreateEmbedded("many", rows, 0), 0U);
    EXPECT_EQ(HFTextRelease(first), 1);
    const HCTextHandle newest = HFTextCreateEmbedded("many", rows, 0);
    EXPECT_EQ(HFTextFind("many"), newest) << "in the place of the first";
    EXPECT_STREQ(TextOf(newest, 7), "seven");
    EXPECT_EQ(TextOf(first, 7), nullptr) << "an old handle does not name the new table in its place";
    for (const char* other : {"Many", "none", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(HFTextFind(other), 0U);
    }
    while (HFTextRelease(HFTextFind("many")) != 0) {}
    EXPECT_EQ(HFTextFind("many"), 0U);
}

std::string TextOf(const char* name)
{
    HCVersion version;
    HCString text("none");
    if (HFVersionGet(name, version) != 0) {
        text.Format("%d.%d.%d %s %s", version.major, version.minor, version.revision, version.date.begin(),
            version.time.begin());
    }
    return text.ToString();
}

TEST(Version, IsRecordedUnderItsName)
{
    EXPECT_EQ(TextOf("LIBRARY"), "none");
    EXPECT_EQ(TextOf(nullptr), "none");
    EXPECT_EQ(HFVersionLoad(nullptr, 1, 2, 3, "", ""), 0);
    EXPECT_GT(TextOf("HCBASE").size(), 20U) << "which nobody has recorded";
    for (const int major : {1, 4}) {
        EXPECT_EQ(HFVersionLoad("LIBRARY", major, 5, 6, nullptr, "12:00:00"), 1);
        EXPECT_EQ(HFVersionLoad("OTHER", 7, 8, 9, "Feb  2 2026", nullptr), 1);
        EXPECT_EQ(TextOf("LIBRARY"), std::to_string(major) + ".5.6  12:00:00");
        EXPECT_EQ(TextOf("OTHER"), "7.8.9 Feb  2 2026 ");
    }
}

TEST(Format64, WritesEveryBase)
{
    const std::tuple<std::int64_t, int, const char*> cases[] = {
        // clang-format off
        {0, 10, "0"}, {-5000000, 10, "-5000000"}, {INT64_MAX, 10, "9223372036854775807"},
        {INT64_MIN, 10, "-9223372036854775808"},
        {INT64_MIN, 2, "-1000000000000000000000000000000000000000000000000000000000000000"},
        {255, 16, "ff"}, {35, 36, "z"}, {5, 1, ""}, {5, 37, ""}, {5, 0, ""}, {5, -10, ""},
        // clang-format on
    };
    for (const auto& [value, base, expected] : cases) {
        EXPECT_EQ(HFFormat64(value, base, 0), expected) << value << " to base " << base;
    }
}

} // namespace
