#include "zrlib/numerics/random.h"

#include <cstdlib>

namespace {

/// The number of bits that rand returns beyond the 15.
constexpr int ExtraBits()
{
    int bits = 0;
    for (int most = RAND_MAX; most > zr::kMostRandom; most /= 2) {
        ++bits;
    }
    return bits;
}

} // namespace

int zr::Random() noexcept { return std::rand() >> ExtraBits() & kMostRandom; }
