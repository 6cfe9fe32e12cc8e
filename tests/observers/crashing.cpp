// A program that crashes with a flight recorder on board, as its second argument says.

#include "zrlib/zrlib.h"
#include "zrobservers/zrobservers.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#if !defined(_WIN32)
#include <csignal>
#include <unistd.h>
#endif

namespace {

#if !defined(_WIN32)
/// A handler of the program's own, which ends it with its destructors, as many do though it is not safe in general.
void SayEarlier(int signal)
{
    static_cast<void>(!write(STDOUT_FILENO, "earlier\n", 8));
    std::exit(signal);
}
#endif

// NOLINTNEXTLINE(misc-no-recursion): that is what overflows the stack
int Overflow(const volatile int* depth)
{
    volatile int room[1024];
    room[0] = *depth + 1;
    return room[0] > 0 ? Overflow(room) + room[0] : 0;
}

void Fault()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1; // NOLINT(clang-analyzer-core.NullDereference): that is the crash
}

void Crash(const std::string& kind)
{
    ZRObservedObject nobody;
    ZRBackground background(kind == "background" ? *ZRGetMessageHandler() : nobody);
    const ZRListener listener(background, [](const ZRObservedObjectEvent& /*event*/) { Fault(); });
    ZR_TRACE("about to crash");
    background.Flush();
    const volatile int start = 0;
    if (kind == "abort") {
        std::abort();
    } else if (kind == "overflow") {
        std::exit(Overflow(&start));
    } else if (kind == "thread") {
        std::thread([&start] {
            const ZRFlightRecorder::ThreadGuard guard;
            std::exit(Overflow(&start));
        }).join();
    }
    Fault();
}

} // namespace

int main(int /*count*/, char** arguments)
{
    const std::string kind = arguments[2];
#if !defined(_WIN32)
    if (kind == "earlier") {
        std::signal(SIGSEGV, SayEarlier);
    } else if (kind == "once") {
        struct sigaction once {};
        once.sa_handler = [](int /*signal*/) { static_cast<void>(!write(STDOUT_FILENO, "once\n", 5)); };
        once.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(SIGSEGV, &once, nullptr);
    }
#endif
    ZRFlightRecorder::Options options;
    options.count = 3;
    options.atCrash = true;
    const ZRFlightRecorder recorder(arguments[1], options);
    for (int number = 0; number < 5; ++number) {
        ZR_OUT("message %d\n", number);
    }
    Crash(kind);
}
