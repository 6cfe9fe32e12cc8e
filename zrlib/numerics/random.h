/// Random numbers of 15 bits. Not exported.
#pragma once

namespace zr {

constexpr int kMostRandom = 32767;

/// From 0 to kMostRandom: the high bits of the standard library's rand, where that returns more than 15.
int Random() noexcept;

} // namespace zr
