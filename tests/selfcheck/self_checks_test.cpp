#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "tests/support/allocations.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <new>
#include <optional>

namespace {

using test::Lines;
using test::RecordingObserver;
using test::TakeError;

const std::string kCollectionsOutput = "OUT - Test stack...\n"
                                       "OUT - Stack test OK\n";

const std::string kRegistryOutput = "OUT - Test ObjectRegistry...\n"
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

/// Takes the lines of the four threads out of an output. How many of them were where they should be.
int TakeLinesOfThreads(std::string& output)
{
    constexpr int kIterations = 96;
    std::array<std::vector<std::string>, 4> expected;
    for (std::size_t thread = 0; thread < expected.size(); ++thread) {
        const std::string number = std::to_string(thread + 1);
        for (int iteration = kIterations - 1; iteration >= 0; --iteration) {
            const std::string end = " - " + std::to_string(iteration);
            expected[thread].push_back("OUT - T" + number + " OUT" + end);
            expected[thread].push_back("WARNING - T" + number + " WARN" + end);
            expected[thread].push_back("ERROR - T" + number + " ERROR" + end);
            expected[thread].push_back("TRACE - T" + number + " TRACE" + end);
        }
    }
    std::array<std::size_t, 4> next{};
    std::string rest;
    for (const std::string& line : Lines(output)) {
        bool isTaken = false;
        for (std::size_t thread = 0; thread < expected.size() && !isTaken; ++thread) {
            isTaken = next[thread] < expected[thread].size() && line == expected[thread][next[thread]];
            next[thread] += isTaken ? 1 : 0;
        }
        rest += isTaken ? "" : line + "\n";
    }
    output = rest;
    return static_cast<int>(next[0] + next[1] + next[2] + next[3]);
}

class SelfChecks : public test::Messages {};

} // namespace

// One case for what can be had once in a process.
TEST_F(SelfChecks, GiveOneVerdict)
{
    constexpr int kLinesOfThreads = 1536;
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    int result = 0;
    EXPECT_EQ(Console([&] { result = ZRTestAll(0); }), "");
    EXPECT_EQ(result, 1) << "without messages";
    EXPECT_EQ(ZRGetMessagesEnabled(), 0) << "as it was set";

    HFErrorClear();
    EXPECT_EQ(Console([&] { result = ZRTestMessageThreading(0); }), "");
    EXPECT_EQ(result, 0) << "nothing to count";
    EXPECT_EQ(TakeError(), "1 MessageThreading test failed ZRError 0");

    std::string output = Console([&] { result = ZRTestAll(1); });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(ZRGetMessagesEnabled(), 1);
    EXPECT_EQ(TakeLinesOfThreads(output), kLinesOfThreads);
    EXPECT_EQ(output,
        kCollectionsOutput + kRegistryOutput
            + "OUT - Out 384, Warn 384, Error 384, Trace 384\n"
              "OUT - MessageThreading test OK\n");
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount(), 0);

    ZRSetAllFlags(ZR_DEST_FILE);
    EXPECT_EQ(ZRTestAll(1), 0) << "counts on from the run before, and from the line with its counts";
    output = m_home.Log();
    EXPECT_EQ(TakeLinesOfThreads(output), kLinesOfThreads) << "each line whole";
    EXPECT_EQ(output,
        kCollectionsOutput + kRegistryOutput
            + "ERROR - Out 769, Warn 768, Error 768, Trace 768\n"
              "ERROR - MessageThreading test failed\n"
              "ERROR - ZR message threading test failed\n");
    EXPECT_EQ(ZRGetMessageHandler()->GetObserverCount(), 0);
}

TEST_F(SelfChecks, OfTheRegistryClearTheErrorBitForRefusals)
{
    const int registered = ZRGetRegisteredObjectCount();
    for (const char before : {'\0', '\1'}) {
        std::string bits;
        RecordingObserver observer;
        observer.then = [&](const ZRObservedObjectEvent& event) {
            const bool isRefusal = event.GetMsg().IsError() != 0;
            bits += (isRefusal ? "refusal" : "other") + std::to_string(ZRIsErrorEnabled()) + " ";
        };
        ZRSetErrorEnabled(before);
        ZRGetMessageHandler()->AttachObserver(&observer, 1);
        EXPECT_EQ(ZRTestObjectRegistry(1), 1);
        ZRGetMessageHandler()->DetachObserver(&observer, 1);
        EXPECT_EQ(bits.find("refusal1"), std::string::npos);
        EXPECT_EQ(bits.find(before == 0 ? "other1" : "other0"), std::string::npos);
        EXPECT_EQ(std::count(bits.begin(), bits.end(), 'f'), 9) << "as many refusals";
        EXPECT_EQ(ZRIsErrorEnabled(), before);
    }
    EXPECT_EQ(ZRGetRegisteredObjectCount(), registered);
}

#if !defined(_WIN32)
namespace {

/// Has memory for so many allocations only from the start of the check of the registry until its dump.
class MemoryTaker : public ZRObjectObserver {
public:
    explicit MemoryTaker(long allocations)
        : m_allocations(allocations)
    {
    }

    void OnEvent(ZRObservedObjectEvent* event) override
    {
        const HCString text = event->GetMsg().GetText();
        if (text == "Test ObjectRegistry...") {
            m_heap.emplace(m_allocations);
        } else if (text == "Object registry dump >>>") {
            m_heap.reset();
        }
    }

private:
    long m_allocations;
    std::optional<test::FailingHeap> m_heap;
};

} // namespace

TEST_F(SelfChecks, OfTheRegistryFailWhenSomethingIsMissing)
{
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    int failures = 0;
    int result = -1;
    for (long allocations = 0; result != 1; ++allocations) {
        const std::string output = Console([&] {
            MemoryTaker taker(allocations);
            ZRGetMessageHandler()->AttachObserver(&taker, 1);
            try {
                result = ZRTestObjectRegistry(1);
            } catch (const std::bad_alloc&) {
                result = -1;
            }
            ZRGetMessageHandler()->DetachObserver(&taker, 1);
        });
        const std::size_t found = output.find("ERROR - Found ");
        EXPECT_EQ(found != std::string::npos, result == 0) << output;
        if (result == 0) {
            ++failures;
            EXPECT_NE(output.find(" objects, expected 4 libraries and 8 objects\nERROR - ObjectRegistry test failed\n"),
                std::string::npos)
                << output;
        }
    }
    EXPECT_GT(failures, 0);
}
#endif

TEST_F(SelfChecks, PrepareTestFiles)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_home.Folder());
    std::filesystem::create_directory("folder.txt");
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    struct Row {
        const char* name;
        const char* extension;
        bool exists;
        char deleteExisting;
        const char* path;
        bool isLeft;
        const char* output;
    };
    for (const Row& row : {
             Row{"kept", "txt", true, 0, "kept.txt", true, ""},
             Row{"gone", "txt", true, 1, "gone.txt", false, ""},
             Row{"gone", "", true, 2, "gone", false, ""},
             Row{"none", "txt", false, 1, "none.txt", false, ""},
             Row{"folder", "txt", false, 1, "folder.txt", true,
                 "ERROR - ZRPrepareTestFile - error deleting folder.txt\n"},
         }) {
        if (row.exists) {
            test::WriteFile(row.path, "content");
        }
        HCString path("before");
        const std::string output =
            Console([&] { ZRPrepareTestFile(path, row.name, row.extension, row.deleteExisting); });
        EXPECT_EQ(path, row.path);
        EXPECT_EQ(std::filesystem::exists(row.path), row.isLeft) << row.path;
        EXPECT_EQ(output, row.output);
    }
#if !defined(_WIN32)
    std::filesystem::create_symlink("nowhere", "link.txt");
    HCString path;
    ZRPrepareTestFile(path, "link", "txt", 1);
    EXPECT_FALSE(std::filesystem::is_symlink("link.txt"));
    for (int depth = 0; depth < 30; ++depth) { // deeper than a path may be long
        const std::string folder(200, 'd');
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    EXPECT_EQ(ZRCheckDiskSpace(1, 0), 1);
#endif
    std::filesystem::current_path(before);
}
