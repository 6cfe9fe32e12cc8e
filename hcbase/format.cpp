#include "hcbase/format.h"

#include <charconv>

HCString HFFormat64(std::int64_t value, int base, int /*reserved*/)
{
    constexpr int kLowestBase = 2;
    constexpr int kHighestBase = 36;
    if (base < kLowestBase || base > kHighestBase) {
        return {};
    }
    char digits[66] = {}; // sign, 64 binary digits, terminator
    *std::to_chars(digits, digits + sizeof(digits) - 1, value, base).ptr = '\0';
    return digits;
}
