#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"
#include "zrobservers/recorder.h"

#include <climits>
#include <cmath>
#include <set>
#include <vector>

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
    for (const bool isVerbose : {false, true}) {
        VerboseKey::SetVerbose(isVerbose ? 2 : 0);
        EXPECT_EQ(ZRKey::GetVerbose(), isVerbose ? 2 : 0);
        const std::int64_t next = isVerbose ? last + 2 : last + 1;
        EXPECT_EQ(ZRKey::GetNextTicket(), next);
        EXPECT_EQ(ZRKey::IssueTicket(), next);
        EXPECT_EQ(ZRKey::GetLastTicket(), next);
    }
    VerboseKey::SetVerbose(0);
    std::vector<std::string> texts;
    for (const ZRMsg& message : messages.GetMessages(ZR_MSG_OUT)) {
        texts.push_back(message.GetText().ToString());
    }
    const std::string ticket = std::to_string(last + 2);
    EXPECT_EQ(texts,
        (std::vector<std::string>{
            "Next ticket will be " + ticket, "Issued key " + ticket, "Last ticket was " + ticket}));
}

TEST_F(Keys, NoTicketIsIssuedTwice)
{
    constexpr int kThreads = 8;
    constexpr int kTickets = 20000;
    std::set<std::int64_t> tickets[kThreads];
    test::OnThreads(kThreads, [&tickets](int thread) {
        for (int count = 0; count < kTickets; ++count) {
            tickets[thread].insert(ZRKey::IssueTicket());
        }
    });
    std::set<std::int64_t> all;
    for (auto& own : tickets) {
        all.merge(own);
    }
    EXPECT_EQ(all.size(), std::size_t{kThreads} * kTickets);
}

TEST_F(Keys, AreMadeOfValueChanceAndTime)
{
    HCString key("what was there");
    for (const int value : {0x2A, 0, INT_MIN}) {
        std::srand(1);
        const double drawn = ZRMath::Rand() * 32767;
        std::srand(1);
        HCString start;
        start.Format("K:%08X:%04X:", static_cast<unsigned int>(value), static_cast<unsigned int>(std::lround(drawn)));
        const std::int64_t before = ZRProfiler::GetTicks();
        const int length = ZRGenerateKey(key, value);
        const std::int64_t after = ZRProfiler::GetTicks();
        EXPECT_EQ(length, key.GetLength());
        ASSERT_EQ(key.ToString().rfind(start.ToString(), 0), 0U) << key;
        const std::int64_t ticks = std::stoll(key.ToString().substr(start.ToString().size()));
        EXPECT_TRUE(before <= ticks && ticks <= after) << key;
    }
    EXPECT_EQ(ZRShortID(static_cast<int>(0xA04F1234)), 0x1234);
    EXPECT_EQ(ZRShortID(-1), 0xFFFF);
}

TEST(Format, ShortensByteCounts)
{
    const struct {
        std::int64_t value;
        int precision;
        const char* text;
        const char* unit = "bytes";
        const char* scaledUnit = "B";
    } rows[] = {
        {999, 2, "999 bytes"},
        {1000, 2, "0.98 KB"},
        {1048576, 2, "1.00 MB"},
        {1073741824, 0, "1 GB"},
        {1099511627776, 1, "1.0 TB"},
        {1125899906842623, 0, "1024 TB"},
        {1125899906842624, 2, "1.13 ?B"},
        {INT64_MAX, 3, "9223.372 ?B"},
        {2560, 0, "2 KB"}, // 2.5, to the even one
        {1536, INT_MIN, "2 KB"},
        {1025, 20, "1.00097656250000000000 KB"},
        {5, 3, "5", nullptr, "B"},
        {2000, 3, "1.953 K", "bytes", nullptr},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZRFormat::KMGT(row.value, row.unit, row.scaledUnit, row.precision), row.text);
    }
    EXPECT_EQ(ZRFormat::KMGT(-5, ZRFormat::BYTES, 0), "-5 bytes");
    EXPECT_EQ(ZRFormat::KMGT(1536, ZRFormat::BYTES, 2), "1.50 KB");
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
    const struct {
        const char* text;
        int size;
        int result;
        std::string buffer; // all of it; it was full of x
    } rows[] = {
        {"abcdef", 4, 3, {'a', 'b', 'c', 0, 'x', 'x'}},
        {"ab", 4, 2, {'a', 'b', 0, 0, 'x', 'x'}},
        {"abc", 1, 0, {0, 'x', 'x', 'x', 'x', 'x'}},
        {"abc", 0, 0, "xxxxxx"},
        {"abc", INT_MIN, 0, "xxxxxx"},
    };
    for (const auto& row : rows) {
        std::string buffer = "xxxxxx";
        EXPECT_EQ(ZRStringToBuffer(buffer.data(), row.size, row.text), row.result);
        EXPECT_EQ(buffer, row.buffer);
    }
    EXPECT_EQ(ZRStringToBuffer(nullptr, 4, "abc"), 0);
}

TEST(SystemFunctions, NameOperatingSystems)
{
    const char* const names[] = {"RSX", "Vax", "Dos", "Masscomp", "Apollo", "HP400", "Sun", "SGI", "IBM6000",
        "DecStation", "HP700", "Generic Unix"};
    int code = 0;
    for (const char* const name : names) {
        EXPECT_STREQ(ZRGetOpSysName(++code), name);
    }
    const char* const known = ZRGetOpSysName(101);
    for (const int unknown : {INT_MIN, -1, 0, 13, 100, 102}) {
        EXPECT_EQ(ZRGetOpSysName(unknown), "Unidentified operating system " + std::to_string(unknown));
    }
    EXPECT_STREQ(known, "Windows") << "valid for good";
}

TEST(SystemFunctions, KnowTheRoomOnTheDisk)
{
    EXPECT_EQ(ZRCheckDiskSpace(0, 0), 1);
    EXPECT_EQ(ZRCheckDiskSpace(0, UINT64_MAX), 0);
    EXPECT_EQ(ZRCheckDiskSpace(UINT64_MAX, 1), 1) << "the sum is 0";
    std::uint64_t available = 0;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
    ASSERT_EQ(HCFileSystem().GetDiskInfo(".", &available, &total, &free), 1);
    EXPECT_EQ(ZRCheckDiskSpace(available / 4, available / 4), 1);
    // More than others are likely to delete meanwhile; what is reserved is free, but not for everybody.
    const std::uint64_t reserved = free - available;
    EXPECT_EQ(ZRCheckDiskSpace(available, reserved > available / 4 ? reserved / 2 : available / 4), 0);
}

} // namespace
