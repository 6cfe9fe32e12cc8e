#include "hcbase/hcbase.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace {

std::string Table(const std::string& entries) { return "[Libraries.zrlib]\n" + entries; }

TEST(Startup, TurnsTheSwitchesOfThePreferencesIntoTheStateOfTheMessages)
{
    const struct {
        const char* preferences;
        const char* state;
    } rows[] = {
        {"", "messages=0 enabled=0000 flags=0,0,0,0\n"},
        {"SendToConsole = true", "messages=0 enabled=0000 flags=0,0,0,0\n"}, // no type is on
        {"OutEnabled = true", "messages=1 enabled=1000 flags=0,0,0,0\n"},
        {"WarnEnabled = true\nSendToMsgView = true", "messages=1 enabled=0100 flags=1,1,1,1\n"},
        {"ErrorEnabled = true\nSendToConsole = true", "messages=1 enabled=0010 flags=2,2,2,2\n"},
        {"TraceEnabled = true\nSendToFile = true", "messages=1 enabled=0001 flags=8,8,8,8\n"},
        {"TraceEnabled = true\nSendToDebugger = true\nOutEnabled = true", "messages=1 enabled=1001 flags=4,4,4,4\n"},
        {"OutEnabled = \"true\"", "messages=0 enabled=0000 flags=0,0,0,0\n"},
        {"OutEnabled = true\nnonsense", "messages=0 enabled=0000 flags=0,0,0,0\n"},
    };
    const test::Home home;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.preferences);
        test::WriteFile(home.PreferencesPath(), Table(row.preferences));
        const test::ProcessResult result = test::Run(PROBE_PROGRAM, {"state"});
        EXPECT_EQ(result.exitCode, 0);
        std::string output = result.output;
        std::erase(output, '\r');
        EXPECT_EQ(output, row.state);
    }
}

TEST(Startup, ReadsEachSwitchFromItsKey)
{
    const std::string byDefault = "Cache ForceMainThreadToUseStreamBasedCache ";
    const struct {
        std::string preferences;
        std::string modes;
    } rows[] = {
        {"", byDefault},
        {"Threading = true", "Threading CacheQueueing ThreadBasedCache " + byDefault},
        {"Threading = true\nThreadBasedCache = false", "Threading CacheQueueing " + byDefault},
        {"Threading = true\nCacheQueueing = false", "Threading ThreadBasedCache " + byDefault},
        {"Threading = false\nCacheQueueing = true\nThreadBasedCache = true", byDefault},
        {"Cache = false", "ForceMainThreadToUseStreamBasedCache "},
        {"ForceMainThreadToUseStreamBasedCache = false", "Cache "},
        {"ForceRunInSingleThread = true", "Cache ForceRunInSingleThread ForceMainThreadToUseStreamBasedCache "},
        {"TTStreaming = true", "Cache TTStreaming ForceMainThreadToUseStreamBasedCache "},
        {"ThreadingChannelLocking = true", "Cache ThreadingChannelLocking ForceMainThreadToUseStreamBasedCache "},
        {"OutEnabled = true", byDefault + "OutEnabled "},
        {"WarnEnabled = true", byDefault + "WarnEnabled "},
        {"ErrorEnabled = true", byDefault + "ErrorEnabled "},
        {"TraceEnabled = true", byDefault + "TraceEnabled "},
        {"SendToMsgView = true", byDefault + "SendToMsgView "},
        {"SendToConsole = true", byDefault + "SendToConsole "},
        {"SendToDebugger = true", byDefault + "SendToDebugger "},
        {"SendToFile = true", byDefault + "SendToFile "},
    };
    const test::Home home;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.preferences);
        test::WriteFile(home.PreferencesPath(), Table(row.preferences));
        EXPECT_EQ(test::Lines(test::Run(PROBE_PROGRAM, {"modes"}).output), std::vector{row.modes});
    }
}

TEST(Startup, TellsAFaultOfThePreferencesOnce)
{
    const test::Home home;
    for (const char* const entry : {"OutEnabled = \"true\"", "OutEnabled = true\nnonsense"}) {
        test::WriteFile(home.PreferencesPath(), Table(entry));
        const test::ProcessResult result = test::Run(PROBE_PROGRAM, {"state"});
        EXPECT_EQ(test::Lines(result.errors).size(), 1U) << result.errors;
    }
}

TEST(Startup, AModeReadAgainOverwritesTheSwitchesAndLeavesTheMessages)
{
    const test::Home home;
    ZRSetMessagesEnabled(0);
    const struct {
        void (*set)(char);
        char (*get)();
        char byDefault;
    } switches[] = {
        {ZRMode::SetThreading, ZRMode::IsThreading, 0},
        {ZRMode::SetCacheQueueing, ZRMode::IsCacheQueueing, 0},
        {ZRMode::SetThreadBasedCache, ZRMode::IsThreadBasedCache, 0},
        {ZRMode::SetCache, ZRMode::IsCache, 1},
        {ZRMode::SetForceRunInSingleThread, ZRMode::IsForceRunInSingleThread, 0},
        {ZRMode::SetThreadingChannelLocking, ZRMode::IsThreadingChannelLocking, 0},
        {ZRMode::SetForceMainThreadToUseStreamBasedCache, ZRMode::IsForceMainThreadToUseStreamBasedCache, 1},
    };
    char value = 1;
    for (const auto& each : switches) {
        each.set(++value);
    }
    for (const auto& each : switches) {
        EXPECT_EQ(each.get(), 2 + (&each - switches)) << "kept as given, and no other setter changes it";
    }
    test::WriteFile(home.PreferencesPath(), Table("OutEnabled = true\nSendToFile = true\n"));
    const ZRMode first;
    ZRMode copy(first);
    copy = first;
    for (const auto& each : switches) {
        EXPECT_EQ(each.get(), each.byDefault);
    }
    EXPECT_EQ(ZRMode::IsOutEnabled(), 1);
    EXPECT_EQ(ZRMode::SendToFile(), 1);
    EXPECT_EQ(ZRGetMessagesEnabled(), 0);
    EXPECT_EQ(ZRGetOutFlags(), 0);
}

TEST(Startup, TheLoadingThreadIsTheMainThread)
{
    EXPECT_EQ(test::Lines(test::Run(PROBE_PROGRAM, {"main"}).output), std::vector<std::string>{"main=1 worker=0"});
}

TEST(Startup, RecordsTheVersion)
{
    HCVersion version;
    ASSERT_EQ(HFVersionGet("ZRLIB", version), 1);
    EXPECT_EQ(version.major, 2);
    EXPECT_EQ(version.minor, 90);
    EXPECT_EQ(version.revision, 10);
    const std::regex date("[A-Z][a-z][a-z] [ 1-3][0-9] 20[0-9][0-9]");
    EXPECT_TRUE(std::regex_match(static_cast<const char*>(version.date), date)) << version.date;
    EXPECT_TRUE(std::regex_match(static_cast<const char*>(version.time), std::regex("[0-9]{2}:[0-9]{2}:[0-9]{2}")));
}

} // namespace
