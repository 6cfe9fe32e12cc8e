// Loads the library by hand: nothing of it is linked to this program.

#include "tests/support/process.h"
#include "tests/support/surroundings.h"

#include <atomic>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

bool IsMapped(const std::string& library)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) {
            return true;
        }
    }
    return false;
}

template <typename Result> Result Call(void* library, const char* function)
{
    return reinterpret_cast<Result (*)()>(dlsym(library, function))();
}

std::ptrdiff_t EntriesIn(const char* folder)
{
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

std::size_t HeapInUse() { return mallinfo2().uordblks; }

/// Loads the library, sends and records an error, and unloads it.
void Cycle(short expectedFlags)
{
    void* const library = dlopen(ZRLIB_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(Call<short>(library, "ZRGetOutFlags"), expectedFlags);
    const auto errorSet =
        reinterpret_cast<int (*)(int, const char*, const char*, char, short)>(dlsym(library, "ZRErrorSet"));
    errorSet(-1, "an error whose text is long enough to need the heap for its copies", "Cycle", 0, 1);
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_FALSE(IsMapped("libzrlib.so"));
    ASSERT_FALSE(IsMapped("libhcbase.so"));
}

TEST(Loading, AThousandTimesLeavesNothingBehind)
{
    const test::Home home;
    const auto store = [&home](bool toFile) {
        test::WriteFile(home.PreferencesPath(),
            std::string("[Libraries.zrlib]\nOutEnabled = true\nSendToFile = ") + (toFile ? "true\n" : "false\n"));
    };
    std::thread([&] { // the second thread of the process
        std::size_t heap = 0;
        std::ptrdiff_t files = 0;
        std::ptrdiff_t threads = 0;
        for (int cycle = 0; cycle < 1000; ++cycle) {
            const bool toFile = cycle % 2 == 0;
            store(toFile);
            Cycle(toFile ? 8 : 0);
            if (cycle == 499) { // what the system's own loader keeps has settled
                heap = HeapInUse();
                files = EntriesIn("/proc/self/fd");
                threads = EntriesIn("/proc/self/task");
            }
        }
        EXPECT_LT(HeapInUse(), heap + 4096) << "the least block in each of the 500 cycles would be three times that";
        EXPECT_EQ(EntriesIn("/proc/self/fd"), files);
        EXPECT_EQ(EntriesIn("/proc/self/task"), threads);
        const pid_t child = fork(); // must not run hooks that are gone
        if (child == 0) {
            _exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    })
        .join();
    EXPECT_EQ(test::Lines(home.Log()).size(), 500U);
}

TEST(Loading, MakesItsThreadTheMainThread)
{
    void* library = nullptr;
    const char* const isMainThread = "_ZN6ZRMode12IsMainThreadEv";
    std::thread([&] {
        library = dlopen(ZRLIB_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(Call<char>(library, isMainThread), 1);
    }).join();
    EXPECT_EQ(Call<char>(library, isMainThread), 0) << "not the process's first thread";
    dlclose(library);
}

TEST(Loading, MayCheckTheLibraryFromAnInitialiser)
{
    alarm(60); // ends the test if threads wait for the loader
    void* const library = dlopen(CHECKS_AT_LOAD_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(*static_cast<int*>(dlsym(library, "g_result")), 1);
    dlclose(library);
}

TEST(Loading, ReleasesTheErrorsOfThreadsThatLiveOn)
{
    void* const library = dlopen(ZRLIB_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr);
    const auto errorSet =
        reinterpret_cast<int (*)(int, const char*, const char*, char, short)>(dlsym(library, "ZRErrorSet"));
    std::atomic<int> step{0};
    std::thread other([&] {
        errorSet(-1, "recorded", "here", 0, 1);
        step = 1;
        while (step == 1) {
            std::this_thread::yield();
        }
    });
    while (step == 0) {
        std::this_thread::yield();
    }
    dlclose(library);
    EXPECT_FALSE(IsMapped("libhcbase.so"));
    step = 2;
    other.join(); // its end must not run code that is gone
}

// By what the library asks of its foundation meanwhile, and how many of its texts stand then.
TEST(Loading, MayBeCalledByHandlersOfForkThatAreOlder)
{
    static int (*count)() = nullptr;
    static int answer = -1;
    const auto ask = [] { answer = count != nullptr ? count() : -1; };
    pthread_atfork(ask, ask, ask);
    void* const library = dlopen(ZRLIB_FILE, RTLD_NOW | RTLD_LOCAL);
    count = reinterpret_cast<int (*)()>(dlsym(library, "ZRGetRegisteredObjectCount"));
    std::atomic<bool> isOver{false};
    std::thread other([&isOver] { // as locks are taken only where there are two threads
        while (!isOver) {
            std::this_thread::yield();
        }
    });
    const pid_t child = fork();
    if (child == 0) {
        _exit(answer);
    }
    int status = -1;
    waitpid(child, &status, 0);
    isOver = true;
    other.join();
    count = nullptr;
    dlclose(library);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(answer, 0);
}

TEST(Loading, ObjectsComeInOrderAndGoInTheReverse)
{
    EXPECT_EQ(test::Run(STARTUP_ORDER_PROGRAM, {}).output,
        "text of no table 0, 0 texts\n" // the global subject, before there is a module
        "lock built 1, 0 texts\n" // the lock of the process
        "text table ZRLib, 0 texts\n" // the module
        "version ZRLIB, 0 texts\n"
        "text 0, 0 texts\n" // its message handler
        "lock built 2, 0 texts\n"
        "text 0, 0 texts\n" // its profiler state handler
        "lock built 3, 0 texts\n"
        "preference Threading, 0 texts\n" // its switches
        "preference SendToFile, 0 texts\n"
        "text 0, 0 texts\n" // the lock trail handler
        "lock built 4, 0 texts\n"
        "preference Threading, 1 texts\n" // behind the name of the log: the switches for the second time
        "preference SendToFile, 1 texts\n"
        "thread ID, 1 texts\n"
        "text 0, 1 texts\n" // behind the object registry: the observer of the self-checks
        "lock built 5, 1 texts\n"
        "thread ID, 8 texts\n"
        "live\n"
        "lock gone 5, 8 texts\n"
        "name of a registered object deleted, 8 texts\n"
        "lock gone 4, 8 texts\n"
        "text table released, 8 texts\n"
        "lock gone 2, 8 texts\n"
        "lock gone 3, 8 texts\n"
        "lock gone 1, 8 texts\n");
}

TEST(Loading, WithoutMemoryGivesALibraryThatDoesWhatItCan)
{
    const test::Home home;
    test::WriteFile(home.PreferencesPath(), "[Libraries.zrlib]\nOutEnabled = true\nThreading = 3\n");
    test::ProcessResult result;
    for (int allocations = 0; result.output != "0 failed\n"; ++allocations) {
        ASSERT_LT(allocations, 1000) << result.output;
        const test::EnvironmentGuard limit("ALLOCATIONS", std::to_string(allocations));
        result = test::Run(FAILING_STARTUP_PROGRAM, {});
        ASSERT_EQ(result.exitCode, 0) << "with " << allocations << " allocations: " << result.errors;
    }
}

} // namespace
