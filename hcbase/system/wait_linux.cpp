#include "hcbase/system/wait.h"

#include "hcbase/system/keep_errno.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace hcbase::system {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t), "the kernel looks at the plain word");

void WaitWhileEqual(std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept
{
    const KeepErrno keep;
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void WakeOne(std::atomic<std::uint32_t>& word) noexcept
{
    const KeepErrno keep;
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

} // namespace hcbase::system
