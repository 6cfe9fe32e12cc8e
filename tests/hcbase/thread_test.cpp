#include "hcbase/thread.h"
#include "hcbase/thread_sync.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace std::chrono_literals;

/// Whether another thread gets the lock while this one holds on to what it has. The thread lets it go again.
bool IsFreeForOthers(HCThreadSync& sync)
{
    std::atomic<bool> isTrying{false};
    std::atomic<bool> isHeld{false};
    std::thread other([&] {
        isTrying = true;
        sync.lock();
        isHeld = true;
        sync.unlock();
    });
    while (!isTrying) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(50ms); // a thread that need not wait takes longer only on a machine that stands still
    const bool wasFree = isHeld;
    while (!isHeld && sync.unlock()) { // lets the other thread end
    }
    other.join();
    return wasFree;
}

unsigned int Return(void* argument) { return *static_cast<unsigned int*>(argument); }

unsigned int ExitFromInside(void* argument)
{
    std::this_thread::sleep_for(20ms); // the exit code is asked for before the thread has ended
    HCThread::ExitThread(*static_cast<unsigned int*>(argument));
}

TEST(Thread, GivesItsExitCodeAsOftenAsAsked)
{
    for (unsigned int (*const function)(void*) : {Return, ExitFromInside}) {
        for (unsigned int code : {0U, 7U, 0xFFFFFFFFU}) {
            HCThread thread;
            int exitCode = 123;
            EXPECT_EQ(thread.GetExitCode(&exitCode), 0);
            EXPECT_EQ(exitCode, 123);
            ASSERT_EQ(thread.CreateThread(function, &code), 1);
            EXPECT_EQ(thread.CreateThread(function, &code), 0) << "its exit code was not asked for yet";
            EXPECT_EQ(thread.GetExitCode(nullptr), 0);
            for (int turn = 0; turn < 2; ++turn) {
                EXPECT_EQ(thread.GetExitCode(&exitCode), 1);
                EXPECT_EQ(exitCode, static_cast<int>(code));
            }
            EXPECT_EQ(thread.CreateThread(Return, &code), 1) << "a handle can be used again";
            EXPECT_EQ(thread.GetExitCode(&exitCode), 1);
        }
    }
    HCThread thread;
    EXPECT_EQ(thread.CreateThread(nullptr, nullptr), 0);
}

TEST(Thread, GoesOnWithoutItsHandle)
{
    static std::atomic<int> step{0};
    {
        HCThread thread;
        thread.CreateThread(
            [](void*) {
                while (step == 0) {
                    std::this_thread::yield();
                }
                step = 2;
                return 0U;
            },
            nullptr);
    }
    step = 1;
    while (step != 2) {
        std::this_thread::yield();
    }
}

TEST(Thread, DoesNotWaitForItself)
{
    static std::atomic<HCThread*> self{nullptr};
    HCThread thread;
    thread.CreateThread(
        [](void*) {
            while (self == nullptr) {
                std::this_thread::yield();
            }
            int exitCode = 0;
            const char result = self.load()->GetExitCode(&exitCode);
            self = nullptr;
            return result == 0 ? 5U : 6U;
        },
        nullptr);
    self = &thread;
    while (self != nullptr) {
        std::this_thread::yield();
    }
    int exitCode = 0;
    EXPECT_EQ(thread.GetExitCode(&exitCode), 1);
    EXPECT_EQ(exitCode, 5);
}

TEST(Thread, HasAnIdOfItsOwn)
{
    const unsigned int own = HCThread::GetCurrentThreadId();
    EXPECT_NE(own, 0U);
    EXPECT_EQ(HCThread::GetCurrentThreadId(), own);
    std::vector<unsigned int> ids(16, 0);
    std::vector<std::thread> threads;
    std::atomic<std::size_t> ready{0};
    for (unsigned int& id : ids) {
        threads.emplace_back([&] {
            id = HCThread::GetCurrentThreadId();
            ++ready;
            while (ready < ids.size()) { // all at the same time
                std::this_thread::yield();
            }
            EXPECT_EQ(HCThread::GetCurrentThreadId(), id);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<unsigned int> all(ids.begin(), ids.end());
    all.insert(own);
    all.insert(0);
    EXPECT_EQ(all.size(), ids.size() + 2);

    EXPECT_EQ(HCThread::AreSameThread(own, own), 1);
    EXPECT_EQ(HCThread::AreSameThread(own, ids[0]), 0);
    EXPECT_EQ(HCThread::AreSameThread(0, 0), 0);
}

TEST(ThreadSync, IsFreeAfterAsManyUnlocksAsLocks)
{
    HCThreadSync sync;
    EXPECT_EQ(sync.unlock(), 0) << "nobody holds it";
    EXPECT_EQ(sync.lock(), 1);
    EXPECT_EQ(sync.lock(), 1);
    EXPECT_EQ(sync.unlock(), 1);
    std::thread([&sync] { EXPECT_EQ(sync.unlock(), 0) << "another thread holds it"; }).join();
    EXPECT_FALSE(IsFreeForOthers(sync));
    EXPECT_EQ(sync.lock(), 1);
    EXPECT_EQ(sync.unlock(), 1);
    EXPECT_EQ(sync.unlock(), 0);
    EXPECT_TRUE(IsFreeForOthers(sync));
}

TEST(ThreadSync, IsSharedByCopies)
{
    HCThreadSync first;
    HCThreadSync assigned;
    {
        const HCThreadSync second(first);
        assigned = second;
    }
    HCThreadSync& same = assigned;
    assigned = same;
    first.lock();
    EXPECT_EQ(assigned.unlock(), 1);
    first.lock();
    EXPECT_FALSE(IsFreeForOthers(assigned));
    first = HCThreadSync();
    first.lock();
    EXPECT_TRUE(IsFreeForOthers(assigned)) << "after an assignment it is another lock";
    first.unlock();
}

TEST(ThreadSync, LetsOneThreadInAtATime)
{
    HCThreadSync sync;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 20000; ++turn) {
                sync.lock();
                sync.lock();
                ++counter;
                sync.unlock();
                sync.unlock();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 80000);
}

#if !defined(_WIN32) // Windows has no fork

/// Runs a check in a forked child and gives its exit code; -1 when it hangs.
template <typename Check> int ExitCodeOfChild(Check check)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        _exit(check());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ThreadSync, WorksInAForkedChild)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer stops a forked child that starts threads";
#endif
    HCThreadSync ofOther;
    HCThreadSync own;
    std::atomic<int> step{0};
    std::thread holder([&] {
        ofOther.lock();
        ofOther.lock();
        step = 1;
        while (step == 1) {
            std::this_thread::yield();
        }
        ofOther.unlock();
        ofOther.unlock();
    });
    while (step == 0) {
        std::this_thread::yield();
    }
    own.lock();
    own.lock();
    const unsigned int id = HCThread::GetCurrentThreadId();
    const auto check = [&] {
        int place = 1;
        const auto passes = [&place](bool isTrue) {
            place += isTrue ? 1 : 0;
            return isTrue;
        };
        return passes(HCThread::GetCurrentThreadId() == id) && passes(ofOther.lock()) && passes(ofOther.unlock())
                && passes(!ofOther.unlock()) // the other thread's two levels are not counted on
                && passes(IsFreeForOthers(ofOther)) && passes(own.unlock()) && passes(own.unlock())
                && passes(!own.unlock()) && passes(IsFreeForOthers(own))
            ? 0
            : place;
    };
    EXPECT_EQ(ExitCodeOfChild(check), 0);
    EXPECT_EQ(ExitCodeOfChild([&] { // a lock that the forking thread holds is not taken from it
        return IsFreeForOthers(own) ? 1 : 0;
    }),
        0);
    EXPECT_EQ(ExitCodeOfChild([&] { return ExitCodeOfChild(check); }), 0) << "in a child of the child";
    step = 2;
    holder.join();
    own.unlock();
    own.unlock();
}

TEST(Thread, OfTheParentIsNotWaitedForInAForkedChild)
{
    static std::atomic<bool> mayEnd{false};
    HCThread thread;
    thread.CreateThread(
        [](void*) {
            while (!mayEnd) {
                std::this_thread::yield();
            }
            return 0U;
        },
        nullptr);
    int exitCode = 0;
    EXPECT_EQ(ExitCodeOfChild([&] { return thread.GetExitCode(&exitCode); }), 0);
    mayEnd = true;
    EXPECT_EQ(thread.GetExitCode(&exitCode), 1);
}

#endif

} // namespace
