#include "hcbase/error.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

/// The codes of the calling thread's records, newest first.
std::string Chain()
{
    std::string codes;
    HCError error;
    for (int steps = 0; HFErrorGetPrevious(steps, error); ++steps) {
        codes += std::to_string(error.code) + " ";
    }
    return codes;
}

TEST(Error, KeepsTheRecordsBeforeOnlyWhenChained)
{
    HFErrorClear();
    HCError error;
    error.code = 77;
    EXPECT_EQ(HFErrorGet(error), 0);
    EXPECT_EQ(error.code, 77) << "nothing is stored without a record";

    EXPECT_EQ(HFErrorSet(1, "one", "here", 1), 1);
    EXPECT_EQ(Chain(), "1 ");
    HFErrorSet(2, "two", nullptr, 1);
    HFErrorSet(3, nullptr, "there", 1);
    EXPECT_EQ(Chain(), "3 2 1 ");
    EXPECT_EQ(HFErrorGetPrevious(2, error), 1);
    EXPECT_EQ(error.text, "one");
    EXPECT_EQ(error.location, "here");
    EXPECT_EQ(HFErrorGet(error), 1);
    EXPECT_EQ(error.text, "");
    EXPECT_EQ(error.chain, 1);
    EXPECT_EQ(HFErrorGetPrevious(-1, error), 0);
    EXPECT_EQ(HFErrorGetPrevious(3, error), 0);

    HFErrorSet(4, "four", "", 0);
    EXPECT_EQ(Chain(), "4 ");
    HFErrorClear();
    EXPECT_EQ(Chain(), "");
}

TEST(Error, KeepsSixteenRecords)
{
    HFErrorSet(0, "first", "", 0);
    for (int code = 1; code < 40; ++code) {
        HFErrorSet(code, std::string(100, 'x').c_str(), "", 1);
    }
    EXPECT_EQ(Chain(), "39 38 37 36 35 34 33 32 31 30 29 28 27 26 25 24 ");
    HFErrorSet(50, "alone", "", 0);
    HFErrorSet(51, "second", "", 1);
    EXPECT_EQ(Chain(), "51 50 ");
}

TEST(Error, BelongsToItsThread)
{
    HFErrorSet(1, "of the main thread", "", 0);
    std::thread([] {
        HCError error;
        EXPECT_EQ(HFErrorGet(error), 0);
        HFErrorSet(2, "of the other thread, long enough for the heap and gone with its thread", "", 0);
        EXPECT_EQ(Chain(), "2 ");
    }).join();
    EXPECT_EQ(Chain(), "1 ");
}

} // namespace
