#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "zrobservers/recorder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::uint64_t Bits(double x)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

/// The protected constants.
struct Constants : ZRMath {
    static constexpr double kRoundoff = MATH_ROUNDOFF;
    static constexpr char kRadians = MATH_RADIANS;
    static constexpr char kDegrees = MATH_DEGREES;
    static constexpr double kAll[] = {MATH_ROUNDOFF, MATH_ROUNDOFF2, MATH_PI_OVER_2, MATH_FIRST_QUADRANT, MATH_PI,
        MATH_SECOND_QUADRANT, MATH_THREE_PI_OVER_2, MATH_THIRD_QUADRANT, MATH_TWO_PI, MATH_FOURTH_QUADRANT};
};

class Math : public test::Messages {
protected:
    Math() { ZRMath::ResetError(); }
};

TEST_F(Math, HasItsOwnConstants)
{
    const std::uint64_t expected[] = {0x3C7999999999999A, 0x3C8999999999999A, 0x3FF921FB544486E0, 0x3FF921FB544486E0,
        0x400921FB54442EEA, 0x400921FB54442EEA, 0x4012D97C7F336528, 0x4012D97C7F336528, 0x401921FB54442EEA,
        0x401921FB54442EEA};
    for (std::size_t place = 0; place < std::size(expected); ++place) {
        EXPECT_EQ(Bits(Constants::kAll[place]), expected[place]) << place;
    }
    EXPECT_EQ(Bits(ZRMath::Radians(1)), 0x3F91DF46A2529983U);
    EXPECT_EQ(Bits(ZRMath::Degrees(1)), 0x404CA5DC1A63C0B1U);
    EXPECT_EQ(Bits(ZRMath::Atan2(-1, 0, Constants::kRadians)), 0x3FF921FB54524550U);
    EXPECT_EQ(ZRMath::Atan2(0, 0, Constants::kDegrees), 90);
    EXPECT_EQ(Constants::kRadians + 2 * Constants::kDegrees, 1);
}

TEST_F(Math, ReportsEachOfItsErrors)
{
    const char* const texts[] = {"Log of zero", "Log of a negative number", "Exponent size is too great",
        "Raise zero to power zero", "Raise zero to a negative power", "Raise a negative number to a non integer power",
        "Floating point overflow", "Square root of a negative number", "Divide by zero",
        "Tan 90 degrees (radians mode)", "Tan 90 degrees", "Tan 270 degrees (radians mode)", "Tan 270 degrees"};
    ZRRecorder messages(*ZRGetMessageHandler());
    for (int error = 0; error < static_cast<int>(std::size(texts)); ++error) {
        const int code = -65736 - error;
        ZRMath::SetError(code);
        EXPECT_EQ(ZRMath::GetLastError(), code);
        EXPECT_EQ(ZRMath::IsError() + 2 * ZRMath::NoError(), 1);
        EXPECT_EQ(test::TakeError(), std::to_string(code) + " " + texts[error] + " ZRMath 0");
        for (const int other : {0, 12345, -65735, -65749}) {
            ZRMath::SetError(other);
        }
        EXPECT_EQ(ZRMath::GetLastError(), code) << "others change nothing";
        ASSERT_EQ(messages.GetEvents().size(), 1U);
        EXPECT_EQ(messages.GetEvents().front().GetMsg().GetLevel(), 1);
        messages.Clear();
    }
    ZRMath::ResetError();
    EXPECT_EQ(ZRMath::IsError() + 2 * ZRMath::NoError(), 2);
}

// The functions as functions of two numbers, the second of which may be a mode or nothing.

double Log(double x, double) { return ZRMath::Log(x); }
double Log10(double x, double) { return ZRMath::Log10(x); }
double Log20(double x, double) { return ZRMath::Log20(x); }
double Exp(double x, double) { return ZRMath::Exp(x); }
double Exp10(double x, double) { return ZRMath::Exp10(x); }
double Sqrt(double x, double) { return ZRMath::Sqrt(x); }
template <double (*Function)(double, char)> double Angle(double x, double mode)
{
    return Function(x, static_cast<char>(mode));
}
constexpr auto kSin = Angle<ZRMath::Sin>;
constexpr auto kCos = Angle<ZRMath::Cos>;
constexpr auto kTan = Angle<ZRMath::Tan>;
constexpr auto kCot = Angle<ZRMath::Cot>;
constexpr auto kAsin = Angle<ZRMath::Asin>;
constexpr auto kAcos = Angle<ZRMath::Acos>;
constexpr auto kAtan = Angle<ZRMath::Atan>;
double Atan2Degrees(double y, double x) { return ZRMath::Atan2(y, x, 0); }
double Atan2Radians(double y, double x) { return ZRMath::Atan2(y, x, 1); }

/// Calls a function after an error of an earlier one, and compares its result, its error and its report.
void Check(const char* name, double (*function)(double, double), double a, double b, double expected, int error)
{
    ZRMath::SetError(error != -65736 ? -65736 : -65737);
    HFErrorClear();
    const double value = function(a, b);
    SCOPED_TRACE(name + (" of " + std::to_string(a)) + " and " + std::to_string(b));
    ASSERT_EQ(ZRMath::GetLastError(), error);
    if (std::isnan(expected)) {
        ASSERT_TRUE(std::isnan(value));
    } else {
        ASSERT_DOUBLE_EQ(value, expected);
        ASSERT_EQ(std::signbit(value), std::signbit(expected));
    }
    HCError reported;
    ASSERT_EQ(HFErrorGet(reported) != 0, error != 0);
}

TEST_F(Math, GuardsItsFunctions)
{
    constexpr double kMax = std::numeric_limits<double>::max();
    const struct {
        const char* name;
        double (*function)(double, double);
        double a;
        double b; // a mode for angles
        double result;
        int error;
    } rows[] = {
        {"Log", Log, 10, 0, 2.302585092994046, 0},
        {"Log", Log, 0, 0, 0, -65736},
        {"Log", Log, 1e-20, 0, 0, -65736},
        {"Log", Log, -1e-20, 0, 0, -65736},
        {"Log", Log, 2.2204460492503132e-17, 0, 0, -65736},
        {"Log", Log, 2.2204460492503135e-17, 0, -38.346238482111204, 0},
        {"Log", Log, -1, 0, 0, -65737},
        {"Log", Log, -kInfinity, 0, 0, -65737},
        {"Log", Log, kInfinity, 0, kInfinity, 0},
        {"Log", Log, kNaN, 0, kNaN, 0},
        {"Log10", Log10, 1e-20, 0, -20, 0},
        {"Log10", Log10, 0, 0, 0, -65736},
        {"Log10", Log10, -0.0, 0, 0, -65736},
        {"Log10", Log10, -1e-20, 0, kNaN, 0},
        {"Log10", Log10, -1e-16, 0, 0, -65737},
        {"Log20", Log20, 100, 0, 4, 0},
        {"Log20", Log20, -1, 0, 0, -65737},
        {"Exp", Exp, 38, 0, 3.1855931757113756e16, 0},
        {"Exp", Exp, 38.5, 0, 0, -65738},
        {"Exp", Exp, kInfinity, 0, 0, -65738},
        {"Exp", Exp, -800, 0, 0, 0},
        {"Exp", Exp, kNaN, 0, kNaN, 0},
        {"Exp10", Exp10, 2, 0, 100, 0},
        {"Exp10", Exp10, 38, 0, 1e38, 0},
        {"Exp10", Exp10, 38.5, 0, 0, -65738},
        {"Exp10", Exp10, -400, 0, 0, 0},
        {"Pow", ZRMath::Pow, 0, 0, 0, -65739},
        {"Pow", ZRMath::Pow, 1e-20, 1e-20, 0, -65739},
        {"Pow", ZRMath::Pow, 0, -1, 0, -65740},
        {"Pow", ZRMath::Pow, 0, -kInfinity, 0, -65740},
        {"Pow", ZRMath::Pow, 0, 2, 0, 0},
        {"Pow", ZRMath::Pow, -8, 0.5, 0, -65741},
        {"Pow", ZRMath::Pow, -2, 3, -8, 0},
        {"Pow", ZRMath::Pow, -2, kNaN, 0, -65741},
        {"Pow", ZRMath::Pow, -1e-20, 0.5, kNaN, 0},
        {"Pow", ZRMath::Pow, 1, 39, 0, -65738},
        {"Pow", ZRMath::Pow, 0, 39, 0, -65738},
        {"Pow", ZRMath::Pow, -2, 38.5, 0, -65741},
        {"Pow", ZRMath::Pow, 10, 38, 1e38, 0},
        {"Pow", ZRMath::Pow, 1000, 13, 0, -65742},
        {"Pow", ZRMath::Pow, -1000, 13, 0, -65742},
        {"Pow", ZRMath::Pow, 0.001, -13, 0, -65742},
        {"Pow", ZRMath::Pow, 2, -2000, 0, 0},
        {"Pow", ZRMath::Pow, -1000, 12, 1e36, 0},
        {"Pow", ZRMath::Pow, 0.001, -12, 1e36, 0},
        {"Pow", ZRMath::Pow, 1e4, 9, 1e36, 0},
        {"Pow", ZRMath::Pow, 1e4, 10, 0, -65742},
        {"Pow", ZRMath::Pow, 1e-4, -10, 0, -65742},
        {"Pow", ZRMath::Pow, 1e-20, -2, 0, -65740},
        {"Pow", ZRMath::Pow, kInfinity, 1, 0, -65742},
        {"Pow", ZRMath::Pow, kInfinity, -1, 0, 0},
        {"Pow", ZRMath::Pow, 1, kNaN, 1, 0},
        {"Pow", ZRMath::Pow, kNaN, 2, kNaN, 0},
        {"Sqrt", Sqrt, 2.25, 0, 1.5, 0},
        {"Sqrt", Sqrt, -1, 0, 0, -65743},
        {"Sqrt", Sqrt, -1e-20, 0, kNaN, 0},
        {"Divide", ZRMath::Divide, 1, 1e-17, 0, -65744},
        {"Divide", ZRMath::Divide, 1, -1e-17, 0, -65744},
        {"Divide", ZRMath::Divide, 1, 1e-16, 1e16, 0},
        {"Divide", ZRMath::Divide, 0, 0, 0, -65744},
        {"Divide", ZRMath::Divide, 1, kNaN, kNaN, 0},
        {"Fdiv", ZRMath::Fdiv, 7.9, 2.5, 3, 0},
        {"Fdiv", ZRMath::Fdiv, 1, 0.5, 0, -65744},
        {"Fdiv", ZRMath::Fdiv, -7, 2, 2147483644, 0},
        {"Fdiv", ZRMath::Fdiv, 8, -1, 0, 0},
        {"Fdiv", ZRMath::Fdiv, 1, kInfinity, 0, -65744},
        {"Fdiv", ZRMath::Fdiv, kNaN, 1, 0, 0},
        {"Fdiv", ZRMath::Fdiv, 1, kMax, 0, -65744},
        {"Fdiv", ZRMath::Fdiv, 1, 4294967296, 0, -65744},
        {"Fdiv", ZRMath::Fdiv, 4294967295.9, 1, 4294967295, 0},
        {"Fdiv", ZRMath::Fdiv, 1e20, 1, 1661992960, 0}, // 0x56BC75E2D63100000
        {"Fdiv", ZRMath::Fdiv, -1e20, 1, 2632974336, 0},
        {"Fdiv", ZRMath::Fdiv, -0.5, -1.5, 0, 0},
        {"Multiply", ZRMath::Multiply, 1e308, 10, kInfinity, 0},
        {"Fmod", ZRMath::Fmod, -7, 5, -2, 0},
        {"Fmod", ZRMath::Fmod, 1, 0, kNaN, 0},
        {"Sin", kSin, 30, 0, 0.4999999999999144, 0},
        {"Sin", kSin, 390, 0, 0.4999999999999144, 0},
        {"Sin", kSin, 7, 1, 0.6569865987184772, 0},
        {"Cos", kCos, 60, 0, 0.5000000000001712, 0},
        {"Cos", kCos, -100, 5, 0.8623188722845421, 0},
        {"Cos", kCos, kInfinity, 0, kNaN, 0},
        {"Tan", kTan, 45, 0, 0.9999999999997032, 0},
        {"Tan", kTan, 90, 0, 0, -65746},
        {"Tan", kTan, 450, 0, 0, -65746},
        {"Tan", kTan, 270, 0, 0, -65748},
        {"Tan", kTan, -90, 0, -3370262143600.9805, 0},
        {"Tan", kTan, 1.5707963268, 1, 0, -65745},
        {"Tan", kTan, 4.7123889804, 1, 0, -65747},
        {"Tan", kTan, -1.5707963268, 1, 195947340017.99408, 0},
        {"Tan", kTan, 1.5707963267948966, 1, 1.633123935319537e16, 0},
        {"Cot", kCot, 45, 0, 1.0000000000002969, 0},
        {"Cot", kCot, 30, 1, -0.1561199521599643, 0},
        {"Cot", kCot, 0, 0, 0, -65744},
        {"Cot", kCot, 0, 1, 0, -65744},
        {"Cot", kCot, 270, 0, 0, -65748},
        {"Cot", kCot, 1.5707963268, 1, 0, -65745},
        {"Asin", kAsin, 0.5, 0, 29.99999999999879, 0},
        {"Asin", kAsin, 0.5, 1, 0.5235987755982989, 0},
        {"Asin", kAsin, 2, 0, kNaN, 0},
        {"Acos", kAcos, 0.5, 0, 59.99999999999758, 0},
        {"Acos", kAcos, 0.5, 1, 1.0471975511965979, 0},
        {"Atan", kAtan, 1, 0, 44.999999999998174, 0},
        {"Atan", kAtan, 1, 1, 0.7853981633974483, 0},
        {"Atan2", Atan2Degrees, -1, 0, 90, 0},
        {"Atan2", Atan2Degrees, 0, -1e-20, 90, 0},
        {"Atan2", Atan2Degrees, -1, -1, -134.99999999999451, 0},
        {"Atan2", Atan2Radians, 1, 0, 1.570796327, 0},
        {"Atan2", Atan2Radians, 1, 2, 0.4636476090008061, 0},
    };
    for (const auto& row : rows) {
        Check(row.name, row.function, row.a, row.b, row.result, row.error);
    }
}

TEST_F(Math, ClearsTheErrorInEveryFunction)
{
    void (*const functions[])() = {
        [] { ZRMath::ParmEQ(1, 2); },
        [] { ZRMath::ParmNE(1, 2); },
        [] { ZRMath::ParmGE(1, 2); },
        [] { ZRMath::ParmGT(1, 2); },
        [] { ZRMath::ParmLE(1, 2); },
        [] { ZRMath::ParmLT(1, 2); },
        [] { ZRMath::RMin(1, 2); },
        [] { ZRMath::RMax(1, 2); },
        [] {
            double x = 1;
            ZRMath::SetToZero(&x);
        },
        [] { ZRMath::Radians(1); },
        [] { ZRMath::Degrees(1); },
        [] { ZRMath::Fabs(1); },
        [] { ZRMath::Ceil(1); },
        [] { ZRMath::Floor(1); },
        [] { ZRMath::TicAbove(1, 2); },
        [] { ZRMath::TicBelow(1, 2); },
        [] { ZRMath::Rand(); },
        [] { ZRMath::RandLim(1.0, 2.0, 0); },
        [] { ZRMath::RandLim(1, 2, 0); },
        [] { ZRMath::ClipRange(1, 2, 3); },
        [] { ZRMath::ClipMin(1, 2); },
        [] { ZRMath::ClipMax(1, 2); },
        [] { ZRMath::ResetError(); },
    };
    for (const auto& function : functions) {
        ZRMath::SetError(-65736);
        function();
        EXPECT_EQ(ZRMath::GetLastError(), 0) << &function - functions;
    }
    ZRMath::SetError(-65736);
    ZRMath::RandSeed();
    EXPECT_EQ(ZRMath::GetLastError(), -65736) << "leaves it";
}

TEST_F(Math, KeepsAnErrorWhoseReportFails)
{
    test::RecordingObserver observer;
    observer.then = [](ZRObservedObjectEvent&) {
        EXPECT_EQ(ZRMath::GetLastError(), 0) << "it is kept after the report";
        throw 1;
    };
    ZRGetMessageHandler()->AttachObserver(&observer, 1);
    EXPECT_THROW(ZRMath::Sqrt(-1), int);
    ZRGetMessageHandler()->DetachObserver(&observer, 1);
    EXPECT_EQ(ZRMath::GetLastError(), ZR_ERROR_MATH_ROOT_OF_NEGATIVE);
}

TEST_F(Math, ComparesWithinItsTolerances)
{
    const double roundoff = Constants::kRoundoff;
    const double more = std::nextafter(roundoff, 1);
    const struct {
        double x;
        const char* truths; // zero, not zero, >= 0, > 0, <= 0, < 0
    } ofOne[] = {{0, "101010"}, {roundoff, "101010"}, {-roundoff, "101010"}, {more, "011100"}, {-more, "010011"},
        {kInfinity, "011100"}, {-kInfinity, "010011"}, {kNaN, "000000"}};
    const auto digit = [](char truth) { return std::to_string(truth); };
    for (const auto& row : ofOne) {
        const double x = row.x;
        ZRMath::SetError(-65736);
        EXPECT_EQ(digit(ZRMath::ParmZero(x)) + digit(ZRMath::ParmNotZero(x)) + digit(ZRMath::ParmGEZero(x))
                + digit(ZRMath::ParmGTZero(x)) + digit(ZRMath::ParmLEZero(x)) + digit(ZRMath::ParmLTZero(x)),
            row.truths)
            << x;
        EXPECT_EQ(ZRMath::NoError(), 1);
    }
    const double next = std::nextafter(1.0, 2);
    const struct {
        double a;
        double b;
        const char* truths; // ==, !=, >=, >, <=, <
    } ofTwo[] = {{1, 1, "101010"}, {1, next, "010011"}, {next, 1, "011100"}, {1e-30, 0, "011100"}, {0, 1e-30, "010011"},
        {0, -0.0, "101010"}, {-1, 1, "010011"}, {kNaN, 1, "000000"}, {1, kNaN, "000000"}, {kInfinity, 1, "011100"},
        {1, kInfinity, "100010"}};
    for (const auto& row : ofTwo) {
        const double a = row.a;
        const double b = row.b;
        EXPECT_EQ(digit(ZRMath::ParmEQ(a, b)) + digit(ZRMath::ParmNE(a, b)) + digit(ZRMath::ParmGE(a, b))
                + digit(ZRMath::ParmGT(a, b)) + digit(ZRMath::ParmLE(a, b)) + digit(ZRMath::ParmLT(a, b)),
            row.truths)
            << a << " " << b;
    }
    EXPECT_EQ(Bits(ZRMath::RMin(0.0, -0.0)), Bits(-0.0)) << "the second of equals";
    EXPECT_EQ(Bits(ZRMath::RMax(-0.0, 0.0)), Bits(0.0));
    EXPECT_EQ(ZRMath::RMin(1, 2) + 10 * ZRMath::RMax(1, 2), 21);
    for (const double x : {-1e-18, 1e-16, kNaN}) {
        double cleared = x;
        ZRMath::SetToZero(&cleared);
        EXPECT_EQ(Bits(cleared), Bits(x == -1e-18 ? 0.0 : x));
    }
    EXPECT_EQ(ZRMath::Ceil(1.5) + 10 * ZRMath::Floor(1.5) + 100 * ZRMath::Fabs(-2), 212);
}

TEST_F(Math, FindsTicsAndClips)
{
    const struct {
        double x;
        double step;
        double above;
        double below;
    } rows[] = {{7, 5, 10, 0}, {12, 5, 15, 5}, {3, 5, 5, -5}, {-7, 5, -0.0, -10}, {-3, 5, 5, -5}, {10, 5, 10, 10},
        {0, 5, 0, 0}, {7, 0, 7, 7}, {7, 1e-20, 7, 7}, {7, -5, 5, 15}, {-7, -5, -15, -5}, {7, kNaN, 7, 7}};
    for (const auto& row : rows) {
        EXPECT_EQ(Bits(ZRMath::TicAbove(row.x, row.step)), Bits(row.above)) << row.x << " " << row.step;
        EXPECT_EQ(Bits(ZRMath::TicBelow(row.x, row.step)), Bits(row.below)) << row.x << " " << row.step;
    }
    EXPECT_EQ(ZRMath::ClipRange(1, 0.5, 2), 1);
    EXPECT_EQ(ZRMath::ClipRange(1, 3, 2), 2);
    EXPECT_EQ(ZRMath::ClipRange(1, 1.5, 2), 1.5);
    EXPECT_EQ(ZRMath::ClipRange(5, 3, 1), 5) << "the lower end comes first";
    EXPECT_EQ(ZRMath::ClipRange(kNaN, 3, kNaN), 3);
    EXPECT_EQ(ZRMath::ClipMin(1, 2) + 10 * ZRMath::ClipMax(1, 2), 12);
    EXPECT_EQ(ZRMath::ClipMin(1, kNaN) + 10 * ZRMath::ClipMax(1, kNaN), 11);
}

TEST_F(Math, DrawsRandomNumbers)
{
    constexpr int kDraws = 20000;
    std::srand(1);
    const std::array<double, 2> first = {ZRMath::Rand(), ZRMath::Rand()};
    std::srand(1);
    const double limited = ZRMath::RandLim(10.0, 30.0, 0);
    EXPECT_EQ(limited, std::min(first[0] * 20 + 10 + first[1], 30.0));
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(30, 10, 0), 10 + static_cast<int>(first[0] * 20));
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(INT32_MIN, INT32_MAX, 0),
        INT32_MIN + static_cast<std::int64_t>(first[0] * static_cast<double>(UINT32_MAX)));
    // Not reseeded in between: the clock may stand still for many draws, each of which then starts the same series.
    double least = 1;
    double most = 0;
    for (int count = 0; count < kDraws; ++count) {
        const double fraction = ZRMath::Rand();
        EXPECT_EQ(fraction * 32767, std::round(fraction * 32767)) << "15 bits";
        least = std::min(least, fraction);
        most = std::max(most, fraction);
        const double inRange = ZRMath::RandLim(-2.5, 4.0, 0);
        EXPECT_TRUE(inRange >= -2.5 && inRange <= 4.0);
        const int small = ZRMath::RandLim(5, 2, 0);
        EXPECT_TRUE(small >= 2 && small <= 5);
    }
    EXPECT_LT(least, 0.01);
    EXPECT_GT(most, 0.99);
    EXPECT_LE(most, 1.0);
    const double most64 = std::numeric_limits<double>::max();
    const std::pair<double, double> wide[] = {
        {-most64, most64}, {-kInfinity, 5}, {-5, kInfinity}, {-kInfinity, kInfinity}};
    for (const auto& [low, high] : wide) {
        std::set<double> results;
        for (int count = 0; count < 100; ++count) {
            const double inRange = ZRMath::RandLim(high, low, 0);
            EXPECT_TRUE(inRange >= low && inRange <= high) << inRange;
            results.insert(inRange);
        }
        EXPECT_GT(results.size(), 90U);
    }
    EXPECT_EQ(ZRMath::RandLim(kInfinity, kInfinity, 0), kInfinity);
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(3.5, 3.5, 1), 3.5);
    EXPECT_EQ(ZRMath::RandLim(3, 3, 1), 3);
    EXPECT_EQ(ZRMath::Rand(), first[0]) << "neither drawn nor seeded";
}

TEST_F(Math, SeedsFromTheClock)
{
    const auto series = [] {
        std::array<double, 4> draws{};
        std::generate(draws.begin(), draws.end(), ZRMath::Rand);
        return draws;
    };
    std::srand(1);
    const auto first = series();
    void (*const seeds[])() = {
        ZRMath::RandSeed,
        [] { ZRMath::RandLim(0, 9, 1); },
        [] { ZRMath::RandLim(0.0, 9.0, -1); },
    };
    ZRMath::RandSeed();
    for (const auto& seed : seeds) {
        const std::int64_t before = ZRProfiler::GetTicks();
        while (ZRProfiler::GetTicks() - before < 2) { // the series of the seeds 0 and 1 are one
        }
        std::srand(1);
        seed();
        EXPECT_NE(series(), first);
    }
}

template <typename Mask> void CheckMask()
{
    using T = decltype(Mask::GetBitWeight(0));
    constexpr T kLowest = std::numeric_limits<T>::min();
    EXPECT_EQ(Mask::NBITS, std::numeric_limits<T>::digits + 1);
    for (const int value : {0, 1, 6, 8, 12, -1, -3, 0x5555, int{kLowest}}) {
        const T operand = static_cast<T>(value);
        int count = 0;
        int lowest = -1;
        for (int position = 0; position < Mask::NBITS; ++position) {
            const bool isSet = (std::int64_t{operand} >> position & 1) != 0;
            EXPECT_EQ(Mask::IsBitPositionSet(operand, static_cast<T>(position)), isSet ? 1 : 0);
            const T weight = static_cast<T>(std::uint32_t{1} << position);
            EXPECT_EQ(Mask::IsBitWeightSet(operand, weight), isSet ? 1 : 0);
            EXPECT_EQ(Mask::GetBitWeight(weight), weight);
            lowest = isSet && lowest < 0 ? position : lowest;
            count += isSet ? 1 : 0;
        }
        EXPECT_EQ(Mask::BitSetCount(operand), count);
        EXPECT_EQ(Mask::GetFirstNonZeroBitPosition(operand), std::max(lowest, 0));
        EXPECT_EQ(Mask::GetBitWeight(operand), count == 1 ? operand : 0);
        EXPECT_EQ(Mask::IsOdd(operand), value % 2 != 0 ? 1 : 0);
        EXPECT_EQ(Mask::IsEven(operand), value % 2 == 0 ? 1 : 0);
        for (const int outside : {-1, Mask::NBITS, int{kLowest}, Mask::NBITS * 2}) {
            EXPECT_EQ(Mask::IsBitPositionSet(operand, static_cast<T>(outside)), 0);
        }
        for (const int noWeight : {0, 6, -1}) {
            EXPECT_EQ(Mask::IsBitWeightSet(operand, static_cast<T>(noWeight)), 0);
        }
    }
}

TEST(BitMasks, LookAtBits)
{
    CheckMask<ZRLongMask>();
    CheckMask<ZRShortMask>();
}

} // namespace
