#include "hcbase/hcbase.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace {

std::string Table(const std::string& entries) { return "[Libraries.zrlib]\n" + entries; }

TEST(Startup, TurnsThePreferencesIntoSwitchesAndThoseIntoTheStateOfTheMessages)
{
    static constexpr auto kOff = "messages=0 enabled=0000 flags=0,0,0,0";
    const std::string byDefault = "Cache ForceMainThreadToUseStreamBasedCache ";
    const struct {
        const char* preferences;
        std::string modes;
        const char* state = kOff;
        std::size_t complaints = 0;
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
        {"SendToConsole = true", byDefault + "SendToConsole "}, // no type is on
        {"OutEnabled = true", byDefault + "OutEnabled ", "messages=1 enabled=1000 flags=0,0,0,0"},
        {"WarnEnabled = true\nSendToMsgView = true", byDefault + "WarnEnabled SendToMsgView ",
            "messages=1 enabled=0100 flags=1,1,1,1"},
        {"ErrorEnabled = true\nSendToConsole = true", byDefault + "ErrorEnabled SendToConsole ",
            "messages=1 enabled=0010 flags=2,2,2,2"},
        {"TraceEnabled = true\nSendToFile = true", byDefault + "TraceEnabled SendToFile ",
            "messages=1 enabled=0001 flags=8,8,8,8"},
        {"TraceEnabled = true\nSendToDebugger = true\nOutEnabled = true",
            byDefault + "OutEnabled TraceEnabled SendToDebugger ", "messages=1 enabled=1001 flags=4,4,4,4"},
        {"OutEnabled = \"true\"", byDefault, kOff, 1},
        {"OutEnabled = true\nnonsense", byDefault, kOff, 1},
    };
    const test::Home home;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.preferences);
        test::WriteFile(home.PreferencesPath(), Table(row.preferences));
        const test::ProcessResult result = test::Run(PROBE_PROGRAM, {"modes", "state", "main"});
        std::string output = result.output;
        std::erase(output, '\r');
        EXPECT_EQ(output, row.modes + "\n" + row.state + "\nmain=1 worker=0\n");
        EXPECT_EQ(test::Lines(result.errors).size(), row.complaints) << "each is told once: " << result.errors;
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
    for (const auto& each : switches) {
        each.set(static_cast<char>(2 + (&each - switches)));
    }
    for (const auto& each : switches) {
        EXPECT_EQ(each.get(), 2 + (&each - switches)) << "kept as given, and no other setter changes it";
    }
    test::WriteFile(home.PreferencesPath(), Table("OutEnabled = true\nSendToFile = true\n"));
    const ZRMode first;
    for (const auto& each : switches) {
        EXPECT_EQ(each.get(), each.byDefault);
    }
    EXPECT_EQ(ZRMode::IsOutEnabled() + ZRMode::SendToFile(), 2);
    ZRMode::SetCache(7);
    ZRMode copy(first);
    copy = first;
    EXPECT_EQ(ZRMode::IsCache(), 7) << "a copy reads nothing";
    EXPECT_EQ(ZRGetMessagesEnabled(), 0);
    EXPECT_EQ(ZRGetOutFlags(), 0);
}

TEST(Startup, RecordsTheVersion)
{
    HCVersion version;
    ASSERT_EQ(HFVersionGet("ZRLIB", version), 1);
    HCString text;
    text.Format("%d.%d.%d %s %s", version.major, version.minor, version.revision,
        static_cast<const char*>(version.date), static_cast<const char*>(version.time));
    const std::regex form(R"(2\.90\.10 [A-Z][a-z][a-z] [ 1-3]\d 20\d\d \d\d:\d\d:\d\d)");
    EXPECT_TRUE(std::regex_match(text.ToString(), form)) << text;
}

} // namespace
