#include "zrlib/utilities/fixed_text.h"

#include <charconv>
#include <limits>
#include <vector>

HCString zr::FixedText(double value, int decimals)
{
    constexpr std::size_t kMostDigits = std::numeric_limits<double>::max_exponent10 + 1;
    constexpr std::size_t kSignPointAndEnd = 3;
    constexpr std::size_t kUsualDecimals = 32;
    char usual[kMostDigits + kUsualDecimals + kSignPointAndEnd];
    std::vector<char> large;
    if (static_cast<std::size_t>(decimals) > kUsualDecimals) {
        large.resize(kMostDigits + static_cast<std::size_t>(decimals) + kSignPointAndEnd);
    }
    char* const text = large.empty() ? usual : large.data();
    const std::size_t size = large.empty() ? sizeof usual : large.size();
    *std::to_chars(text, text + size - 1, value, std::chars_format::fixed, decimals).ptr = '\0';
    return text;
}
