#include "hcbase/thread.h"

#include "hcbase/system/threads.h"

using namespace hcbase;

HCThread::HCThread() noexcept
    : m_thread(0)
    , m_forkGeneration(0)
    , m_exitCode(0)
    , m_state(State::kNone)
{
}

HCThread::~HCThread()
{
    if (HasThread()) {
        system::DetachThread(m_thread);
    }
}

bool HCThread::HasThread() const noexcept
{
    // In a forked child the threads of the parent do not exist.
    return m_state == State::kStarted && m_forkGeneration == system::ForkGeneration();
}

char HCThread::CreateThread(unsigned int (*function)(void*), void* argument)
{
    if (function == nullptr || HasThread() || !system::StartThread(function, argument, m_thread)) {
        return 0;
    }
    m_state = State::kStarted;
    m_forkGeneration = system::ForkGeneration();
    return 1;
}

char HCThread::GetExitCode(int* code)
{
    if (code == nullptr || m_state == State::kNone) {
        return 0;
    }
    if (m_state == State::kStarted) {
        unsigned int exitCode = 0;
        if (!HasThread() || !system::JoinThread(m_thread, exitCode)) {
            return 0;
        }
        m_exitCode = static_cast<int>(exitCode);
        m_state = State::kEnded;
    }
    *code = m_exitCode;
    return 1;
}

void HCThread::ExitThread(unsigned int code) { system::ExitCurrentThread(code); }

unsigned int HCThread::GetCurrentThreadId() noexcept { return system::CurrentThreadId(); }

char HCThread::AreSameThread(unsigned int first, unsigned int second) noexcept
{
    return first == second && first != 0 ? 1 : 0;
}
