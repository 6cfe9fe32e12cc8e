#include "hcbase/format.h"
#include "hcbase/text_table.h"
#include "hcbase/version.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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
    ASSERT_NE(handle, 0U);
    for (const HCTextRow& row : rows) {
        if (row.text != nullptr && row.text != std::string("again")) {
            EXPECT_STREQ(TextOf(handle, row.code), row.text);
        }
    }
    for (const int code : {3, -2, 196608}) {
        EXPECT_EQ(TextOf(handle, code), nullptr) << code;
    }
    EXPECT_EQ(TextOf(0, 0), nullptr);
    EXPECT_EQ(TextOf(~HCTextHandle{0}, 0), nullptr);
    EXPECT_EQ(HFTextGet(handle, 0, nullptr), 0);

    EXPECT_EQ(HFTextRelease(handle), 1);
    EXPECT_EQ(HFTextRelease(handle), 0);
    EXPECT_EQ(TextOf(handle, 0), nullptr);
}

TEST(TextTable, FindsTheNewestTableOfAName)
{
    const HCTextRow rows[] = {{0, nullptr}};
    EXPECT_EQ(HFTextCreateEmbedded(nullptr, rows, 0), 0U);
    EXPECT_EQ(HFTextCreateEmbedded("none", nullptr, 0), 0U);
    EXPECT_EQ(HFTextFind("twice"), 0U);
    EXPECT_EQ(HFTextFind(nullptr), 0U);
    const HCTextHandle first = HFTextCreateEmbedded("twice", rows, 0);
    const HCTextHandle second = HFTextCreateEmbedded("twice", rows, 0);
    EXPECT_NE(first, second);
    EXPECT_EQ(HFTextFind("twice"), second);
    EXPECT_EQ(HFTextFind("Twice"), 0U);
    HFTextRelease(second);
    EXPECT_EQ(HFTextFind("twice"), first);
    HFTextRelease(first);
    EXPECT_EQ(HFTextFind("twice"), 0U);
}

TEST(TextTable, RefusesTablesBeyondItsLimitAndReusesWhatIsReleased)
{
    const HCTextRow rows[] = {{7, "seven"}, {0, nullptr}};
    std::vector<HCTextHandle> handles;
    while (handles.size() <= 1024) {
        const HCTextHandle handle = HFTextCreateEmbedded("many", rows, 0);
        if (handle == 0) {
            break;
        }
        handles.push_back(handle);
    }
    EXPECT_LE(handles.size(), 1024U);
    EXPECT_GE(handles.size(), 1000U);
    const HCTextHandle released = handles.front();
    HFTextRelease(released);
    handles.front() = HFTextCreateEmbedded("many", rows, 0);
    EXPECT_STREQ(TextOf(handles.front(), 7), "seven");
    EXPECT_EQ(TextOf(released, 7), nullptr) << "an old handle does not name the new table in its place";
    for (const HCTextHandle handle : handles) {
        EXPECT_EQ(HFTextRelease(handle), 1);
    }
}

TEST(Version, IsRecordedUnderItsName)
{
    HCVersion version;
    EXPECT_EQ(HFVersionGet("LIBRARY", version), 0);
    EXPECT_EQ(HFVersionGet(nullptr, version), 0);
    EXPECT_EQ(HFVersionLoad(nullptr, 1, 2, 3, "", ""), 0);
    HFVersionLoad("LIBRARY", 1, 2, 3, "Jan  1 2026", nullptr);
    HFVersionLoad("LIBRARY", 4, 5, 6, "Feb  2 2026", "12:00:00");
    ASSERT_EQ(HFVersionGet("LIBRARY", version), 1);
    EXPECT_EQ(version.major, 4);
    EXPECT_EQ(version.minor, 5);
    EXPECT_EQ(version.revision, 6);
    EXPECT_EQ(version.date, "Feb  2 2026");
    EXPECT_EQ(version.time, "12:00:00");
}

TEST(Format64, WritesEveryBase)
{
    const struct {
        std::int64_t value;
        int base;
        const char* expected;
    } rows[] = {
        {0, 10, "0"},
        {-5000000, 10, "-5000000"},
        {INT64_MAX, 10, "9223372036854775807"},
        {INT64_MIN, 10, "-9223372036854775808"},
        {INT64_MIN, 2, "-1000000000000000000000000000000000000000000000000000000000000000"},
        {255, 16, "ff"},
        {35, 36, "z"},
        {5, 1, ""},
        {5, 37, ""},
        {5, 0, ""},
        {5, -10, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(HFFormat64(row.value, row.base, 0), row.expected) << row.value << " to base " << row.base;
    }
}

} // namespace
