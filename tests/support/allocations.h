/// Counts the program's heap allocations.
#pragma once

namespace test {

/// How often operator new has been called, in the program and the libraries it uses. On Windows each library has its
/// own operator new, so that only the program's own calls count there.
long AllocationCount();

} // namespace test
