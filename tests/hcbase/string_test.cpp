#include "hcbase/string.h"
#include "tests/support/allocations.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <utility>

namespace {

/// A text in which no two neighbours are the same.
std::string Filled(int length)
{
    std::string text;
    for (int place = 0; place < length; ++place) {
        text += static_cast<char>('a' + place % 26);
    }
    return text;
}

TEST(String, KeepsTextsOfEveryLengthThroughCopiesMovesAndAssignments)
{
    for (const int length : {0, 1, 38, 39, 40, 41, 100, 1'000'000}) {
        SCOPED_TRACE(length);
        std::string text = Filled(length);
        std::replace(text.begin(), text.end(), 'd', '\0');
        const HCString original{std::string_view(text)};
        EXPECT_EQ(original.ToString(), text);
        HCString copy(original);
        for (const int before : {0, 39, 40, 200}) {
            HCString assigned(Filled(before).c_str());
            EXPECT_EQ(assigned.GetLength(), before);
            assigned = original;
            EXPECT_EQ(assigned.View(), text);
            assigned = Filled(before).c_str();
            EXPECT_EQ(assigned.View(), Filled(before));
            assigned = std::move(copy);
            EXPECT_EQ(assigned.View(), text);
            EXPECT_EQ(copy.GetLength(), 0);
            copy = text;
            EXPECT_EQ(copy.View(), text);
        }
        HCString moved(std::move(copy));
        EXPECT_EQ(moved.Left(length - 1).View(), text.substr(0, length > 0 ? text.size() - 1 : 0));
        EXPECT_EQ(moved.GetLength(), std::max(length - 1, 0)) << "cuts the string itself";
    }
    EXPECT_EQ(std::hash<HCString>()(HCString(std::string("ab\0c", 4))), std::hash<HCString>()("ab"));
}

TEST(String, FormatsAsPrintfDoes)
{
    HCString string;
    string.Format("%s|%d|%c|\xC3\xBC\t%.2f|%X", "a%s", -5, 'z', 2.5, 0xBEEFU);
    EXPECT_EQ(string, "a%s|-5|z|\xC3\xBC\t2.50|BEEF");
    string.Format("%X|%08X|%04X|%09X|%01X|%d|%u%%", 0U, 0xFFFFFFFFU, 0x12345U, 0xABU, 0U, INT_MIN, UINT_MAX);
    EXPECT_EQ(string, "0|FFFFFFFF|12345|0000000AB|0|-2147483648|4294967295%");
    string.Format("%5d|%-3s|%02d|%x|%ld|%s", 7, "a", 3, 0xABU, 5L, "end");
    EXPECT_EQ(string, "    7|a  |03|ab|5|end");
    for (const int length : {511, 512, 513, 1'000'000}) { // around the end of the buffer on the stack
        string = Filled(length);
        string.Format("%s", string.begin()); // its own text
        EXPECT_EQ(string.ToString(), Filled(length));
    }
    string.Format(static_cast<const char*>(nullptr));
    EXPECT_EQ(string.GetLength(), 0);
    errno = ENOENT;
    const HCString format("%m %s"); // not a literal, because "%m" is not of the standard
    string.Format(static_cast<const char*>(format), Filled(1000).c_str());
    EXPECT_EQ(string, (std::string(std::strerror(ENOENT)) + " " + Filled(1000)).c_str());
    EXPECT_EQ(errno, ENOENT);
}

/// All operators, with either side first.
template <typename Text> void ExpectOrder(const HCString& string, const Text& text, int order)
{
    EXPECT_TRUE((string == text) == (order == 0) && (text == string) == (order == 0));
    EXPECT_TRUE((string != text) == (order != 0) && (text != string) == (order != 0));
    EXPECT_TRUE((string > text) == (order > 0) && (text < string) == (order > 0));
    EXPECT_TRUE((string < text) == (order < 0) && (text > string) == (order < 0));
    EXPECT_TRUE((string >= text) == (order >= 0) && (text <= string) == (order >= 0));
    EXPECT_TRUE((string <= text) == (order <= 0) && (text >= string) == (order <= 0));
}

TEST(String, ComparesWithAndWithoutCase)
{
    const std::tuple<const char*, const char*, int, int> cases[] = {
        // clang-format off
        {"", "", 0, 0}, {"", "a", -1, -1}, {"abc", "abc", 0, 0}, {"abc", "ABC", 1, 0}, {"abc", "abd", -1, -1},
        {"abcd", "ABC", 1, 1}, {"az", "AZ", 1, 0}, {"[", "{", -1, -1}, {"@", "`", -1, -1},
        {"A_", "Aa", -1, -1}, // the underline lies between the capitals and the small letters
        {"\xC3\xA4", "\xC3\x84", 1, 1}, // letters beyond a to z are not folded
        {"z", "\xC3\xA4", -1, -1}, // bytes count as unsigned
        // clang-format on
    };
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& [left, right, order, orderNoCase] : cases) {
        SCOPED_TRACE(std::string(left) + " / " + right);
        const HCString string(left);
        EXPECT_EQ(sign(string.Compare(right)), order);
        EXPECT_EQ(sign(string.CompareNoCase(right)), orderNoCase);
        ExpectOrder(string, right, order);
        ExpectOrder(string, HCString(right), order);
        ExpectOrder(string, std::string(right), order);
        ExpectOrder(string, std::string_view(right), order);
    }
    const HCString text("text");
    const char* const null = nullptr;
    EXPECT_GT(text.Compare(null), 0);
    EXPECT_GT(text.CompareNoCase(null), 0);
    EXPECT_EQ(HCString(null).Compare(null), 0);
    EXPECT_EQ((std::set<std::pair<HCString, int>>{{"key", 1}, {HCString("key"), 1}, {"other", 1}}).size(), 2U);
}

TEST(String, LendsItsBuffer)
{
    HCString string("abc");
    EXPECT_STREQ(string.GetBuffer(-1), "abc");
    string.GetBuffer(0)[1] = '\0';
    string.ReleaseBuffer();
    EXPECT_EQ(string, "a");
    char* const buffer = string.GetBuffer(100);
    EXPECT_EQ(buffer[0], 'a') << "growing keeps the text";
    std::fill_n(buffer, 101, 'b'); // without an end mark
    for (const auto& [given, length] : {std::pair{-1, 100}, {7, 7}, {1'000'000, 100}}) {
        string.ReleaseBuffer(given);
        EXPECT_EQ(string.GetLength(), length) << given;
    }
    EXPECT_STREQ(string, (std::string(7, 'b') + '\0').c_str());
    string.Empty();
    EXPECT_EQ(string, "");
    string = "b";
    string = static_cast<const char*>(nullptr);
    EXPECT_EQ(string, "");
}

TEST(String, KeepsItsTextWhenThereIsNoRoomForAnother)
{
    HCString string(Filled(50).c_str());
    EXPECT_THROW(string.GetBuffer(INT_MAX), std::length_error);
#if !defined(_WIN32) // where a library has a heap of its own
    const std::string longest = Filled(39); // of the texts inside their objects
    {
        const test::FailingHeap heap(0);
        HCString local(longest.c_str()); // needs no heap
        HCString copy(local);
        copy.Format("%s", local.begin());
        EXPECT_THROW(copy = string, std::bad_alloc);
        EXPECT_EQ(copy, local);
        EXPECT_THROW(string.Format("%600d", 1), std::bad_alloc);
        EXPECT_THROW(string.Left(45), std::bad_alloc);
        EXPECT_THROW(string.GetBuffer(60), std::bad_alloc);
    }
#endif
    EXPECT_EQ(string, Filled(50));
}

} // namespace
