#include "crash.h"

#include "zrlib/zrlib.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

namespace zrobservers {

namespace {

constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGSYS, SIGABRT};
constexpr std::size_t kStackSize = std::size_t{64} * 1024;
constexpr int kMostPauses = 500; // five seconds
constexpr std::size_t kGuardSize = kStackSize; // below it; a multiple of all sizes of pages

constinit std::atomic<void (*)(const char*)> g_action{nullptr};
std::array<struct sigaction, kSignals.size()> g_former; // written while no handler of ours is installed
constinit std::atomic<std::uint64_t> g_acting{0}; // Self of the thread that runs the action; 0 for none
int g_users = 0;

HCThreadSync& Lock()
{
    static HCThreadSync lock;
    return lock;
}

/// The process in the upper half, the thread in the lower.
std::uint64_t Self() { return static_cast<std::uint64_t>(getpid()) << 32U | static_cast<std::uint32_t>(gettid()); }

bool AreOfOneProcess(std::uint64_t one, std::uint64_t other) { return one >> 32U == other >> 32U; }

void Pause()
{
    constexpr timespec kPause{0, 10'000'000};
    nanosleep(&kPause, nullptr);
}

/// Makes this the thread that acts. Waits until no other does, but not for ever. False also for a crash of the action
/// itself. What a forked parent was doing does not count.
bool BeginAction()
{
    const std::uint64_t self = Self();
    std::uint64_t other = 0;
    for (int pauses = 0; !g_acting.compare_exchange_strong(other, self); ++pauses) {
        if (other == self || pauses == kMostPauses) {
            return false;
        }
        if (AreOfOneProcess(other, self)) {
            Pause();
            other = 0;
        }
    }
    return true;
}

/// Waits until no other thread acts, but not for ever.
void AwaitAction()
{
    const std::uint64_t self = Self();
    const auto isUnderWay = [self](std::uint64_t acting) { return acting != self && AreOfOneProcess(acting, self); };
    for (int pauses = 0; isUnderWay(g_acting) && pauses < kMostPauses; ++pauses) {
        Pause();
    }
}

void Act(int signal)
{
    if (BeginAction()) {
        char reason[] = "signal 00";
        reason[sizeof(reason) - 3] = static_cast<char>('0' + signal / 10);
        reason[sizeof(reason) - 2] = static_cast<char>('0' + signal % 10);
        if (const auto action = g_action.load(); action != nullptr) {
            action(reason);
        }
    } else if (g_acting != Self()) {
        return;
    } // else the action has crashed, and an earlier handler may recover from it
    g_acting = 0;
}

/// Whether returning from the handler runs into the same fault again.
bool Recurs(const siginfo_t& info)
{
    const bool wasSent = info.si_code <= 0;
    bool isLate = info.si_signo == SIGBUS && info.si_code == BUS_MCEERR_AO;
#if defined(SEGV_MTEAERR)
    isLate = isLate || (info.si_signo == SIGSEGV && info.si_code == SEGV_MTEAERR);
#endif
    return !wasSent && !isLate && info.si_signo != SIGSYS;
}

void HandleCrash(int signal, siginfo_t* info, void* context)
{
    const int error = errno;
    Act(signal);
    std::size_t index = 0;
    while (index + 1 < kSignals.size() && kSignals[index] != signal) {
        ++index;
    }
    const struct sigaction& former = g_former[index];
    if ((former.sa_flags & static_cast<int>(SA_RESETHAND)) != 0) { // the system would not call it a second time either
        std::signal(signal, SIG_DFL);
    }
    if ((former.sa_flags & SA_SIGINFO) != 0) {
        errno = error;
        former.sa_sigaction(signal, info, context);
        return;
    }
    if (former.sa_handler != SIG_DFL && former.sa_handler != SIG_IGN) {
        errno = error;
        former.sa_handler(signal);
        return;
    }
    sigaction(signal, &former, nullptr);
    if (!Recurs(*info)) {
        raise(signal);
    }
    errno = error;
}

} // namespace

void InstallCrashAction(void (*action)(const char* reason))
{
    const std::lock_guard guard(Lock());
    if (g_users++ > 0) {
        return;
    }
    g_action = action;
    struct sigaction ours {};
    ours.sa_sigaction = HandleCrash;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    for (std::size_t index = 0; index < kSignals.size(); ++index) {
        sigaction(kSignals[index], nullptr, &g_former[index]);
        sigaction(kSignals[index], &ours, nullptr);
    }
}

void RemoveCrashAction()
{
    AwaitAction(); // it may be using what the caller removes
    const std::lock_guard guard(Lock());
    if (--g_users > 0) {
        return;
    }
    g_action = nullptr;
    for (std::size_t index = 0; index < kSignals.size(); ++index) {
        struct sigaction current {};
        sigaction(kSignals[index], nullptr, &current);
        if ((current.sa_flags & SA_SIGINFO) != 0 && current.sa_sigaction == HandleCrash) {
            sigaction(kSignals[index], &g_former[index], nullptr);
        }
    }
}

void* AddCrashStack()
{
    stack_t former{};
    if (sigaltstack(nullptr, &former) != 0 || (former.ss_flags & SS_DISABLE) == 0) {
        return nullptr;
    }
    void* const memory =
        mmap(nullptr, kGuardSize + kStackSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    void* const start = static_cast<char*>(memory) + kGuardSize;
    if (mprotect(start, kStackSize, PROT_READ | PROT_WRITE) != 0) {
        munmap(memory, kGuardSize + kStackSize);
        return nullptr;
    }
    const stack_t stack{start, 0, kStackSize};
    sigaltstack(&stack, nullptr);
    return start;
}

void RemoveCrashStack(void* stack)
{
    if (stack == nullptr) {
        return;
    }
    stack_t current{};
    if (sigaltstack(nullptr, &current) == 0 && current.ss_sp == stack) {
        const stack_t none{nullptr, SS_DISABLE, 0};
        sigaltstack(&none, nullptr);
        munmap(static_cast<char*>(stack) - kGuardSize, kGuardSize + kStackSize);
    } // otherwise another thread has it
}

struct CrashFile::Path {
    std::string text;
};

CrashFile::CrashFile(const std::string& path)
    : m_path(new Path{path})
{
}

CrashFile::~CrashFile()
{
    Close();
    delete m_path;
}

bool CrashFile::Open() noexcept
{
    constexpr mode_t kMode = 0666;
    constexpr int kFirstOwn = 3;
    const int opened =
        open(m_path->text.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kMode);
    if (opened < 0 || opened >= kFirstOwn) {
        m_descriptor = opened;
        return opened >= 0;
    }
    m_descriptor = fcntl(opened, F_DUPFD_CLOEXEC, kFirstOwn); // not in the place of a standard stream
    close(opened);
    return m_descriptor >= 0;
}

bool CrashFile::Write(const char* data, std::size_t size) noexcept
{
    while (size > 0) {
        const ssize_t written = write(m_descriptor, data, size);
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            errno = written == 0 ? ENOSPC : errno;
            return false;
        }
    }
    return true;
}

void CrashFile::Close() noexcept
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

} // namespace zrobservers
