// A client whose static objects send messages when they are built and when they go, with threads that go on
// using the library until the process has ended and a handler that sends after the library's own objects have gone. The
// output tells what arrived; a test compares it.

#include "tests/frame/use_everything.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

namespace {

constexpr const char* kText = "a text that is long enough to need the heap for each of its copies";

#if !defined(_WIN32) // there nothing of the program runs after its libraries have gone
void UseWhatHasGone(int /*status*/, void* /*argument*/)
{
    ZRSetMessagesEnabled(1);
    ZRWarn(kText, "late_client", 1);
    ZRError(kText, "late_client", 1);
    UseEverything(kText);
    ZRSetThreadingEnabled(0);
    ZRSetLockTrailEnabled(1);
    { // prints nothing
        const ZRProfiler timer("late_client", nullptr);
    }
    ZRObjectObserver observer;
    ZRThreadSync sync;
    ZRLockTrail* const trail = ZRAppendLockTrail();
    char known = 1;
    const std::pair<const char*, bool> answers[] = {
        {"library", ZRRegisterLibrary(0x1000, kText) == 0 && ZRObjectIsKnown(0x1001) == 0},
        {"name", ZRGetObjectNameEx(0x1001, &known) == std::string("?") && known == 0},
        {"object", ZRGetRegisteredObjectID(0) == -1},
        {"subject", ZRAttachObserver(&observer) == 0 && observer.GetZRSubject() == nullptr},
        {"observer", ZRDetachObserver(&observer) == 0},
        {"progress", ZRProgressGetTitle() == ""},
        {"lock", sync.Lock("late", nullptr) != 0 && sync.Unlock("late", nullptr) != 0},
        // These two have gone, or go on working when a thread was inside them.
        {"global lock", ZRGlobalThreadSync::Lock(nullptr) == ZRGlobalThreadSync::Unlock(nullptr)},
        {"trail", trail == nullptr || ZRRemoveLockTrail(trail) != 0},
        {"switches", ZRGetLockTrailEnabled() == 0 && ZRGetThreadingEnabled() != 0},
        {"self-check", ZRTestMessageThreading(1) == 0},
    };
    for (const auto& [what, isRight] : answers) {
        if (!isRight) {
            std::printf("wrong: %s\n", what);
        }
    }
    std::puts("after the library");
}

// Runs before any library is initialised, so that the handler is the last to run. Not atexit, which counts the handler
// as the program's own and runs it with the program's static objects.
void RegisterLastHandler() { on_exit(UseWhatHasGone, nullptr); }
__attribute__((section(".preinit_array"), used)) void (*const registerLastHandler)() = RegisterLastHandler;

/// Makes a record, which the end of the thread gives back, and starts a thread that does the same.
void* RecordAndPassOn(void* /*argument*/)
{
    HFErrorSet(-1, kText, "late_client", 0);
    pthread_attr_t detached; // from the start, or the process could end before it is
    pthread_attr_init(&detached);
    pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
    pthread_t next{};
    pthread_create(&next, &detached, RecordAndPassOn, nullptr);
    return nullptr;
}
#endif

struct Client {
    Client()
    {
        ZRSetMessagesEnabled(1);
        ZRSetWarnFlags(ZR_DEST_CONSOLE);
        ZRWarn(ZRGetObjectName(0x1001, nullptr), "late_client", 1);
        ZRRegisterObject(0x1001, "left registered");
    }
    ~Client()
    {
        ZRWarn(ZRGetObjectName(0x1001, nullptr), "late_client", 1);
        ZRWarn(keptText, "late_client", 1);
    }

    const char* keptText = "";
} client;

void RunForEver(void (*step)())
{
    for (;;) {
#if defined(_WIN32)
        // One at a time: the C runtime frees memory when the process ends, and Wine's heap hangs there when a
        // thread was ended while it waited for another.
        static std::atomic_flag isBusy;
        while (isBusy.test_and_set()) {
            std::this_thread::yield();
        }
        step();
        isBusy.clear();
#else
        step();
#endif
    }
}

constexpr void (*kSteps[])() = {
    [] { ZRTrace(kText, nullptr, 1); },
    [] { ZRErrorSet(-1, kText, "late_client", 1, 1); },
    [] { UseEverything(kText); },
    [] {
        HCVersion version;
        HFVersionGet("ZRLIB", version);
        static_cast<void>(HFTextFind("ZRLib"));
        const ZRObservedObject named;
        static_cast<void>(ZRGetOpSysName(12));
        static_cast<void>(ZRGetObjectMirror(0x1001));
        static_cast<void>(ZRGetRegisteredObjectName(0));
    },
#if !defined(__SANITIZE_ADDRESS__) // it objects to the call as such, though the function does not touch a handler that
                                   // has gone
    [] { ZRGetMessageHandler()->OutEx("", kText, nullptr, 1); },
#endif
};

} // namespace

int main()
{
    ZRGetProfilerStateHandler()->SetEnabled(1);
    for (auto* const step : kSteps) {
        std::thread(RunForEver, step).detach();
    }
#if !defined(_WIN32)
    RecordAndPassOn(nullptr);
#endif
    client.keptText = ZRGetObjectNameEx(0x1002, nullptr); // asked for after the object was built, read when it goes
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return 0;
}
