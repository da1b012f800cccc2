// Measures how accurate the cubic and the quartic solver are, in 113-bit arithmetic, and prints the tables of
// docs/numerics.md. The same seed gives the same polynomials on every run.
#include "qelMathUtilities.h"

#include <quadmath.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{
typedef __float128 Quad;
typedef std::vector<Quad> Quads;
typedef std::vector<double> Doubles;

const Quad tolerance = 1e-9;

// The steps of the solvers without their rounding ---------------------------------------------------------------------

bool isZero(Quad value)
{
    return fabsq(value) < tolerance;
}

Quads exactQuadratic(Quad a, Quad b, Quad c)
{
    if (isZero(a))
    {
        return b == 0 ? Quads() : Quads{-(c / b)};
    }
    const Quad discriminant = b * b - 4 * a * b; // as the library computes it
    if (isZero(discriminant))
    {
        return {-b / (2 * a)};
    }
    if (!(discriminant > 0))
    {
        return {};
    }
    const Quad r = sqrtq(discriminant);
    return {(-b - r) / (2 * a), (r - b) / (2 * a)};
}

Quads withZero(const Quads& found)
{
    Quads roots;
    if (std::none_of(found.begin(), found.end(), isZero))
    {
        roots.push_back(0);
    }
    roots.insert(roots.end(), found.begin(), found.end());
    return roots;
}

Quads exactCubic(Quad a, Quad b, Quad c, Quad d)
{
    if (isZero(a))
    {
        return exactQuadratic(b, c, d);
    }
    if (isZero(d))
    {
        return withZero(exactQuadratic(a, b, c));
    }
    const Quad B = b / a;
    const Quad C = c / a;
    const Quad D = d / a;
    const Quad Q = (3 * C - B * B) / 9;
    const Quad R = (9 * B * C - 27 * D - 2 * B * B * B) / 54;
    const Quad S = R * R + Q * Q * Q;
    const Quad t = B / 3;
    if (isZero(S))
    {
        if (isZero(R))
        {
            return {-t};
        }
        const Quad s = R < 0 ? nanq("") : cbrtq(R);
        return {2 * s - t, -t - s};
    }
    if (S <= 0)
    {
        const Quad theta = acosq(R / sqrtq(-Q * Q * Q));
        const Quad m = 2 * sqrtq(-Q);
        const Quad turn = 2 * acosq(-1);
        return {m * cosq(theta / 3) - t, m * cosq((theta + turn) / 3) - t, m * cosq((theta + 2 * turn) / 3) - t};
    }
    return {cbrtq(R + sqrtq(S)) + cbrtq(R - sqrtq(S)) - t};
}

Quads exactQuartic(const Doubles& x)
{
    const Quad a = x[0];
    const Quad B = x[1] / a;
    const Quad C = x[2] / a;
    const Quad D = x[3] / a;
    const Quad E = x[4] / a;
    const Quads resolvent = exactCubic(1, -C, B * D - 4 * E, (4 * C - B * B) * E - D * D);
    const Quad y = *std::max_element(resolvent.begin(), resolvent.end());
    const Quad h = y / 2;
    const Quad k = h * h - E;
    const Quad g = B / 2;
    const Quad q = k < 0 && k > -tolerance ? 0 : sqrtq(k);
    const Quad square = g * g - C + y;
    const Quad p = q < tolerance ? (square < 0 && square > -tolerance ? 0 : sqrtq(square)) : (g * h - D / 2) / q;
    if (!(q >= 0) || isnanq(p))
    {
        return {};
    }
    Quads roots = exactQuadratic(1, g + p, h + q);
    const size_t first = roots.size();
    for (const Quad root : exactQuadratic(1, g - p, h - q))
    {
        if (std::none_of(roots.begin(), roots.begin() + static_cast<ptrdiff_t>(first),
                         [root](Quad other) { return isZero(root - other); }))
        {
            roots.push_back(root);
        }
    }
    return roots;
}

// Polynomials ---------------------------------------------------------------------------------------------------------

/// A polynomial whose real roots are known.
struct Polynomial
{
    Doubles coefficients; ///< from the highest power down
    Quads realRoots;      ///< of just these coefficients
};

class Maker
{
public:
    /// All roots lie within `range` of zero, real ones at least `range / 1000` apart.
    Polynomial make(int realRoots, int complexPairs, double range)
    {
        Doubles known;
        while (static_cast<int>(known.size()) < realRoots)
        {
            const double root = between(-range, range);
            if (std::none_of(known.begin(), known.end(),
                             [=](double other) { return std::max(root - other, other - root) < range / 1000; }))
            {
                known.push_back(root);
            }
        }
        Quads product{between(0.1, 10)};
        for (const double root : known)
        {
            multiply(product, {1, -root});
        }
        for (int i = 0; i < complexPairs; ++i)
        {
            const Quad re = between(-0.7 * range, 0.7 * range);
            const Quad im = between(0.1 * range, 0.7 * range);
            multiply(product, {1, -2 * re, re * re + im * im});
        }
        Polynomial result;
        for (const Quad coefficient : product)
        {
            result.coefficients.push_back(static_cast<double>(coefficient));
        }
        for (const double root : known)
        {
            result.realRoots.push_back(refined(result.coefficients, root));
        }
        return result;
    }

private:
    double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(m_engine); }

    static void multiply(Quads& polynomial, const Quads& factor)
    {
        Quads product(polynomial.size() + factor.size() - 1, 0);
        for (size_t i = 0; i < polynomial.size(); ++i)
        {
            for (size_t k = 0; k < factor.size(); ++k)
            {
                product[i + k] += polynomial[i] * factor[k];
            }
        }
        polynomial = product;
    }

    /// Rounding the coefficients has moved the root a little: Newton's method finds where to.
    static Quad refined(const Doubles& coefficients, Quad root)
    {
        for (int step = 0; step < 8; ++step)
        {
            Quad value = 0;
            Quad slope = 0;
            for (const double coefficient : coefficients)
            {
                slope = slope * root + value;
                value = value * root + coefficient;
            }
            root -= value / slope;
        }
        return root;
    }

    std::mt19937_64 m_engine{20260401};
};

// Measuring -----------------------------------------------------------------------------------------------------------

Doubles solve(const Polynomial& polynomial)
{
    const Doubles& x = polynomial.coefficients;
    static qelMathUtilities::Roots roots;
    const int count = x.size() == 4 ? qelMathUtilities::CubicSolver(x[0], x[1], x[2], x[3], roots)
                                    : qelMathUtilities::QuarticSolver(x[0], x[1], x[2], x[3], x[4], roots);
    Doubles result;
    for (long i = 0; i < count; ++i)
    {
        result.push_back(roots[i]);
    }
    return result;
}

/// Errors as parts of the range, and how many sets of roots could be compared at all.
class Errors
{
public:
    explicit Errors(double range)
        : m_range(range)
    {
    }

    /// Compares two sets of roots. Different counts and values that are no numbers are only counted.
    void compare(Doubles actual, Quads expected)
    {
        ++m_sets;
        if (actual.size() != expected.size() ||
            std::any_of(actual.begin(), actual.end(), [](double x) { return x != x; }))
        {
            return;
        }
        ++m_compared;
        std::sort(actual.begin(), actual.end());
        std::sort(expected.begin(), expected.end());
        for (size_t i = 0; i < actual.size(); ++i)
        {
            m_errors.push_back(static_cast<double>(fabsq(actual[i] - expected[i]) / m_range));
        }
    }

    double comparedPercent() const { return 100.0 * m_compared / m_sets; }

    /// The error that the given share of the roots does not exceed.
    double quantile(double share)
    {
        if (m_errors.empty())
        {
            return 0;
        }
        std::sort(m_errors.begin(), m_errors.end());
        return m_errors[static_cast<size_t>(share * static_cast<double>(m_errors.size() - 1))];
    }

    bool empty() const { return m_errors.empty(); }

private:
    double m_range;
    int m_sets = 0;
    int m_compared = 0;
    Doubles m_errors;
};

void printErrors(Errors& errors)
{
    if (errors.empty())
    {
        printf(" %.2f%% | - | - | - |", errors.comparedPercent());
        return;
    }
    printf(" %.2f%% | %.1e | %.1e | %.1e |", errors.comparedPercent(), errors.quantile(0.5), errors.quantile(0.99),
           errors.quantile(1.0));
}

const double ranges[] = {0.01, 0.1, 1, 10, 100, 1000, 10000};

void measureCubic(Maker& maker, int sets, int realRoots)
{
    for (const double range : ranges)
    {
        Errors errors(range);
        for (int i = 0; i < sets; ++i)
        {
            const Polynomial polynomial = maker.make(realRoots, (3 - realRoots) / 2, range);
            errors.compare(solve(polynomial), polynomial.realRoots);
        }
        printf("| %d | %g |", realRoots, range);
        printErrors(errors);
        printf("\n");
    }
}

void measureQuartic(Maker& maker, int sets, int realRoots)
{
    for (const double range : ranges)
    {
        Errors errors(range);
        int written = 0;
        int genuine = 0;
        for (int i = 0; i < sets; ++i)
        {
            const Polynomial polynomial = maker.make(realRoots, (4 - realRoots) / 2, range);
            const Doubles values = solve(polynomial);
            errors.compare(values, exactQuartic(polynomial.coefficients));
            written += static_cast<int>(values.size());
            genuine += static_cast<int>(std::count_if(values.begin(), values.end(), [&](double value) {
                return std::any_of(polynomial.realRoots.begin(), polynomial.realRoots.end(),
                                   [&](Quad root) { return fabsq(root - value) < 1e-6 * range; });
            }));
        }
        printf("| %d | %g | %.2f | %.3f%% |", realRoots, range, 1.0 * written / sets,
               written > 0 ? 100.0 * genuine / written : 0.0);
        printErrors(errors);
        printf("\n");
    }
}
} // namespace

int main(int argc, char** argv)
{
    const int sets = argc > 1 ? atoi(argv[1]) : 20000;
    if (sets <= 0)
    {
        fprintf(stderr, "usage: qelSolverAccuracy [POLYNOMIALS A LINE]\n");
        return 2;
    }
    Maker maker;
    printf("%d polynomials a line.\n\n", sets);
    printf("Cubic, against the real roots of the polynomial\n\n");
    printf("| real roots | range | right count | error, median | 99%% | largest |\n|---|---|---|---|---|---|\n");
    measureCubic(maker, sets, 3);
    measureCubic(maker, sets, 1);
    printf("\nQuartic, against its own steps without rounding\n\n");
    printf("| real roots | range | values written | of them roots | same count | error, median | 99%% | largest |\n"
           "|---|---|---|---|---|---|---|---|\n");
    measureQuartic(maker, sets, 4);
    measureQuartic(maker, sets, 2);
    measureQuartic(maker, sets, 0);
    return 0;
}
