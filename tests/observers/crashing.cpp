// A program that crashes with a flight recorder on board, as its second argument says.

#include "zrlib/zrlib.h"
#include "zrobservers/zrobservers.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

// NOLINTNEXTLINE(misc-no-recursion): that is what overflows the stack
int Overflow(int depth)
{
    volatile int room[1024];
    room[0] = depth + 1;
    return room[0] > 0 ? Overflow(room[0]) + room[0] : 0;
}

void SayEarlier(int signal)
{
    std::puts("earlier");
    std::exit(signal);
}

} // namespace

int main(int /*count*/, char** arguments)
{
    const std::string kind = arguments[2];
    if (kind == "earlier") {
        std::signal(SIGSEGV, SayEarlier);
    }
    ZRFlightRecorder::Options options;
    options.count = 3;
    options.atCrash = true;
    const ZRFlightRecorder recorder(arguments[1], options);
    for (int number = 0; number < 5; ++number) {
        ZR_OUT("message %d\n", number);
    }
    ZR_TRACE("about to crash");
    if (kind == "abort") {
        std::abort();
    } else if (kind == "overflow") {
        std::exit(Overflow(0));
    } else if (kind == "thread") {
        std::thread([] {
            const ZRFlightRecorder::ThreadGuard guard;
            std::exit(Overflow(0));
        }).join();
    }
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1; // NOLINT(clang-analyzer-core.NullDereference): that is the crash
}
