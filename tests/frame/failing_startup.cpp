// A client that has memory for so many allocations only while the library loads, as the environment variable
// ALLOCATIONS says, and enough from main on. It then uses the library and tells how many allocations have failed.

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

constinit bool g_isLoaded = false;
constinit long g_count = 0;
constinit long g_failed = 0;

void* Allocate(std::size_t size) noexcept
{
    if (!g_isLoaded) {
        const char* const limit = std::getenv("ALLOCATIONS");
        if (limit != nullptr && g_count++ >= std::atol(limit)) {
            ++g_failed;
            return nullptr;
        }
    }
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

void* operator new(std::size_t size)
{
    void* const memory = Allocate(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

int main()
{
    g_isLoaded = true;
    if (ZRMessageHandler* const handler = ZRGetMessageHandler()) {
        static_cast<void>(handler->GetObserverCount());
    }
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(ZR_DEST_FILE);
    ZROut("a message", "main", 1);
    ZRErrorSet(-1, "an error", "main", 0, 1);
    ZRRegisterLibrary(0x1000, "a library");
    ZRDumpRegistry();
    ZRProfilerState state("main");
    {
        const ZRProfiler timer(&state);
    }
    ZRThreadSync sync;
    sync.Lock("main", nullptr);
    sync.Unlock("main", nullptr);
    ZRGlobalThreadSync::Lock("main");
    ZRGlobalThreadSync::Unlock("main");
    ZRRemoveLockTrail(ZRAppendLockTrail());
    ZRProgressEnable(1);
    ZRProgressStart("main");
    ZRMath::Divide(1, 0);
    std::printf("%ld failed\n", g_failed);
    return 0;
}
