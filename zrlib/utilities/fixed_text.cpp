#include "zrlib/utilities/fixed_text.h"

#include <charconv>
#include <limits>
#include <vector>

HCString zr::FixedText(double value, int decimals)
{
    constexpr std::size_t kMostDigits = std::numeric_limits<double>::max_exponent10 + 1;
    constexpr std::size_t kSignPointAndEnd = 3;
    std::vector<char> text(kMostDigits + static_cast<std::size_t>(decimals) + kSignPointAndEnd);
    const auto result =
        std::to_chars(text.data(), text.data() + text.size() - 1, value, std::chars_format::fixed, decimals);
    *result.ptr = '\0';
    return text.data();
}
