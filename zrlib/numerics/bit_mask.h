/// ZRLongMask, ZRShortMask: inspect the bits of a number.
#pragma once

#include <bitset>
#include <cstdint>
#include <type_traits>

namespace zr {

/// The operations of both masks. Bits count from 0 at the least significant one. A bit's weight is its value as a
/// number: 1, 2, 4 and so on; that of the top bit is negative. The sign has no other meaning.
///
/// Truth values are 1 and 0. Nothing fails. Threads: any.
template <typename T> class BitMask {
public:
    /// Number of bits.
    static constexpr int NBITS = 8 * sizeof(T);

    /// The number of bits that are set.
    static T BitSetCount(T value) { return Count(ToBits(value)); }

    /// The position of the lowest bit that is set. 0 also when none is.
    [[nodiscard]] static T GetFirstNonZeroBitPosition(T value)
    {
        const Bits bits = ToBits(value);
        const Bits below = static_cast<Bits>(Lowest(bits) - 1U);
        return bits != 0 ? Count(below) : T{0};
    }

    /// Whether the bit at a position is set. 0 for a position out of range.
    [[nodiscard]] static char IsBitPositionSet(T value, T position)
    {
        return ToBits(position) < NBITS ? static_cast<char>(ToBits(value) >> ToBits(position) & 1U) : char{0};
    }

    /// Whether the bit with a weight is set. 0 when the weight is not that of a single bit.
    [[nodiscard]] static char IsBitWeightSet(T value, T weight)
    {
        return static_cast<char>(IsSingleBit(ToBits(weight)) && (ToBits(value) & ToBits(weight)) != 0);
    }

    /// The weight of the only bit that is set, which is the value itself. 0 when none or more than one is.
    [[nodiscard]] static T GetBitWeight(T value) { return IsSingleBit(ToBits(value)) ? value : T{0}; }

    [[nodiscard]] static char IsEven(T value) { return IsOdd(value) == 0 ? 1 : 0; }
    [[nodiscard]] static char IsOdd(T value) { return static_cast<char>(ToBits(value) & 1U); }

private:
    using Bits = std::make_unsigned_t<T>;

    static constexpr Bits ToBits(T value) { return static_cast<Bits>(value); }
    static constexpr Bits Lowest(Bits bits) { return static_cast<Bits>(bits & (~bits + 1U)); }
    static constexpr bool IsSingleBit(Bits bits) { return bits != 0 && Lowest(bits) == bits; }
    static T Count(Bits bits) { return static_cast<T>(std::bitset<static_cast<std::size_t>(NBITS)>(bits).count()); }
};

} // namespace zr

/// Masks of 32 bits.
class ZRLongMask : public zr::BitMask<std::int32_t> {};

/// Masks of 16 bits.
class ZRShortMask : public zr::BitMask<std::int16_t> {};
