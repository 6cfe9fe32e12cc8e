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
        const HCString original(Filled(length).c_str());
        EXPECT_EQ(original.GetLength(), length);
        HCString copy(original);
        EXPECT_EQ(copy, Filled(length));
        for (const int before : {0, 39, 40, 200}) {
            HCString assigned(Filled(before).c_str());
            assigned = original;
            EXPECT_EQ(assigned, original);
            assigned = Filled(before).c_str();
            EXPECT_EQ(assigned.GetLength(), before);
            assigned = std::move(copy);
            EXPECT_EQ(assigned, original);
            EXPECT_EQ(copy, "");
            copy = assigned;
        }
        for (const int count : {length + 1, length, length - 1, 1, 0, -1}) {
            HCString moved(std::move(copy));
            copy = original;
            EXPECT_EQ(moved.Left(count), Filled(std::clamp(count, 0, length)));
            EXPECT_EQ(moved, Filled(std::clamp(count, 0, length))) << "cuts the string itself";
        }
    }
}

TEST(String, TakesNullAsTheEmptyText)
{
    const char* const null = nullptr;
    HCString string("text");
    EXPECT_GT(string.Compare(null), 0);
    EXPECT_GT(string.CompareNoCase(null), 0);
    string = null;
    EXPECT_EQ(string.Compare(null), 0);
    EXPECT_EQ(string.CompareNoCase(null), 0);
    string = "text";
    string.Format(null);
    EXPECT_EQ(string, HCString(null));
}

TEST(String, MayBeGivenItsOwnText)
{
    for (const int length : {10, 39, 60, 2000}) {
        HCString string(Filled(length).c_str());
        const HCString& same = string;
        string = same;
        string = static_cast<const char*>(string) + 4;
        const std::string expected = Filled(length).substr(4);
        EXPECT_EQ(string, expected);
        string.Format("%s and %s", static_cast<const char*>(string), static_cast<const char*>(string));
        EXPECT_EQ(string, expected + " and " + expected);
    }
}

TEST(String, FormatsAsPrintfDoes)
{
    HCString string;
    string.Format("%s|%d|%c|\xC3\xBC\t%.2f|%X", "a%s", -5, 'z', 2.5, 0xBEEFU);
    EXPECT_EQ(string, "a%s|-5|z|\xC3\xBC\t2.50|BEEF");
    string.Format(
        "%X|%08X|%04X|%09X|%01X|%d|%u|%c|%s%%", 0U, 0xFFFFFFFFU, 0x12345U, 0xABU, 0U, INT_MIN, UINT_MAX, 'x', "");
    EXPECT_EQ(string, "0|FFFFFFFF|12345|0000000AB|0|-2147483648|4294967295|x|%");
    string.Format("%5d|%-3s|%02d|%x|%ld|%s", 7, "a", 3, 0xABU, 5L, string.GetLength() > 0 ? "end" : "");
    EXPECT_EQ(string, "    7|a  |03|ab|5|end");
    for (const int length : {511, 512, 513, 1'000'000}) { // around the end of the buffer on the stack
        string.Format("%s", Filled(length).c_str());
        EXPECT_EQ(string.ToString(), Filled(length));
    }
    errno = ENOENT;
    const char* const format = "%m %s"; // not a constant, because "%m" is not of the standard
    string.Format(format, Filled(1000).c_str());
    EXPECT_EQ(string, (std::string(std::strerror(ENOENT)) + " " + Filled(1000)).c_str());
    EXPECT_EQ(errno, ENOENT);
}

/// All operators, with either side first.
template <typename Text> void ExpectOrder(const HCString& string, const Text& text, int order)
{
    const std::vector<bool> expected{order == 0, order != 0, order > 0, order < 0, order >= 0, order <= 0};
    const std::vector<bool> given{
        string == text, string != text, string > text, string < text, string >= text, string <= text};
    const std::vector<bool> turned{
        text == string, text != string, (text < string), (text > string), text <= string, text >= string};
    EXPECT_EQ(given, expected);
    EXPECT_EQ(turned, expected);
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
    EXPECT_EQ((std::set<std::pair<HCString, int>>{{"key", 1}, {HCString("key"), 1}, {"other", 1}}).size(), 2U);
}

TEST(String, KeepsZeroBytesInCopies)
{
    for (const int length : {10, 100}) { // inside the object and on the heap
        std::string text = Filled(length);
        text[3] = '\0';
        HCString string{std::string_view(text)};
        EXPECT_EQ(HCString(string).ToString(), text);
        EXPECT_EQ(std::hash<HCString>()(string), std::hash<HCString>()("abc")) << "equal strings have equal hashes";
        EXPECT_EQ(std::string(string.begin(), string.end()), text);
        HCString copy;
        copy = string;
        EXPECT_EQ(copy.View(), text);
        string = std::string_view(text).substr(1);
        EXPECT_EQ(string.View(), text.substr(1));
    }
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
    string.ReleaseBuffer(-1);
    EXPECT_EQ(string.GetLength(), 100);
    string.ReleaseBuffer(7);
    EXPECT_EQ(string, "bbbbbbb");
    string.ReleaseBuffer(1'000'000);
    EXPECT_EQ(string.GetLength(), 100) << "no length beyond the room";
    string.Empty();
    EXPECT_EQ(string, "");
}

TEST(String, KeepsItsTextWhenThereIsNoRoomForAnother)
{
    HCString string(Filled(50).c_str());
    EXPECT_THROW(string.GetBuffer(INT_MAX), std::length_error);
#if !defined(_WIN32) // where a library has a heap of its own
    const std::string lengths[] = {Filled(39), Filled(60)};
    {
        const test::FailingHeap heap(0);
        HCString local(lengths[0].c_str()); // short texts need no heap
        HCString copy(local);
        copy = local;
        copy.Format("%s", lengths[0].c_str());
        EXPECT_THROW(copy = string, std::bad_alloc);
        EXPECT_EQ(copy, lengths[0].c_str());
        EXPECT_THROW(string = lengths[1].c_str(), std::bad_alloc);
        EXPECT_THROW(string.Format("%600d", 1), std::bad_alloc);
        EXPECT_THROW(string.Left(45), std::bad_alloc);
        EXPECT_THROW(string.GetBuffer(60), std::bad_alloc);
    }
#endif
    EXPECT_EQ(string, Filled(50));
}

} // namespace
