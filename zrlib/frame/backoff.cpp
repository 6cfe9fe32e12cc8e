#include "zrlib/frame/backoff.h"

#include <cerrno>
#include <chrono>
#include <thread>

void zr::Backoff::Wait() noexcept
{
    constexpr int kYields = 200;
    if (m_turns < kYields) {
        ++m_turns;
        std::this_thread::yield();
        return;
    }
    const int callersErrno = errno;
    std::this_thread::sleep_for(std::chrono::microseconds(50));
    errno = callersErrno;
}
