// survey [--registry] [--threads N] [PATH]: counts files, lines and bytes of a folder tree for each type of file.
// survey --selfcheck
//
// --registry: dumps the object registry last, which then holds the types of file.
//
// --threads: reads the files on N threads, 1 to 256, and warns when one waits long for another.
//
// --selfcheck: lets the library check itself instead, and ends with status 0 if all is well, otherwise 1.
//
// Shows a bar while it works, if it writes to a terminal, and tells at the end where its time went and how many
// messages it sent until then.
//
// It is a whole application on the library: it reports by messages only, and where they go is the user's choice.
// Without preferences it turns them on itself, for the console. Ends with status 2 when PATH does not exist or
// the arguments are wrong.

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

    /// False when the text is no number of threads.
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

/// An application has its say only where the user's preferences are silent.
void ShowMessagesUnlessPreferencesDo()
{
    if (ZRGetMessagesEnabled() == 0) {
        ZRSetMessagesEnabled(1);
        ZRSetOutFlags(ZR_DEST_CONSOLE);
        ZRSetWarnFlags(ZR_DEST_CONSOLE);
        ZRSetErrorFlags(ZR_DEST_CONSOLE);
    }
}

/// Gives the run a key by which its messages can be found in a log, and warns when the log has little room.
void ReportRun()
{
    constexpr int kProgram = 0x5000; // the same as its object codes begin with
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

/// A message for each line of the table.
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
