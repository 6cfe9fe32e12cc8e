// A client that has memory for so many allocations only while the library loads, as its argument says, and enough from
// main on. It then uses the library and tells whether it asked for more.

#include "tests/frame/use_everything.h"
#include "tests/support/allocations.h"

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
    UseEverything("main");
    ZRRegisterLibrary(0x1000, "a library");
    std::puts(hasFailed ? "too little" : "enough");
    return 0;
}
