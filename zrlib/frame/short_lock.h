/// ShortLock: a lock for a few instructions. For the members of the library's classes only.
#pragma once

#include <atomic>
#include <cstdint>

namespace zr {

/// Not re-entrant. Constant-initialised and trivially destroyed, so it works before and after every static object, and
/// small enough to share the cache line of what it guards. No client code runs while it is held, except a replaced
/// operator new. It costs a process with one thread nothing. A copy is a separate lock, and free.
///
/// fork: a lock that another thread of the parent held is free in the child.
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
