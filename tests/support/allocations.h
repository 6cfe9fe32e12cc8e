/// Counts the program's heap allocations.
#pragma once

namespace test {

/// How often operator new has been called, in the program and the libraries it uses. On Windows each library has its
/// own operator new, so that only the program's own calls count there.
long AllocationCount();

/// For the length of a scope the heap has memory for so many allocations only. Not for Windows, likewise.
class FailingHeap {
public:
    explicit FailingHeap(long allocations);
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;
};

} // namespace test
