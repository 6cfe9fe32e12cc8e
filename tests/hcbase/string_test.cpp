#include "hcbase/string.h"
#include "tests/support/allocations.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>

namespace {

std::string Filled(int length) { return std::string(static_cast<std::size_t>(length), 'x'); }

TEST(String, KeepsTextsOfEveryLengthThroughCopiesMovesAndAssignments)
{
    for (const int length : {0, 1, 38, 39, 40, 41, 100, 1'000'000}) {
        SCOPED_TRACE(length);
        const std::string expected = Filled(length);
        const HCString original(expected.c_str());
        EXPECT_EQ(original.GetLength(), length);
        EXPECT_EQ(original, expected.c_str());

        HCString copy(original);
        EXPECT_EQ(copy, original);
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
        const HCString moved(std::move(copy));
        EXPECT_EQ(moved, original);
    }
}

TEST(String, ShortTextsNeedNoHeap)
{
#if defined(_WIN32)
    GTEST_SKIP() << "allocations inside a library cannot be counted there";
#endif
    const std::string text = Filled(39);
    const long before = test::AllocationCount();
    {
        HCString string(text.c_str());
        HCString copy(string);
        copy = string;
        copy.Format("%s", text.c_str());
        copy = copy.Left(10);
    }
    EXPECT_EQ(test::AllocationCount(), before);
}

TEST(String, TakesNullAsTheEmptyText)
{
    const char* const null = nullptr;
    HCString string(null);
    EXPECT_EQ(string.GetLength(), 0);
    string = "text";
    EXPECT_NE(string.Compare(null), 0);
    EXPECT_NE(string.CompareNoCase(null), 0);
    string = null;
    EXPECT_EQ(string.Compare(null), 0);
    EXPECT_EQ(string.CompareNoCase(null), 0);
    string.Format(null);
    EXPECT_EQ(string, "");
}

TEST(String, MayBeGivenItsOwnText)
{
    for (const int length : {10, 39, 60, 2000}) {
        SCOPED_TRACE(length);
        const std::string expected = Filled(length);
        HCString string(expected.c_str());
        const HCString& same = string;
        string = same;
        EXPECT_EQ(string, expected.c_str());
        string = static_cast<const char*>(string) + 4;
        EXPECT_EQ(string, expected.c_str() + 4);
        string.Format("%s and %s", static_cast<const char*>(string), static_cast<const char*>(string));
        EXPECT_EQ(string, (expected.substr(4) + " and " + expected.substr(4)).c_str());
    }
}

TEST(String, FormatsAsPrintfDoes)
{
    HCString string;
    const auto check = [&string](const char* expected) { EXPECT_EQ(string, expected); };
    string.Format("%s|%d|%c|%.2f|%X", "a%s", -5, 'z', 2.5, 0xBEEFU);
    check("a%s|-5|z|2.50|BEEF");
    string.Format("%08X %04X %.0f 100%%", 0xA04FU, 0x1U, 2.6);
    check("0000A04F 0001 3 100%");
    string.Format(
        "%X|%08X|%04X|%09X|%01X|%d|%u|%c|%s%%", 0U, 0xFFFFFFFFU, 0x12345U, 0xABU, 0U, INT_MIN, UINT_MAX, 'x', "");
    check("0|FFFFFFFF|12345|0000000AB|0|-2147483648|4294967295|x|%");
    string.Format("%5d|%-3s|%02d|%x|%ld|%s", 7, "a", 3, 0xABU, 5L, string.GetLength() > 0 ? "end" : "");
    check("    7|a  |03|ab|5|end");
    string.Format("\xC3\xBC\t\x01%s", "\xE2\x82\xAC");
    check("\xC3\xBC\t\x01\xE2\x82\xAC");
    for (const int length : {511, 512, 513, 1'000'000}) { // around the end of the buffer on the stack
        string.Format("%s", Filled(length).c_str());
        EXPECT_EQ(string.GetLength(), length);
        EXPECT_EQ(string, Filled(length).c_str());
    }
}

TEST(String, ComparesWithAndWithoutCase)
{
    const struct {
        const char* left;
        const char* right;
        int compared;
        int comparedNoCase;
    } rows[] = {
        {"", "", 0, 0}, {"", "a", -1, -1}, {"abc", "abc", 0, 0}, {"abc", "ABC", 1, 0}, {"abc", "abd", -1, -1},
        {"abcd", "ABC", 1, 1}, {"A_", "Aa", -1, -1}, // the underline lies between the capitals and the small letters
        {"\xC3\xA4", "\xC3\x84", 1, 1}, // letters beyond a to z are not folded
        {"z", "\xC3\xA4", -1, -1}, // bytes count as unsigned
    };
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.left) + " / " + row.right);
        const HCString string(row.left);
        EXPECT_EQ(sign(string.Compare(row.right)), row.compared);
        EXPECT_EQ(sign(string.CompareNoCase(row.right)), row.comparedNoCase);
        EXPECT_EQ(string == row.right, row.compared == 0);
        EXPECT_EQ(row.right != string, row.compared != 0);
        EXPECT_EQ(string < row.right, row.compared < 0);
        EXPECT_EQ(row.right <= string, row.compared >= 0);
        EXPECT_EQ(string > HCString(row.right), row.compared > 0);
    }
    EXPECT_EQ((std::set<std::pair<HCString, int>>{{"key", 1}, {HCString("key"), 1}, {"other", 1}}).size(), 2U);
}

TEST(String, KeepsZeroBytesInCopies)
{
    for (const int length : {10, 100}) { // inside the object and on the heap
        HCString string(Filled(length).c_str());
        string.GetBuffer(0)[3] = '\0';
        string.ReleaseBuffer(length);
        HCString copy(string);
        EXPECT_EQ(copy.GetLength(), length);
        copy = "";
        copy = string;
        EXPECT_EQ(copy.GetLength(), length);
        EXPECT_EQ(static_cast<const char*>(copy)[length - 1], 'x');
        EXPECT_EQ(copy, "xxx");
    }
}

TEST(String, LeavesTheCallersErrno)
{
    HCString string;
    errno = ENOENT;
    const char* format = "%m %s"; // not a constant, because "%m" is not of the standard
    string.Format(format, Filled(1000).c_str());
    EXPECT_EQ(string.Left(25), (std::string(std::strerror(ENOENT)) + " xxx").substr(0, 25).c_str());
    EXPECT_EQ(errno, ENOENT);
}

TEST(String, LeftCutsTheStringItIsCalledOn)
{
    const struct {
        int count;
        const char* expected;
    } rows[] = {{-1, ""}, {0, ""}, {1, "a"}, {5, "abcde"}, {6, "abcdef"}, {7, "abcdef"}};
    for (const auto& row : rows) {
        HCString string("abcdef");
        EXPECT_EQ(string.Left(row.count), row.expected);
        EXPECT_EQ(string, row.expected);
    }
}

TEST(String, LendsItsBuffer)
{
    HCString string("abc");
    EXPECT_STREQ(string.GetBuffer(0), "abc");
    string.GetBuffer(0)[1] = '\0';
    string.ReleaseBuffer(-1);
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

} // namespace
