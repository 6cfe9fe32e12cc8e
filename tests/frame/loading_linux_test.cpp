// Loads the library by hand: nothing of it is linked to this program.

#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "tests/support/threads.h"

#include <atomic>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

using ErrorSet = int(int code, const char* text, const char* location, char chain, short level);

constexpr const char* kIsMainThread = "_ZN6ZRMode12IsMainThreadEv";

bool IsMapped(const char* library) { return test::ReadFile("/proc/self/maps").find(library) != std::string::npos; }

void* Load(const char* file)
{
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

template <typename Function> Function* Find(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

std::ptrdiff_t EntriesIn(const char* folder)
{
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

std::size_t HeapInUse() { return mallinfo2().uordblks; }

/// Loads the library, sends and records an error, and unloads it.
void Cycle(const test::Home& home, bool toFile)
{
    test::WriteFile(home.PreferencesPath(),
        std::string("[Libraries.zrlib]\nOutEnabled = true\nSendToFile = ") + (toFile ? "true\n" : "false\n"));
    void* const library = Load(ZRLIB_FILE);
    EXPECT_EQ(Find<short()>(library, "ZRGetOutFlags")(), toFile ? 8 : 0);
    EXPECT_EQ(Find<char()>(library, kIsMainThread)(), 1);
    Find<ErrorSet>(library, "ZRErrorSet")(-1, "long enough to need the heap for its copies", "Cycle", 0, 1);
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_FALSE(IsMapped("libzrlib.so"));
    ASSERT_FALSE(IsMapped("libhcbase.so"));
}

TEST(Loading, AThousandTimesLeavesNothingBehind)
{
    const test::Home home;
    test::OnThreads(1, [&home](int /*second thread of the process*/) {
        for (int cycle = 0; cycle < 500; ++cycle) { // until what the system's own loader keeps has settled
            Cycle(home, cycle % 2 == 0);
        }
        const std::size_t heap = HeapInUse();
        const std::ptrdiff_t files = EntriesIn("/proc/self/fd");
        const std::ptrdiff_t threads = EntriesIn("/proc/self/task");
        for (int cycle = 0; cycle < 500; ++cycle) {
            Cycle(home, cycle % 2 == 0);
        }
        EXPECT_LT(HeapInUse(), heap + 4096) << "the least block in each of the 500 cycles would be three times that";
        EXPECT_EQ(EntriesIn("/proc/self/fd"), files);
        EXPECT_EQ(EntriesIn("/proc/self/task"), threads);
        EXPECT_EQ(test::ResultOfChild([] { return 0; }), 0) << "runs no hook of fork that is gone";
    });
    EXPECT_EQ(test::Lines(home.Log()).size(), 500U);
    void* library = nullptr;
    std::thread([&library] { library = Load(ZRLIB_FILE); }).join();
    EXPECT_EQ(Find<char()>(library, kIsMainThread)(), 0) << "on the process's first thread, which did not load it";
    dlclose(library);
}

TEST(Loading, MayCheckTheLibraryFromAnInitialiser)
{
    void* const library = Load(CHECKS_AT_LOAD_FILE);
    EXPECT_EQ(*Find<int>(library, "g_result"), 1);
    dlclose(library);
}

TEST(Loading, ReleasesTheErrorsOfThreadsThatLiveOn)
{
    void* const library = Load(ZRLIB_FILE);
    std::atomic<bool> isRecorded{false};
    std::atomic<bool> isUnloaded{false};
    std::thread other([&] {
        Find<ErrorSet>(library, "ZRErrorSet")(-1, "recorded", "here", 0, 1);
        isRecorded = true;
        test::SpinUntil([&] { return isUnloaded.load(); });
    });
    EXPECT_TRUE(test::SpinUntil([&] { return isRecorded.load(); }));
    dlclose(library);
    EXPECT_FALSE(IsMapped("libhcbase.so"));
    isUnloaded = true;
    other.join(); // its end must not run code that is gone
}

TEST(Loading, MayBeCalledByHandlersOfForkThatAreOlder)
{
    static int (*count)() = nullptr;
    static int answer = -1;
    const auto ask = [] { answer = count != nullptr ? count() : -1; };
    pthread_atfork(ask, ask, ask);
    void* const library = Load(ZRLIB_FILE);
    count = Find<int()>(library, "ZRGetRegisteredObjectCount");
    std::atomic<bool> isOver{false};
    std::thread other([&isOver] { test::SpinUntil([&isOver] { return isOver.load(); }); }); // so that locks are taken
    EXPECT_EQ(test::ResultOfChild([] { return answer; }), 0);
    EXPECT_EQ(answer, 0);
    isOver = true;
    other.join();
    count = nullptr;
    dlclose(library);
}

// By what the library asks of its foundation meanwhile, and how many of its texts stand then.
TEST(Loading, ObjectsComeInOrderAndGoInTheReverse)
{
    EXPECT_EQ(test::Run(STARTUP_ORDER_PROGRAM, {}).output,
        "text of no table, 0 texts\n" // the global subject, before there is a module
        "lock built, 0 texts\n" // the lock of the process
        "ZRLib, 0 texts\n" // the text table of the module
        "text, 0 texts\nlock built, 0 texts\n" // its message handler
        "text, 0 texts\nlock built, 0 texts\n" // its profiler state handler
        "last preference, 0 texts\n" // its switches
        "text, 0 texts\nlock built, 0 texts\n" // the lock trail handler
        "last preference, 1 texts\n" // behind the name of the log: the switches for the second time
        "thread ID, 1 texts\n"
        "text, 1 texts\nlock built, 1 texts\n" // behind the object registry: the observer of the self-checks
        "thread ID, 8 texts\n"
        "live\n"
        "lock gone, 8 texts\n"
        "lock gone, 8 texts\n"
        "text table released, 8 texts\n"
        "lock gone, 8 texts\nlock gone, 8 texts\n"
        "lock gone, 8 texts\n");
}

TEST(Loading, WithoutMemoryGivesALibraryThatDoesWhatItCan)
{
    const test::Home home;
    test::WriteFile(home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nThreading = 3\n");
    int allocations = 0;
    for (test::ProcessResult result; result.output != "enough\n"; ++allocations) {
        ASSERT_LT(allocations, 1000) << result.output;
        result = test::Run(FAILING_STARTUP_PROGRAM, {std::to_string(allocations)});
        ASSERT_EQ(result.exitCode, 0) << "with " << allocations << " allocations: " << result.errors;
    }
    EXPECT_GT(allocations, 1);
}

} // namespace
