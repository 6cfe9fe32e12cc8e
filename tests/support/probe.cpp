// A client that does what its arguments say, one after the other, so that a test can see a fresh process:
//
//   state            the state of the messages
//   modes            the switches that are 1
//   main             whether this is the main thread
//   out=TEXT         sends a message; also warn=, error=, trace=
//   flags=N          sets all flag words; on=N turns messages on too
//   home             the directory of the log
//   user=N           becomes another user
//   storm=N          sends N numbered messages from each of two threads
//   endless          sends numbered messages and tells after each that it has returned

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace {

void PrintState()
{
    std::printf("messages=%d enabled=%d%d%d%d flags=%d,%d,%d,%d\n", ZRGetMessagesEnabled(), ZRIsOutEnabled(),
        ZRIsWarnEnabled(), ZRIsErrorEnabled(), ZRIsTraceEnabled(), ZRGetOutFlags(), ZRGetWarnFlags(), ZRGetErrorFlags(),
        ZRGetTraceFlags());
}

void PrintModes()
{
    const struct {
        const char* name;
        char (*get)();
    } switches[] = {
        {"Threading", ZRMode::IsThreading},
        {"CacheQueueing", ZRMode::IsCacheQueueing},
        {"ThreadBasedCache", ZRMode::IsThreadBasedCache},
        {"Cache", ZRMode::IsCache},
        {"ForceRunInSingleThread", ZRMode::IsForceRunInSingleThread},
        {"TTStreaming", ZRMode::IsTTStreaming},
        {"ThreadingChannelLocking", ZRMode::IsThreadingChannelLocking},
        {"ForceMainThreadToUseStreamBasedCache", ZRMode::IsForceMainThreadToUseStreamBasedCache},
        {"OutEnabled", ZRMode::IsOutEnabled},
        {"WarnEnabled", ZRMode::IsWarnEnabled},
        {"ErrorEnabled", ZRMode::IsErrorEnabled},
        {"TraceEnabled", ZRMode::IsTraceEnabled},
        {"SendToMsgView", ZRMode::SendToMsgView},
        {"SendToConsole", ZRMode::SendToConsole},
        {"SendToDebugger", ZRMode::SendToDebugger},
        {"SendToFile", ZRMode::SendToFile},
    };
    for (const auto& row : switches) {
        if (row.get() != 0) {
            std::printf("%s ", row.name);
        }
    }
    std::printf("\n");
}

void SendNumbered(const char* label, int count)
{
    HCString text;
    for (int number = 0; number < count; ++number) {
        text.Format("%s %d", label, number);
        ZROut(text, nullptr, 1);
    }
}

void Storm(int count)
{
    const HCString process = HFGenerateGuid();
    HCString labels[2];
    labels[0].Format("%s-a", static_cast<const char*>(process));
    labels[1].Format("%s-b", static_cast<const char*>(process));
    std::thread first(SendNumbered, static_cast<const char*>(labels[0]), count);
    std::thread second(SendNumbered, static_cast<const char*>(labels[1]), count);
    first.join();
    second.join();
}

[[noreturn]] void SendEndlessly()
{
    HCString text;
    for (int number = 0;; ++number) {
        text.Format("endless %d", number);
        ZROut(text, nullptr, 1);
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}

bool Perform(std::string_view command, const char* argument)
{
    const struct {
        std::string_view name;
        void (*send)(const HCString&, const char*, short);
    } sends[] = {{"out", ZROut}, {"warn", ZRWarn}, {"error", ZRError}, {"trace", ZRTrace}};
    for (const auto& row : sends) {
        if (row.name == command) {
            row.send(argument, "probe", 1);
            return true;
        }
    }
    if (command == "state") {
        PrintState();
    } else if (command == "modes") {
        PrintModes();
    } else if (command == "main") {
        std::printf("main=%d worker=%d\n", ZRMode::IsMainThread(), ZRMode::IsWorkerThread());
    } else if (command == "flags") {
        ZRSetAllFlags(static_cast<short>(std::atoi(argument)));
    } else if (command == "on") {
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(static_cast<short>(std::atoi(argument)));
    } else if (command == "home") {
        std::printf("home=%s\n", static_cast<const char*>(HFTranslateName("home")));
#if !defined(_WIN32)
    } else if (command == "user") {
        return setuid(static_cast<uid_t>(std::atoi(argument))) == 0;
#endif
    } else if (command == "storm") {
        Storm(std::atoi(argument));
    } else if (command == "endless") {
        SendEndlessly();
    } else {
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    for (int place = 1; place < argc; ++place) {
        const std::string_view whole(argv[place]);
        const std::size_t end = std::min(whole.find('='), whole.size());
        if (!Perform(whole.substr(0, end), end < whole.size() ? argv[place] + end + 1 : "")) {
            std::fprintf(stderr, "probe: unknown command %s\n", argv[place]);
            return 64;
        }
    }
    return 0;
}
