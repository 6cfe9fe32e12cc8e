#include "zrlib/utilities/format.h"

#include "hcbase/format.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/frame/texts.h"
#include "zrlib/utilities/fixed_text.h"

#include <algorithm>
#include <iterator>

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr std::int32_t ZRFormat::BYTES;
#endif

namespace {

constexpr std::int64_t kKilo = 1024;
constexpr std::int64_t kMega = kKilo * 1024;
constexpr std::int64_t kGiga = kMega * 1024;
constexpr std::int64_t kTera = kGiga * 1024;
constexpr std::int64_t kPeta = kTera * 1024;

/// How numbers up to, and not including, a limit are shown.
struct Scale {
    std::int64_t below;
    double divisor;
    char letter;
};

// All divisors but the last are powers of two, so dividing by them equals multiplying by their inverses.
constexpr Scale kScales[] = {
    {kMega, kKilo, 'K'}, {kGiga, kMega, 'M'}, {kTera, kGiga, 'G'}, {kPeta, static_cast<double>(kTera), 'T'}};
constexpr Scale kBeyond{0, 1e15, '?'};

} // namespace

HCString ZRFormat::KMGT(std::int64_t value, const char* unit, const char* scaledUnit, int precision)
{
    constexpr std::int64_t kFirstScaled = 1000;
    constexpr int kDecimal = 10;
    HCString text;
    if (value < kFirstScaled) {
        text = HFFormat64(value, kDecimal, 0);
        if (unit != nullptr) {
            text.Format("%s %s", static_cast<const char*>(text), unit);
        }
        return text;
    }
    const Scale* const found = std::find_if(
        std::begin(kScales), std::end(kScales), [value](const Scale& scale) { return value < scale.below; });
    const Scale& scale = found != std::end(kScales) ? *found : kBeyond;
    const HCString number = zr::FixedText(static_cast<double>(value) / scale.divisor, std::max(precision, 0));
    text.Format("%s %c%s", static_cast<const char*>(number), scale.letter, scaledUnit != nullptr ? scaledUnit : "");
    return text;
}

HCString ZRFormat::KMGT(std::int64_t value, std::int32_t format, int precision)
{
    if (format == BYTES) {
        return KMGT(value, "bytes", "B", precision);
    }
    return zr::FindText(ZR_TEXT_UNKNOWN_FORMAT_CODE);
}
