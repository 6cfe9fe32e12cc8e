#include "tests/support/allocations.h"
#include "tests/support/messages.h"

#include <filesystem>
#include <map>
#include <new>
#include <optional>
#include <regex>

namespace {

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
                         "OUT -    Library type 0x00001000 - LIB A\n"
                         "OUT -    Library type 0x00002000 - LIB B\n"
                         "OUT -    Library type 0x00003000 - LIB C\n"
                         "OUT -    Library type 0x00004000 - LIB D\n"
                         "OUT -    Object type 0xA04F1001 - FRED, Short 0x1001, Library 0x00001000\n"
                         "OUT -    Object type 0xA04F1005 - HARRY, Short 0x1005, Library 0x00001000\n"
                         "OUT -    Object type 0xA04F1007 - POPEYE, Short 0x1007, Library 0x00001000\n"
                         "OUT -    Object type 0xA04F2003 - ALF, Short 0x2003, Library 0x00002000\n"
                         "OUT -    Object type 0xA04F2008 - OLIVE OYL, Short 0x2008, Library 0x00002000\n"
                         "OUT -    Object type 0xA04F3002 - BILL, Short 0x3002, Library 0x00003000\n"
                         "OUT -    Object type 0xA04F3006 - GROZNY, Short 0x3006, Library 0x00003000\n"
                         "OUT -    Object type 0xA04F4004 - BOB, Short 0x4004, Library 0x00004000\n"
                         "OUT - ObjectRegistry test OK\n";

using SelfChecks = test::Messages;

/// What a thread sends in two runs of the check.
std::string LogOfThread(const std::string& thread)
{
    std::string log;
    for (int iteration = 2 * 96 - 1; iteration >= 0; --iteration) {
        const std::string end = " - " + std::to_string(iteration % 96) + "\n";
        log += "OUT - " + thread + " OUT" + end + "WARNING - " + thread + " WARN" + end;
        log += "ERROR - " + thread + " ERROR" + end + "TRACE - " + thread + " TRACE" + end;
    }
    return log;
}

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
    EXPECT_EQ(ZRGetMessagesEnabled(), 1);
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount(), 0);
    EXPECT_EQ(ZRTestAll(1), 0) << "counts on from the run before, and from the line with its counts";
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount(), 0);

    std::map<std::string, std::string> logs; // by thread
    const std::regex ofThread(".* - (T[1-4]) .*");
    for (const std::string& line : test::Lines(m_home.Log())) {
        std::smatch found;
        logs[std::regex_match(line, found, ofThread) ? found[1].str() : ""] += line + "\n";
    }
    for (const std::string thread : {"T1", "T2", "T3", "T4"}) {
        EXPECT_EQ(logs[thread], LogOfThread(thread));
    }
    EXPECT_EQ(logs[""],
        kLog + "OUT - Out 384, Warn 384, Error 384, Trace 384\nOUT - MessageThreading test OK\n" + kLog
            + "ERROR - Out 769, Warn 768, Error 768, Trace 768\nERROR - MessageThreading test failed\n"
              "ERROR - ZR message threading test failed\n");
}

TEST_F(SelfChecks, OfTheRegistryClearTheErrorBitForRefusals)
{
    const int registered = ZRGetRegisteredObjectCount();
    for (const char before : {'\0', '\1'}) {
        ZRSetErrorEnabled(before);
        std::string bits; // of refusals and of other messages
        const ZRListener listener(*ZRGetMessageHandler(), [&bits](const ZRObservedObjectEvent& event) {
            bits += (event.GetMsg().IsError() != 0 ? "refusal" : "other") + std::to_string(ZRIsErrorEnabled());
        });
        EXPECT_EQ(ZRTestObjectRegistry(1), 1);
        const std::string other = "(other" + std::to_string(before) + ")";
        EXPECT_TRUE(std::regex_match(bits, std::regex(other + "(refusal0){9}" + other + "{14}"))) << bits;
        EXPECT_EQ(ZRIsErrorEnabled(), before);
    }
    EXPECT_EQ(ZRGetRegisteredObjectCount(), registered);
}

#if !defined(_WIN32)
TEST_F(SelfChecks, OfTheRegistryFailWhenSomethingIsMissing)
{
    const std::string failure = "ERROR - Found [0-4] libraries and [0-8] objects, expected 4 libraries and 8 objects\n"
                                "ERROR - ObjectRegistry test failed\n";
    ZRSetErrorFlags(ZR_DEST_CONSOLE);
    long allocations = 0; // for which there is memory from the start of the check until its dump
    std::optional<test::FailingHeap> heap;
    const ZRListener taker(*ZRGetMessageHandler(), [&](const ZRObservedObjectEvent& event) {
        if (event.GetMsg().GetText() == "Test ObjectRegistry...") {
            heap.emplace(allocations);
        } else if (event.GetMsg().GetText() == "Object registry dump >>>") {
            heap.reset();
        }
    });
    int failures = 0;
    for (int result = -1; result != 1; ++allocations) {
        const std::string output = Console([&] {
            try {
                result = ZRTestObjectRegistry(1);
            } catch (const std::bad_alloc&) {
                result = -1;
            }
            heap.reset();
        });
        if (result == 0) {
            ++failures;
            EXPECT_TRUE(std::regex_search(output, std::regex(failure))) << output;
        }
    }
    EXPECT_GT(failures, 0);
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
    const struct {
        const char* name;
        const char* extension;
        char deleteExisting;
        const char* path;
        bool isLeft;
        const char* output;
    } rows[] = {
        {"kept", "txt", 0, "kept.txt", true, ""},
        {"gone", "txt", 1, "gone.txt", false, ""},
        {"gone", "", 2, "gone", false, ""},
        {"none", "txt", 1, "none.txt", false, ""},
        {"folder", "txt", 1, "folder.txt", true, "ERROR - ZRPrepareTestFile - error deleting folder.txt\n"},
    };
    for (const auto& row : rows) {
        HCString path("before");
        const auto prepare = [&] { ZRPrepareTestFile(path, row.name, row.extension, row.deleteExisting); };
        EXPECT_EQ(Console(prepare), row.output);
        EXPECT_EQ(path, row.path);
        EXPECT_EQ(std::filesystem::exists(row.path), row.isLeft) << row.path;
    }
#if !defined(_WIN32)
    HCString path;
    std::filesystem::create_symlink("nowhere", "link");
    ZRPrepareTestFile(path, "link", "", 1);
    EXPECT_FALSE(std::filesystem::is_symlink("link"));
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
