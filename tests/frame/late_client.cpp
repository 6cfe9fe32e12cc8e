// A client whose static objects send messages when they are built and when they go, with threads that go on
// using the library until the process has ended and a handler that sends after the library's own objects have gone. The
// output tells what arrived; a test compares it.

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

#if !defined(_WIN32) // there nothing of the program runs after its libraries have gone
void SendWhenTheLibraryHasGone(int /*status*/, void* /*argument*/)
{
    ZRWarn("too late", "late_client", 1);
    ZRError("too late", "late_client", 1);
    ZRErrorSet(-1, "too late", "late_client", 0, 1);
    ZRSetMessagesEnabled(1);
    ZRWarn("too late", "late_client", 1);
    char known = 1;
    const bool findsNothing = ZRRegisterLibrary(0x1000, "too late") == 0 && ZRObjectIsKnown(0x1001) == 0
        && ZRGetObjectNameEx(0x1001, &known) == std::string("?") && known == 0 && ZRGetRegisteredObjectID(0) == -1;
    ZRDumpRegistry();
    ZRObjectObserver observer;
    ZRProgressEnable(1);
    ZRProgressStart("too late");
    const bool isUnobserved = ZRAttachObserver(&observer) == 0 && observer.GetZRSubject() == nullptr
        && ZRDetachObserver(&observer) == 0 && ZRProgressGetTitle() == "";
    ZRProfilerState state;
    {
        const ZRProfiler timer(&state);
        const ZRProfiler printing("too late", nullptr);
    }
    ZRThreadSync sync;
    const bool locksItself = sync.Lock("late", nullptr) != 0 && sync.Unlock("late", nullptr) != 0;
    ZRSetThreadingEnabled(0);
    ZRSetLockTrailEnabled(1);
    // These have gone, or go on working when a thread was inside them.
    const bool locksOrNot = ZRGlobalThreadSync::Lock(nullptr) == ZRGlobalThreadSync::Unlock(nullptr);
    ZRLockTrail* const trail = ZRAppendLockTrail();
    const bool areConsistent = locksOrNot && (trail == nullptr || ZRRemoveLockTrail(trail) != 0)
        && ZRGetLockTrailEnabled() == 0 && ZRGetThreadingEnabled() != 0 && ZRTestMessageThreading(1) == 0;
    std::puts(findsNothing && isUnobserved && locksItself && areConsistent ? "after the library"
                                                                           : "some of it is still there");
}

// Runs before any library is initialised, so that the handler is the last to run. Not atexit, which counts the handler
// as the program's own and runs it with the program's static objects.
void RegisterLastHandler() { on_exit(SendWhenTheLibraryHasGone, nullptr); }
__attribute__((section(".preinit_array"), used)) void (*const registerLastHandler)() = RegisterLastHandler;
#endif

class Client {
public:
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
        ZRWarn(m_text, "late_client", 1);
    }
    void Keep(const char* text) { m_text = text; }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

private:
    const char* m_text = "";
};

Client client;

} // namespace

int main()
{
    ZRGetProfilerStateHandler()->SetEnabled(1);
    const auto runForEver = [](void (*step)()) {
        std::thread([step] {
            for (;;) {
#if defined(_WIN32)
                // One at a time: the C runtime frees memory when the process ends, and Wine's heap hangs there when a
                // thread was ended while it waited for another.
                static std::atomic<bool> isBusy;
                while (isBusy.exchange(true)) {
                    std::this_thread::yield();
                }
                step();
                isBusy = false;
#else
                step();
#endif
            }
        }).detach();
    };
    runForEver([] { ZRTrace("a text that is long enough to need the heap for each of its copies", nullptr, 1); });
#if !defined(__SANITIZE_ADDRESS__) // it objects to the call as such, though the function does not touch a handler that
                                   // has gone
    runForEver([] { ZRGetMessageHandler()->OutEx("", "a text that is long enough to need the heap", nullptr, 1); });
#endif
    runForEver([] { ZRErrorSet(-1, "a text that is long enough to need the heap", "late_client", 1, 1); });
    runForEver([] {
        static ZRProfilerState& state = *new ZRProfilerState; // goes on when the static objects have gone
        const ZRProfiler timer(&state);
        ZRGlobalThreadSync::Lock(nullptr);
        ZRRemoveLockTrail(ZRAppendLockTrail());
        ZRProgressEnable(1);
        ZRProgressStart("a text that is long enough to need the heap");
        ZRGlobalThreadSync::Unlock(nullptr);
    });
    runForEver([] {
        HCVersion version;
        HFVersionGet("ZRLIB", version);
        static_cast<void>(HFTextFind("ZRLib"));
        const ZRObservedObject named;
        ZRMath::Divide(1, 0);
        static_cast<void>(ZRGetOpSysName(12));
        static_cast<void>(ZRGetObjectMirror(0x1001));
        static_cast<void>(ZRGetRegisteredObjectName(0));
    });
#if !defined(_WIN32)
    runForEver([] { // of threads each of which makes a record and gives it back
        static std::atomic<int> running;
        pthread_attr_t detached; // from the start, or the process could end before it is
        pthread_attr_init(&detached);
        pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
        pthread_t thread{};
        running += pthread_create(
                       &thread, &detached,
                       [](void*) -> void* {
                           HFErrorSet(-1, "a text that is long enough to need the heap", "late_client", 0);
                           --running;
                           return nullptr;
                       },
                       nullptr)
                == 0
            ? 1
            : 0;
        while (running > 4) {
            std::this_thread::yield();
        }
    });
#endif
    client.Keep(ZRGetObjectNameEx(0x1002, nullptr)); // asked for after the object was built, read when it goes
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return 0;
}
