#include "hcbase/system/threads.h"

#include "hcbase/records.h"
#include "hcbase/system/windows.h"

#include <atomic>
#include <new>
#include <process.h>

// Exported by ntdll.dll; the headers that declare it are in the driver kit.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace hcbase::system {

bool OtherThreadsAreGone() noexcept { return RtlDllShutdownInProgress() != 0; }

namespace {

// A slot of the system instead of thread_local: it can be freed at unload, which the compiler's own emulation of
// thread_local cannot.
constinit DWORD g_slot = FLS_OUT_OF_INDEXES;

constinit std::atomic<std::uint32_t> g_lastId{0};

/// Runs when a thread ends and, for every thread that has a record, when the slot is freed.
void CALLBACK OnThreadExit(void* perThread)
{
    if (OtherThreadsAreGone()) {
        return; // one may have been in the middle of an allocation: the memory ends with the process
    }
    auto* const thread = static_cast<PerThread*>(perThread);
    ReleaseErrors(thread->errors);
    delete thread;
}

} // namespace

std::uint32_t ForkGeneration() noexcept { return 0; }

PerThread* CurrentPerThread() noexcept
{
    if (g_slot == FLS_OUT_OF_INDEXES) {
        return nullptr;
    }
    const DWORD lastError = GetLastError(); // the caller's; a successful FlsGetValue clears it
    auto* thread = static_cast<PerThread*>(FlsGetValue(g_slot));
    SetLastError(lastError);
    if (thread == nullptr) {
        thread = new (std::nothrow) PerThread{};
        if (thread != nullptr && FlsSetValue(g_slot, thread) == 0) {
            delete thread;
            thread = nullptr;
        }
    }
    return thread;
}

void ReleaseErrorsAtThreadExit(PerThread& /*thread*/) noexcept {} // the slot's callback does

void InstallHooks() noexcept { g_slot = FlsAlloc(OnThreadExit); }

void RemoveHooks() noexcept
{
    if (g_slot != FLS_OUT_OF_INDEXES) {
        FlsFree(g_slot);
        g_slot = FLS_OUT_OF_INDEXES;
    }
}

std::uint32_t CurrentThreadId() noexcept
{
    // The system reuses the number of a thread that has ended.
    PerThread* const thread = CurrentPerThread();
    if (thread == nullptr) { // no memory, or unloaded: its numbers are multiples of 4 and small
        return GetCurrentThreadId() | 0x80000000U;
    }
    while (thread->id == 0) {
        thread->id = (g_lastId.fetch_add(1, std::memory_order_relaxed) + 1) & 0x7FFFFFFFU;
    }
    return thread->id;
}

ThreadMark CurrentThreadMark() noexcept { return GetCurrentThreadId(); }

bool StartThread(ThreadFunction function, void* argument, std::uintptr_t& handle) noexcept
{
    // Not CreateThread: the C runtime prepares its own per-thread data here. x86-64 has only one calling convention.
    const std::uintptr_t thread = _beginthreadex(nullptr, 0, function, argument, 0, nullptr);
    if (thread == 0) {
        return false;
    }
    handle = thread;
    return true;
}

bool JoinThread(std::uintptr_t handle, unsigned int& exitCode) noexcept
{
    auto* const thread = reinterpret_cast<HANDLE>(handle);
    DWORD code = 0;
    if (GetThreadId(thread) == GetCurrentThreadId() || WaitForSingleObject(thread, INFINITE) != WAIT_OBJECT_0
        || GetExitCodeThread(thread, &code) == 0) {
        return false;
    }
    CloseHandle(thread);
    exitCode = code;
    return true;
}

void DetachThread(std::uintptr_t handle) noexcept { CloseHandle(reinterpret_cast<HANDLE>(handle)); }

void ExitCurrentThread(unsigned int exitCode)
{
    _endthreadex(exitCode);
    __builtin_unreachable();
}

} // namespace hcbase::system
