/// KeepErrno: preserves the caller's errno. Not exported.
#pragma once

#include <cerrno>

namespace hcbase::system {

/// Restores errno at the end of a scope, so that a client may send a message before it reads its own error.
class KeepErrno {
public:
    KeepErrno() noexcept
        : m_value(errno)
    {
    }
    ~KeepErrno() { errno = m_value; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

    /// The value that will be restored.
    int Value() const noexcept { return m_value; }

private:
    int m_value;
};

} // namespace hcbase::system
