// Eight threads use all of the library at once for a long time. In the end nothing may be missing, and memory must not
// have grown. Usage: soak [SECONDS]    600 by default

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kThreads = 8; // each has a library of its own
constexpr int kToFile = 256; // one round of so many sends an error to the log too
constexpr int kToFork = 5000; // one round of so many of the first thread forks

/// Counts what arrives. It runs under the lock of the message handler.
class Counter : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override
    {
        const ZRMsg message = event->GetMsg();
        for (std::size_t type = 0; type < counts.size(); ++type) {
            counts[type] += message.GetType() == 1 << type ? 1 : 0;
        }
    }

    std::array<long, 4> counts{};
};

/// What all threads share, and what they have done to it.
struct Shared {
    ZRThreadSync sync;
    long guarded = 0;
    ZRProfilerState place{"soak"};
    std::atomic<bool> isOver{false};
    std::atomic<long> rounds{0};
    std::atomic<long> errors{0}; // that went to the log
    std::atomic<long> faults{0};
};

void Require(bool holds, Shared& shared, const char* what)
{
    if (!holds && shared.faults++ < 10) {
        std::fprintf(stderr, "does not hold: %s\n", what);
    }
}

std::atomic<long> g_strayCalls{0};

/// Must not be called when it was detached.
class Guest : public ZRObjectObserver {
public:
    ~Guest() override { m_isWelcome = false; }
    void OnEvent(ZRObservedObjectEvent* /*event*/) override { g_strayCalls += m_isWelcome ? 0 : 1; }

private:
    std::atomic<bool> m_isWelcome{true};
};

void VisitSubjects(long round)
{
    ZRObservedObject* const subjects[] = {ZRGetMessageHandler(), ZRGetProfilerStateHandler(), ZRGetLockTrailHandler()};
    const auto guest = std::make_unique<Guest>(); // on the heap, so that a forked child finds it
    const ZRAttachment progress(*guest);
    const ZRAttachment attachment(*subjects[round % 3], *guest);
    const ZRObservedObject copy(*subjects[round % 3]);
}

/// A child that uses the library once, beside the threads of its parent.
[[maybe_unused]] void Fork(Shared& shared)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(60); // ends a child that hangs
        ZRTrace("of a child", "soak", 1);
        VisitSubjects(0);
        ZRProgressStart("child");
        _exit(ZRRegisterLibrary(0xF000, "of a child") != 0 ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    Require(status == 0, shared, "a child works");
}

void UseSharedState(Shared& shared, int thread)
{
    const int library = (thread + 1) << 12;
    const int object = static_cast<int>(0xA04F0000U) | library | 1;
    const char* const name = "an object whose name is too long to lie inside its string";
    Require(ZRRegisterLibrary(library, "a library") != 0, shared, "a library can be registered");
    const char isRegistered = ZRRegisterFactoryObject(object, name, ZRClassID::MakeExternalID(object));
    Require(isRegistered != 0, shared, "an object can be registered");
    char known = 0;
    ZRGetObjectName(object, &known);
    Require(known != 0, shared, "an object is found");
    ZRUnregisterObject(object);
    ZRUnregisterLibrary(library);
    ZRProgressStart("soak");
    ZRProgressUpdate(thread, nullptr);
    ZRProgressEnd();
    const ZRProfiler timer(&shared.place);
}

void UseAnywhere(Shared& shared)
{
    const ZRProfiler stopwatch;
    ZRLockTrail* const trail = ZRAppendLockTrail();
    shared.sync.Lock("soak", trail);
    ++shared.guarded;
    shared.sync.Unlock("soak", trail);
    Require(ZRRemoveLockTrail(trail) != 0, shared, "a lock trail is removed");
    ZRMath::Divide(1, static_cast<double>(ZRKey::IssueTicket()));
    const HCString id = HFGenerateGuid();
    Require(ZRClassID::IsFormat(id) != 0, shared, "an identifier has the form of one");
    Require(ZRFormat::KMGT(1536, ZRFormat::BYTES, 1) == "1.5 KB", shared, "a number is formatted");
    ZRStack<int> stack;
    stack.Push(1);
    HFErrorSet(-1, "an error whose text is too long to lie inside its string", "soak", 1);
    HCError error;
    Require(HFErrorGet(error) != 0 && error.code == -1, shared, "a thread has its own last error");
    Require(stopwatch.GetElapsed() >= 0, shared, "time goes forward");
}

void Work(Shared& shared, int thread)
{
    ZRMessageHandler& handler = *ZRGetMessageHandler();
    HCString text;
    for (long round = 0; !shared.isOver; ++round) {
        text.Format("thread %d, round %ld, with a text that is long enough to need the heap", thread, round);
        handler.Out(text, "soak", 1);
        handler.Warn(text, nullptr, 1);
        ZRTrace(text, "soak", 7);
        if (round % kToFile == 0) {
            ZRError(text, "soak", 1);
            ++shared.errors;
        }
        UseSharedState(shared, thread);
        UseAnywhere(shared);
        VisitSubjects(round);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose own locks do not survive fork
        if (thread == 0 && round % kToFork == 0) {
            Fork(shared);
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

long LinesOf(const std::string& path)
{
    std::ifstream file(path);
    long lines = 0;
    for (std::string line; std::getline(file, line);) {
        lines += line.rfind("ERROR - thread ", 0) == 0 && line.find("the heap") + 8 == line.size() ? 1 : 0;
    }
    return lines;
}

} // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::atof(argv[1]) : 600;
    std::string home = (std::filesystem::temp_directory_path() / "soak-XXXXXX").string();
    if (seconds <= 0 || mkdtemp(home.data()) == nullptr) {
        std::fprintf(stderr, "Usage: soak [SECONDS], with a folder for temporary files\n");
        return 1;
    }
    setenv("HCBASE_HOME", home.c_str(), 1);
    Shared shared;
    Counter counter;
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(0); // whatever the preferences say
    ZRSetErrorFlags(ZR_DEST_FILE);
    ZRProgressEnable(1);
    ZRGetProfilerStateHandler()->SetEnabled(1);
    ZRGetMessageHandler()->AttachObserver(&counter, 1);

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
    ZRGetMessageHandler()->DetachObserver(&counter, 1);

    const long rounds = shared.rounds;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which keep what is freed
    constexpr std::size_t kSlack = std::size_t{1024} * 1024; // arenas of the allocator that fill up
    Require(resident <= settled + kSlack, shared, "memory does not grow");
#endif
    const std::array<long, 4> sent{rounds, rounds, shared.errors, rounds};
    Require(counter.counts == sent, shared, "all messages arrive");
    Require(shared.guarded == rounds, shared, "a lock keeps threads apart");
    Require(ZRKey::GetLastTicket() == rounds, shared, "each ticket is issued once");
    Require(shared.place.GetCalls() == rounds, shared, "no run of a place is lost");
    Require(ZRGetRegisteredObjectCount() == 0, shared, "the registry is empty");
    Require(g_strayCalls == 0, shared, "nobody is called after its detachment");
    const int attached = ZRGetMessageHandler()->GetObserverCount() + ZRGetProfilerStateHandler()->GetObserverCount();
    Require(attached == 0, shared, "nobody is left attached");
    Require(LinesOf(home + "/zr_messages.txt") == shared.errors, shared, "each line of the log is there and whole");
    std::filesystem::remove_all(home);
    std::printf(
        "%.0f s, %d threads, %ld rounds, %ld messages, heap %zu bytes, resident %zu bytes then and %zu in the end, "
        "%ld faults\n",
        seconds, kThreads, rounds, 3 * rounds + shared.errors, mallinfo2().uordblks, settled, resident,
        shared.faults.load());
    return shared.faults == 0 ? 0 : 1;
}
