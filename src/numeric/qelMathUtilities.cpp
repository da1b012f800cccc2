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

/// Roots before they are written to the caller's list.
class Found
{
public:
    int count() const { return m_count; }
    double operator[](int i) const { return m_roots[i]; }

    void add(double root) { m_roots[m_count++] = root; }

    void addInFront(double root)
    {
        for (int to = m_count++; to > 0; --to)
        {
            m_roots[to] = m_roots[to - 1];
        }
        m_roots[0] = root;
    }

    /// Whether one of the first `count` roots is the same as `root` within the tolerance.
    bool containsCloseTo(int count, double root) const
    {
        for (int i = 0; i < count; ++i)
        {
            if (isZero(m_roots[i] - root))
            {
                return true;
            }
        }
        return false;
    }

    /// The largest of one or more roots.
    double largest() const
    {
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): the caller says why there is one
        double result = m_roots[0];
        for (int i = 1; i < m_count; ++i)
        {
            if (m_roots[i] > result)
            {
                result = m_roots[i];
            }
        }
        return result;
    }

    /// Replaces what is in the list; returns how many roots there are.
    int writeTo(Roots& roots) const
    {
        roots.setLogicalLength(0);
        roots.setLogicalLength(m_count);
        for (int i = 0; i < m_count; ++i)
        {
            roots[i] = m_roots[i];
        }
        return m_count;
    }

private:
    double m_roots[4];
    int m_count = 0;
};

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

/// Puts the root zero in front unless a root that counts as zero is already there.
void addZeroRoot(Found& roots)
{
    if (!roots.containsCloseTo(roots.count(), 0.0))
    {
        roots.addInFront(0.0);
    }
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

void solveQuadratic(double a, double b, double c, Found& roots)
{
    if (isZero(a))
    {
        if (b != 0)
        {
            roots.add(-(c / b));
        }
        return;
    }
    // b twice, not b and c. Deliberate: the solvers below depend on the roots that this gives.
    const double discriminant = b * b - 4 * a * b;
    if (isZero(discriminant))
    {
        roots.add(-0.5 * b / a);
    }
    else if (discriminant > 0)
    {
        const double r = squareRoot(discriminant);
        roots.add((-b - r) * 0.5 / a);
        roots.add((r - b) * 0.5 / a);
    }
}

void addRepeatedCubicRoots(double B, double R, double t, Found& roots)
{
    if (fabs(R) >= zeroTolerance)
    {
        // The general power function on purpose: a negative R makes both roots not-a-number.
        const double s = pow(R, 1.0 / 3.0);
        roots.add(2 * s - t);
        roots.add(-B / 3 - s);
        return;
    }
    roots.add(-B / 3);
}

void addThreeCubicRoots(double Q, double R, double t, Found& roots)
{
    const double theta = acos(R / squareRoot(-(Q * Q * Q)));
    const double m = 2 * squareRoot(-Q);
    roots.add(m * cos(theta / 3) - t);
    roots.add(m * cos((theta + 2 * PI) / 3) - t);
    roots.add(m * cos((theta + 4 * PI) / 3) - t);
}

void solveCubic(double a, double b, double c, double d, Found& roots)
{
    if (isZero(a))
    {
        solveQuadratic(b, c, d, roots);
        return;
    }
    if (isZero(d))
    {
        solveQuadratic(a, b, c, roots);
        addZeroRoot(roots);
        return;
    }
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double Q = (3 * C - B * B) / 9;
    const double R = (9 * B * C - 27 * D - 2 * B * B * B) / 54;
    const double S = R * R + Q * Q * Q;
    const double t = B / 3;
    if (isZero(S))
    {
        addRepeatedCubicRoots(B, R, t, roots);
    }
    else if (S <= 0)
    {
        addThreeCubicRoots(Q, R, t, roots);
    }
    else
    {
        const double r = squareRoot(S);
        roots.add(cubeRoot(R + r) - t + cubeRoot(R - r));
    }
}

void solveQuartic(double a, double b, double c, double d, double e, Found& roots)
{
    if (isZero(a))
    {
        solveCubic(b, c, d, e, roots);
        return;
    }
    if (isZero(e))
    {
        solveCubic(a, b, c, d, roots);
        addZeroRoot(roots);
        return;
    }
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double E = e / a;
    // Never empty: with a leading coefficient of 1, and whatever the others are, the cubic solver finds a root.
    Found resolvent;
    solveCubic(1, -C, B * D - 4 * E, (4 * C - B * B) * E - D * D, resolvent);
    const double y = resolvent.largest();
    const double h = y / 2;
    double k = h * h - E;
    if (!clampSquare(k))
    {
        return;
    }
    const double q = squareRoot(k);
    const double g = B / 2;
    double p = 0;
    if (q < zeroTolerance)
    {
        double square = g * g - C + y;
        if (!clampSquare(square))
        {
            return;
        }
        p = squareRoot(square);
    }
    else
    {
        p = (g * h - D / 2) / q;
    }
    solveQuadratic(1, g + p, h + q, roots);
    Found second;
    solveQuadratic(1, g - p, h - q, second);
    const int first = roots.count();
    for (int i = 0; i < second.count(); ++i)
    {
        if (!roots.containsCloseTo(first, second[i]))
        {
            roots.add(second[i]);
        }
    }
}
} // namespace

int qelMathUtilities::QuadraticSolver(double a, double b, double c, Roots& roots)
{
    Found found;
    solveQuadratic(a, b, c, found);
    return found.writeTo(roots);
}

int qelMathUtilities::CubicSolver(double a, double b, double c, double d, Roots& roots)
{
    Found found;
    solveCubic(a, b, c, d, found);
    return found.writeTo(roots);
}

int qelMathUtilities::QuarticSolver(double a, double b, double c, double d, double e, Roots& roots)
{
    Found found;
    solveQuartic(a, b, c, d, e, found);
    return found.writeTo(roots);
}
