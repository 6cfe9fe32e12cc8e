#include "hcbase/hcbase.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <string>

namespace {

const struct {
    const char* name;
    char (*get)();
    void (*set)(char) = nullptr;
} kSwitches[] = {
    {"Threading ", ZRMode::IsThreading, ZRMode::SetThreading},
    {"CacheQueueing ", ZRMode::IsCacheQueueing, ZRMode::SetCacheQueueing},
    {"ThreadBasedCache ", ZRMode::IsThreadBasedCache, ZRMode::SetThreadBasedCache},
    {"Cache ", ZRMode::IsCache, ZRMode::SetCache},
    {"Single ", ZRMode::IsForceRunInSingleThread, ZRMode::SetForceRunInSingleThread},
    {"ChannelLocking ", ZRMode::IsThreadingChannelLocking, ZRMode::SetThreadingChannelLocking},
    {"Stream ", ZRMode::IsForceMainThreadToUseStreamBasedCache, ZRMode::SetForceMainThreadToUseStreamBasedCache},
    {"TTStreaming ", ZRMode::IsTTStreaming},
    {"Out ", ZRMode::IsOutEnabled},
    {"Warn ", ZRMode::IsWarnEnabled},
    {"Error ", ZRMode::IsErrorEnabled},
    {"Trace ", ZRMode::IsTraceEnabled},
    {"MsgView ", ZRMode::SendToMsgView},
    {"Console ", ZRMode::SendToConsole},
    {"Debugger ", ZRMode::SendToDebugger},
    {"File ", ZRMode::SendToFile},
};

std::string SwitchesThatAreOn()
{
    std::string names;
    for (const auto& each : kSwitches) {
        names += each.get() != 0 ? each.name : "";
    }
    return names;
}

TEST(Startup, TurnsThePreferencesIntoSwitchesAndThoseIntoTheStateOfTheMessages)
{
    const struct {
        const char* preferences;
        const char* switches;
        std::string enabled = "0000"; // in a process that starts with them, of each type
        std::string flags = "0";
        std::size_t complaints = 0;
    } rows[] = {
        {"Threading = true\nThreadBasedCache = false\nForceRunInSingleThread = true",
            "Threading CacheQueueing Cache Single Stream "},
        {"Threading = true\nCacheQueueing = false\nCache = false", "Threading ThreadBasedCache Stream "},
        {"CacheQueueing = true\nThreadBasedCache = true\nForceMainThreadToUseStreamBasedCache = false", "Cache "},
        {"ThreadingChannelLocking = true\nOutEnabled = true", "Cache ChannelLocking Stream Out ", "1000"},
        {"WarnEnabled = true\nSendToMsgView = true", "Cache Stream Warn MsgView ", "0100", "1"},
        {"ErrorEnabled = true\nSendToConsole = true", "Cache Stream Error Console ", "0010", "2"},
        {"TraceEnabled = true\nSendToDebugger = true", "Cache Stream Trace Debugger ", "0001", "4"},
        {"OutEnabled = true\nTraceEnabled = true\nSendToFile = true", "Cache Stream Out Trace File ", "1001", "8"},
        {"TTStreaming = true\nSendToConsole = true", "Cache Stream TTStreaming Console "},
        {"OutEnabled = \"true\"", "Cache Stream ", "0000", "0", 1},
        {"OutEnabled = true\nnonsense", "Cache Stream ", "0000", "0", 1},
        {"", "Cache Stream "}, // last: the switches stay
    };
    const test::Home home;
    for (const auto& [preferences, switches, enabled, flags, complaints] : rows) {
        test::WriteFile(home.PreferencesPath(), std::string("[Libraries.zrlib]\n") + preferences);
        const ZRMode mode;
        EXPECT_EQ(SwitchesThatAreOn(), switches) << preferences;
        EXPECT_EQ(ZRGetMessagesEnabled(), 0) << "only a start changes the state of the messages";
        const test::ProcessResult started = test::Run(PROBE_PROGRAM, {"state"});
        EXPECT_EQ(started.output,
            "messages=" + std::string(enabled == "0000" ? "0" : "1") + " enabled=" + enabled + " flags=" + flags + ","
                + flags + "," + flags + "," + flags + "\n")
            << preferences;
        EXPECT_EQ(test::Lines(started.errors).size(), complaints) << "each is told once: " << started.errors;
    }
}

TEST(Startup, SettersChangeOneSwitchEachUntilAModeIsReadAgain)
{
    const ZRMode mode;
    for (int index = 0; index < 7; ++index) {
        kSwitches[index].set(static_cast<char>(index + 2));
    }
    ZRMode copy(mode); // reads nothing
    copy = mode;
    for (int index = 0; index < 7; ++index) {
        EXPECT_EQ(kSwitches[index].get(), index + 2) << kSwitches[index].name;
    }
    const ZRMode again;
    EXPECT_EQ(SwitchesThatAreOn(), "Cache Stream ");
}

// Clients show the texts, translate them and look for them. Whoever changes one on purpose gives the new digest here
// (FNV-1a, 64 bits).
TEST(Startup, LoadsTheTextsThatClientsKnow)
{
    std::string texts;
    for (int code = -70000; code < 1000; ++code) {
        const char* text = nullptr;
        if (HFTextGet(HFTextFind("ZRLib"), code, &text) != 0) {
            texts += std::to_string(code) + " " + text + "\n";
        }
    }
    std::uint64_t digest = 0xCBF29CE484222325;
    for (const char sign : texts) {
        digest = (digest ^ static_cast<unsigned char>(sign)) * 0x100000001B3;
    }
    EXPECT_EQ(digest, 0x0F373B28D970FDF8U) << texts;
}

} // namespace
