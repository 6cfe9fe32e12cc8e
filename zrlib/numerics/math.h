/// ZRMath: mathematics that tests its arguments.
#pragma once

#include "zrlib/export.h"

#include <atomic>

/// Functions on doubles. A guarded one that is given a bad argument reports it with ZRErrorSet (the code below,
/// location "ZRMath"), keeps the code as the last error and gives 0.0; otherwise it gives the standard library's
/// result. What is not guarded passes through to the standard library, NaN included.
///
/// Every function clears the last error first, but GetLastError, NoError, IsError, SetError and RandSeed. So ask right
/// after the call that matters: a comparison in between wipes it out.
///
/// | Code (text_codes.h) | Error | Raised by |
/// |---|---|---|
/// | -65736 | log of zero | Log, Log10, Log20 |
/// | -65737 | log of a negative number | Log, Log10, Log20 |
/// | -65738 | exponent above 38 | Exp, Exp10, Pow |
/// | -65739 | zero to the power zero | Pow |
/// | -65740 | zero to a negative power | Pow |
/// | -65741 | negative number to a power that is no integer | Pow |
/// | -65742 | result beyond 1e38 | Pow |
/// | -65743 | square root of a negative number | Sqrt |
/// | -65744 | division by zero | Divide, Fdiv, Cot |
/// | -65745, -65746 | tangent of 90 degrees, in radians mode and not | Tan, Cot |
/// | -65747, -65748 | tangent of 270 degrees, in radians mode and not | Tan, Cot |
///
/// Angles: mode is not 0 for radians, 0 for degrees. The constants of this class are not the nearest doubles to what
/// they are named for; results are promised with just these.
///
/// Truth values are 1 and 0. errno is set as the standard library's functions set it. Threads: any; but there is one
/// last error for the process, which threads clear for each other.
class ZR_API ZRMath {
public:
    ZRMath() = default;

    /// The argument has no effect.
    ZRMath(char) {}

    // The last error: one of the codes above, or 0. There is one for the process, so while other threads call functions
    // of this class the answer may be about theirs, and an error of this thread's own may be wiped out before it is
    // asked for. The record of the thread itself (HFErrorGet) is exact.

    [[nodiscard]] static int GetLastError();
    static char NoError();
    [[nodiscard]] static char IsError();
    static void ResetError();

    /// Reports one of the codes above and keeps it. Any other code does nothing.
    static void SetError(int code);

    // Comparisons with zero, to within 2.2204460492503132e-17. False when x is NaN.

    static char ParmZero(double x);
    static char ParmNotZero(double x);
    static char ParmGEZero(double x);
    static char ParmGTZero(double x);
    static char ParmLEZero(double x);
    static char ParmLTZero(double x);

    // Comparisons of two numbers, to within 4.4408920985006264e-17 times b, which is less than doubles can tell apart
    // but next to the smallest normal ones. False when one of them is NaN.

    static char ParmEQ(double a, double b);
    static char ParmNE(double a, double b);
    static char ParmGE(double a, double b);
    static char ParmGT(double a, double b);
    static char ParmLE(double a, double b);
    static char ParmLT(double a, double b);

    // Plain functions.

    /// The smaller and the larger of the two; b when they are equal.
    static double RMin(double a, double b);
    static double RMax(double a, double b);

    /// Makes *p 0.0 when ParmZero holds for it. p must not be null.
    static void SetToZero(double* p);

    /// Degrees to radians and back.
    static double Radians(double degrees);
    static double Degrees(double radians);

    static double Multiply(double a, double b);
    static double Fabs(double x);
    static double Ceil(double x);
    static double Floor(double x);
    static double Fmod(double x, double y);

    // Guarded functions.

    /// Natural logarithm. Zero is what ParmZero takes for it.
    static double Log(double x);

    /// Decimal logarithm, and twice that. Zero is only zero itself.
    static double Log10(double x);
    static double Log20(double x);

    /// e and 10 to the power x, which is at most 38.
    static double Exp(double x);
    static double Exp10(double x);

    /// The table above tells which arguments are bad. Zero is what ParmZero takes for it.
    static double Pow(double base, double power);

    /// Fails below zero, beyond what ParmZero takes for it; NaN from there to zero.
    static double Sqrt(double x);

    /// a / b. Zero is what ParmZero takes for it.
    static double Divide(double a, double b);

    /// Quotient of integers: a and b are cut to integers, of which the low 32 bits count, without a sign. NaN and the
    /// infinities count as 0.
    static double Fdiv(double a, double b);

    // Trigonometry. Tan and Cot are guarded. Angles, arguments and results, are in radians when mode is not 0,
    // otherwise in degrees.

    static double Sin(double x, char mode);
    static double Cos(double x, char mode);

    /// The tangent. Fails for angles that are 90 or 270 degrees, or MATH_PI_OVER_2 or MATH_THREE_PI_OVER_2, after
    /// reduction to one turn; negative ones do not fail.
    static double Tan(double x, char mode);

    /// 1 divided by the tangent. Fails where that does and where it is 0.
    static double Cot(double x, char mode);

    static double Asin(double x, char mode);
    static double Acos(double x, char mode);
    static double Atan(double x, char mode);

    /// The angle of the point (x, y). Always 90 degrees when ParmZero holds for x, whatever y is.
    static double Atan2(double y, double x, char mode);

    // Tics of a scale. A number that is on a tic stays, and all do when the step is 0 to ParmZero. To others a whole
    // step is added, or taken away, and the result brought to the tic below it, or, when x is negative, to the tic
    // above it. So on the way towards 0 that leads one tic too far: TicBelow(7, 5) is 0. With a negative step
    // TicAbove leads down and TicBelow up, and it is away from 0 that they lead one tic too far: TicAbove(7, -5) is 5,
    // TicBelow(7, -5) is 15.

    static double TicAbove(double x, double step);
    static double TicBelow(double x, double step);

    // Random numbers, from 15 bits of the standard library's rand. Its series is one for the whole process on Linux,
    // one for each thread on Windows.

    /// 0.0 to 1.0, both included.
    static double Rand();

    /// Seeds rand with the number of clock ticks since the last time. The first time that are only the few between two
    /// readings of the clock, so that many runs of a program start with one of few series.
    static void RandSeed();

    /// A number from lo to hi, in either order; hi is likelier than others. An infinite end counts as the largest
    /// double unless both are the same; NaN gives NaN. reseed: not 0 to call RandSeed first. When both are equal that
    /// is the result, and nothing is drawn or seeded.
    static double RandLim(double lo, double hi, char reseed);

    /// An integer from lo to hi, in either order; hi itself is one draw in 32,768. There are at most 32,768 different
    /// results, however far apart lo and hi are.
    static int RandLim(int lo, int hi, char reseed);

    // Clipping. With NaN no comparison holds.

    /// lo if x is below it; else hi if x is above that; else x.
    static double ClipRange(double lo, double x, double hi);

    /// At least b: the larger of the two; a with NaN.
    static double ClipMin(double a, double b);

    /// At most b: the smaller of the two; a with NaN.
    static double ClipMax(double a, double b);

protected:
    static constexpr double MATH_ROUNDOFF = 2.2204460492503132e-17;
    static constexpr double MATH_ROUNDOFF2 = 4.4408920985006264e-17;
    static constexpr double MATH_PI_OVER_2 = 1.5707963268;
    static constexpr double MATH_FIRST_QUADRANT = MATH_PI_OVER_2;
    static constexpr double MATH_PI = 3.14159265359;
    static constexpr double MATH_SECOND_QUADRANT = MATH_PI;
    static constexpr double MATH_THREE_PI_OVER_2 = 4.7123889804;
    static constexpr double MATH_THIRD_QUADRANT = MATH_THREE_PI_OVER_2;
    static constexpr double MATH_TWO_PI = 6.28318530718;
    static constexpr double MATH_FOURTH_QUADRANT = MATH_TWO_PI;
    static constexpr char MATH_RADIANS = 1;
    static constexpr char MATH_DEGREES = 0;

    static std::atomic<int> m_nError;
};
