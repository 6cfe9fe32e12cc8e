#include "hcbase/error.h"
#include "tests/support/allocations.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr const char* kLong = "a text that is too long to lie inside its string";

/// The calling thread's records, newest first.
std::string History()
{
    std::string history;
    HCError error;
    for (int steps = 0; HFErrorGetPrevious(steps, error) != 0; ++steps) {
        history += std::to_string(error.code) + " " + error.text.ToString() + " at " + error.location.ToString() + " "
            + std::to_string(error.chain) + "\n";
    }
    return history;
}

TEST(Error, KeepsSixteenRecordsThoseBeforeOnlyWhenChained)
{
    const std::tuple<int, const char*, const char*, char, const char*> cases[] = {
        {1, "one", "here", 0, "1 one at here 0\n"},
        {2, "two", nullptr, 1, "2 two at  1\n1 one at here 0\n"},
        {3, nullptr, "there", 5, "3  at there 5\n2 two at  1\n1 one at here 0\n"},
        {4, "four", "", 0, "4 four at  0\n"},
    };
    for (const auto& [code, text, location, chain, history] : cases) {
        EXPECT_EQ(HFErrorSet(code, text, location, chain), 1);
        EXPECT_EQ(History(), history);
    }
    std::string expected;
    for (int code = 5; code < 40; ++code) {
        HFErrorSet(code, kLong, "", 1);
        expected.insert(0, code < 24 ? "" : std::to_string(code) + " " + kLong + " at  1\n");
    }
    EXPECT_EQ(History(), expected);
    HFErrorClear();
    EXPECT_EQ(History(), "");
}

TEST(Error, BelongsToItsThread)
{
    HFErrorSet(1, "of the main thread", "", 0);
    std::thread([] {
        HCError error{77, "untouched", "", 0};
        EXPECT_EQ(HFErrorGet(error), 0);
#if !defined(_WIN32) // where a library has a heap of its own
        for (const long allocations : {0, 1}) { // one for the thread's records, one for the text
            const test::FailingHeap heap(allocations);
            EXPECT_EQ(HFErrorSet(1, kLong, "", 0), 0);
        }
#endif
        HFErrorSet(2, kLong, "", 0); // gone with its thread
        EXPECT_EQ(HFErrorGetPrevious(-1, error), 0);
        EXPECT_EQ(HFErrorGetPrevious(1, error), 0);
        EXPECT_EQ(error.text, "untouched");
        EXPECT_EQ(HFErrorGet(error), 1);
        EXPECT_EQ(error.text, kLong);
    }).join();
    EXPECT_EQ(History(), "1 of the main thread at  0\n");
    HFErrorClear();
}

} // namespace
