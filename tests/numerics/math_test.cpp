#include "tests/messaging/message_fixture.h"
#include "tests/observation/recording_observer.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

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
    static constexpr double kRoundoff2 = MATH_ROUNDOFF2;
    static constexpr double kQuarter = MATH_PI_OVER_2;
    static constexpr double kThreeQuarters = MATH_THREE_PI_OVER_2;
    static constexpr double kTurn = MATH_TWO_PI;
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
    test::RecordingObserver messages;
    ZRGetMessageHandler()->AttachObserver(&messages, 1);
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
        ASSERT_EQ(messages.events.size(), 1U);
        EXPECT_EQ(messages.events.front().GetMsg().GetLevel(), 1);
        messages.events.clear();
    }
    ZRMath::ResetError();
    EXPECT_EQ(ZRMath::IsError() + 2 * ZRMath::NoError(), 2);
    ZRGetMessageHandler()->DetachObserver(&messages, 1);
}

// What the functions should do, straight from their definitions: the error, or the value.

struct Outcome {
    int error;
    double value;
};

Outcome Error(int error) { return {-65736 - error, 0.0}; }
Outcome Value(double value) { return {0, value}; }

bool Zero(double x) { return std::fabs(x) <= Constants::kRoundoff; }
bool Below(double x) { return x < -Constants::kRoundoff; }

Outcome ModelLog(double x) { return Zero(x) ? Error(0) : Below(x) ? Error(1) : Value(std::log(x)); }
Outcome ModelLog10(double x) { return x == 0.0 ? Error(0) : Below(x) ? Error(1) : Value(std::log10(x)); }

Outcome ModelPow(double base, double power)
{
    if (Zero(base)) {
        if (Zero(power)) {
            return Error(3);
        }
        if (Below(power)) {
            return Error(4);
        }
    }
    if (Below(base) && std::floor(power) != power) {
        return Error(5);
    }
    if (power > 38.0) {
        return Error(2);
    }
    if (!Zero(base) && std::log10(std::fabs(base)) * power > 38.0) {
        return Error(6);
    }
    return Value(std::pow(base, power));
}

std::uint32_t ModelLow(double x)
{
    if (!(std::fabs(x) < kInfinity)) {
        return 0;
    }
    // Bit by bit: the integer part, wherever it lies.
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(x), &exponent); // 0.5 to 1, times 2^exponent
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
    const int shift = exponent - 53;
    const std::uint64_t whole = shift <= -64 ? 0 : shift < 0 ? mantissa >> -shift : shift < 64 ? mantissa << shift : 0;
    const auto low = static_cast<std::uint32_t>(whole);
    return x < 0 ? 0U - low : low;
}

Outcome ModelFdiv(double a, double b)
{
    const std::uint32_t divisor = ModelLow(b);
    if (divisor == 0) {
        return Error(8);
    }
    const std::uint32_t quotient = ModelLow(a) / divisor;
    return Value(quotient);
}

double Angle(double x, bool isRadians)
{
    return isRadians ? std::fmod(x, Constants::kTurn) : std::fmod(x, 360.0) * 0.01745329251994;
}

Outcome ModelTan(double x, bool isRadians)
{
    const double angle = Angle(x, isRadians);
    if (std::fabs(angle - Constants::kQuarter) <= Constants::kQuarter * Constants::kRoundoff2
        || (!isRadians && std::fmod(x, 360.0) == 90.0)) {
        return Error(isRadians ? 9 : 10);
    }
    if (std::fabs(angle - Constants::kThreeQuarters) <= Constants::kThreeQuarters * Constants::kRoundoff2
        || (!isRadians && std::fmod(x, 360.0) == 270.0)) {
        return Error(isRadians ? 11 : 12);
    }
    return Value(std::tan(angle));
}

Outcome ModelCot(double x, bool isRadians)
{
    const Outcome tangent = ModelTan(x, isRadians);
    return tangent.error != 0 ? tangent : Zero(tangent.value) ? Error(8) : Value(1.0 / tangent.value);
}

Outcome ModelAtan2(double y, double x, bool isRadians)
{
    return Value(Zero(x) ? (isRadians ? 1.570796327 : 90.0)
            : isRadians  ? std::atan2(y, x)
                         : std::atan2(y, x) * 57.29577951308);
}

constexpr double kToDegrees = 57.29577951308;

struct Guarded {
    const char* name;
    double (*call)(double, double);
    Outcome (*model)(double, double);
};

constexpr Guarded kGuarded[] = {
    {"Log", [](double x, double) { return ZRMath::Log(x); }, [](double x, double) { return ModelLog(x); }},
    {"Log10", [](double x, double) { return ZRMath::Log10(x); }, [](double x, double) { return ModelLog10(x); }},
    {"Log20", [](double x, double) { return ZRMath::Log20(x); },
        [](double x, double) {
            const Outcome log = ModelLog10(x);
            return Outcome{log.error, log.error != 0 ? 0.0 : 2.0 * log.value};
        }},
    {"Exp", [](double x, double) { return ZRMath::Exp(x); },
        [](double x, double) { return x > 38.0 ? Error(2) : Value(std::exp(x)); }},
    {"Exp10", [](double x, double) { return ZRMath::Exp10(x); },
        [](double x, double) { return x > 38.0 ? Error(2) : ModelPow(10.0, x); }},
    {"Pow", ZRMath::Pow, ModelPow},
    {"Sqrt", [](double x, double) { return ZRMath::Sqrt(x); },
        [](double x, double) { return Below(x) ? Error(7) : Value(std::sqrt(x)); }},
    {"Divide", ZRMath::Divide, [](double a, double b) { return Zero(b) ? Error(8) : Value(a / b); }},
    {"Fdiv", ZRMath::Fdiv, ModelFdiv},
    {"Tan", [](double x, double) { return ZRMath::Tan(x, 0); }, [](double x, double) { return ModelTan(x, false); }},
    {"Tan rad", [](double x, double) { return ZRMath::Tan(x, 5); }, [](double x, double) { return ModelTan(x, true); }},
    {"Cot", [](double x, double) { return ZRMath::Cot(x, 0); }, [](double x, double) { return ModelCot(x, false); }},
    {"Cot rad", [](double x, double) { return ZRMath::Cot(x, 1); }, [](double x, double) { return ModelCot(x, true); }},
    {"Atan2", [](double y, double x) { return ZRMath::Atan2(y, x, 0); },
        [](double y, double x) { return ModelAtan2(y, x, false); }},
    {"Atan2 rad", [](double y, double x) { return ZRMath::Atan2(y, x, 1); },
        [](double y, double x) { return ModelAtan2(y, x, true); }},
    {"Sin", [](double x, double) { return ZRMath::Sin(x, 0); },
        [](double x, double) { return Value(std::sin(Angle(x, false))); }},
    {"Cos rad", [](double x, double) { return ZRMath::Cos(x, 1); },
        [](double x, double) { return Value(std::cos(Angle(x, true))); }},
    {"Asin", [](double x, double) { return ZRMath::Asin(x, 0); },
        [](double x, double) { return Value(std::asin(x) * kToDegrees); }},
    {"Acos rad", [](double x, double) { return ZRMath::Acos(x, 1); },
        [](double x, double) { return Value(std::acos(x)); }},
    {"Atan", [](double x, double) { return ZRMath::Atan(x, 0); },
        [](double x, double) { return Value(std::atan(x) * kToDegrees); }},
    {"Multiply", ZRMath::Multiply, [](double a, double b) { return Value(a * b); }},
    {"Fmod", ZRMath::Fmod, [](double a, double b) { return Value(std::fmod(a, b)); }},
};

/// Special values, each with its neighbours and its negative.
std::vector<double> Specials()
{
    std::vector<double> specials;
    for (const double value : {0.0, Constants::kRoundoff, Constants::kRoundoff2, 1e-20, 5e-324, 2.2250738585072014e-308,
             0.001, 0.5, 1.0, 2.0, 2.5, 3.0, 10.0, 13.0, 38.0, 38.5, 39.0, 45.0, 90.0, 270.0, 360.0, 450.0, 1000.0,
             1e38, 1e308, 4294967295.0, 4294967296.0, 9223372036854775808.0, 1e20, 3e300, 90.0000000003094,
             Constants::kQuarter, Constants::kThreeQuarters, Constants::kTurn, 1.5707963267948966, kInfinity}) {
        for (const double near : {std::nextafter(value, -kInfinity), value, std::nextafter(value, kInfinity)}) {
            specials.push_back(near);
            specials.push_back(-near);
        }
    }
    specials.push_back(kNaN);
    return specials;
}

void Compare(const Guarded& function, double a, double b)
{
    const Outcome expected = function.model(a, b);
    ZRMath::SetError(-65736);
    HFErrorClear();
    const double value = function.call(a, b);
    const int error = ZRMath::GetLastError();
    ASSERT_EQ(error, expected.error) << function.name << " " << a << " " << b;
    const bool isSame = Bits(value) == Bits(expected.value) || (std::isnan(value) && std::isnan(expected.value));
    ASSERT_TRUE(isSame) << function.name << " " << a << " " << b << ": " << value << ", not " << expected.value;
    HCError reported;
    ASSERT_EQ(HFErrorGet(reported) != 0, error != 0) << function.name;
}

TEST_F(Math, DoesWhatItsDefinitionSays)
{
    ZRSetMessagesEnabled(0); // the errors are recorded all the same
    const std::vector<double> specials = Specials();
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> ordinary(-50, 50);
    const auto any = [&random] {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    };
    for (const Guarded& function : kGuarded) {
        for (const double a : specials) {
            for (const double b : specials) {
                Compare(function, a, b);
            }
        }
        for (int count = 0; count < 5000; ++count) {
            Compare(function, ordinary(random), ordinary(random));
            Compare(function, std::round(ordinary(random)), std::round(ordinary(random)));
            Compare(function, any(), any());
        }
    }
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
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(3.5, 3.5, 1), 3.5);
    EXPECT_EQ(ZRMath::RandLim(3, 3, 1), 3);
    EXPECT_EQ(ZRMath::Rand(), first[0]) << "neither drawn nor seeded";
    const int reseeded = ZRMath::RandLim(-3, 3, 1);
    EXPECT_TRUE(reseeded >= -3 && reseeded <= 3);
    ZRMath::SetError(-65736);
    ZRMath::RandSeed();
    EXPECT_EQ(ZRMath::GetLastError(), -65736);
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
