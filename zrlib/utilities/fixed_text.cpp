#include "zrlib/utilities/fixed_text.h"

#include <charconv>
#include <limits>
#include <vector>

HCString zr::FixedText(double value, int decimals)
{
    constexpr int kSignPointAndEnd = 3;
    std::vector<char> text(
        static_cast<std::size_t>(std::numeric_limits<double>::max_exponent10 + 1 + decimals + kSignPointAndEnd));
    const auto result =
        std::to_chars(text.data(), text.data() + text.size() - 1, value, std::chars_format::fixed, decimals);
    *result.ptr = '\0';
    return text.data();
}
