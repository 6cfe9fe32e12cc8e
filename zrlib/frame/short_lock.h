/// ShortLock: a lock for a few instructions. For the members of the library's classes only.
#pragma once

#include <atomic>
#include <cstdint>

namespace zr {

/// Not re-entrant. Constant-initialised and trivially destroyed, so that it works before and after every static object,
/// and small enough to lie in the cache line of what it guards. Client code does not run while it is held, but for a
/// replaced operator new. A process with one thread pays nothing for it. A copy is a free lock of its own.
///
/// fork: in the child a lock that another thread of the parent held is free.
class ShortLock {
public:
    constexpr ShortLock() noexcept = default;
    ShortLock(const ShortLock& /*other*/) noexcept {}
    ShortLock& operator=(const ShortLock& /*other*/) noexcept { return *this; }
    ~ShortLock() = default;

private:
    friend class ShortLockGuard; // short_lock_guard.h

    std::atomic<std::uint32_t> m_word{0};
};

} // namespace zr
