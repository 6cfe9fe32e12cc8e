/// Threads and forked children of a test.
#pragma once

#include "hcbase/thread_sync.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace test {

/// Runs action(index) on `count` threads at once and waits until all have ended.
template <typename Action> void OnThreads(int count, Action action)
{
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index) {
        threads.emplace_back(action, index);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Whether another thread can take a lock now.
inline bool IsFree(HCThreadSync& sync)
{
    bool isFree = false;
    OnThreads(1, [&](int /*thread*/) { isFree = sync.try_lock() && sync.unlock() != 0; });
    return isFree;
}

/// Waits until the predicate is true; false after a minute.
template <typename Predicate> bool SpinUntil(Predicate predicate)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!predicate()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

#if !defined(_WIN32)
/// What `check` returns in a forked child; -1 when the child crashes or hangs for 20 seconds.
template <typename Check> int ResultOfChild(Check check)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(check());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
#endif

} // namespace test
