#include "tests/support/messages.h"

#include <fstream>
#include <functional>
#include <new>
#include <string>
#include <thread>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

namespace {

using test::TakeError;
using MessageFunctions = test::Messages;

TEST_F(MessageFunctions, RejectALevelOutsideOneToSeven)
{
    const struct {
        const char* name;
        bool isError;
        std::function<void(short)> send;
    } rows[] = {
        {"OUT", false, [](short level) { ZROut("t", nullptr, level); }},
        {"WARNING", false, [](short level) { ZRWarn("t", nullptr, level); }},
        {"ERROR", true, [](short level) { ZRError("t", "here", level); }},
        {"TRACE", false, [](short level) { ZRTrace("t", nullptr, level); }},
        {"OUT", false, [](short level) { ZROutEx("t", "x", nullptr, level); }},
        {"WARNING", false, [](short level) { ZRWarnEx("t", "x", nullptr, level); }},
        {"ERROR", true, [](short level) { ZRErrorEx("t", "x", "here", level); }},
        {"TRACE", false, [](short level) { ZRTraceEx("t", "x", nullptr, level); }},
    };
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    for (const auto& row : rows) {
        for (const int level : {INT16_MIN, -1, 0, 1, 4, 7, 8, 9, INT16_MAX}) {
            SCOPED_TRACE(row.name + std::to_string(level));
            const bool isDelivered = level >= 1 && level <= 7;
            const std::string line = std::string(row.name) + " - t\n";
            EXPECT_EQ(Console([&] { row.send(static_cast<short>(level)); }), isDelivered ? line : "");
            EXPECT_EQ(TakeError(), isDelivered && row.isError ? "1 t ZRError 0" : "none");
        }
    }
}

TEST_F(MessageFunctions, RecordErrorsWhetherOrNotTheyAreDelivered)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    for (const bool enabled : {false, true}) {
        ZRSetMessagesEnabled(enabled ? 1 : 0);
        for (const int level : {0, 1, 8, -1}) {
            EXPECT_EQ(Console([&] { EXPECT_EQ(ZRErrorSet(-65840, "text", "place", 1, static_cast<short>(level)), 0); }),
                enabled ? "ERROR - text\n" : "");
            EXPECT_EQ(TakeError(), "-65840 text place 1");
        }
        Console([] { ZRError("plain", "place", 1); });
        EXPECT_EQ(TakeError(), "1 plain ZRError 0");
        Console([] { ZRErrorSet(-1, nullptr, nullptr, 0, 1); });
        EXPECT_EQ(TakeError(), "-1   0");
    }
}

TEST_F(MessageFunctions, SetAndGetTheSwitches)
{
    const struct {
        void (*setFlags)(short);
        short (*getFlags)();
        void (*setEnabled)(char);
        char (*isEnabled)();
    } types[] = {
        {ZRSetOutFlags, ZRGetOutFlags, ZRSetOutEnabled, ZRIsOutEnabled},
        {ZRSetWarnFlags, ZRGetWarnFlags, ZRSetWarnEnabled, ZRIsWarnEnabled},
        {ZRSetErrorFlags, ZRGetErrorFlags, ZRSetErrorEnabled, ZRIsErrorEnabled},
        {ZRSetTraceFlags, ZRGetTraceFlags, ZRSetTraceEnabled, ZRIsTraceEnabled},
    };
    for (const auto& type : types) {
        ZRSetAllFlags(1);
        ZRSetAllEnabled(0);
        type.setFlags(-2);
        type.setEnabled(9);
        for (const auto& any : types) {
            EXPECT_EQ(any.getFlags(), &any == &type ? -2 : 1);
            EXPECT_EQ(any.isEnabled(), &any == &type);
        }
        ZRSetAllEnabled(1);
        type.setEnabled(0);
        for (const auto& any : types) {
            EXPECT_EQ(any.isEnabled(), &any != &type);
        }
    }
    ZRSetMessagesEnabled(0);
    ZRSetAllEnabled(1);
    EXPECT_EQ(ZRGetMessagesEnabled(), 0) << "the two kinds of switch are separate";
}

TEST_F(MessageFunctions, GiveOneHandlerToAllThreads)
{
    const ZRMessageHandler* const handler = ZRGetMessageHandler();
    ASSERT_NE(handler, nullptr);
    std::thread([handler] { EXPECT_EQ(ZRGetMessageHandler(), handler); }).join();
}

} // namespace
