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

void Fault()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1; // NOLINT(clang-analyzer-core.NullDereference): that is the crash
}

} // namespace

int main(int /*count*/, char** arguments)
{
    const std::string kind = arguments[2];
    if (kind == "exit") { // as many handlers do though it is not safe in general
        std::atexit([] { std::puts("exit"); });
        std::signal(SIGSEGV, std::exit);
    }
#if !defined(_WIN32)
    if (kind == "once") {
        struct sigaction once {};
        once.sa_handler = [](int /*signal*/) {
            std::puts("once");
            std::fflush(stdout);
        };
        once.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(SIGSEGV, &once, nullptr);
    }
#endif
    const ZRFlightRecorder recorder(arguments[1], {3, ZR_MSG_ERROR, true, {}});
    for (int number = 0; number < 5; ++number) {
        ZR_OUT("message %d\n", number);
    }
    ZRObservedObject nobody;
    ZRBackground background(kind == "background" ? *ZRGetMessageHandler() : nobody);
    const ZRListener listener(background, [](const ZRObservedObjectEvent& /*event*/) { Fault(); });
    ZR_TRACE("about to crash");
    background.Flush();
    if (kind == "abort") {
        std::abort();
    } else if (kind == "overflow") {
        return Overflow(0);
    } else if (kind == "thread") {
        std::thread([] {
            const ZRFlightRecorder::ThreadGuard guard;
            std::exit(Overflow(0));
        }).join();
    }
    Fault();
}
