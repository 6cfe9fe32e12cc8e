#include "hcbase/format.h"
#include "hcbase/text_table.h"
#include "hcbase/version.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace {

const char* TextOf(HCTextHandle handle, int code)
{
    const char* text = "left over";
    const bool isFound = HFTextGet(handle, code, &text) != 0;
    EXPECT_EQ(isFound, text != nullptr);
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
}

TEST(TextTable, FindsTheNewestTableOfANameAmongAsManyAsThereMayBe)
{
    const HCTextRow rows[] = {{7, "seven"}, {0, nullptr}};
    EXPECT_EQ(HFTextCreateEmbedded(nullptr, rows, 0), 0U);
    EXPECT_EQ(HFTextCreateEmbedded("many", nullptr, 0), 0U);
    const HCTextHandle first = HFTextCreateEmbedded(std::string("many").c_str(), rows, 0); // the name is copied
    EXPECT_EQ(HFTextFind("many"), first);
    for (int table = 1; table < 1024; ++table) {
        const HCTextHandle newest = HFTextCreateEmbedded("many", rows, 0);
        ASSERT_NE(newest, 0U);
        ASSERT_EQ(HFTextFind("many"), newest);
    }
    EXPECT_EQ(HFTextCreateEmbedded("many", rows, 0), 0U);
    EXPECT_EQ(HFTextRelease(first), 1);
    EXPECT_EQ(HFTextRelease(first), 0);
    const HCTextHandle newest = HFTextCreateEmbedded("many", rows, 0);
    EXPECT_EQ(HFTextFind("many"), newest) << "in the place of the first";
    EXPECT_STREQ(TextOf(newest, 7), "seven");
    EXPECT_EQ(TextOf(first, 7), nullptr) << "an old handle does not name the new table in its place";
    EXPECT_EQ(HFTextFind("Many"), 0U);
    EXPECT_EQ(HFTextFind(nullptr), 0U);
    while (HFTextRelease(HFTextFind("many")) != 0) {}
    EXPECT_EQ(HFTextFind("many"), 0U);
}

TEST(Version, IsRecordedUnderItsName)
{
    HCVersion version{77, 0, 0, "", ""};
    EXPECT_EQ(HFVersionGet("LIBRARY", version), 0);
    EXPECT_EQ(HFVersionGet(nullptr, version), 0);
    EXPECT_EQ(version.major, 77);
    EXPECT_EQ(HFVersionGet("HCBASE", version), 1) << "which nobody has recorded";
    EXPECT_EQ(version.time.GetLength(), 8);
    EXPECT_EQ(HFVersionLoad(nullptr, 1, 2, 3, "", ""), 0);
    for (const int major : {1, 4}) {
        EXPECT_EQ(HFVersionLoad("LIBRARY", major, 5, 6, nullptr, "12:00:00"), 1);
        EXPECT_EQ(HFVersionLoad("OTHER", 7, 8, 9, "Feb  2 2026", nullptr), 1);
        HFVersionGet("OTHER", version);
        EXPECT_EQ(version.date, "Feb  2 2026");
        HFVersionGet("LIBRARY", version);
        HCString text;
        text.Format("%d.%d.%d %s %s", version.major, version.minor, version.revision, version.date.begin(),
            version.time.begin());
        EXPECT_EQ(text, std::to_string(major) + ".5.6  12:00:00");
    }
}

TEST(Format64, WritesEveryBase)
{
    const std::tuple<std::int64_t, int, std::string> cases[] = {{0, 10, "0"}, {INT64_MAX, 10, "9223372036854775807"},
        {INT64_MIN, 2, "-1" + std::string(63, '0')}, {35, 36, "z"}, {5, 1, ""}, {5, 37, ""}, {5, -10, ""}};
    for (const auto& [value, base, expected] : cases) {
        EXPECT_EQ(HFFormat64(value, base, 0), expected) << value << " to base " << base;
    }
}

} // namespace
