// Eight threads use all of the library at once for a long time. In the end nothing may be missing, and memory must not
// have grown. Usage: soak [SECONDS]    600 by default

#include "hcbase/hcbase.h"
#include "tests/support/surroundings.h"
#include "tests/support/threads.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>

namespace {

constexpr int kThreads = 8; // each has a library of its own
constexpr int kToFile = 256; // rounds between errors, which go to the log
[[maybe_unused]] constexpr int kToFork = 5000; // rounds between children of the first thread

/// What all threads share, and what they have done to it.
struct Shared {
    ZRThreadSync sync;
    long guarded = 0;
    ZRProfilerState place{"soak"};
    std::atomic<bool> isOver{false};
    std::atomic<long> rounds{0};
    std::atomic<long> errors{0}; // that went to the log
};

std::atomic<long> g_faults{0};
std::atomic<long> g_strayCalls{0}; // of observers that were detached

void Require(bool holds, const char* what)
{
    if (!holds && g_faults++ < 10) {
        std::fprintf(stderr, "does not hold: %s\n", what);
    }
}

void VisitSubjects(long round)
{
    ZRObservedObject* const subjects[] = {ZRGetMessageHandler(), ZRGetProfilerStateHandler(), ZRGetLockTrailHandler()};
    const auto isWelcome = std::make_shared<std::atomic<bool>>(true);
    const auto count = [isWelcome](const auto& /*event*/) { g_strayCalls += *isWelcome ? 0 : 1; };
    ZRListener progress(count);
    ZRListener listener(*subjects[round % 3], count);
    const ZRObservedObject copy(*subjects[round % 3]);
    progress.Detach();
    listener.Detach();
    *isWelcome = false;
}

/// What a child does, beside the threads of its parent.
[[maybe_unused]] int UseInChild()
{
    ZRTrace("of a child", "soak", 1);
    VisitSubjects(0);
    ZRProgressStart("child");
    return ZRRegisterLibrary(0xF000, "of a child") != 0 ? 0 : 1;
}

void UseTheRest(Shared& shared, int thread)
{
    const ZRProfiler timer(&shared.place);
    const int library = (thread + 1) << 12;
    const int object = static_cast<int>(0xA04F0000U) | library | 1;
    const char* const name = "an object whose name is too long to lie inside its string";
    ZRRegisterLibrary(library, "a library");
    ZRRegisterFactoryObject(object, name, ZRClassID::MakeExternalID(object));
    Require(std::strcmp(ZRGetObjectName(object, nullptr), name) == 0, "an object is found by its code");
    ZRUnregisterObject(object);
    ZRUnregisterLibrary(library);
    ZRProgressStart("soak");
    ZRProgressUpdate(thread, nullptr);
    ZRProgressEnd();
    ZRLockTrail* const trail = ZRAppendLockTrail();
    shared.sync.Lock("soak", trail);
    ++shared.guarded;
    shared.sync.Unlock("soak", trail);
    Require(ZRRemoveLockTrail(trail) != 0, "a lock trail is removed");
    ZRKey::IssueTicket();
}

void Work(Shared& shared, int thread)
{
    HCString text;
    for (long round = 0; !shared.isOver; ++round) {
        text.Format("thread %d, round %ld, with a text that is long enough to need the heap", thread, round);
        ZROut(text, "soak", 1);
        ZRWarn(text, nullptr, 1);
        ZRTrace(text, "soak", 7);
        if (round % kToFile == 0) {
            ZRError(text, "soak", 1);
            ++shared.errors;
        }
        UseTheRest(shared, thread);
        VisitSubjects(round);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose own locks do not survive fork
        if (thread == 0 && round % kToFork == 0) {
            Require(test::ResultOfChild(UseInChild) == 0, "a child works");
        }
#endif
        ++shared.rounds;
    }
}

/// Pages of the process that are in memory.
std::size_t Resident()
{
    std::size_t size = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::max(1.0, std::atof(argv[1])) : 600;
    const test::Home home;
    Shared shared;
    std::map<int, long> arrived; // by type, counted under the lock of messages
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(0); // whatever the preferences say
    ZRSetErrorFlags(ZR_DEST_FILE);
    ZRProgressEnable(1);
    ZRGetProfilerStateHandler()->SetEnabled(1);
    ZRListener counter(*ZRGetMessageHandler(), [&arrived](const auto& event) { ++arrived[event.GetMsg().GetType()]; });

    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back(Work, std::ref(shared), thread);
    }
    const std::chrono::duration<double> quarter(seconds / 4);
    std::this_thread::sleep_for(quarter);
    const std::size_t settled = Resident();
    std::this_thread::sleep_for(3 * quarter);
    const std::size_t resident = Resident();
    shared.isOver = true;
    threads.clear(); // waits for them
    counter.Detach();

    const long rounds = shared.rounds;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which keep what is freed
    constexpr std::size_t kSlack = std::size_t{1024} * 1024; // arenas of the allocator that fill up
    Require(resident <= settled + kSlack, "memory does not grow");
#endif
    const std::map<int, long> sent{
        {ZR_MSG_OUT, rounds}, {ZR_MSG_WARN, rounds}, {ZR_MSG_ERROR, shared.errors}, {ZR_MSG_TRACE, rounds}};
    Require(arrived == sent, "all messages arrive");
    Require(shared.guarded == rounds, "a lock keeps threads apart");
    Require(ZRKey::GetLastTicket() == rounds, "each ticket is issued once");
    Require(shared.place.GetCalls() == rounds, "no run of a place is lost");
    Require(ZRGetRegisteredObjectCount() == 0, "the registry is empty");
    Require(g_strayCalls == 0, "nobody is called after its detachment");
    Require(ZRGetMessageHandler()->GetObserverCount() == 0, "nobody is left attached");
    const auto lines = test::Lines(home.Log());
    const auto whole = std::count_if(lines.begin(), lines.end(),
        [](const auto& line) { return line.starts_with("ERROR - thread ") && line.ends_with("the heap"); });
    Require(whole == shared.errors, "each line of the log is there and whole");
    std::printf("%.0f s, %ld rounds, %zu bytes in memory after a quarter and %zu in the end, %ld faults\n", seconds,
        rounds, settled, resident, g_faults.load());
    return g_faults == 0 ? 0 : 1;
}
