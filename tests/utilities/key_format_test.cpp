#include "tests/support/messages.h"
#include "tests/support/allocations.h"
#include "zrobservers/recorder.h"

#include <barrier>
#include <climits>
#include <cmath>
#include <set>
#include <thread>
#include <vector>

namespace {

/// Tickets that say what they do.
struct VerboseKey : ZRKey {
    static void SetVerbose(char verbose) { m_bVerbose = verbose; }
};

using Keys = test::Messages;

TEST_F(Keys, TicketsCountUpAndTellWhenTheyAreToldTo)
{
    const ZRRecorder messages(*ZRGetMessageHandler());
    const std::int64_t last = ZRKey::GetLastTicket();
    EXPECT_EQ(ZRKey::GetNextTicket(), last + 1);
    EXPECT_EQ(ZRKey::GetNextTicket(), last + 1);
    EXPECT_EQ(ZRKey::IssueTicket(), last + 1);
    EXPECT_EQ(ZRKey::GetLastTicket(), last + 1);
    EXPECT_TRUE(messages.GetEvents().empty());
    VerboseKey::SetVerbose(2);
    EXPECT_EQ(ZRKey::GetVerbose(), 2);
    ZRKey::IssueTicket();
    static_cast<void>(ZRKey::GetNextTicket());
    static_cast<void>(ZRKey::GetLastTicket());
    VerboseKey::SetVerbose(0);
    ASSERT_EQ(messages.GetEvents().size(), 3U);
    const std::string issued = std::to_string(last + 2);
    EXPECT_EQ(messages.GetEvents()[0].GetText(), ("Issued key " + issued).c_str());
    EXPECT_EQ(messages.GetEvents()[1].GetText(), ("Next ticket will be " + std::to_string(last + 3)).c_str());
    EXPECT_EQ(messages.GetEvents()[2].GetText(), ("Last ticket was " + issued).c_str());
    EXPECT_EQ(messages.GetEvents()[2].GetMsg().IsOut(), 1);
}

TEST_F(Keys, NoTicketIsIssuedTwice)
{
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kTickets = 20000;
    std::vector<std::vector<std::int64_t>> tickets(kThreads);
    std::vector<std::thread> threads;
    std::barrier start(kThreads);
    for (auto& own : tickets) {
        threads.emplace_back([&own, &start] {
            start.arrive_and_wait();
            for (std::size_t count = 0; count < kTickets; ++count) {
                own.push_back(ZRKey::IssueTicket());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::int64_t> all;
    for (const auto& own : tickets) {
        all.insert(own.begin(), own.end());
    }
    EXPECT_EQ(all.size(), kThreads * kTickets);
}

TEST_F(Keys, AreMadeOfValueChanceAndTime)
{
    HCString key("what was there");
    for (const int value : {0x2A, 0, -1, INT_MIN}) {
        std::srand(1);
        const double drawn = ZRMath::Rand() * 32767;
        std::srand(1);
        HCString start;
        start.Format("K:%08X:%04X:", static_cast<unsigned int>(value), static_cast<unsigned int>(std::lround(drawn)));
        const std::int64_t before = ZRProfiler::GetTicks();
        const int result = ZRGenerateKey(key, value);
        const std::int64_t after = ZRProfiler::GetTicks();
        EXPECT_EQ(result, key.GetLength());
        const std::string whole = static_cast<const char*>(key);
        const auto length = static_cast<std::size_t>(start.GetLength());
        EXPECT_EQ(whole.substr(0, length), static_cast<const char*>(start));
        const std::int64_t ticks = std::stoll(whole.substr(length));
        EXPECT_TRUE(before <= ticks && ticks <= after) << whole;
    }
    for (const auto& [code, id] : {std::pair{0x1234, 0x1234}, {static_cast<int>(0xA04F1234), 0x1234}, {-1, 0xFFFF}}) {
        EXPECT_EQ(ZRShortID(code), id);
    }
}

TEST(Format, ShortensByteCounts)
{
    const struct {
        std::int64_t value;
        int format; // -1: without units, -2: "bytes" and null, -3: null and "B"
        int precision;
        const char* text;
    } rows[] = {
        {999, 1, 2, "999 bytes"},
        {1000, 1, 2, "0.98 KB"},
        {1024, 1, 2, "1.00 KB"},
        {1048575, 1, 2, "1024.00 KB"},
        {1048576, 1, 2, "1.00 MB"},
        {1073741823, 1, 2, "1024.00 MB"},
        {1073741824, 1, 0, "1 GB"},
        {1099511627775, 1, 3, "1024.000 GB"},
        {1099511627776, 1, 1, "1.0 TB"},
        {1125899906842623, 1, 0, "1024 TB"},
        {1125899906842624, 1, 2, "1.13 ?B"},
        {INT64_MAX, 1, 3, "9223.372 ?B"},
        {INT64_MIN, 1, 3, "-9223372036854775808 bytes"},
        {-5000000, 1, 2, "-5000000 bytes"},
        {2560, 1, 0, "2 KB"}, // 2.5, to the even one
        {1536, 1, -3, "2 KB"},
        {1536, 1, INT_MIN, "2 KB"},
        {2000, -1, 3, "1.953 K"},
        {5, -1, 3, "5"},
        {5, -2, 3, "5 bytes"},
        {2000, -2, 3, "1.953 K"},
        {5, -3, 3, "5"},
        {2000, -3, 3, "1.953 KB"},
        {1025, 1, 20, "1.00097656250000000000 KB"},
        {5, 2, 2, "Unknown format code"},
        {5, 0, 2, "Unknown format code"},
    };
#if !defined(_WIN32) // where allocations inside a library cannot be counted
    const long allocations = test::AllocationCount();
    ZRFormat::KMGT(1'572'864, ZRFormat::BYTES, 2);
    EXPECT_EQ(test::AllocationCount(), allocations);
#endif
    for (const auto& row : rows) {
        const char* const unit = row.format == -2 ? "bytes" : nullptr;
        const char* const scaledUnit = row.format == -3 ? "B" : nullptr;
        EXPECT_EQ(row.format < 0 ? ZRFormat::KMGT(row.value, unit, scaledUnit, row.precision)
                                 : ZRFormat::KMGT(row.value, row.format, row.precision),
            row.text);
    }
    EXPECT_EQ(ZRFormat::BYTES, 1);
    EXPECT_EQ(ZRFormat::KMGT(1024, 1, 1000).GetLength(), 1005);
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
        {"", 2, 0, {0, 0, 'x', 'x', 'x', 'x'}},
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
    const struct {
        int code;
        const char* name;
    } rows[] = {{1, "RSX"}, {2, "Vax"}, {3, "Dos"}, {4, "Masscomp"}, {5, "Apollo"}, {6, "HP400"}, {7, "Sun"},
        {8, "SGI"}, {9, "IBM6000"}, {10, "DecStation"}, {11, "HP700"}, {12, "Generic Unix"}, {101, "Windows"},
        {13, "Unidentified operating system 13"}, {0, "Unidentified operating system 0"},
        {-1, "Unidentified operating system -1"}, {100, "Unidentified operating system 100"},
        {102, "Unidentified operating system 102"}, {INT_MIN, "Unidentified operating system -2147483648"}};
    const char* const known = ZRGetOpSysName(101);
    for (const auto& row : rows) {
        EXPECT_STREQ(ZRGetOpSysName(row.code), row.name);
    }
    EXPECT_STREQ(known, "Windows") << "valid for good";
}

TEST(SystemFunctions, KnowTheRoomOnTheDisk)
{
    EXPECT_EQ(ZRCheckDiskSpace(0, 0), 1);
    EXPECT_EQ(ZRCheckDiskSpace(UINT64_MAX, 0), 0);
    EXPECT_EQ(ZRCheckDiskSpace(0, UINT64_MAX), 0);
    EXPECT_EQ(ZRCheckDiskSpace(UINT64_MAX, 1), 1) << "the sum is 0";
    std::uint64_t available = 0;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
    ASSERT_EQ(HCFileSystem().GetDiskInfo(".", &available, &total, &free), 1);
    EXPECT_EQ(ZRCheckDiskSpace(available / 4, available / 4), 1);
    const std::uint64_t reserved = free - available;
    if (reserved > available / 4) { // more than others are likely to write or delete meanwhile
        EXPECT_EQ(ZRCheckDiskSpace(available, reserved / 2), 0) << "free, but not for everybody";
    } else {
        EXPECT_EQ(ZRCheckDiskSpace(available, available / 4), 0);
    }
}

TEST(Text, NamesProperties)
{
    const HCString* const texts[] = {&ZRText::ICON_FILENAME, &ZRText::BITMAP_FILENAME, &ZRText::PALETTE_NAME,
        &ZRText::ORIGINAL_PATH_NAME, &ZRText::FORCE_DROP_LOCATION, &ZRText::HTML, &ZRText::PRIVATE_SYSTEM_PROPERTIES};
    std::string all;
    for (const HCString* text : texts) {
        all += static_cast<const char*>(*text);
        all += " ";
    }
    EXPECT_EQ(all,
        "IconFileName BitmapFileName PaletteName OriginalPathName ForceDropLocation HTML PrivateSystemProperties ");
}

} // namespace
