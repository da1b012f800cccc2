// The order in which the expressions below are evaluated is part of the result, to the last bit. Comparisons are
// written so that a value that is not a number takes the branch that the comparison as such decides.
#include "qelMathUtilities.h"

#include <emmintrin.h>
#include <math.h>

using qelMathUtilities::PI;
using qelMathUtilities::Roots;

namespace
{
const double zeroTolerance = 1e-9;

bool isZero(double value)
{
    return fabs(value) < zeroTolerance;
}

/// Adds one root; returns how many there are now.
int write(Roots& roots, double root)
{
    roots.append(root);
    return static_cast<int>(roots.length());
}

/// The correctly rounded root in every build: the C runtime's own differs from it by a bit at times, and whether it is
/// called depends on the optimisation level.
double squareRoot(double value)
{
    const __m128d packed = _mm_set_sd(value);
    return _mm_cvtsd_f64(_mm_sqrt_sd(packed, packed));
}

/// The sign is put back because the power function knows no roots of negative numbers.
double cubeRoot(double value)
{
    const double root = pow(fabs(value), 1.0 / 3.0);
    return value < 0 ? -root : root;
}

/// Whether one of the first `count` roots is the same as `root` within the tolerance.
bool containsCloseTo(const Roots& roots, long count, double root)
{
    for (long i = 0; i < count; ++i)
    {
        if (isZero(roots[i] - root))
        {
            return true;
        }
    }
    return false;
}

/// Puts the root zero in front unless a root that counts as zero is already there.
int addZeroRoot(Roots& roots)
{
    if (!containsCloseTo(roots, roots.length(), 0.0))
    {
        roots.insertAt(0, 0.0);
    }
    return static_cast<int>(roots.length());
}

/// The largest of one or more roots.
double largest(const Roots& roots)
{
    double result = roots.first();
    for (long i = 1; i < roots.length(); ++i)
    {
        if (roots[i] > result)
        {
            result = roots[i];
        }
    }
    return result;
}

/// Turns a slightly negative value into zero. False when the value is truly negative.
bool clampSquare(double& value)
{
    if (value < 0)
    {
        if (value <= -zeroTolerance)
        {
            return false;
        }
        value = 0;
    }
    return true;
}

int repeatedCubicRoots(double B, double R, double t, Roots& roots)
{
    if (fabs(R) >= zeroTolerance)
    {
        // The general power function on purpose: a negative R makes both roots not-a-number.
        const double s = pow(R, 1.0 / 3.0);
        write(roots, 2 * s - t);
        return write(roots, -B / 3 - s);
    }
    return write(roots, -B / 3);
}

int threeCubicRoots(double Q, double R, double t, Roots& roots)
{
    const double theta = acos(R / squareRoot(-(Q * Q * Q)));
    const double m = 2 * squareRoot(-Q);
    write(roots, m * cos(theta / 3) - t);
    write(roots, m * cos((theta + 2 * PI) / 3) - t);
    return write(roots, m * cos((theta + 4 * PI) / 3) - t);
}
} // namespace

int qelMathUtilities::QuadraticSolver(double a, double b, double c, Roots& roots)
{
    roots.setLogicalLength(0);
    if (isZero(a))
    {
        return b == 0 ? 0 : write(roots, -(c / b));
    }
    // b twice, not b and c: callers, and the solvers below, depend on the roots that this gives.
    const double discriminant = b * b - 4 * a * b;
    if (isZero(discriminant))
    {
        return write(roots, -0.5 * b / a);
    }
    if (!(discriminant > 0))
    {
        return 0;
    }
    const double r = squareRoot(discriminant);
    write(roots, (-b - r) * 0.5 / a);
    return write(roots, (r - b) * 0.5 / a);
}

int qelMathUtilities::CubicSolver(double a, double b, double c, double d, Roots& roots)
{
    if (isZero(a))
    {
        return QuadraticSolver(b, c, d, roots);
    }
    if (isZero(d))
    {
        QuadraticSolver(a, b, c, roots);
        return addZeroRoot(roots);
    }
    roots.setLogicalLength(0);
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double Q = (3 * C - B * B) / 9;
    const double R = (9 * B * C - 27 * D - 2 * B * B * B) / 54;
    const double S = R * R + Q * Q * Q;
    const double t = B / 3;
    if (isZero(S))
    {
        return repeatedCubicRoots(B, R, t, roots);
    }
    if (S <= 0)
    {
        return threeCubicRoots(Q, R, t, roots);
    }
    const double r = squareRoot(S);
    return write(roots, cubeRoot(R + r) - t + cubeRoot(R - r));
}

int qelMathUtilities::QuarticSolver(double a, double b, double c, double d, double e, Roots& roots)
{
    if (isZero(a))
    {
        return CubicSolver(b, c, d, e, roots);
    }
    if (isZero(e))
    {
        CubicSolver(a, b, c, d, roots);
        return addZeroRoot(roots);
    }
    roots.setLogicalLength(0);
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double E = e / a;
    // A cubic always has a root, so there is always a largest one.
    Roots resolvent;
    CubicSolver(1, -C, B * D - 4 * E, (4 * C - B * B) * E - D * D, resolvent);
    const double y = largest(resolvent);
    const double h = y / 2;
    double k = h * h - E;
    if (!clampSquare(k))
    {
        return 0;
    }
    const double q = squareRoot(k);
    const double g = B / 2;
    double p = 0;
    if (q < zeroTolerance)
    {
        double square = g * g - C + y;
        if (!clampSquare(square))
        {
            return 0;
        }
        p = squareRoot(square);
    }
    else
    {
        p = (g * h - D / 2) / q;
    }
    const long first = QuadraticSolver(1, g + p, h + q, roots);
    Roots second;
    QuadraticSolver(1, g - p, h - q, second);
    for (long i = 0; i < second.length(); ++i)
    {
        if (!containsCloseTo(roots, first, second[i]))
        {
            roots.append(second[i]);
        }
    }
    return static_cast<int>(roots.length());
}
