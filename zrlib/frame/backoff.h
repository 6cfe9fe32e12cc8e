/// Backoff: waits for another thread that will be ready soon. Not exported.
#pragma once

namespace zr {

/// For a loop: Wait is called once for each look that finds the other thread still busy.
class Backoff {
public:
    /// Yields at first, later sleeps for 50 microseconds. Leaves errno unchanged.
    void Wait() noexcept;

private:
    int m_turns = 0;
};

} // namespace zr
