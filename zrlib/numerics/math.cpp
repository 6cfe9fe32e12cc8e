#include "zrlib/numerics/math.h"

#include "zrlib/frame/relaxed.h"
#include "zrlib/frame/report.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/frame/texts.h"
#include "zrlib/numerics/random.h"
#include "zrlib/platform/tick_counter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

using zr::kRelaxed;

namespace {

constexpr double kRadiansPerDegree = 0.01745329251994;
constexpr double kDegreesPerRadian = 57.29577951308;
constexpr double kTurn = 360; // degrees
constexpr double kGreatestExponent = 38; // decimal for powers, natural for exponentials

/// Access to the constants, and the steps that must not clear the last error.
class Checked : public ZRMath {
public:
    /// Returns the result of a comparison or a plain function.
    template <typename Result> static Result Plain(Result result)
    {
        ResetError();
        return result;
    }
    static char Truth(bool isTrue) { return Plain(isTrue ? char{1} : char{0}); }

    /// Reports an error and then keeps it, also when an observer of the report throws. Returns 0.0.
    static double Fail(int code)
    {
        struct KeepAfterwards {
            int code;
            ~KeepAfterwards() { m_nError.store(code, kRelaxed); }
        };
        const KeepAfterwards keep{code};
        const int number = ZR_TEXT_MATH_LOG_OF_ZERO + (ZR_ERROR_MATH_LOG_OF_ZERO - code);
        zr::ReportErrorSet(code, zr::FindText(number), "ZRMath");
        return 0.0;
    }

    static double Tolerance(double x) { return std::fabs(x) * MATH_ROUNDOFF2; }
    static bool IsZero(double x) { return std::fabs(x) <= MATH_ROUNDOFF; }
    static bool IsNotZero(double x) { return std::fabs(x) > MATH_ROUNDOFF; }
    static bool IsPositive(double x) { return x > MATH_ROUNDOFF; }
    static bool IsNotPositive(double x) { return x <= MATH_ROUNDOFF; }
    static bool IsNegative(double x) { return x < -MATH_ROUNDOFF; }
    static bool IsNotNegative(double x) { return x >= -MATH_ROUNDOFF; }
    static bool Equals(double a, double b) { return std::fabs(a - b) <= Tolerance(b); }
    static bool Differs(double a, double b) { return std::fabs(a - b) > Tolerance(b); }
    static bool IsGreater(double a, double b) { return a > b + Tolerance(b); }
    static bool IsNotGreater(double a, double b) { return a <= b + Tolerance(b); }
    static bool IsLess(double a, double b) { return a < b - Tolerance(b); }
    static bool IsNotLess(double a, double b) { return a >= b - Tolerance(b); }

    /// An angle reduced to one turn; keeps its sign.
    struct Angle {
        double inMode;
        double radians;
    };
    static Angle Reduced(double x, char mode)
    {
        if (mode != MATH_DEGREES) {
            const double radians = std::fmod(x, MATH_TWO_PI);
            return {radians, radians};
        }
        const double degrees = std::fmod(x, kTurn);
        return {degrees, degrees * kRadiansPerDegree};
    }

    /// The error of the tangent of an angle; 0 when there is none.
    static int TangentError(const Angle& angle, char mode)
    {
        constexpr double kQuarter = 90;
        constexpr double kThreeQuarters = 270;
        const bool isInRadians = mode != MATH_DEGREES;
        // In degrees: the angles themselves, and those that convert to what radians are compared with.
        if (Equals(angle.radians, MATH_PI_OVER_2) || (!isInRadians && angle.inMode == kQuarter)) {
            return isInRadians ? ZR_ERROR_MATH_TAN_90_RADIANS : ZR_ERROR_MATH_TAN_90;
        }
        if (Equals(angle.radians, MATH_THREE_PI_OVER_2) || (!isInRadians && angle.inMode == kThreeQuarters)) {
            return isInRadians ? ZR_ERROR_MATH_TAN_270_RADIANS : ZR_ERROR_MATH_TAN_270;
        }
        return 0;
    }

    /// The error of a power; 0 when there is none.
    static int PowerError(double base, double power)
    {
        if (IsZero(base) && IsZero(power)) {
            return ZR_ERROR_MATH_ZERO_TO_POWER_ZERO;
        }
        if (IsZero(base) && IsNegative(power)) {
            return ZR_ERROR_MATH_ZERO_TO_NEGATIVE_POWER;
        }
        if (IsNegative(base) && std::floor(power) != power) {
            return ZR_ERROR_MATH_NEGATIVE_TO_NON_INTEGER_POWER;
        }
        if (power > kGreatestExponent) {
            return ZR_ERROR_MATH_EXPONENT_TOO_GREAT;
        }
        return IsTooLarge(base, power) ? ZR_ERROR_MATH_OVERFLOW : 0;
    }

    /// Whether a power is above 1e38. Ordinary numbers need no logarithm for that, which costs as much as the power
    /// itself.
    static bool IsTooLarge(double base, double power)
    {
        constexpr double kOrdinaryBase = 1e3;
        constexpr double kOrdinaryPower = 12; // 1e36
        const double size = std::fabs(base);
        const bool isOrdinary =
            size <= kOrdinaryBase && size >= 1 / kOrdinaryBase && std::fabs(power) <= kOrdinaryPower;
        return !isOrdinary && !IsZero(base) && std::log10(size) * power > kGreatestExponent;
    }

    /// The error of a decimal logarithm; 0 when there is none.
    static int Log10Error(double x)
    {
        return x == 0.0 ? ZR_ERROR_MATH_LOG_OF_ZERO : IsNegative(x) ? ZR_ERROR_MATH_LOG_OF_NEGATIVE : 0;
    }

    /// Ends a guarded function: reports its error, or returns its result.
    template <typename Result> static double Guarded(int error, Result result)
    {
        ResetError();
        return error != 0 ? Fail(error) : result();
    }
};

/// The low 32 bits of a number truncated to an integer; 0 for NaN and the infinities.
std::uint32_t LowBits(double x)
{
    constexpr double kAllBits = 4294967296.0; // 2^32
    const double low = std::isfinite(x) ? std::fmod(std::trunc(x), kAllBits) : 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(low));
}

double InMode(double radians, char mode) { return mode != 0 ? radians : radians * kDegreesPerRadian; }

double NextTic(double x, double step, double direction)
{
    if (!Checked::IsNotZero(step) || std::fmod(x, step) == 0.0) {
        return x;
    }
    const double tics = (x + direction * step) / step;
    return (x < 0 ? std::ceil(tics) : std::floor(tics)) * step;
}

constinit std::atomic<std::int64_t> g_lastSeeding{0}; // ticks
constinit std::atomic<bool> g_isSeeded{false};

double RandomFraction() { return zr::Random() / static_cast<double>(zr::kMostRandom); }

double Clipped(double lo, double x, double hi) { return lo > x ? lo : x > hi ? hi : x; }

} // namespace

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr double ZRMath::MATH_ROUNDOFF;
constexpr double ZRMath::MATH_ROUNDOFF2;
constexpr double ZRMath::MATH_PI_OVER_2;
constexpr double ZRMath::MATH_FIRST_QUADRANT;
constexpr double ZRMath::MATH_PI;
constexpr double ZRMath::MATH_SECOND_QUADRANT;
constexpr double ZRMath::MATH_THREE_PI_OVER_2;
constexpr double ZRMath::MATH_THIRD_QUADRANT;
constexpr double ZRMath::MATH_TWO_PI;
constexpr double ZRMath::MATH_FOURTH_QUADRANT;
constexpr char ZRMath::MATH_RADIANS;
constexpr char ZRMath::MATH_DEGREES;
#endif

constinit std::atomic<int> ZRMath::m_nError{0};

int ZRMath::GetLastError() { return m_nError.load(kRelaxed); }

char ZRMath::NoError() { return GetLastError() == 0 ? 1 : 0; }

char ZRMath::IsError() { return GetLastError() != 0 ? 1 : 0; }

void ZRMath::ResetError() { m_nError.store(0, kRelaxed); }

void ZRMath::SetError(int code)
{
    if (code <= ZR_ERROR_MATH_LOG_OF_ZERO && code >= ZR_ERROR_MATH_TAN_270) {
        Checked::Fail(code);
    }
}

char ZRMath::ParmZero(double x) { return Checked::Truth(Checked::IsZero(x)); }
char ZRMath::ParmNotZero(double x) { return Checked::Truth(Checked::IsNotZero(x)); }
char ZRMath::ParmGEZero(double x) { return Checked::Truth(Checked::IsNotNegative(x)); }
char ZRMath::ParmGTZero(double x) { return Checked::Truth(Checked::IsPositive(x)); }
char ZRMath::ParmLEZero(double x) { return Checked::Truth(Checked::IsNotPositive(x)); }
char ZRMath::ParmLTZero(double x) { return Checked::Truth(Checked::IsNegative(x)); }

char ZRMath::ParmEQ(double a, double b) { return Checked::Truth(Checked::Equals(a, b)); }
char ZRMath::ParmNE(double a, double b) { return Checked::Truth(Checked::Differs(a, b)); }
char ZRMath::ParmGE(double a, double b) { return Checked::Truth(Checked::IsNotLess(a, b)); }
char ZRMath::ParmGT(double a, double b) { return Checked::Truth(Checked::IsGreater(a, b)); }
char ZRMath::ParmLE(double a, double b) { return Checked::Truth(Checked::IsNotGreater(a, b)); }
char ZRMath::ParmLT(double a, double b) { return Checked::Truth(Checked::IsLess(a, b)); }

double ZRMath::RMin(double a, double b) { return Checked::Plain(Checked::IsLess(a, b) ? a : b); }
double ZRMath::RMax(double a, double b) { return Checked::Plain(Checked::IsGreater(a, b) ? a : b); }

void ZRMath::SetToZero(double* p)
{
    if (ParmZero(*p) != 0) {
        *p = 0.0;
    }
}

double ZRMath::Radians(double degrees) { return Checked::Plain(degrees * kRadiansPerDegree); }
double ZRMath::Degrees(double radians) { return Checked::Plain(radians * kDegreesPerRadian); }
double ZRMath::Multiply(double a, double b) { return Checked::Plain(a * b); }
double ZRMath::Fabs(double x) { return Checked::Plain(std::fabs(x)); }
double ZRMath::Ceil(double x) { return Checked::Plain(std::ceil(x)); }
double ZRMath::Floor(double x) { return Checked::Plain(std::floor(x)); }
double ZRMath::Fmod(double x, double y) { return Checked::Plain(std::fmod(x, y)); }

double ZRMath::Log(double x)
{
    const int error = Checked::IsZero(x) ? ZR_ERROR_MATH_LOG_OF_ZERO
        : Checked::IsNegative(x)         ? ZR_ERROR_MATH_LOG_OF_NEGATIVE
                                         : 0;
    return Checked::Guarded(error, [x] { return std::log(x); });
}

double ZRMath::Log10(double x)
{
    return Checked::Guarded(Checked::Log10Error(x), [x] { return std::log10(x); });
}

double ZRMath::Log20(double x)
{
    return Checked::Guarded(Checked::Log10Error(x), [x] { return 2.0 * std::log10(x); });
}

double ZRMath::Exp(double x)
{
    const int error = x > kGreatestExponent ? ZR_ERROR_MATH_EXPONENT_TOO_GREAT : 0;
    return Checked::Guarded(error, [x] { return std::exp(x); });
}

double ZRMath::Exp10(double x)
{
    constexpr double kTen = 10;
    return Pow(kTen, x);
}

double ZRMath::Pow(double base, double power)
{
    return Checked::Guarded(Checked::PowerError(base, power), [=] { return std::pow(base, power); });
}

double ZRMath::Sqrt(double x)
{
    const int error = Checked::IsNegative(x) ? ZR_ERROR_MATH_ROOT_OF_NEGATIVE : 0;
    return Checked::Guarded(error, [x] { return std::sqrt(x); });
}

double ZRMath::Divide(double a, double b)
{
    const int error = Checked::IsZero(b) ? ZR_ERROR_MATH_DIVIDE_BY_ZERO : 0;
    return Checked::Guarded(error, [=] { return a / b; });
}

double ZRMath::Fdiv(double a, double b)
{
    const std::uint32_t divisor = LowBits(b);
    const int error = divisor == 0 ? ZR_ERROR_MATH_DIVIDE_BY_ZERO : 0;
    return Checked::Guarded(error, [=]() -> double {
        const std::uint32_t quotient = LowBits(a) / divisor;
        return quotient;
    });
}

double ZRMath::Sin(double x, char mode) { return Checked::Plain(std::sin(Checked::Reduced(x, mode).radians)); }
double ZRMath::Cos(double x, char mode) { return Checked::Plain(std::cos(Checked::Reduced(x, mode).radians)); }

double ZRMath::Tan(double x, char mode)
{
    const Checked::Angle angle = Checked::Reduced(x, mode);
    return Checked::Guarded(Checked::TangentError(angle, mode), [&angle] { return std::tan(angle.radians); });
}

double ZRMath::Cot(double x, char mode)
{
    const Checked::Angle angle = Checked::Reduced(x, mode);
    if (const int error = Checked::TangentError(angle, mode)) {
        return Checked::Guarded(error, [] { return 0.0; });
    }
    return Divide(1.0, std::tan(angle.radians));
}

double ZRMath::Asin(double x, char mode) { return Checked::Plain(InMode(std::asin(x), mode)); }
double ZRMath::Acos(double x, char mode) { return Checked::Plain(InMode(std::acos(x), mode)); }
double ZRMath::Atan(double x, char mode) { return Checked::Plain(InMode(std::atan(x), mode)); }

double ZRMath::Atan2(double y, double x, char mode)
{
    constexpr double kRightAngle = 1.570796327;
    constexpr double kRightAngleDegrees = 90;
    if (ParmZero(x) != 0) {
        return mode != MATH_DEGREES ? kRightAngle : kRightAngleDegrees;
    }
    return InMode(std::atan2(y, x), mode);
}

double ZRMath::TicAbove(double x, double step) { return Checked::Plain(NextTic(x, step, 1)); }
double ZRMath::TicBelow(double x, double step) { return Checked::Plain(NextTic(x, step, -1)); }

double ZRMath::Rand() { return Checked::Plain(RandomFraction()); }

void ZRMath::RandSeed()
{
    if (!g_isSeeded.exchange(true, kRelaxed)) {
        g_lastSeeding.store(zr::ReadTicks(), kRelaxed);
    }
    const std::int64_t now = zr::ReadTicks();
    std::srand(static_cast<unsigned int>(now - g_lastSeeding.exchange(now, kRelaxed)));
}

double ZRMath::RandLim(double lo, double hi, char reseed)
{
    ResetError();
    if (lo > hi) {
        std::swap(lo, hi);
    }
    if (lo == hi) {
        return lo;
    }
    if (reseed != 0) {
        RandSeed();
    }
    const double scaled = RandomFraction();
    const double unscaled = RandomFraction();
    const double span = hi - lo;
    if (std::isinf(span)) {
        constexpr double kLargest = std::numeric_limits<double>::max();
        const double low = std::max(lo, -kLargest);
        const double high = std::min(hi, kLargest);
        return Clipped(lo, low * (1 - scaled) + high * scaled + unscaled, hi);
    }
    return Clipped(lo, scaled * span + lo + unscaled, hi);
}

int ZRMath::RandLim(int lo, int hi, char reseed)
{
    ResetError();
    if (lo > hi) {
        std::swap(lo, hi);
    }
    const std::int64_t span = std::int64_t{hi} - lo; // may need more than 32 bits
    if (span == 0) {
        return lo;
    }
    if (reseed != 0) {
        RandSeed();
    }
    return static_cast<int>(lo + static_cast<std::int64_t>(RandomFraction() * static_cast<double>(span)));
}

double ZRMath::ClipRange(double lo, double x, double hi) { return Checked::Plain(Clipped(lo, x, hi)); }
double ZRMath::ClipMin(double a, double b) { return Checked::Plain(b > a ? b : a); }
double ZRMath::ClipMax(double a, double b) { return Checked::Plain(a > b ? b : a); }
