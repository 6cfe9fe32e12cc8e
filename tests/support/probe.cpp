// A client that does what its arguments say, one after the other, so that a test can see a fresh process:
//
//   state            the state of the messages
//   out=TEXT         sends a message
//   on=N             turns messages on and sets all flag words
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
#include <thread>
#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace {

void SendNumbered(const std::string& label, int count)
{
    for (int number = 0; number < count; ++number) {
        ZROut(HCString(label + " " + std::to_string(number)), nullptr, 1);
    }
}

const struct {
    std::string name;
    void (*perform)(const char* argument);
} kCommands[] = {
    {"state",
        [](const char*) {
            std::printf("messages=%d enabled=%d%d%d%d flags=%d,%d,%d,%d\n", ZRGetMessagesEnabled(), ZRIsOutEnabled(),
                ZRIsWarnEnabled(), ZRIsErrorEnabled(), ZRIsTraceEnabled(), ZRGetOutFlags(), ZRGetWarnFlags(),
                ZRGetErrorFlags(), ZRGetTraceFlags());
        }},
    {"out", [](const char* text) { ZROut(text, "probe", 1); }},
    {"on",
        [](const char* flags) {
            ZRSetMessagesEnabled(1);
            ZRSetAllFlags(static_cast<short>(std::atoi(flags)));
        }},
    {"home", [](const char*) { std::printf("home=%s\n", static_cast<const char*>(HFTranslateName("home"))); }},
    {"storm",
        [](const char* count) {
            const std::string process = HFGenerateGuid().ToString();
            std::thread other(SendNumbered, process + "-a", std::atoi(count));
            SendNumbered(process + "-b", std::atoi(count));
            other.join();
        }},
    {"endless",
        [](const char*) {
            for (int number = 0;; ++number) {
                ZROut(HCString("endless " + std::to_string(number)), nullptr, 1);
                std::printf("%d\n", number);
                std::fflush(stdout);
            }
        }},
#if !defined(_WIN32)
    {"user",
        [](const char* id) {
            if (setuid(static_cast<uid_t>(std::atoi(id))) != 0) {
                std::exit(1);
            }
        }},
#endif
};

/// Returns whether the command is known.
bool Perform(const std::string& argument)
{
    const std::size_t end = std::min(argument.find('='), argument.size());
    for (const auto& [name, perform] : kCommands) {
        if (name == argument.substr(0, end)) {
            perform(argument.c_str() + std::min(end + 1, argument.size()));
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char** argv) { return std::all_of(argv + 1, argv + argc, Perform) ? 0 : 64; }
