/// Backoff: waits for another thread that is about to be done. Not exported.
#pragma once

namespace zr {

/// To be asked to wait in a loop, once for each look that finds the other thread still busy.
class Backoff {
public:
    /// Lets other threads run: at first for a turn, later for 50 microseconds. Leaves errno as it is.
    void Wait() noexcept;

private:
    int m_turns = 0;
};

} // namespace zr
