// zrinfo: what a person who helps another needs to know: versions, files, preferences, and whether the library is
// sound.

#include "system.h"

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

namespace {

constexpr int kBadUse = 125;

constexpr const char* kHelp = R"(Usage: zrinfo

Prints versions and files of ZRLib, where its log is and whether it can be written, which preference file counts, the
switches that are in force, the keys of the file that nobody knows, and whether the library finds itself sound.

  --help     shows this text

Status 0: all is sound; 1: something is not, and a line with "!" in front says what; 125: wrong use of zrinfo.
)";

bool g_isSound = true;

void Print(const char* what, const std::string& text) { std::printf("  %-12s %s\n", what, text.c_str()); }

void PrintFault(const char* what, const std::string& text)
{
    std::printf("! %-12s %s\n", what, text.c_str());
    g_isSound = false;
}

void PrintLibrary(const char* what, const char* record, const void* address)
{
    HCVersion version;
    if (HFVersionGet(record, version) != 0) {
        HCString text;
        text.Format("%d.%d.%d, built on %s at %s", version.major, version.minor, version.revision,
            static_cast<const char*>(version.date), static_cast<const char*>(version.time));
        Print(what, text.ToString());
    } else {
        PrintFault(what, "has no record of its version");
    }
    Print("", zrobservers::FileOf(address));
}

void PrintLog()
{
    namespace fs = std::filesystem;
    const HCString home = HFTranslateName("home");
    if (home.GetLength() == 0) {
        PrintFault("log", "nobody knows a home directory");
        return;
    }
    const std::string path = HFBuildFilename(home, "zr_messages", "txt").ToString();
    std::error_code error;
    const fs::path file(std::u8string(path.begin(), path.end()));
    const bool isThere = fs::exists(file, error);
    if (isThere && !fs::is_regular_file(file, error)) {
        PrintFault("log", path + " is not a regular file");
    } else if (!zrobservers::IsWritable(isThere ? path : home.ToString())) {
        PrintFault("log", path + " cannot be written");
    } else if (isThere) {
        Print("log", path + ", " + std::to_string(fs::file_size(file, error)) + " bytes");
    } else {
        Print("log", path + ", which is made with the first line");
    }
}

bool IsSwitch(const HCString& key)
{
    for (int index = 0; index < ZRMode::GetSwitchCount(); ++index) {
        if (key == ZRMode::GetSwitchKey(index)) {
            return true;
        }
    }
    return false;
}

void PrintPreferences()
{
    constexpr const char* kOurs = "/Libraries/zrlib/";
    HCPreferenceSystem preferences;
    const std::string path = preferences.GetPath().ToString();
    std::error_code error;
    const bool isThere = std::filesystem::exists(std::u8string(path.begin(), path.end()), error);
    if (path.empty()) {
        Print("preferences", "none, as nobody knows a home directory");
    } else if (preferences.IsSound() == 0) {
        PrintFault("preferences", path + " cannot be read");
    } else {
        Print("preferences", path + (isThere ? "" : ", which does not exist"));
    }
    for (const HCPreferenceKey& key : preferences.GetKeys()) {
        const std::string place = "line " + std::to_string(key.line) + ": " + key.name.ToString();
        if (std::strncmp(key.name, kOurs, std::strlen(kOurs)) != 0) {
            Print("", place + " is not for ZRLib");
        } else if (!IsSwitch(key.name)) {
            PrintFault("", place + " is unknown");
        } else if (key.isBoolean == 0) {
            PrintFault("", place + " is neither true nor false");
        }
    }
}

void PrintSwitches()
{
    for (int index = 0; index < ZRMode::GetSwitchCount(); ++index) {
        const char* const key = ZRMode::GetSwitchKey(index);
        const char* const value = ZRMode::GetSwitch(index) != 0 ? " = true" : " = false";
        Print(index == 0 ? "switches" : "", std::string(std::strrchr(key, '/') + 1) + value);
    }
    Print("messages", ZRGetMessagesEnabled() != 0 ? "on" : "off");
}

void PrintSelfChecks()
{
    ZRSetMessagesEnabled(1); // the check that counts messages needs them
    ZRSetAllFlags(0);
    if (ZRTestAll(1) != 0) {
        Print("self-checks", "sound");
    } else {
        PrintFault("self-checks", "not sound");
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 2 && std::strcmp(arguments[1], "--help") == 0) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    if (count > 1) {
        std::fprintf(stderr, "zrinfo: unknown argument %s\nTry 'zrinfo --help'.\n", arguments[1]);
        return kBadUse;
    }
    try {
        PrintLibrary("zrlib", "ZRLIB", reinterpret_cast<const void*>(&ZRTestAll));
        PrintLibrary("hcbase", "HCBASE", reinterpret_cast<const void*>(&HFGenerateGuid));
        PrintLog();
        PrintPreferences();
        PrintSwitches();
        PrintSelfChecks();
    } catch (const std::exception& exception) {
        PrintFault("zrinfo", exception.what());
    }
    return g_isSound ? 0 : 1;
}
