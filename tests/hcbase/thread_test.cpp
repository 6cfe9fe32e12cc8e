#include "hcbase/thread.h"
#include "hcbase/thread_sync.h"
#include "tests/support/threads.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <mutex>
#include <utility>

namespace {

unsigned int Return(void* code) { return *static_cast<unsigned int*>(code); }

unsigned int ExitFromInside(void* code)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // the exit code is asked for before
    HCThread::ExitThread(*static_cast<unsigned int*>(code));
}

TEST(Thread, GivesItsExitCodeAsOftenAsAsked)
{
    for (unsigned int (*const function)(void*) : {Return, ExitFromInside}) {
        for (unsigned int code : {0U, 7U, UINT_MAX}) {
            HCThread thread;
            int exitCode = 123;
            EXPECT_EQ(thread.CreateThread(nullptr, &code), 0);
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
}

struct Task {
    HCThread thread;
    std::atomic<bool> mayEnd{false};
    std::atomic<int> ownExitCode{77}; // what the thread is told about itself
};

unsigned int Wait(void* argument)
{
    Task& task = *static_cast<Task*>(argument);
    test::SpinUntil([&task] { return task.mayEnd.load(); });
    int exitCode = 0;
    task.ownExitCode = task.thread.GetExitCode(&exitCode);
    return 7;
}

TEST(Thread, IsWaitedForByOtherThreadsOfItsProcessOnly)
{
    static unsigned int zero = 0;
    EXPECT_EQ(HCThread().CreateThread(Return, &zero), 1) << "goes on without its handle";
    Task task;
    ASSERT_EQ(task.thread.CreateThread(Wait, &task), 1);
    int exitCode = 0;
#if !defined(_WIN32) // which has no fork
    EXPECT_EQ(test::ResultOfChild([&] { return task.thread.GetExitCode(&exitCode); }), 0);
#endif
    task.mayEnd = true;
    EXPECT_TRUE(test::SpinUntil([&task] { return task.ownExitCode == 0; }));
    EXPECT_EQ(task.thread.GetExitCode(&exitCode), 1);
    EXPECT_EQ(exitCode, 7);
}

TEST(Thread, HasAnIdOfItsOwn)
{
    const unsigned int own = HCThread::GetCurrentThreadId();
    std::thread([own] {
        const unsigned int other = HCThread::GetCurrentThreadId();
        EXPECT_EQ(HCThread::AreSameThread(other, HCThread::GetCurrentThreadId()), 1);
        EXPECT_EQ(HCThread::AreSameThread(other, own), 0);
    }).join();
    EXPECT_EQ(HCThread::AreSameThread(own, own), 1) << "so it is not 0";
    EXPECT_EQ(HCThread::AreSameThread(0, 0), 0);
}

TEST(ThreadSync, IsFreeAfterAsManyUnlocksAsLocksByAnyOfItsCopies)
{
    HCThreadSync sync;
    HCThreadSync copy(sync);
    HCThreadSync assigned;
    assigned = sync;
    assigned = std::as_const(assigned);
    EXPECT_EQ(sync.unlock(), 0) << "nobody holds it";
    EXPECT_EQ(sync.lock(), 1);
    EXPECT_EQ(copy.lock(), 1);
    EXPECT_TRUE(assigned.try_lock());
    for (HCThreadSync* const same : {&sync, &copy, &assigned}) {
        std::thread([same] { EXPECT_EQ(same->unlock(), 0) << "another thread holds it"; }).join();
        EXPECT_FALSE(test::IsFree(*same));
        EXPECT_EQ(same->unlock(), 1);
    }
    EXPECT_EQ(sync.unlock(), 0);
    EXPECT_TRUE(test::IsFree(copy));
    sync = HCThreadSync();
    sync.lock();
    EXPECT_TRUE(test::IsFree(copy)) << "after an assignment it is another lock";
}

#if !defined(_WIN32) // which has no fork
TEST(ThreadSync, WorksInAForkedChild)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer stops a forked child that starts threads";
#endif
    HCThreadSync ofOther;
    const std::lock_guard outer(ofOther);
    const std::lock_guard inner(ofOther);
    std::thread([&ofOther] {
        HCThreadSync own;
        const std::lock_guard outerOwn(own);
        const std::lock_guard innerOwn(own);
        const unsigned int id = HCThread::GetCurrentThreadId();
        const auto check = [&] {
            const bool steps[] = {HCThread::GetCurrentThreadId() == id, !test::IsFree(own), ofOther.lock() != 0,
                ofOther.unlock() != 0, ofOther.unlock() == 0, // the other thread's two levels are not counted on
                test::IsFree(ofOther), own.unlock() != 0, own.unlock() != 0, own.unlock() == 0, test::IsFree(own)};
            return static_cast<int>(std::find(std::begin(steps), std::end(steps), false) - steps); // where it fails
        };
        EXPECT_EQ(test::ResultOfChild(check), 10);
        EXPECT_EQ(test::ResultOfChild([&check] { return test::ResultOfChild(check); }), 10)
            << "in a child of the child";
    }).join();
}
#endif

} // namespace
