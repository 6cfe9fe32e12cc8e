/// Relaxed: a value that one thread may write while another reads it. For the library's own classes only.
#pragma once

#include <atomic>

namespace zr {

/// The memory order of a value that orders no other reads or writes.
constexpr auto kRelaxed = std::memory_order_relaxed;

/// A value that any thread may read and write at any time, in relaxed order. Unlike std::atomic it can be copied, and
/// it has no read-modify-write operations.
template <typename T> class Relaxed {
public:
    constexpr Relaxed(T value = T()) noexcept
        : m_value(value)
    {
    }
    Relaxed(const Relaxed& other) noexcept
        : m_value(other)
    {
    }
    Relaxed& operator=(const Relaxed& other) noexcept
    {
        *this = static_cast<T>(other);
        return *this;
    }
    ~Relaxed() = default;

    Relaxed& operator=(T value) noexcept
    {
        m_value.store(value, kRelaxed);
        return *this;
    }
    operator T() const noexcept { return m_value.load(kRelaxed); }

private:
    std::atomic<T> m_value;
};

} // namespace zr
