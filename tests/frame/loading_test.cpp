// Loads the library by hand: nothing of it is linked to this program.

#include "tests/support/process.h"
#include "tests/support/surroundings.h"
#include "tests/support/threads.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>
#if defined(_WIN32)
#include <windows.h>
#else
#include <barrier>
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#endif

namespace {

using ErrorSet = int(int code, const char* text, const char* location, char chain, short level);

#if defined(_WIN32)
constexpr int kCycles = 100;

HMODULE Load(const char* file) { return LoadLibraryA(file); }

template <typename Function> Function* Find(HMODULE library, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

bool Unload(HMODULE library)
{
    return FreeLibrary(library) != 0 && GetModuleHandleA("zrlib.dll") == nullptr
        && GetModuleHandleA("hcbase.dll") == nullptr;
}

std::size_t HeapInUse() { return 0; }

std::vector<long> FilesAndThreads()
{
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {static_cast<long>(handles)};
}
#else
constexpr int kCycles = 500; // until what the system's own loader keeps has settled

void* Load(const char* file) { return dlopen(file, RTLD_NOW | RTLD_LOCAL); }

template <typename Function> Function* Find(void* library, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

bool Unload(void* library)
{
    const bool isClosed = dlclose(library) == 0;
    const std::string maps = test::ReadFile("/proc/self/maps");
    return isClosed && maps.find("libzrlib.so") == std::string::npos && maps.find("libhcbase.so") == std::string::npos;
}

std::size_t HeapInUse() { return mallinfo2().uordblks; }

std::vector<long> FilesAndThreads()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return {std::distance(begin(files), end(files)), std::distance(begin(threads), end(threads))};
}
#endif

constexpr const char* kIsMainThread = "_ZN6ZRMode12IsMainThreadEv";

TEST(Loading, ManyTimesOnASecondThreadLeavesNothingBehind)
{
    const test::Home home;
    test::OnThreads(1, [&home](int) {
        std::size_t heap = 0;
        std::vector<long> others;
        for (int cycle = 0; cycle < 2 * kCycles; ++cycle) {
            if (cycle == kCycles) {
                heap = HeapInUse();
                others = FilesAndThreads();
            }
            const bool toFile = cycle % 2 == 0;
            test::WriteFile(home.PreferencesPath(),
                std::string("[Libraries.zrlib]\nOutEnabled = true\nSendToFile = ") + (toFile ? "true" : "false"));
            auto* const library = Load(ZRLIB_FILE);
            ASSERT_NE(library, nullptr);
            EXPECT_EQ(Find<short()>(library, "ZRGetOutFlags")(), toFile ? 8 : 0) << "read afresh";
            EXPECT_EQ(Find<char()>(library, kIsMainThread)(), 1);
            Find<ErrorSet>(library, "ZRErrorSet")(-1, "long enough to need the heap for its copies", "Cycle", 0, 1);
            ASSERT_TRUE(Unload(library));
        }
        EXPECT_LT(HeapInUse(), heap + 4096) << "the least block in each cycle would be three times that";
        EXPECT_EQ(FilesAndThreads(), others);
    });
    EXPECT_EQ(std::ssize(test::Lines(home.Log())), kCycles);
}

#if !defined(_WIN32)
TEST(Loading, WorksOnAnotherThreadAndForInitialisersThatCheckTheLibrary)
{
    void* client = nullptr;
    std::thread([&client] { client = Load(CHECKS_AT_LOAD_FILE); }).join();
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(*Find<int>(client, "g_result"), 1);
    EXPECT_EQ(Find<char()>(client, kIsMainThread)(), 0) << "the process's first thread did not load it";
    EXPECT_TRUE(Unload(client));
    EXPECT_EQ(test::ResultOfChild([] { return 0; }), 0) << "runs no hook of fork that is gone";
}

TEST(Loading, SparesThreadsAndHandlersOfForkThatAreOlder)
{
    static int (*count)() = nullptr;
    static int answer = -1;
    const auto ask = [] { answer = count != nullptr ? count() : -1; };
    pthread_atfork(ask, ask, ask);
    void* const library = Load(ZRLIB_FILE);
    count = Find<int()>(library, "ZRGetRegisteredObjectCount");
    std::barrier step(2);
    std::thread other([&] {
        Find<ErrorSet>(library, "ZRErrorSet")(-1, "recorded", "here", 0, 1);
        step.arrive_and_wait();
        step.arrive_and_wait(); // until the library has gone
    });
    step.arrive_and_wait();
    EXPECT_EQ(test::ResultOfChild([] { return answer; }), 0);
    EXPECT_EQ(answer, 0);
    count = nullptr;
    EXPECT_TRUE(Unload(library));
    step.arrive_and_wait();
    other.join(); // its end must not run code that is gone
}

// By what the library asks of its foundation meanwhile.
TEST(Loading, ObjectsComeInOrderAndGoInTheReverse)
{
    EXPECT_EQ(test::Run(STARTUP_ORDER_PROGRAM, {}).output,
        "text of no table\n" // the global subject, before there is a module
        "lock built\n" // the lock of the process
        "ZRLib\n" // the text table of the module
        "text\nlock built\n" // its message handler
        "text\nlock built\n" // its profiler state handler
        "preferences\n" // its switches
        "text\nlock built\n" // the lock trail handler
        "preferences\n" // the switches for the second time
        "thread ID\n"
        "text\nlock built\n" // behind the object registry: the observer of the self-checks
        "thread ID\n"
        "IconFileName BitmapFileName PaletteName OriginalPathName ForceDropLocation HTML PrivateSystemProperties live\n"
        "lock gone\n"
        "lock gone\n"
        "texts released\n"
        "lock gone\nlock gone\n"
        "lock gone\n");
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
#endif

} // namespace
