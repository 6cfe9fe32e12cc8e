#include "zrlib/platform/fork_hooks.h"

#include "hcbase/thread.h"

#include <pthread.h>

constinit std::atomic<std::uint32_t> zr::g_forkGeneration{0};
constinit std::atomic<std::uint32_t> zr::g_forkingThread{0};

namespace {

using Hook = void (*)();

constinit Hook g_inChild = nullptr;

void OnFork()
{
    zr::g_forkingThread.store(HCThread::GetCurrentThreadId(), std::memory_order_relaxed);
    zr::g_forkGeneration.fetch_add(1, std::memory_order_relaxed);
    g_inChild();
}

} // namespace

void zr::InstallForkHooks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept
{
    g_inChild = inChild;
    pthread_atfork(before, inParent, OnFork); // the C library removes them when it unloads this library
}
