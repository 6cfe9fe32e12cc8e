#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "zrobservers/recorder.h"

#include <climits>
#include <cmath>
#include <tuple>

namespace {

/// Tickets that say what they do.
struct VerboseKey : ZRKey {
    static void SetVerbose(char verbose) { m_bVerbose = verbose; }
};

using Keys = test::Messages;

TEST_F(Keys, TicketsCountUpAndTellWhenTheyAreToldTo)
{
    const std::int64_t last = ZRKey::GetLastTicket();
    const ZRRecorder messages(*ZRGetMessageHandler());
    for (const char verbose : {char{0}, char{2}}) {
        VerboseKey::SetVerbose(verbose);
        EXPECT_EQ(ZRKey::GetVerbose(), verbose);
        const std::int64_t next = ZRKey::GetNextTicket();
        EXPECT_EQ(ZRKey::IssueTicket(), next);
        EXPECT_EQ(ZRKey::GetLastTicket(), next);
    }
    VerboseKey::SetVerbose(0);
    std::string told;
    for (const ZRMsg& message : messages.GetMessages(ZR_MSG_OUT)) {
        told += message.GetText().ToString() + ". ";
    }
    const std::string ticket = std::to_string(last + 2);
    EXPECT_EQ(told, "Next ticket will be " + ticket + ". Issued key " + ticket + ". Last ticket was " + ticket + ". ");
}

TEST_F(Keys, AreMadeOfValueChanceAndTime)
{
    std::srand(1);
    const double drawn = ZRMath::Rand() * 32767;
    std::srand(1);
    HCString start;
    start.Format("K:80000000:%04X:", static_cast<unsigned int>(std::lround(drawn)));
    HCString key("what was there");
    const std::int64_t before = ZRProfiler::GetTicks();
    const int length = ZRGenerateKey(key, INT_MIN);
    const std::int64_t after = ZRProfiler::GetTicks();
    EXPECT_EQ(length, key.GetLength());
    ASSERT_TRUE(key.View().starts_with(start.View())) << key;
    const std::int64_t ticks = std::stoll(key.ToString().substr(start.View().size()));
    EXPECT_TRUE(before <= ticks && ticks <= after) << key;
    EXPECT_EQ(ZRShortID(static_cast<int>(0xA04F1234)), 0x1234);
    EXPECT_EQ(ZRShortID(-1), 0xFFFF);
}

TEST(Format, ShortensByteCounts)
{
    const std::tuple<std::int64_t, int, const char*> cases[] = {
        // clang-format off
        {-5, 0, "-5 bytes"}, {999, 2, "999 bytes"}, {1000, 2, "0.98 KB"},
        {2560, 0, "2 KB"}, {1536, INT_MIN, "2 KB"}, // halves become even
        {1048576, 2, "1.00 MB"}, {1073741824, 0, "1 GB"}, {1099511627776, 1, "1.0 TB"},
        {1125899906842623, 0, "1024 TB"}, {1125899906842624, 2, "1.13 ?B"}, {INT64_MAX, 3, "9223.372 ?B"},
        {1025, 20, "1.00097656250000000000 KB"},
        // clang-format on
    };
    for (const auto& [value, precision, text] : cases) {
        EXPECT_EQ(ZRFormat::KMGT(value, ZRFormat::BYTES, precision), text);
    }
    EXPECT_EQ(ZRFormat::KMGT(5, nullptr, "B", 3), "5");
    EXPECT_EQ(ZRFormat::KMGT(2000, "bytes", nullptr, 3), "1.953 K");
    EXPECT_EQ(ZRFormat::KMGT(1536, ZRFormat::BYTES + 1, 2), "Unknown format code");
    EXPECT_EQ(ZRFormat::KMGT(1024, 1, 1000).GetLength(), 1005);
#if !defined(_WIN32) // where allocations inside a library cannot be counted
    const long allocations = test::AllocationCount();
    ZRFormat::KMGT(1'572'864, ZRFormat::BYTES, 2);
    EXPECT_EQ(test::AllocationCount(), allocations);
#endif
}

TEST(SystemFunctions, CopyTextsIntoBuffers)
{
    const std::tuple<const char*, int, int, std::string> cases[] = {
        {"abcdef", 4, 3, {'a', 'b', 'c', 0, 'x', 'x'}}, // the buffer was full of x
        {"a", 3, 1, {'a', 0, 0, 'x', 'x', 'x'}},
        {"abc", 1, 0, {0, 'x', 'x', 'x', 'x', 'x'}},
        {"abc", 0, 0, "xxxxxx"},
    };
    for (const auto& [text, size, result, expected] : cases) {
        std::string buffer = "xxxxxx";
        EXPECT_EQ(ZRStringToBuffer(buffer.data(), size, text), result) << size;
        EXPECT_EQ(buffer, expected);
    }
    EXPECT_EQ(ZRStringToBuffer(nullptr, 4, "abc"), 0);
}

TEST(SystemFunctions, NameOperatingSystems)
{
    const char* const windows = ZRGetOpSysName(101);
    for (const int unknown : {INT_MIN, 0, 13, 100, 102}) {
        EXPECT_EQ(ZRGetOpSysName(unknown), "Unidentified operating system " + std::to_string(unknown));
    }
    EXPECT_STREQ(windows, "Windows") << "valid for good";
    EXPECT_STREQ(ZRGetOpSysName(1), "RSX");
    EXPECT_STREQ(ZRGetOpSysName(12), "Generic Unix");
}

TEST(SystemFunctions, KnowTheRoomOnTheDisk)
{
    EXPECT_EQ(ZRCheckDiskSpace(0, 0), 1);
    EXPECT_EQ(ZRCheckDiskSpace(0, UINT64_MAX), 0);
    EXPECT_EQ(ZRCheckDiskSpace(UINT64_MAX, 1), 1) << "the sum is 0";
    std::uint64_t total = 0;
    EXPECT_EQ(HCFileSystem().GetDiskInfo(".", nullptr, &total, nullptr), 1);
    EXPECT_EQ(ZRCheckDiskSpace(total / 2, total - total / 2), 0) << "something is always in use";
}

} // namespace
