#include "hcbase/system/threads.h"

#include "hcbase/records.h"
#include "hcbase/shared_lock.h"
#include "hcbase/system/keep_errno.h"

#include <atomic>
#include <memory>
#include <new>
#include <pthread.h>

namespace hcbase::system {

namespace {

constinit std::atomic<std::uint32_t> g_lastId{0};
constinit std::atomic<std::uint32_t> g_forkGeneration{0};

constinit pthread_key_t g_exitKey = 0;
constinit bool g_hasExitKey = false;

// Plain data without a destructor: valid to the very end of the thread, with nothing registered. Static TLS is
// possible, since they are small, and halves the cost of reading an ID.
constinit thread_local std::uint32_t t_id __attribute__((tls_model("initial-exec"))) = 0;
constinit thread_local PerThread t_perThread __attribute__((tls_model("initial-exec"))){};

std::uint32_t TakeId() noexcept
{
    do {
        t_id = g_lastId.fetch_add(1, std::memory_order_relaxed) + 1;
    } while (t_id == 0); // the counter has wrapped around
    return t_id;
}

// The records are locked across fork, so that the child finds none of them half written.
void BeforeFork() HC_NO_THREAD_SAFETY_ANALYSIS { g_recordsLock.Lock(); }

void AfterForkInParent() HC_NO_THREAD_SAFETY_ANALYSIS { g_recordsLock.Unlock(); }

void AfterForkInChild() HC_NO_THREAD_SAFETY_ANALYSIS
{
    SharedLock::FreeAllUnlessOwn();
    AbandonErrorsOfOthers(t_perThread.errors);
    g_forkGeneration.fetch_add(1, std::memory_order_relaxed);
    g_recordsLock.Unlock();
}

void OnThreadExit(void* perThread) { ReleaseErrors(static_cast<PerThread*>(perThread)->errors); }

/// Exit codes travel through the system as pointers.
void* ToExitPointer(unsigned int exitCode)
{
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(exitCode)); // NOLINT(performance-no-int-to-ptr)
}

struct ThreadStart {
    ThreadFunction function;
    void* argument;
};

void* RunThread(void* heapStart)
{
    const ThreadStart start = *std::unique_ptr<ThreadStart>(static_cast<ThreadStart*>(heapStart));
    return ToExitPointer(start.function(start.argument));
}

static_assert(sizeof(pthread_t) <= sizeof(std::uintptr_t));

} // namespace

std::uint32_t CurrentThreadId() noexcept { return t_id != 0 ? t_id : TakeId(); }

bool OtherThreadsAreGone() noexcept { return false; } // they run to the very end

std::uint32_t ForkGeneration() noexcept { return g_forkGeneration.load(std::memory_order_relaxed); }

PerThread* CurrentPerThread() noexcept { return &t_perThread; }

void ReleaseErrorsAtThreadExit(PerThread& thread) noexcept
{
    if (g_hasExitKey) {
        pthread_setspecific(g_exitKey, &thread);
    }
}

void InstallHooks() noexcept
{
    // The C library removes the fork hooks of a shared object when it unloads the object.
    pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    // Without a key, histories are released at unload instead of at the end of their threads.
    g_hasExitKey = pthread_key_create(&g_exitKey, OnThreadExit) == 0;
}

void RemoveHooks() noexcept
{
    if (g_hasExitKey) {
        g_hasExitKey = false;
        pthread_key_delete(g_exitKey);
    }
}

bool StartThread(ThreadFunction function, void* argument, std::uintptr_t& handle) noexcept
{
    const KeepErrno keep;
    std::unique_ptr<ThreadStart> start(new (std::nothrow) ThreadStart{function, argument});
    pthread_t thread{};
    if (start == nullptr || pthread_create(&thread, nullptr, RunThread, start.get()) != 0) {
        return false;
    }
    static_cast<void>(start.release()); // the thread owns it now
    handle = static_cast<std::uintptr_t>(thread);
    return true;
}

bool JoinThread(std::uintptr_t handle, unsigned int& exitCode) noexcept
{
    const auto thread = static_cast<pthread_t>(handle);
    void* result = nullptr;
    if (pthread_equal(thread, pthread_self()) != 0 || pthread_join(thread, &result) != 0) {
        return false;
    }
    exitCode = static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(result));
    return true;
}

void DetachThread(std::uintptr_t handle) noexcept { pthread_detach(static_cast<pthread_t>(handle)); }

void ExitCurrentThread(unsigned int exitCode) { pthread_exit(ToExitPointer(exitCode)); }

} // namespace hcbase::system
