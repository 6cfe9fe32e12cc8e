// A client that has memory for so many allocations only while the library loads, as its argument says, and enough from
// main on. It then uses the library and tells whether it asked for more.

#include "hcbase/hcbase.h"
#include "tests/support/allocations.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constinit std::optional<test::FailingHeap> g_heap;

// Runs before any library is initialised.
void LimitTheHeap(int /*count*/, char** arguments, char** /*environment*/) { g_heap.emplace(std::atol(arguments[1])); }
__attribute__((section(".preinit_array"), used)) void (*const limitTheHeap)(int, char**, char**) = LimitTheHeap;

} // namespace

int main(int /*count*/, char** arguments)
{
    const bool hasFailed = test::AllocationCount() > std::atol(arguments[1]);
    g_heap.reset();
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
    std::puts(hasFailed ? "too little" : "enough");
    return 0;
}
