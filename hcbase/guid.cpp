#include "hcbase/guid.h"

#include "hcbase/system/keep_errno.h"
#include "hcbase/system/threads.h"

#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <exception>
#include <random>

using namespace hcbase;

namespace {

/// xoshiro256** 1.0 by David Blackman and Sebastiano Vigna ("Scrambled linear pseudorandom number generators", ACM
/// Transactions on Mathematical Software 47, 2021). With 256 bits of state from the system, two threads' sequences
/// overlap as rarely as two random numbers of that size coincide.
std::uint64_t NextRandom(std::uint64_t (&state)[4])
{
    const std::uint64_t result = std::rotl(state[1] * 5, 7) * 9;
    const std::uint64_t shifted = state[1] << 17U;
    state[2] ^= state[0];
    state[3] ^= state[1];
    state[1] ^= state[2];
    state[0] ^= state[3];
    state[2] ^= shifted;
    state[3] = std::rotl(state[3], 45);
    return result;
}

/// For systems without random numbers: time, thread, fork and address of the state, spread by splitmix64 (Guy Steele,
/// Doug Lea, Christine Flood: "Fast splittable pseudorandom number generators", 2014). Weaker, but never the same
/// twice.
void SeedFromClock(std::uint64_t (&state)[4])
{
    auto seed = static_cast<std::uint64_t>(std::chrono::high_resolution_clock::now().time_since_epoch().count());
    seed ^= static_cast<std::uint64_t>(system::CurrentThreadId()) << 40U;
    seed ^= static_cast<std::uint64_t>(system::ForkGeneration()) << 24U;
    seed ^= static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&state));
    for (std::uint64_t& word : state) {
        seed += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = (seed ^ (seed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        word = mixed ^ (mixed >> 31U);
    }
}

void Seed(std::uint64_t (&state)[4])
{
    const system::KeepErrno keep;
    try {
        std::random_device source;
        for (std::uint64_t& word : state) {
            const std::uint64_t high = source();
            word = (high << 32U) | source();
        }
    } catch (const std::exception&) {
        SeedFromClock(state);
    }
    state[0] |= 1U; // an all-zero state would never change
}

std::array<std::uint64_t, 2> RandomBits()
{
    system::PerThread* const thread = system::CurrentPerThread();
    if (thread == nullptr) { // no memory for the record: seeds this one identifier
        std::uint64_t state[4];
        Seed(state);
        return {NextRandom(state), NextRandom(state)};
    }
    const std::uint32_t generation = system::ForkGeneration() + 1;
    if (thread->seededIn != generation) {
        Seed(thread->generator);
        thread->seededIn = generation;
    }
    return {NextRandom(thread->generator), NextRandom(thread->generator)};
}

/// The two hexadecimal digits of every byte.
constexpr auto kDigitsOfByte = [] {
    std::array<std::array<char, 2>, 256> digits{};
    for (unsigned byte = 0; byte < digits.size(); ++byte) {
        digits[byte] = {"0123456789ABCDEF"[byte >> 4U], "0123456789ABCDEF"[byte & 15U]};
    }
    return digits;
}();

/// Appends the `bytes` highest bytes of `bits` and shifts them out.
char* AppendBytes(char* text, std::uint64_t& bits, int bytes)
{
    for (; bytes > 0; --bytes) {
        const auto& digits = kDigitsOfByte[bits >> 56U];
        *text++ = digits[0];
        *text++ = digits[1];
        bits <<= 8U;
    }
    return text;
}

} // namespace

HCString HFGenerateGuid()
{
    constexpr std::uint64_t kVersionMask = 0xF000;
    constexpr std::uint64_t kVersion4 = 0x4000;
    constexpr std::uint64_t kVariantMask = 0xC000000000000000U;
    constexpr std::uint64_t kVariant = 0x8000000000000000U;

    auto [high, low] = RandomBits();
    high = (high & ~kVersionMask) | kVersion4;
    low = (low & ~kVariantMask) | kVariant;

    char text[37];
    char* end = AppendBytes(text, high, 4);
    *end++ = '-';
    end = AppendBytes(end, high, 2);
    *end++ = '-';
    end = AppendBytes(end, high, 2);
    *end++ = '-';
    end = AppendBytes(end, low, 2);
    *end++ = '-';
    end = AppendBytes(end, low, 6);
    *end = '\0';
    return text;
}
