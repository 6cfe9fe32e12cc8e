#include "hcbase/text_table.h"
#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <string>

namespace {

const char* TextOf(int code)
{
    const char* text = nullptr;
    HFTextGet(HFTextFind("ZRLib"), code, &text);
    return text;
}

TEST(TextTable, HasARowForEveryCodeOfEveryFamily)
{
    const struct {
        int first;
        int last;
    } families[] = {{0, 4}, {100, 113}, {200, 209}, {300, 312}, {-65647, -65636}, {-65748, -65736}, {-65846, -65836}};
    int rows = 0;
    for (const auto& family : families) {
        for (int code = family.first; code <= family.last; ++code, ++rows) {
            const char* const text = TextOf(code);
            ASSERT_NE(text, nullptr) << code;
            EXPECT_GT(std::string(text).size(), 2U);
        }
        EXPECT_EQ(TextOf(family.first - 1), nullptr);
        EXPECT_EQ(TextOf(family.last + 1), nullptr);
    }
    EXPECT_EQ(rows, 78);
}

TEST(TextTable, HasTheTextsThatClientsSee)
{
    const struct {
        int code;
        const char* text;
    } rows[] = {
        // clang-format off
        {ZR_TEXT_UNTITLED, "Untitled"},
        {ZR_TEXT_UNKNOWN_FORMAT_CODE, "Unknown format code"},
        {200, "Windows"},
        {209, "Unidentified platform"},
        {-65636, "Error in shared memory assignment"},
        {-65647, "Error unlocking shared memory field"},
        {-65836, "Library nibble was zero"},
        {-65837, "Object code high word was not 0xA04F"},
        {-65838, "The library was already registered"},
        {-65839, "The specified library is not registered"},
        {-65840, "The specified library code was invalid"},
        {-65841, "The specified library was not found"},
        {-65842, "The object was already registered"},
        {-65843, "The specified object code was invalid"},
        {-65844, "The specified object was not found"},
        {-65845, "The specified class ID was badly formatted"},
        {-65846, "The specified class ID is already being used by another class"},
        // clang-format on
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(TextOf(row.code), row.text);
    }
}

TEST(TextTable, GivesAMathematicsErrorTheTextOfItsNumber)
{
    for (int number = 0; number < 13; ++number) {
        std::string ofError = TextOf(ZR_ERROR_MATH_LOG_OF_ZERO - number);
        if (ZR_ERROR_MATH_LOG_OF_ZERO - number == ZR_ERROR_MATH_TAN_90_RADIANS) {
            EXPECT_EQ(ofError.at(14), '\t'); // the one difference between the two
            ofError[14] = ' ';
        }
        EXPECT_EQ(ofError, TextOf(ZR_TEXT_MATH_LOG_OF_ZERO + number)) << number;
    }
}

} // namespace
