// survey [--registry] [--threads N] [PATH]: counts files, lines and bytes of a folder tree for each type of file.
// survey --selfcheck
//
// --registry: at the end, dumps the object registry, which then holds the file types.
//
// --threads: reads the files on N threads, 1 to 256, and warns when one waits long for another.
//
// --selfcheck: runs the library's self-checks instead; exits with status 0 if they succeed, otherwise 1.
//
// Shows a progress bar on a terminal. At the end, reports where the time went and how many messages it sent until then.
//
// This is a complete application: it reports by messages only, and the user's preferences say where they go. Without
// preferences it turns messages on for the console. Exits with status 2 when PATH does not exist or cannot be reached,
// or the arguments are wrong.

#include "survey.h"

#include <charconv>
#include <hcbase/hcbase.h>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <zrlib/zrlib.h>
#include <zrobservers/zrobservers.h>

namespace {

constexpr int kBadArguments = 2;

struct Arguments {
    Arguments(int count, char** values)
    {
        bool hasPath = false;
        for (int place = 1; place < count; ++place) {
            const std::string value = values[place];
            if (value == "--selfcheck" && count == 2) {
                checksLibrary = true;
            } else if (value == "--registry") {
                dumpsRegistry = true;
            } else if (value == "--threads") {
                areGood = ++place < count && SetThreads(values[place]) && areGood;
            } else if (value.rfind("--", 0) == 0 || hasPath) {
                areGood = false;
            } else {
                path = value;
                hasPath = true;
            }
        }
    }

    /// False when the text is not a valid number of threads.
    bool SetThreads(std::string_view text)
    {
        constexpr int kMostThreads = 256;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
        return error == std::errc() && end == text.data() + text.size() && threads >= 1 && threads <= kMostThreads;
    }

    std::string path = ".";
    int threads = 0;
    bool dumpsRegistry = false;
    bool checksLibrary = false;
    bool areGood = true;
};

/// Turns messages on only if the user's preferences have not.
void ShowMessagesUnlessPreferencesDo()
{
    if (ZRGetMessagesEnabled() == 0) {
        ZRSetMessagesEnabled(1);
        ZRSetOutFlags(ZR_DEST_CONSOLE);
        ZRSetWarnFlags(ZR_DEST_CONSOLE);
        ZRSetErrorFlags(ZR_DEST_CONSOLE);
    }
}

/// Sends a key by which the messages of this run can be found in a log, and warns when the disk of the log is nearly
/// full.
void ReportRun()
{
    constexpr int kProgram = 0x5000; // the library digit of its object codes
    constexpr std::uint64_t kLogOfAWholeDisk = std::uint64_t{64} * 1024 * 1024;
    HCString key;
    ZRMath::RandSeed();
    ZRGenerateKey(key, kProgram);
    ZR_OUT("Survey %s", static_cast<const char*>(key));
    std::uint64_t available = 0;
    if (HCFileSystem().GetDiskInfo(HFTranslateName("home"), &available, nullptr, nullptr) != 0
        && available < kLogOfAWholeDisk) {
        ZR_WARN("The disk of the log is nearly full");
    }
}

/// Sends a message for each line of the table.
void ReportProfile(const ZRProfileTable& profile)
{
    std::istringstream table(profile.ToText().ToString());
    for (std::string line; std::getline(table, line);) {
        ZR_OUT("%s", line.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    ShowMessagesUnlessPreferencesDo();
    const Arguments arguments(argc, argv);
    if (!arguments.areGood) {
        ZR_ERROR("Usage: survey [--registry] [--threads N] [PATH], or survey --selfcheck");
        return kBadArguments;
    }
    if (arguments.checksLibrary) {
        return ZRTestAll(1) != 0 ? 0 : 1;
    }
    std::map<short, int> sent; // messages of each type
    const ZRListener counter(*ZRGetMessageHandler(), [&sent](const ZRObservedObjectEvent& event) {
        sent[event.GetMsg().GetType()] += event.GetCode() == ZR_EVENT_MESSAGE ? 1 : 0;
    });
    ReportRun();
    const ZRProfileTable profile;
    Survey survey;
    {
        const ZRProgressBar bar;
        if (!survey.Take(arguments.path, arguments.threads)) {
            return kBadArguments;
        }
    }
    survey.Report();
    ReportProfile(profile);
    ZR_OUT("Messages: %d out, %d warnings, %d errors, %d traces", sent[ZR_MSG_OUT], sent[ZR_MSG_WARN],
        sent[ZR_MSG_ERROR], sent[ZR_MSG_TRACE]);
    if (arguments.dumpsRegistry) {
        ZRDumpRegistry();
    }
    return 0;
}
