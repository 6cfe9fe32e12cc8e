/// ZRMath: mathematics that checks its arguments.
/// Folder numerics: checked mathematics, bit masks and random numbers.
#pragma once

#include "zrlib/export.h"

#include <atomic>

/// Functions on doubles. A guarded function reports a bad argument with ZRErrorSet (the code below, location "ZRMath"),
/// keeps the code as the last error and returns 0.0; otherwise it returns the standard library's result. Whatever is
/// not guarded passes through to the standard library, NaN included.
///
/// Every function but GetLastError, NoError, IsError, SetError and RandSeed first clears the last error. So ask right
/// after the call that matters: even a comparison in between clears it.
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
/// Angles: mode is not 0 for radians, 0 for degrees. The constants of this class are deliberately inexact; results
/// depend on these exact values.
///
/// Truth values are 1 and 0. errno is set as the standard library's functions set it. Threads: any; but the process has
/// one last error, which threads clear for each other.
class ZR_API ZRMath {
public:
    ZRMath() = default;

    /// The argument has no effect.
    ZRMath(char) {}

    // The last error: one of the codes above, or 0. There is one per process: while other threads call functions of
    // this class, the answer may be about theirs, and this thread's error may be cleared before it is read. The
    // thread's own record (HFErrorGet) is exact.

    [[nodiscard]] static int GetLastError();
    static char NoError();
    [[nodiscard]] static char IsError();
    static void ResetError();

    /// Reports one of the codes above and keeps it. A no-op for any other code.
    static void SetError(int code);

    // Comparisons with zero, to within 2.2204460492503132e-17. False when x is NaN.

    static char ParmZero(double x);
    static char ParmNotZero(double x);
    static char ParmGEZero(double x);
    static char ParmGTZero(double x);
    static char ParmLEZero(double x);
    static char ParmLTZero(double x);

    // Comparisons of two numbers, to within 4.4408920985006264e-17 times b: less than the spacing of doubles, except
    // next to the smallest normal ones. False when one of them is NaN.

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

    /// Sets *p to 0.0 when ParmZero holds for it. p must not be null.
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

    /// Natural logarithm. A number counts as zero when ParmZero holds for it.
    static double Log(double x);

    /// Decimal logarithm, and twice that. Only zero itself counts as zero.
    static double Log10(double x);
    static double Log20(double x);

    /// e and 10 to the power x, which is at most 38.
    static double Exp(double x);
    static double Exp10(double x);

    /// The table above lists the bad arguments. A number counts as zero when ParmZero holds for it.
    static double Pow(double base, double power);

    /// Fails for negative numbers, unless ParmZero holds for them; it returns NaN for those.
    static double Sqrt(double x);

    /// a / b. b counts as zero when ParmZero holds for it.
    static double Divide(double a, double b);

    /// Quotient of integers: a and b are truncated to integers, of which the low 32 bits count, unsigned. NaN and the
    /// infinities count as 0.
    static double Fdiv(double a, double b);

    // Trigonometry. Tan and Cot are guarded. Angles, as arguments and results, are in radians when mode is not 0,
    // otherwise in degrees.

    static double Sin(double x, char mode);
    static double Cos(double x, char mode);

    /// The tangent. After reduction to one turn, fails for 90 and 270 degrees, and for MATH_PI_OVER_2 and
    /// MATH_THREE_PI_OVER_2; negative angles do not fail.
    static double Tan(double x, char mode);

    /// 1 divided by the tangent. Fails where the tangent fails and where it is 0.
    static double Cot(double x, char mode);

    static double Asin(double x, char mode);
    static double Acos(double x, char mode);
    static double Atan(double x, char mode);

    /// The angle of the point (x, y). Always 90 degrees when ParmZero holds for x, whatever y is.
    static double Atan2(double y, double x, char mode);

    // Tics of a scale: multiples of the step. A number that is on a tic is returned unchanged, and so is every number
    // when ParmZero holds for the step. Otherwise a whole step is added or subtracted, and the number of steps in the
    // result is rounded down, or up when x is negative. So rounding towards 0 goes one tic too far: TicBelow(7, 5) is
    // 0. With a negative step TicAbove goes down and TicBelow up, and rounding away from 0 goes one tic too far:
    // TicAbove(7, -5) is 5, TicBelow(7, -5) is 15.

    static double TicAbove(double x, double step);
    static double TicBelow(double x, double step);

    // Random numbers, from 15 bits of the standard library's rand. Its series is one for the whole process on Linux,
    // one for each thread on Windows.

    /// 0.0 to 1.0, both included.
    static double Rand();

    /// Seeds rand with the number of clock ticks since the last call. On the first call these are only the few between
    /// two readings of the clock, so many runs of a program start with one of few series.
    static void RandSeed();

    /// A number from lo to hi, in either order; hi is likelier than others. An infinite end counts as the largest
    /// double unless both are the same; NaN yields NaN. reseed: not 0 to call RandSeed first. When lo equals hi, it is
    /// returned without drawing or seeding.
    static double RandLim(double lo, double hi, char reseed);

    /// An integer from lo to hi, in either order; hi itself is one draw in 32,768. There are at most 32,768 different
    /// results, however far apart lo and hi are.
    static int RandLim(int lo, int hi, char reseed);

    // Clipping. No comparison with NaN holds.

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
