/// Leaves errno as the caller had it.
#pragma once

#include <cerrno>

namespace hcbase::system {

/// Puts errno back at the end of a scope, so that a client may send a message before it looks at its own error.
class KeepErrno {
public:
    KeepErrno() noexcept
        : m_value(errno)
    {
    }
    ~KeepErrno() { errno = m_value; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

    /// What will be put back.
    int Value() const noexcept { return m_value; }

private:
    int m_value;
};

} // namespace hcbase::system
