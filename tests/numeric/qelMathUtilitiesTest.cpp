#include "qelMathUtilities.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <emmintrin.h>
#include <float.h>
#include <math.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

using qelMathUtilities::Roots;

namespace
{
const double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

// ---------------------------------------------------------------------------------------------------------------------
// The oracle: the steps of the three methods, written down one after the other, with a list that nothing else knows.

using List = std::vector<double>;

/// How often each outcome of the methods was met, to show that a sweep reached all of them.
using Outcomes = std::map<std::string, long>;

/// Rounded once, to the nearest double, at every optimisation level; `sqrt` of MinGW is not.
double root2(double x)
{
    return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x)));
}

double signedThirdPower(double x)
{
    return x < 0 ? -pow(-x, 1.0 / 3.0) : pow(x, 1.0 / 3.0);
}

List withZeroInFront(const List& found)
{
    List result;
    if (std::none_of(found.begin(), found.end(), [](double x) { return x < 1e-9 && x > -1e-9; }))
    {
        result.push_back(0.0);
    }
    for (const double root : found)
    {
        result.push_back(root);
    }
    return result;
}

List expectedQuadratic(double a, double b, double c, Outcomes& outcomes)
{
    if (a < 1e-9 && a > -1e-9)
    {
        ++outcomes[b == 0.0 ? "quadratic: nothing left" : "quadratic: linear"];
        return b == 0.0 ? List() : List{-(c / b)};
    }
    const double square = b * b;
    const double product = 4 * a * b;
    const double discriminant = square - product;
    if (discriminant < 1e-9 && discriminant > -1e-9)
    {
        ++outcomes["quadratic: one root"];
        return {-0.5 * b / a};
    }
    if (discriminant > 0)
    {
        ++outcomes["quadratic: two roots"];
        const double root = root2(discriminant);
        return {(-b - root) * 0.5 / a, (root - b) * 0.5 / a};
    }
    ++outcomes["quadratic: no root"];
    return {};
}

List expectedCubic(double a, double b, double c, double d, Outcomes& outcomes)
{
    if (a < 1e-9 && a > -1e-9)
    {
        ++outcomes["cubic: lower degree"];
        return expectedQuadratic(b, c, d, outcomes);
    }
    if (d < 1e-9 && d > -1e-9)
    {
        const List rest = expectedQuadratic(a, b, c, outcomes);
        const List all = withZeroInFront(rest);
        ++outcomes[all.size() > rest.size() ? "cubic: zero added" : "cubic: zero there already"];
        return all;
    }
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double Q = (3 * C - B * B) / 9;
    const double R = (9 * B * C - 27 * D - 2 * B * B * B) / 54;
    const double S = R * R + Q * Q * Q;
    const double t = B / 3;
    if (S < 1e-9 && S > -1e-9)
    {
        if (R >= 1e-9 || R <= -1e-9)
        {
            ++outcomes[R > 0 ? "cubic: double root" : "cubic: double root, not-a-number"];
            const double s = R < 0 ? notANumber : pow(R, 1.0 / 3.0);
            return {2 * s - t, -B / 3 - s};
        }
        ++outcomes["cubic: triple root"];
        return {-B / 3};
    }
    if (S <= 0)
    {
        ++outcomes["cubic: three roots"];
        const double pi = acos(-1.0);
        const double theta = acos(R / root2(-(Q * Q * Q)));
        const double m = 2 * root2(-Q);
        return {m * cos(theta / 3) - t, m * cos((theta + 2 * pi) / 3) - t, m * cos((theta + 4 * pi) / 3) - t};
    }
    ++outcomes["cubic: one root"];
    const double u = signedThirdPower(R + root2(S));
    const double v = signedThirdPower(R - root2(S));
    return {u - t + v};
}

List expectedQuartic(double a, double b, double c, double d, double e, Outcomes& outcomes)
{
    if (a < 1e-9 && a > -1e-9)
    {
        ++outcomes["quartic: lower degree"];
        return expectedCubic(b, c, d, e, outcomes);
    }
    if (e < 1e-9 && e > -1e-9)
    {
        const List rest = expectedCubic(a, b, c, d, outcomes);
        const List all = withZeroInFront(rest);
        ++outcomes[all.size() > rest.size() ? "quartic: zero added" : "quartic: zero there already"];
        return all;
    }
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double E = e / a;
    const List resolvent = expectedCubic(1, -C, B * D - 4 * E, (4 * C - B * B) * E - D * D, outcomes);
    if (resolvent.empty())
    {
        ADD_FAILURE() << "a cubic without a root";
        return {};
    }
    const double y = *std::max_element(resolvent.begin(), resolvent.end());
    const double h = y / 2;
    double k = h * h - E;
    if (-1e-9 < k && k < 0)
    {
        ++outcomes["quartic: k raised to zero"];
        k = 0;
    }
    else if (k < 0)
    {
        ++outcomes["quartic: k negative"];
        return {};
    }
    const double q = root2(k);
    const double g = B / 2;
    double p = (g * h - D / 2) / q;
    if (q < 1e-9)
    {
        double square = g * g - C + y;
        if (square < 0)
        {
            ++outcomes[square > -1e-9 ? "quartic: p raised to zero" : "quartic: p negative"];
            if (!(square > -1e-9))
            {
                return {};
            }
            square = 0;
        }
        ++outcomes["quartic: p by its square"];
        p = root2(square);
    }
    List roots = expectedQuadratic(1, g + p, h + q, outcomes);
    const List first = roots;
    for (const double x : expectedQuadratic(1, g - p, h - q, outcomes))
    {
        const bool seen = std::any_of(first.begin(), first.end(), [x](double other) { return fabs(x - other) < 1e-9; });
        ++outcomes[seen ? "quartic: root dropped" : "quartic: root of the second quadratic"];
        if (!seen)
        {
            roots.push_back(x);
        }
    }
    return roots;
}

// ---------------------------------------------------------------------------------------------------------------------

/// The same bits, signed zeros included; one not-a-number is as good as another.
bool same(double x, double y)
{
    return (x != x && y != y) || std::memcmp(&x, &y, sizeof x) == 0;
}

testing::AssertionResult equal(const Roots& actual, int count, const List& expected, const List& coefficients)
{
    bool matches = count == actual.length() && count == static_cast<int>(expected.size());
    for (int i = 0; matches && i < count; ++i)
    {
        matches = same(actual[i], expected[static_cast<size_t>(i)]);
    }
    if (matches)
    {
        return testing::AssertionSuccess();
    }
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << std::hexfloat << "coefficients";
    for (const double x : coefficients)
    {
        failure << ' ' << x;
    }
    failure << "; expected";
    for (const double x : expected)
    {
        failure << ' ' << x;
    }
    failure << "; returned " << count << " with";
    for (long i = 0; i < actual.length(); ++i)
    {
        failure << ' ' << actual[i];
    }
    return failure;
}

/// Solves and compares with the oracle. The number of coefficients tells the degree.
testing::AssertionResult solvesAsExpected(const List& x, Roots& roots, Outcomes& outcomes)
{
    if (x.size() == 3)
    {
        const int count = qelMathUtilities::QuadraticSolver(x[0], x[1], x[2], roots);
        return equal(roots, count, expectedQuadratic(x[0], x[1], x[2], outcomes), x);
    }
    if (x.size() == 4)
    {
        const int count = qelMathUtilities::CubicSolver(x[0], x[1], x[2], x[3], roots);
        return equal(roots, count, expectedCubic(x[0], x[1], x[2], x[3], outcomes), x);
    }
    const int count = qelMathUtilities::QuarticSolver(x[0], x[1], x[2], x[3], x[4], roots);
    return equal(roots, count, expectedQuartic(x[0], x[1], x[2], x[3], x[4], outcomes), x);
}

/// Runs `makeCoefficients(degree)` through all three solvers.
template <class Make> void sweep(long sets, Outcomes& outcomes, Make makeCoefficients)
{
    Roots roots;
    for (long i = 0; i < sets; ++i)
    {
        for (size_t degree = 2; degree <= 4; ++degree)
        {
            ASSERT_TRUE(solvesAsExpected(makeCoefficients(degree), roots, outcomes)) << "set " << i;
        }
    }
}

class Random
{
public:
    explicit Random(unsigned seed)
        : m_engine(seed)
    {
    }

    double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(m_engine); }
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    template <class T> T oneOf(const std::vector<T>& values) { return values[m_engine() % values.size()]; }

private:
    std::mt19937_64 m_engine;
};

/// Coefficients of the polynomial with these roots, from the highest power down.
List product(const List& roots, double leading)
{
    List coefficients{leading};
    for (const double root : roots)
    {
        coefficients.push_back(0.0);
        for (size_t i = coefficients.size() - 1; i > 0; --i)
        {
            coefficients[i] -= root * coefficients[i - 1];
        }
    }
    return coefficients;
}

double steps(double value, int count)
{
    for (; count > 0; --count)
    {
        value = nextafter(value, infinity);
    }
    for (; count < 0; ++count)
    {
        value = nextafter(value, -infinity);
    }
    return value;
}

List solveQuadratic(double a, double b, double c)
{
    Roots roots;
    const int count = qelMathUtilities::QuadraticSolver(a, b, c, roots);
    EXPECT_EQ(roots.length(), count);
    return count > 0 ? List(&roots[0], &roots[0] + count) : List();
}

List solveCubic(double a, double b, double c, double d)
{
    Roots roots;
    const int count = qelMathUtilities::CubicSolver(a, b, c, d, roots);
    EXPECT_EQ(roots.length(), count);
    return count > 0 ? List(&roots[0], &roots[0] + count) : List();
}

List solveQuartic(double a, double b, double c, double d, double e)
{
    Roots roots;
    const int count = qelMathUtilities::QuarticSolver(a, b, c, d, e, roots);
    EXPECT_EQ(roots.length(), count);
    return count > 0 ? List(&roots[0], &roots[0] + count) : List();
}

void expectNear(const List& actual, const List& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i)
    {
        EXPECT_NEAR(actual[i], expected[i], 1e-7) << "root " << i;
    }
}

long allocations = 0;
long releases = 0;

void* countingMalloc(size_t size)
{
    ++allocations;
    return malloc(size);
}

void countingFree(void* block)
{
    releases += block != nullptr ? 1 : 0;
    free(block);
}
} // namespace

TEST(qelMathUtilitiesPi, IsTheDoubleNearestToTheCircleConstant)
{
    EXPECT_EQ(qelMathUtilities::PI, 3.141592653589793);
}

// Degree two ----------------------------------------------------------------------------------------------------------

TEST(qelMathUtilitiesQuadratic, HasNoRootWhenOnlyTheConstantIsLeft)
{
    EXPECT_EQ(solveQuadratic(0, 0, 5), List());
    EXPECT_EQ(solveQuadratic(0, -0.0, 5), List());
    EXPECT_EQ(solveQuadratic(0, 0, 0), List());
}

TEST(qelMathUtilitiesQuadratic, SolvesTheLinearRest)
{
    EXPECT_EQ(solveQuadratic(0, 2, 4), List{-2});
    EXPECT_EQ(solveQuadratic(9.9e-10, 2, 4), List{-2});
    EXPECT_EQ(solveQuadratic(-9.9e-10, 2, -4), List{2});
}

TEST(qelMathUtilitiesQuadratic, TakesTheLinearFactorForZeroOnlyWhenItIsExactlyZero)
{
    EXPECT_EQ(solveQuadratic(0, 1e-300, 2e-300), List{-2});
    EXPECT_EQ(solveQuadratic(0, 1e-300, 1e10), List{-infinity});
}

TEST(qelMathUtilitiesQuadratic, WritesTheNegativeZeroThatNegationGives)
{
    const List roots = solveQuadratic(0, 2, 0);
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_TRUE(same(roots[0], -0.0));
}

TEST(qelMathUtilitiesQuadratic, DiscriminantUsesTheSecondCoefficientInPlaceOfTheThird)
{
    // 4 - 4 * 1 * -2 = 12.
    expectNear(solveQuadratic(1, -2, 1), {1 - sqrt(3.0), 1 + sqrt(3.0)});
    // 0 - 4 * 1 * 0 = 0.
    EXPECT_EQ(solveQuadratic(1, 0, -4), List{0});
    // 9 - 4 * 1 * 3 = -3, although x*x + 3*x + 2 has two roots.
    EXPECT_EQ(solveQuadratic(1, 3, 2), List());
}

TEST(qelMathUtilitiesQuadratic, ThirdCoefficientTakesNoPart)
{
    const List roots = solveQuadratic(2, -7, 1);
    ASSERT_EQ(roots.size(), 2u);
    for (const double c : {0.0, -1e300, 1e-300, infinity, notANumber})
    {
        EXPECT_EQ(solveQuadratic(2, -7, c), roots) << c;
    }
}

TEST(qelMathUtilitiesQuadratic, WritesTheRootWithTheMinusSignFirst)
{
    // 25 - 4 * 1 * 5 = 5 and 25 - 4 * -1 * 5 = 45.
    expectNear(solveQuadratic(1, 5, 0), {(-5 - sqrt(5.0)) / 2, (-5 + sqrt(5.0)) / 2});
    expectNear(solveQuadratic(-1, 5, 0), {(5 + sqrt(45.0)) / 2, (5 - sqrt(45.0)) / 2});
}

TEST(qelMathUtilitiesQuadratic, ToleranceItselfIsNotZero)
{
    // At the tolerance the polynomial is quadratic: b*b - 4*a*b = 1 - 4e-9.
    EXPECT_EQ(solveQuadratic(1e-9, 1, 5).size(), 2u);
    EXPECT_EQ(solveQuadratic(-1e-9, 1, 5).size(), 2u);
    EXPECT_EQ(solveQuadratic(steps(1e-9, -1), 1, 5), List{-5});
    EXPECT_EQ(solveQuadratic(steps(-1e-9, 1), 1, 5), List{-5});
}

TEST(qelMathUtilitiesQuadratic, DiscriminantWithinTheToleranceGivesOneRoot)
{
    EXPECT_EQ(solveQuadratic(1, 4, 0), List{-2});
    EXPECT_EQ(solveQuadratic(1, 4 + 2e-10, 0).size(), 1u);
    EXPECT_EQ(solveQuadratic(1, 4 - 2e-10, 0).size(), 1u);
    EXPECT_EQ(solveQuadratic(1, 4 + 3e-10, 0).size(), 2u);
    EXPECT_EQ(solveQuadratic(1, 4 - 3e-10, 0).size(), 0u);
}

TEST(qelMathUtilitiesQuadratic, FollowsTheComparisonsForValuesThatAreNoNumbers)
{
    // Neither near zero nor positive.
    EXPECT_EQ(solveQuadratic(notANumber, 1, 1), List());
    EXPECT_EQ(solveQuadratic(1, notANumber, 1), List());
    // A linear rest is divided all the same.
    ASSERT_EQ(solveQuadratic(0, notANumber, 1).size(), 1u);
    EXPECT_TRUE(isnan(solveQuadratic(0, notANumber, 1)[0]));
    ASSERT_EQ(solveQuadratic(0, 1, notANumber).size(), 1u);
    EXPECT_TRUE(isnan(solveQuadratic(0, 1, notANumber)[0]));
}

TEST(qelMathUtilitiesQuadratic, WritesWhatInfiniteCoefficientsGive)
{
    EXPECT_EQ(solveQuadratic(1, infinity, 1), List()) << "the discriminant is not-a-number";
    const List roots = solveQuadratic(1, -infinity, 1);
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_TRUE(isnan(roots[0]));
    EXPECT_EQ(roots[1], infinity);
    EXPECT_EQ(solveQuadratic(0, 2, infinity), List{-infinity});
}

// Degree three --------------------------------------------------------------------------------------------------------

TEST(qelMathUtilitiesCubic, PassesLowerDegreesOn)
{
    EXPECT_EQ(solveCubic(0, 0, 2, 4), List{-2});
    EXPECT_EQ(solveCubic(9.9e-10, 1, 4, 9), List{-2});
    EXPECT_EQ(solveCubic(0, 0, 0, 5), List());
}

TEST(qelMathUtilitiesCubic, PutsTheRootZeroInFront)
{
    // What is left is x*x - 6*x - 6 by the discriminant's rule: 36 + 24 = 60.
    const List roots = solveCubic(1, -6, 11, 0);
    expectNear(roots, {0, 3 - sqrt(15.0), 3 + sqrt(15.0)});
    EXPECT_TRUE(same(roots[0], 0.0));
    EXPECT_EQ(solveCubic(1, -6, 11, 9.9e-10).size(), 3u);
}

TEST(qelMathUtilitiesCubic, GivesTheRootZeroAloneWhenTheQuadraticHasNone)
{
    // 1 - 4 * 1 * 1 = -3.
    EXPECT_EQ(solveCubic(1, 1, 7, 0), List{0});
}

TEST(qelMathUtilitiesCubic, DoesNotRepeatARootThatCountsAsZero)
{
    EXPECT_EQ(solveCubic(1, 0, -1, 0), List{0});
    // The quadratic gives 1.5e-10 or so alone: the discriminant is near zero.
    const List roots = solveCubic(1, -2e-10, 7, 0);
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_EQ(roots[0], 1e-10);
}

TEST(qelMathUtilitiesCubic, AddsZeroBesideARootAtTheTolerance)
{
    // The quadratic's only root is -b/2: at the tolerance it is not zero any more.
    EXPECT_EQ(solveCubic(1, -2e-9, 7, 0).size(), 3u) << "two roots, further from zero than the tolerance";
    EXPECT_EQ(solveCubic(0.1, -2e-10, 7, 0), (List{0, -0.5 * -2e-10 / 0.1}));
}

TEST(qelMathUtilitiesCubic, WritesThreeRootsInTheOrderOfTheAngles)
{
    expectNear(solveCubic(1, -6, 11, -6), {3, 1, 2});
    expectNear(solveCubic(-2, 12, -22, 12), {3, 1, 2});
    expectNear(solveCubic(1, 0, -7, 6), {2, -3, 1});
}

TEST(qelMathUtilitiesCubic, WritesOneRootByCardanosFormula)
{
    // (x - 2) * (x*x + x + 1) and (x + 2) * (x*x - x + 1).
    expectNear(solveCubic(1, -1, -1, -2), {2});
    expectNear(solveCubic(1, 1, -1, 2), {-2});
    expectNear(solveCubic(1, 0, 0, -27), {3});
    expectNear(solveCubic(1, 0, 0, 27), {-3});
}

TEST(qelMathUtilitiesCubic, WritesARepeatedRootOnceAndLast)
{
    // (x - 1)^2 * (x - 2).
    expectNear(solveCubic(1, -4, 5, -2), {2, 1});
}

TEST(qelMathUtilitiesCubic, ANegativeRWithARepeatedRootGivesTwoRootsThatAreNoNumbers)
{
    // (x + 1)^2 * (x + 2), the mirror image of the one above.
    const List roots = solveCubic(1, 4, 5, 2);
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_TRUE(isnan(roots[0]));
    EXPECT_TRUE(isnan(roots[1]));
}

TEST(qelMathUtilitiesCubic, WritesATripleRootOnce)
{
    EXPECT_EQ(solveCubic(1, -3, 3, -1), List{1});
    EXPECT_EQ(solveCubic(1, 6, 12, 8), List{-2});
}

TEST(qelMathUtilitiesCubic, TellsDoubleAndTripleRootsApartByTheTolerance)
{
    // With b = c = 0: R = -d / 2 and S = R * R.
    EXPECT_EQ(solveCubic(1, 0, 0, -2e-9).size(), 2u);
    EXPECT_EQ(solveCubic(1, 0, 0, steps(-2e-9, 1)).size(), 1u);
    EXPECT_EQ(solveCubic(1, 0, 0, -6.4e-5).size(), 1u) << "beyond the tolerance: one root by Cardano's formula";
    EXPECT_EQ(solveCubic(1, 0, 0, -6.3e-5).size(), 2u);
}

TEST(qelMathUtilitiesCubic, FollowsTheComparisonsForValuesThatAreNoNumbers)
{
    for (const List& x : {List{notANumber, 1, 1, 1}, List{1, notANumber, 1, 1}, List{1, 1, notANumber, 1},
                          List{1, 1, 1, notANumber}, List{1, infinity, 1, 1}, List{infinity, infinity, 1, 1}})
    {
        const List roots = solveCubic(x[0], x[1], x[2], x[3]);
        ASSERT_EQ(roots.size(), 1u);
        EXPECT_TRUE(isnan(roots[0]));
    }
    // With no constant the quadratic has no root, so zero stands alone.
    EXPECT_EQ(solveCubic(1, notANumber, 1, 0), List{0});
    EXPECT_EQ(solveCubic(notANumber, 1, 1, 0), List{0});
}

// Degree four ---------------------------------------------------------------------------------------------------------

TEST(qelMathUtilitiesQuartic, PassesLowerDegreesOn)
{
    expectNear(solveQuartic(0, 1, -6, 11, -6), {3, 1, 2});
    EXPECT_EQ(solveQuartic(9.9e-10, 0, 0, 2, 4), List{-2});
    EXPECT_EQ(solveQuartic(0, 0, 0, 0, 5), List());
}

TEST(qelMathUtilitiesQuartic, PutsTheRootZeroInFront)
{
    const List roots = solveQuartic(1, -6, 11, -6, 0);
    expectNear(roots, {0, 3, 1, 2});
    EXPECT_TRUE(same(roots[0], 0.0));
}

TEST(qelMathUtilitiesQuartic, DoesNotRepeatTheZeroThatTheCubicAlreadyHas)
{
    expectNear(solveQuartic(1, -6, 11, 0, 0), {0, 3 - sqrt(15.0), 3 + sqrt(15.0)});
    EXPECT_EQ(solveQuartic(1, 0, 0, 0, 0), List{0});
}

TEST(qelMathUtilitiesQuartic, SolvesItsTwoQuadraticsByTheirOwnRule)
{
    // (x - 1)(x - 2)(x - 3)(x - 4): x*x - 7*x + 12 with 49 + 28, and x*x - 3*x + 2 with 9 + 12.
    expectNear(solveQuartic(1, -10, 35, -50, 24),
               {(7 - sqrt(77.0)) / 2, (7 + sqrt(77.0)) / 2, (3 - sqrt(21.0)) / 2, (3 + sqrt(21.0)) / 2});
}

TEST(qelMathUtilitiesQuartic, HasNoRootWhenTheSquareRootsDoNotExist)
{
    // x^4 + 1: the resolvent's root counts as 0, so k = -1.
    EXPECT_EQ(solveQuartic(1, 0, 0, 0, 1), List());
    // The resolvent's roots count as one, a third of the true one: k = 0 and p * p = -0.04.
    EXPECT_EQ(solveQuartic(1, 0, 0.06, 0, 1e-4), List());
}

TEST(qelMathUtilitiesQuartic, RaisesASlightlyNegativeSquareToZero)
{
    // k = -5e-10, so q = 0 and p = 0: both quadratics are x*x = 0 and the second root is dropped.
    const List roots = solveQuartic(10, 0, 0, 0, 5e-9);
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_TRUE(same(roots[0], -0.0));
    EXPECT_EQ(solveQuartic(10, 0, 0, 0, 1.1e-8), List()) << "-1.1e-9 is truly negative";
}

TEST(qelMathUtilitiesQuartic, DropsRootsOfTheSecondQuadraticThatTheFirstHas)
{
    // h = 0, q = 2, p = 0, so both quadratics have the factor g = -3: 9 + 12 = 21.
    Outcomes outcomes;
    Roots roots;
    ASSERT_TRUE(solvesAsExpected({1, -6, 9, 0, -4}, roots, outcomes));
    for (long i = 0; i < roots.length(); ++i)
    {
        for (long k = i + 1; k < roots.length(); ++k)
        {
            EXPECT_GE(fabs(roots[i] - roots[k]), 1e-9);
        }
    }
    // x^4 - 4: y = 0, q = 2, p = 0; both quadratics give the one root 0.
    EXPECT_EQ(solveQuartic(1, 0, 0, 0, -4), List{0});
}

TEST(qelMathUtilitiesQuartic, FollowsTheComparisonsForValuesThatAreNoNumbers)
{
    for (size_t i = 0; i < 5; ++i)
    {
        List x{1, -10, 35, -50, 24};
        x[i] = notANumber;
        EXPECT_EQ(solveQuartic(x[0], x[1], x[2], x[3], x[4]), List()) << "coefficient " << i;
    }
    EXPECT_EQ(solveQuartic(1, notANumber, 1, 1, 0).size(), 2u) << "zero in front of one that is no number";
}

// What docs/numerics.md shows -----------------------------------------------------------------------------------------

TEST(qelMathUtilitiesWellKnown, QuadraticsGiveTheDocumentedValues)
{
    expectNear(solveQuadratic(1, -3, 2), {(3 - sqrt(21.0)) / 2, (3 + sqrt(21.0)) / 2});
    expectNear(solveQuadratic(1, 5, 6), {(-5 - sqrt(5.0)) / 2, (-5 + sqrt(5.0)) / 2});
    expectNear(solveQuadratic(1, 1, -6), {});
    expectNear(solveQuadratic(1, 4, 4), {-2});
    expectNear(solveQuadratic(1, -5, -5), {(5 - sqrt(45.0)) / 2, (5 + sqrt(45.0)) / 2});
}

TEST(qelMathUtilitiesWellKnown, CubicsGiveTheDocumentedValues)
{
    expectNear(solveCubic(1, -3, 2, 0), {0, (3 - sqrt(21.0)) / 2, (3 + sqrt(21.0)) / 2});
    expectNear(solveCubic(1, 0, -4, 0), {0});
    // Small roots: the tolerance takes them for repeated ones.
    expectNear(solveCubic(1, 0, 0, -1e-6), {2 * pow(5e-7, 1.0 / 3.0), -pow(5e-7, 1.0 / 3.0)});
    expectNear(solveCubic(1, -6e-2, 11e-4, -6e-6), {0.02});
}

TEST(qelMathUtilitiesWellKnown, QuarticsGiveTheDocumentedValues)
{
    expectNear(solveQuartic(1, 0, -5, 0, 4), {(3 - sqrt(21.0)) / 2, (3 + sqrt(21.0)) / 2});
    expectNear(solveQuartic(1, 0, -13, 0, 36),
               {(-5 - sqrt(5.0)) / 2, (-5 + sqrt(5.0)) / 2, (5 - sqrt(45.0)) / 2, (5 + sqrt(45.0)) / 2});
    expectNear(solveQuartic(1, 0, 0, 0, -16), {0});
    expectNear(solveQuartic(1, -4, 6, -4, 1), {1 - sqrt(3.0), 1 + sqrt(3.0)});
    expectNear(solveQuartic(1, 0, -2, 0, 1), {1 - sqrt(3.0), 1 + sqrt(3.0)});
}

// All degrees against the oracle --------------------------------------------------------------------------------------

TEST(qelMathUtilitiesSweep, GivesTheOraclesBitsForCoefficientsOfAllKinds)
{
    const long sets = 40000;
    Outcomes outcomes;
    Random random(20260101);

    SCOPED_TRACE("seed 20260101");
    sweep(sets, outcomes, [&](size_t degree) {
        List x(degree + 1);
        std::generate(x.begin(), x.end(), [&] { return random.between(-10, 10); });
        return x;
    });
    sweep(sets, outcomes, [&](size_t degree) {
        List x(degree + 1);
        std::generate(x.begin(), x.end(),
                      [&] { return random.oneOf<double>({-1, 1}) * pow(10.0, random.between(-12, 12)); });
        return x;
    });
    sweep(sets, outcomes, [&](size_t degree) {
        List x(degree + 1);
        std::generate(x.begin(), x.end(), [&] { return random.whole(-5, 5); });
        return x;
    });
    // Polynomials made of their roots, many of them repeated.
    sweep(sets, outcomes, [&](size_t degree) {
        List roots(degree);
        std::generate(roots.begin(), roots.end(), [&] { return random.whole(-8, 8) * 0.25; });
        return product(roots, random.oneOf<double>({1, -1, 2, 0.5, 10}));
    });
}

TEST(qelMathUtilitiesQuadratic, TakesTheCorrectlyRoundedSquareRoot)
{
    // With a = 1/4 the discriminant is b*b - b. No double lies closer to its square root than r does.
    std::mt19937_64 engine(20260104);
    std::uniform_real_distribution<double> values(1, 100);
    for (int i = 0; i < 20000; ++i)
    {
        const double b = -values(engine);
        const double discriminant = b * b - b;
        const List roots = solveQuadratic(0.25, b, 0);
        ASSERT_EQ(roots.size(), 2u);
        const double r = root2(discriminant);
        const long double below = (static_cast<long double>(steps(r, -1)) + static_cast<long double>(r)) / 2;
        const long double above = (static_cast<long double>(steps(r, 1)) + static_cast<long double>(r)) / 2;
        ASSERT_LE(below * below, discriminant);
        ASSERT_GE(above * above, discriminant);
        ASSERT_EQ(roots[1], (r - b) * 0.5 / 0.25);
    }
}

TEST(qelMathUtilitiesSweep, GivesTheOraclesBitsForExtremeValues)
{
    Outcomes outcomes;
    Random random(20260102);
    const std::vector<double> values{
        0.0,           -0.0,  1.0,      -1.0,      2.0,        4.0,      1e-9,    -1e-9,   1e155,    -1e155,
        1e-155,        1e103, infinity, -infinity, notANumber, 4.9e-324, DBL_MIN, DBL_MAX, -DBL_MAX, steps(1e-9, -1),
        steps(1e-9, 1)};
    SCOPED_TRACE("seed 20260102");
    sweep(60000, outcomes, [&](size_t degree) {
        List x(degree + 1);
        std::generate(x.begin(), x.end(), [&] { return random.oneOf(values); });
        return x;
    });
}

TEST(qelMathUtilitiesSweep, GivesTheOraclesBitsAroundTheToleranceAndReachesEveryOutcome)
{
    Outcomes outcomes;
    Random random(20260103);
    const auto near = [&](double value) { return steps(value, random.whole(-3, 3)); };
    const auto sign = [&] { return random.oneOf<double>({-1, 1}); };
    // Each case puts one of the compared quantities at its limit.
    SCOPED_TRACE("seed 20260103");
    sweep(60000, outcomes, [&](size_t degree) -> List {
        const double tiny = sign() * near(random.oneOf<double>({0.0, 1e-9, 5e-10, 1e-18}));
        if (degree == 2)
        {
            switch (random.whole(0, 3))
            {
            case 0:
                return {tiny, sign() * near(1), random.between(-9, 9)};
            case 1:
                return {near(1), near(4 + sign() * 2.5e-10), 1}; // discriminant at +-1e-9
            case 2:
                return {near(1), near(sign() * 2.5e-10), 1}; // the same, near zero
            default:
                return {tiny, random.oneOf<double>({0.0, -0.0, 1e-300, 3}), random.between(-9, 9)};
            }
        }
        if (degree == 3)
        {
            switch (random.whole(0, 5))
            {
            case 0:
                return {tiny, random.between(-9, 9), random.between(-9, 9), tiny};
            case 1:
                return {1, 0, 0, sign() * near(2 * root2(1e-9))}; // S at 1e-9
            case 2:
                return {1, 0, 0, sign() * near(2e-9)}; // R at 1e-9
            case 3:
                return {1, near(-2e-10), 7, tiny}; // a root that may count as zero
            case 4:
                return {near(0.1), near(-2e-10), 7, 0}; // a root at the tolerance
            default:
            {
                const double repeated = random.between(-2, 2);
                List x = product({repeated, repeated, random.between(-2, 2)}, 1);
                x[3] += sign() * random.between(0, 4e-9); // S around +-1e-9
                return x;
            }
            }
        }
        switch (random.whole(0, 7))
        {
        case 0:
            return {tiny, random.between(-9, 9), random.between(-9, 9), random.between(-9, 9), tiny};
        case 1:
            return {10, 0, 0, 0, near(1e-8)}; // k at -1e-9
        case 2:
            return {10, 0, 0, 0, near(-1e-17) - 1e-9}; // q small
        case 3:                                        // a perfect square: k and p * p around 0
        {
            const double g = random.whole(-8, 8) * 0.5;
            const double m = random.whole(-8, 8) * 0.5;
            return {1, 2 * g, g * g + 2 * m, 2 * g * m, m * m};
        }
        case 4: // q = 0 and p * p well below 0
        {
            const double c = random.between(0.003, 0.08);
            return {1, 0, c, 0, c * c / 36};
        }
        case 5: // a root of multiplicity four, shifted: q = 0 and p * p around 0 and -1e-9
        {
            const double r = sign() * random.between(0.03, 0.5);
            const double c = 6 * r * r + random.between(-1e-9, 3e-9);
            const double h = c / 3 / 2;
            return {1, -4 * r, c, -4 * r * r * r, h * h};
        }
        case 6:
            return {1e9, random.between(-2e5, 2e5), random.between(-9, 9), random.between(-9, 9), near(-1e-9)};
        default:
        {
            const double root = random.between(-3, 3);
            return product({root, root + sign() * near(1e-9), random.between(-3, 3), random.between(-3, 3)}, 1);
        }
        }
    });

    for (const char* outcome : {"quadratic: nothing left",
                                "quadratic: linear",
                                "quadratic: one root",
                                "quadratic: two roots",
                                "quadratic: no root",
                                "cubic: lower degree",
                                "cubic: zero added",
                                "cubic: zero there already",
                                "cubic: double root",
                                "cubic: double root, not-a-number",
                                "cubic: triple root",
                                "cubic: three roots",
                                "cubic: one root",
                                "quartic: lower degree",
                                "quartic: zero added",
                                "quartic: zero there already",
                                "quartic: k raised to zero",
                                "quartic: k negative",
                                "quartic: p raised to zero",
                                "quartic: p negative",
                                "quartic: p by its square",
                                "quartic: root dropped",
                                "quartic: root of the second quadratic"})
    {
        EXPECT_GT(outcomes[outcome], 20) << outcome;
    }
}

// The array -----------------------------------------------------------------------------------------------------------

TEST(qelMathUtilitiesRoots, AreReplacedAndTheirStorageStays)
{
    Roots roots(20);
    for (long i = 0; i < 20; ++i)
    {
        roots.append(i);
    }
    const double* const storage = &roots[0];

    EXPECT_EQ(qelMathUtilities::QuadraticSolver(0, 2, 4, roots), 1);
    EXPECT_EQ(roots.length(), 1);
    EXPECT_EQ(&roots[0], storage);
    EXPECT_EQ(qelMathUtilities::CubicSolver(1, -6, 11, -6, roots), 3);
    EXPECT_EQ(roots.length(), 3);
    EXPECT_EQ(&roots[0], storage);
    EXPECT_EQ(qelMathUtilities::QuarticSolver(1, -10, 35, -50, 24, roots), 4);
    EXPECT_EQ(roots.length(), 4);
    EXPECT_EQ(&roots[0], storage);
    EXPECT_EQ(roots.physicalLength(), 20);

    EXPECT_EQ(qelMathUtilities::QuadraticSolver(0, 0, 5, roots), 0);
    EXPECT_EQ(roots.length(), 0);
    roots.append(7);
    EXPECT_EQ(qelMathUtilities::QuarticSolver(1, 0, 0, 0, 1, roots), 0);
    EXPECT_EQ(roots.length(), 0);
    EXPECT_EQ(roots.physicalLength(), 20);
}

TEST(qelMathUtilitiesRoots, GrowByTheStepOfTheirList)
{
    Roots one(0, 1);
    EXPECT_EQ(qelMathUtilities::CubicSolver(1, -6, 11, -6, one), 3);
    EXPECT_EQ(one.physicalLength(), 3);
    Roots three(0, 3);
    EXPECT_EQ(qelMathUtilities::QuarticSolver(1, -10, 35, -50, 24, three), 4);
    EXPECT_EQ(three.physicalLength(), 6);
    EXPECT_EQ(qelMathUtilities::QuadraticSolver(0, 2, 4, three), 1);
    EXPECT_EQ(three.physicalLength(), 6);
}

TEST(qelMathUtilitiesRoots, CostNoAllocationOnceTheyHaveStorage)
{
    Roots roots(4);
    allocations = 0;
    releases = 0;
    const qelTest::ImportHook mallocHook("malloc", &countingMalloc);
    const qelTest::ImportHook freeHook("free", &countingFree);

    qelMathUtilities::QuadraticSolver(1, -2, 1, roots);
    qelMathUtilities::CubicSolver(1, -6, 11, -6, roots);
    qelMathUtilities::CubicSolver(1, -6, 11, 0, roots);
    qelMathUtilities::QuarticSolver(1, -10, 35, -50, 24, roots);
    qelMathUtilities::QuarticSolver(1, -6, 11, -6, 0, roots);
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(releases, 0);
}
