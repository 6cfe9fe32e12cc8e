#include "tests/support/messages.h"
#include "zrobservers/recorder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <type_traits>
#include <vector>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kPerDegree = 0.01745329251994;
constexpr double kPerRadian = 57.29577951308;

// The last number that counts as zero, and the next one.
constexpr double kZero = 2.2204460492503132e-17;
constexpr double kMore = 2.2204460492503135e-17;

class Math : public test::Messages {
protected:
    Math() { ZRMath::ResetError(); }
};

TEST_F(Math, KeepsItsOwnErrorsOnly)
{
    const ZRRecorder messages(*ZRGetMessageHandler());
    for (const int code : {-65735, -65736, 0, -65748, -65749, 12345}) {
        ZRMath::SetError(code);
    }
    EXPECT_EQ(ZRMath::GetLastError(), -65748);
    EXPECT_EQ(ZRMath::IsError(), 1);
    EXPECT_EQ(ZRMath::NoError(), 0);
    EXPECT_EQ(test::TakeError(), "-65748 Tan 270 degrees ZRMath 0");
    EXPECT_EQ(messages.GetMessages().size(), 2U);
    EXPECT_EQ(messages.GetMessages().back().GetLevel(), 1);
    ZRMath::ResetError();
    EXPECT_EQ(ZRMath::IsError(), 0);
    EXPECT_EQ(ZRMath::NoError(), 1);
    const ZRListener thrower(*ZRGetMessageHandler(), [](const ZRObservedObjectEvent&) {
        EXPECT_EQ(ZRMath::GetLastError(), 0) << "it is kept after the report";
        throw 1;
    });
    EXPECT_THROW(ZRMath::Sqrt(-1), int);
    EXPECT_EQ(ZRMath::GetLastError(), -65743) << "whose report failed";
}

// The functions as functions of two numbers, the second of which may be a mode or nothing.
template <double (*function)(double)> double Of(double x, double /*unused*/) { return function(x); }
template <double (*function)(double, double)> double Of(double a, double b) { return function(a, b); }
template <char (*function)(double)> double Of(double x, double /*unused*/) { return function(x); }
template <char (*function)(double, double)> double Of(double a, double b) { return function(a, b); }
template <double (*function)(double, char)> double Of(double x, double mode)
{
    return function(x, static_cast<char>(mode));
}

struct Call {
    double a;
    double b;
    double result;
    int error = 0;
};

struct Function {
    const char* name;
    double (*function)(double, double);
    std::vector<Call> calls;
};

/// Makes calls, each after an error of an earlier one; looks at their results, errors and reports.
void Check(const Function& function)
{
    for (const auto& [a, b, expected, error] : function.calls) {
        SCOPED_TRACE(function.name + (" of " + std::to_string(a)) + " and " + std::to_string(b));
        ZRMath::SetError(error != -65736 ? -65736 : -65737);
        HFErrorClear();
        const double result = function.function(a, b);
        EXPECT_EQ(ZRMath::GetLastError(), error);
        const std::string told = test::TakeError();
        EXPECT_EQ(told.substr(0, told.find(' ')), error != 0 ? std::to_string(error) : "none");
        EXPECT_EQ(std::isnan(result), std::isnan(expected));
        if (!std::isnan(expected)) {
            EXPECT_DOUBLE_EQ(result, expected);
            EXPECT_EQ(std::signbit(result), std::signbit(expected));
        }
    }
}

TEST_F(Math, GuardsPowersAndQuotients)
{
    const Function functions[] = {
        {"Log", Of<ZRMath::Log>, {{10, 0, std::log(10)}, {kMore, 0, std::log(kMore)}, {kNaN, 0, kNaN}}},
        {"Log", Of<ZRMath::Log>, {{kZero, 0, 0, -65736}, {-kZero, 0, 0, -65736}, {-kMore, 0, 0, -65737}}},
        {"Log10", Of<ZRMath::Log10>, {{1e-20, 0, -20}, {0, 0, 0, -65736}, {-kZero, 0, kNaN}, {-kMore, 0, 0, -65737}}},
        {"Log20", Of<ZRMath::Log20>, {{100, 0, 4}, {0, 0, 0, -65736}, {-1, 0, 0, -65737}}},
        {"Exp", Of<ZRMath::Exp>, {{38, 0, std::exp(38)}, {38.5, 0, 0, -65738}, {-800, 0, 0}, {kNaN, 0, kNaN}}},
        {"Exp10", Of<ZRMath::Exp10>, {{38, 0, 1e38}, {38.5, 0, 0, -65738}, {-400, 0, 0}}},
        {"Pow", Of<ZRMath::Pow>, {{kZero, -kZero, 0, -65739}, {-kZero, -kMore, 0, -65740}, {-kZero, 0.5, kNaN}}},
        {"Pow", Of<ZRMath::Pow>, {{-kMore, 0.5, 0, -65741}, {-2, kNaN, 0, -65741}, {-2, 38.5, 0, -65741}, {-2, 3, -8}}},
        {"Pow", Of<ZRMath::Pow>, {{0, 39, 0, -65738}, {10, 38, 1e38}, {1e3, 13, 0, -65742}, {-1e3, 13, 0, -65742}}},
        {"Pow", Of<ZRMath::Pow>, {{1e4, 9, 1e36}, {1e4, 10, 0, -65742}, {1e-4, -10, 0, -65742}, {1, kNaN, 1}}},
        {"Pow", Of<ZRMath::Pow>, {{1e-3, -13, 0, -65742}, {1e-3, -12, 1e36}, {-1e3, 12, 1e36}, {2, -2000, 0}}},
        {"Pow", Of<ZRMath::Pow>, {{kInfinity, 1, 0, -65742}, {kInfinity, -1, 0}, {0, 2, 0}, {0, 0, 0, -65739}}},
        {"Sqrt", Of<ZRMath::Sqrt>, {{2.25, 0, 1.5}, {-kZero, 0, kNaN}, {-kMore, 0, 0, -65743}}},
        {"Divide", Of<ZRMath::Divide>, {{-3, 2, -1.5}, {1, kMore, 1 / kMore}, {1, -kZero, 0, -65744}, {1, kNaN, kNaN}}},
        {"Fdiv", Of<ZRMath::Fdiv>, {{7.9, 2.5, 3}, {-0.5, -1.5, 0}, {8, -1, 0}, {kNaN, 1, 0}, {1, 0.5, 0, -65744}}},
        {"Fdiv", Of<ZRMath::Fdiv>, {{1, kInfinity, 0, -65744}, {1, 4294967296, 0, -65744}, {-7, 2, 2147483644}}},
        {"Fdiv", Of<ZRMath::Fdiv>, {{1e20, 1, 0x63100000}, {-1e20, 1, 0x9CF00000}}}, // 0x56BC75E2D63100000
    };
    std::for_each(std::begin(functions), std::end(functions), Check);
}

TEST_F(Math, TakesAnglesInDegreesAndRadians)
{
    const auto inDegrees = [](double y, double x) { return ZRMath::Atan2(y, x, 0); };
    const auto inRadians = [](double y, double x) { return ZRMath::Atan2(y, x, 1); };
    constexpr double kQuarter = 1.5707963268;
    const Function functions[] = {
        {"Radians", Of<ZRMath::Radians>, {{180, 0, 180 * kPerDegree}}},
        {"Degrees", Of<ZRMath::Degrees>, {{-3, 0, -3 * kPerRadian}}},
        {"Sin", Of<ZRMath::Sin>, {{30, 0, std::sin(30 * kPerDegree)}, {3.6e9 + 30, 0, std::sin(30 * kPerDegree)}}},
        {"Sin", Of<ZRMath::Sin>, {{-7, 1, std::sin(6.28318530718 - 7)}, {kInfinity, 0, kNaN}}},
        {"Cos", Of<ZRMath::Cos>, {{-100, 0, std::cos(100 * kPerDegree)}, {-2, 5, std::cos(-2)}, {kInfinity, 1, kNaN}}},
        {"Tan", Of<ZRMath::Tan>, {{45, 0, std::tan(45 * kPerDegree)}, {-90, 0, std::tan(-90 * kPerDegree)}}},
        {"Tan", Of<ZRMath::Tan>, {{-kQuarter, 1, std::tan(-kQuarter)}, {1.57079632679, 1, std::tan(1.57079632679)}}},
        {"Tan", Of<ZRMath::Tan>, {{90, 0, 0, -65746}, {450, 0, 0, -65746}, {270, 0, 0, -65748}}},
        {"Tan", Of<ZRMath::Tan>, {{kQuarter, 1, 0, -65745}, {4.7123889804, 1, 0, -65747}}},
        {"Cot", Of<ZRMath::Cot>, {{45, 0, 1 / std::tan(45 * kPerDegree)}, {2, 1, 1 / std::tan(2)}, {0, 0, 0, -65744}}},
        {"Cot", Of<ZRMath::Cot>, {{270, 0, 0, -65748}, {kQuarter, 1, 0, -65745}, {0, 1, 0, -65744}}},
        {"Asin", Of<ZRMath::Asin>, {{0.5, 0, std::asin(0.5) * kPerRadian}, {0.5, 1, std::asin(0.5)}, {2, 0, kNaN}}},
        {"Acos", Of<ZRMath::Acos>, {{0.5, 0, std::acos(0.5) * kPerRadian}, {0.5, 1, std::acos(0.5)}}},
        {"Atan", Of<ZRMath::Atan>, {{1, 0, std::atan(1) * kPerRadian}, {1, 1, std::atan(1)}}},
        {"Atan2", inDegrees, {{-1, 0, 90}, {0, -kZero, 90}, {-1, -1, std::atan2(-1, -1) * kPerRadian}}},
        {"Atan2", inRadians, {{-1, 0, 1.570796327}, {1, 2, std::atan2(1, 2)}}},
    };
    std::for_each(std::begin(functions), std::end(functions), Check);
}

TEST_F(Math, ForgetsTheErrorInPlainFunctionsToo)
{
    const auto setToZero = [](double x, double) {
        ZRMath::SetToZero(&x);
        return x;
    };
    const auto clipRange = [](double x, double hi) { return ZRMath::ClipRange(3, x, hi); };
    const Function functions[] = {
        {"Multiply", Of<ZRMath::Multiply>, {{3, -2, -6}, {1e308, 10, kInfinity}}},
        {"Fmod", Of<ZRMath::Fmod>, {{-7, 5, -2}, {1, 0, kNaN}}},
        {"Fabs", Of<ZRMath::Fabs>, {{-2.5, 0, 2.5}}},
        {"Ceil", Of<ZRMath::Ceil>, {{1.5, 0, 2}}},
        {"Floor", Of<ZRMath::Floor>, {{1.5, 0, 1}}},
        {"RMin", Of<ZRMath::RMin>, {{1, 2, 1}, {2, 1, 1}, {0.0, -0.0, -0.0}}}, // the second of equals
        {"RMax", Of<ZRMath::RMax>, {{1, 2, 2}, {2, 1, 2}, {-0.0, 0.0, 0.0}}},
        {"SetToZero", setToZero, {{-kZero, 0, 0.0}, {kMore, 0, kMore}, {kNaN, 0, kNaN}}},
        {"TicAbove", Of<ZRMath::TicAbove>,
            {{7, 5, 10}, {-7, 5, -0.0}, {-3, 5, 5}, {10, 5, 10}, {7, -5, 5}, {-7, -5, -15}}},
        {"TicBelow", Of<ZRMath::TicBelow>,
            {{12, 5, 5}, {7, 5, 0}, {3, 5, -5}, {-7, 5, -10}, {7, -5, 15}, {-7, -5, -5}}},
        {"TicBelow", Of<ZRMath::TicBelow>, {{-10, 5, -10}, {7, kZero, 7}, {7, -kZero, 7}, {7, kNaN, 7}}},
        {"ClipRange", clipRange, {{2, 5, 3}, {4, 5, 4}, {6, 5, 5}, {2, 1, 3}, {4, kNaN, 4}, {kNaN, 5, kNaN}}},
        {"ClipMin", Of<ZRMath::ClipMin>, {{1, 2, 2}, {2, 1, 2}, {1, kNaN, 1}}},
        {"ClipMax", Of<ZRMath::ClipMax>, {{1, 2, 1}, {2, 1, 1}, {1, kNaN, 1}}},
    };
    std::for_each(std::begin(functions), std::end(functions), Check);
}

TEST_F(Math, ComparesWithinItsTolerances)
{
    double (*const functions[])(double, double) = {Of<ZRMath::ParmEQ>, Of<ZRMath::ParmNE>, Of<ZRMath::ParmGE>,
        Of<ZRMath::ParmGT>, Of<ZRMath::ParmLE>, Of<ZRMath::ParmLT>, Of<ZRMath::ParmZero>, Of<ZRMath::ParmNotZero>,
        Of<ZRMath::ParmGEZero>, Of<ZRMath::ParmGTZero>, Of<ZRMath::ParmLEZero>, Of<ZRMath::ParmLTZero>};
    const double next = std::nextafter(1.0, 2);
    const struct {
        double a;
        double b;
        const char* truths; // of the functions in the order above: those of both numbers, and those of the first
    } cases[] = {{0, 0, "101010 101010"}, {kZero, kZero, "101010 101010"}, {-kZero, 0, "010011 101010"},
        {kMore, 0, "011100 011100"}, {-kMore, 0, "010011 010011"}, {kInfinity, 1, "011100 011100"},
        {-kInfinity, 1, "010011 010011"}, {kNaN, 1, "000000 000000"}, {1, kNaN, "000000 011100"},
        {1, next, "010011 011100"}, {next, 1, "011100 011100"}, {-1, 1, "010011 010011"},
        {1, kInfinity, "100010 011100"}, {0x1.5555555555556p-1021, 0x1.5555555555555p-1021, "011010 101010"}};
    for (const auto& row : cases) {
        std::string truths;
        for (const auto& function : functions) {
            ZRMath::SetError(-65736);
            truths += truths.size() == 6 ? " " : "";
            truths += function(row.a, row.b) == 1 ? '1' : '0';
            EXPECT_EQ(ZRMath::GetLastError(), 0);
        }
        EXPECT_EQ(truths, row.truths) << row.a << " " << row.b;
    }
}

TEST_F(Math, DrawsRandomNumbers)
{
    std::set<double> drawn;
    for (int count = 0; count < 20000; ++count) {
        drawn.insert(ZRMath::Rand());
    }
    EXPECT_GE(drawn.size(), 10000U);
    EXPECT_TRUE(*drawn.begin() >= 0 && *drawn.rbegin() <= 1 && *drawn.rbegin() > 0.99);
    std::srand(1);
    const double first = ZRMath::Rand();
    const double second = ZRMath::Rand();
    EXPECT_EQ(first * 32767, std::round(first * 32767)) << "15 bits";
    const struct {
        double lo;
        double hi;
        double result;
    } cases[] = {{30, 10, std::min(10 + first * 20 + second, 30.0)}, {1, 1 + 1e-9, 1 + 1e-9},
        {-kInfinity, kInfinity, kMax * first - kMax * (1 - first)}, {-kInfinity, 5, -kMax * (1 - first)},
        {kInfinity, -5, kMax * first}, {kInfinity, kInfinity, kInfinity}};
    for (const auto& row : cases) {
        std::srand(1);
        EXPECT_DOUBLE_EQ(ZRMath::RandLim(row.lo, row.hi, 0), row.result);
    }
    EXPECT_TRUE(std::isnan(ZRMath::RandLim(kNaN, 1.0, 0)));
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(30, 10, 0), 10 + static_cast<int>(first * 20));
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(INT32_MIN, INT32_MAX, 0), INT32_MIN + static_cast<std::int64_t>(first * UINT32_MAX));
    std::srand(1);
    EXPECT_EQ(ZRMath::RandLim(3, 3, 1), 3);
    EXPECT_EQ(ZRMath::RandLim(3.5, 3.5, 1), 3.5);
    EXPECT_EQ(ZRMath::Rand(), first) << "neither drawn nor seeded for limits that are one";
}

TEST_F(Math, SeedsFromTheClock)
{
    const auto series = [] { return std::array{ZRMath::Rand(), ZRMath::Rand(), ZRMath::Rand(), ZRMath::Rand()}; };
    std::srand(1);
    const auto first = series();
    ZRMath::RandSeed(); // the first seed is the time since then, and may be 0
    for (void (*const seed)() : {+[] { ZRMath::RandSeed(); }, +[] { ZRMath::RandLim(0, 9, 1); }}) {
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
    EXPECT_EQ(Mask::NBITS, std::numeric_limits<T>::digits + 1);
    for (const T value : {T{0}, T{1}, T{6}, T{-3}, T{0x5555}, std::numeric_limits<T>::min()}) {
        const auto bits = static_cast<std::make_unsigned_t<T>>(value);
        EXPECT_EQ(Mask::BitSetCount(value), std::popcount(bits));
        EXPECT_EQ(Mask::GetFirstNonZeroBitPosition(value), bits != 0 ? std::countr_zero(bits) : 0);
        EXPECT_EQ(Mask::GetBitWeight(value), std::has_single_bit(bits) ? value : 0);
        EXPECT_EQ(Mask::IsOdd(value), value % 2 != 0 ? 1 : 0);
        EXPECT_EQ(Mask::IsEven(value), value % 2 == 0 ? 1 : 0);
        for (T position = 0; position < Mask::NBITS; ++position) {
            const int bit = static_cast<int>(bits >> position & 1U);
            EXPECT_EQ(Mask::IsBitPositionSet(value, position), bit);
            EXPECT_EQ(Mask::IsBitWeightSet(value, static_cast<T>(std::uint32_t{1} << position)), bit);
        }
        for (const T other : {T{-1}, T{Mask::NBITS}, T{-2}}) { // neither position nor weight
            EXPECT_EQ(Mask::IsBitPositionSet(value, other), 0);
            EXPECT_EQ(Mask::IsBitWeightSet(value, static_cast<T>(other + 1)), 0);
        }
    }
}

TEST(BitMasks, LookAtBits)
{
    CheckMask<ZRLongMask>();
    CheckMask<ZRShortMask>();
}

} // namespace
