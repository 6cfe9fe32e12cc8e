#include "tests/support/allocations.h"
#include "tests/support/messages.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>

namespace {

// The lines of the dump are cut to code and name.
const std::string kLog = "OUT - Test stack...\n"
                         "OUT - Stack test OK\n"
                         "OUT - Test ObjectRegistry...\n"
                         "ERROR - Library 0x00003000 already registered as LIB C\n"
                         "ERROR - Invalid library code 0x00000000\n"
                         "ERROR - Library 0x00005000 not found\n"
                         "ERROR - Object 0xA04F4004 already registered as BOB\n"
                         "ERROR - Invalid high word in object code 0x33330009\n"
                         "ERROR - Invalid object code 0x33330009\n"
                         "ERROR - Invalid library nibble in object code 0xA04F0010\n"
                         "ERROR - Invalid object code 0xA04F0010\n"
                         "ERROR - Object 0xA04FFFFF not found\n"
                         "OUT - Object registry dump >>>\n"
                         "0x00001000 LIB A; 0x00002000 LIB B; 0x00003000 LIB C; 0x00004000 LIB D; "
                         "0xA04F1001 FRED; 0xA04F1005 HARRY; 0xA04F1007 POPEYE; 0xA04F2003 ALF; 0xA04F2008 OLIVE OYL; "
                         "0xA04F3002 BILL; 0xA04F3006 GROZNY; 0xA04F4004 BOB; "
                         "OUT - ObjectRegistry test OK\n";

using SelfChecks = test::Messages;

// One case for what can be had once in a process.
TEST_F(SelfChecks, GiveOneVerdict)
{
    ZRSetAllFlags(ZR_DEST_FILE);
    EXPECT_EQ(ZRTestAll(0), 1) << "without messages";
    EXPECT_EQ(ZRGetMessagesEnabled(), 0) << "as it was set";
    HFErrorClear();
    EXPECT_EQ(ZRTestMessageThreading(0), 0) << "nothing to count";
    EXPECT_EQ(test::TakeError(), "1 MessageThreading test failed ZRError 0");
    EXPECT_EQ(ZRTestAll(1), 1);
    EXPECT_EQ(ZRTestAll(1), 0) << "counts on from the run before, and from the line with its counts";
    EXPECT_EQ(ZRGetMessagesEnabled(), 1);
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount(), 0);

    std::map<std::string, int> times; // of the lines of threads
    std::string others;
    const std::regex ofThread("(OUT|WARN|ERROR|TRACE)(ING)? - T[1-4] \\1 - [0-9]{1,2}");
    for (const std::string& line : test::Lines(m_home.Log())) {
        if (std::regex_match(line, ofThread)) {
            ++times[line];
        } else {
            others += line + "\n";
        }
    }
    EXPECT_EQ(times.size(), 4U * 4U * 96U);
    EXPECT_EQ(times["WARNING - T4 WARN - 95"], 2) << "once in each run";
    others = std::regex_replace(others, std::regex("OUT -    [LO][a-z]* type (\\S+) - ([^,\n]*).*\n"), "$1 $2; ");
    EXPECT_EQ(others,
        kLog + "OUT - Out 384, Warn 384, Error 384, Trace 384\nOUT - MessageThreading test OK\n" + kLog
            + "ERROR - Out 769, Warn 768, Error 768, Trace 768\nERROR - MessageThreading test failed\n"
              "ERROR - ZR message threading test failed\n");
}

TEST_F(SelfChecks, OfTheRegistryClearTheErrorBitForRefusals)
{
    for (const char before : {'\0', '\1'}) {
        ZRSetErrorEnabled(before);
        std::string bits; // of refusals and of other messages
        const ZRListener listener(*ZRGetMessageHandler(), [&bits](const ZRObservedObjectEvent& event) {
            bits += (event.GetMsg().IsError() != 0 ? "refusal" : "other") + std::to_string(ZRIsErrorEnabled());
        });
        EXPECT_EQ(ZRTestObjectRegistry(1), 1);
        const std::string other = "(other" + std::to_string(before) + ")";
        EXPECT_TRUE(std::regex_match(bits, std::regex(other + "(refusal0){9}" + other + "{14}"))) << bits;
    }
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 0) << "that of the process is another one";
}

#if !defined(_WIN32)
TEST_F(SelfChecks, OfTheRegistryFailWhenSomethingIsMissing)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    int result = 0;
    for (long allocations = 0; result == 0; ++allocations) { // for which there is memory from the start to the dump
        std::optional<test::FailingHeap> heap;
        const ZRListener taker(*ZRGetMessageHandler(), [&](const ZRObservedObjectEvent& event) {
            if (event.GetMsg().GetText() == "Test ObjectRegistry...") {
                heap.emplace(allocations);
            } else if (event.GetMsg().GetText() == "Object registry dump >>>") {
                heap.reset();
            }
        });
        const std::string output = Console([&result] { result = ZRTestObjectRegistry(1); });
        const auto dumped = [&output](const char* what) {
            return std::ranges::count_if(
                test::Lines(output), [what](const std::string& line) { return line.find(what) != std::string::npos; });
        };
        const std::string failure = "ERROR - Found " + std::to_string(dumped("Library type")) + " libraries and "
            + std::to_string(dumped("Object type")) + " objects, expected 4 libraries and 8 objects\n";
        EXPECT_EQ(output.find(failure) == std::string::npos, result == 1) << output;
        EXPECT_EQ(result, dumped("Object type") == 8 ? 1 : 0);
    }
}
#endif

TEST_F(SelfChecks, PrepareTestFiles)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_home.Folder());
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    std::filesystem::create_directory("folder.txt");
    for (const char* const file : {"kept.txt", "gone.txt", "gone"}) {
        test::WriteFile(file, "content");
    }
#if !defined(_WIN32)
    std::filesystem::create_symlink("nowhere", "link");
#endif
    const struct {
        const char* name;
        const char* extension;
        char deleteExisting;
        const char* path;
        bool isLeft = false;
        const char* output = "";
    } rows[] = {
        {"kept", "txt", 0, "kept.txt", true},
        {"gone", "txt", 1, "gone.txt"},
        {"gone", "", 2, "gone"},
        {"none", "txt", 1, "none.txt"},
        {"link", "", 1, "link"},
        {"folder", "txt", 1, "folder.txt", true, "ERROR - ZRPrepareTestFile - error deleting folder.txt\n"},
    };
    for (const auto& row : rows) {
        HCString path("before");
        const auto prepare = [&] { ZRPrepareTestFile(path, row.name, row.extension, row.deleteExisting); };
        EXPECT_EQ(Console(prepare), row.output);
        EXPECT_EQ(path, row.path);
        EXPECT_EQ(exists(std::filesystem::symlink_status(row.path)), row.isLeft) << row.path;
    }
#if !defined(_WIN32)
    for (int depth = 0; depth < 30; ++depth) { // deeper than a path may be long
        const std::string folder(200, 'd');
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    EXPECT_EQ(ZRCheckDiskSpace(1, 0), 1);
#endif
    std::filesystem::current_path(before);
}

} // namespace
