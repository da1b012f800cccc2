// Roots, rounding and times beside the same steps without the calls, and the raw calls of Windows.

#include "Families.h"
#include "Plain.h"

#include "qelDouble.h"
#include "qelMathUtilities.h"
#include "qelTimeUtilities.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace qelBench;

namespace
{
const double kTolerance = 1e-9;
const double kPi = std::acos(-1.0);

/// Room for all the roots there can be.
struct LocalRoots
{
    double values[4] = {};
    int count = 0;

    void add(double root) { values[count++] = root; }
};

bool isZero(double value)
{
    return std::fabs(value) < kTolerance;
}

void solveQuadratic(double a, double b, LocalRoots& roots)
{
    const double discriminant = b * b - 4 * a * b; // b twice, as the library has it
    if (isZero(discriminant))
    {
        roots.add(-0.5 * b / a);
    }
    else if (discriminant > 0)
    {
        const double r = std::sqrt(discriminant);
        roots.add((-b - r) * 0.5 / a);
        roots.add((r - b) * 0.5 / a);
    }
}

double cubeRoot(double value)
{
    const double root = std::pow(std::fabs(value), 1.0 / 3.0);
    return value < 0 ? -root : root;
}

/// For polynomials whose roots are all different, and none of them 0.
void solveCubic(double a, double b, double c, double d, LocalRoots& roots)
{
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double Q = (3 * C - B * B) / 9;
    const double R = (9 * B * C - 27 * D - 2 * B * B * B) / 54;
    const double S = R * R + Q * Q * Q;
    const double t = B / 3;
    if (S > 0)
    {
        const double r = std::sqrt(S);
        roots.add(cubeRoot(R + r) - t + cubeRoot(R - r));
        return;
    }
    const double theta = std::acos(R / std::sqrt(-(Q * Q * Q)));
    const double m = 2 * std::sqrt(-Q);
    roots.add(m * std::cos(theta / 3) - t);
    roots.add(m * std::cos((theta + 2 * kPi) / 3) - t);
    roots.add(m * std::cos((theta + 4 * kPi) / 3) - t);
}

bool containsCloseTo(const LocalRoots& roots, int count, double root)
{
    for (int i = 0; i < count; ++i)
    {
        if (isZero(roots.values[i] - root))
        {
            return true;
        }
    }
    return false;
}

/// Likewise; the square root in the middle must not be 0.
void solveQuartic(double a, double b, double c, double d, double e, LocalRoots& roots)
{
    const double B = b / a;
    const double C = c / a;
    const double D = d / a;
    const double E = e / a;
    LocalRoots resolvent;
    solveCubic(1, -C, B * D - 4 * E, (4 * C - B * B) * E - D * D, resolvent);
    double y = resolvent.values[0];
    for (int i = 1; i < resolvent.count; ++i)
    {
        y = resolvent.values[i] > y ? resolvent.values[i] : y;
    }
    const double h = y / 2;
    const double k = h * h - E;
    if (k < 0)
    {
        return;
    }
    const double q = std::sqrt(k);
    const double g = B / 2;
    const double p = (g * h - D / 2) / q;
    solveQuadratic(1, g + p, roots);
    const int first = roots.count;
    LocalRoots second;
    solveQuadratic(1, g - p, second);
    for (int i = 0; i < second.count; ++i)
    {
        if (!containsCloseTo(roots, first, second.values[i]))
        {
            roots.add(second.values[i]);
        }
    }
}

/// Coefficients, from the highest power down.
struct Polynomial
{
    double c[5];
};

using Polynomials = std::vector<Polynomial>;

/// Some that differ in the second and in the last coefficient.
Polynomials polynomials(const Polynomial& first, int degree)
{
    Polynomials result;
    for (int i = 0; i < 64; ++i)
    {
        result.push_back(first);
        result.back().c[1] += 0.125 * i;
        result.back().c[degree] += 0.0625 * i;
    }
    return result;
}

bool areAlike(const qelMathUtilities::Roots& ours, const LocalRoots& theirs)
{
    if (ours.length() != theirs.count)
    {
        return false;
    }
    for (int i = 0; i < theirs.count; ++i)
    {
        if (!isZero(ours[i] - theirs.values[i]))
        {
            return false;
        }
    }
    return true;
}

/// `ours` and `theirs` solve one polynomial.
template <class Ours, class Theirs>
void addSolver(Table& table, const Row& row, const Polynomial& first, int degree, const Ours& ours,
               const Theirs& theirs)
{
    struct Data
    {
        Polynomials all;
        qelMathUtilities::Roots roots;
        LocalRoots local;
    };
    table.add(row, [=] {
        const auto d = std::make_shared<Data>();
        d->all = polynomials(first, degree);
        const auto solve = [d, ours] {
            int count = 0;
            for (const Polynomial& polynomial : d->all)
            {
                count += ours(polynomial.c, d->roots);
            }
            return count;
        };
        const auto solveLocally = [d, theirs] {
            int count = 0;
            for (const Polynomial& polynomial : d->all)
            {
                d->local.count = 0;
                theirs(polynomial.c, d->local);
                keep(&d->local);
                count += d->local.count;
            }
            return count;
        };
        const auto same = [d, ours, theirs, solve] {
            return solve() > 0 && std::all_of(d->all.begin(), d->all.end(), [&](const Polynomial& polynomial) {
                       d->local.count = 0;
                       ours(polynomial.c, d->roots);
                       theirs(polynomial.c, d->local);
                       return areAlike(d->roots, d->local);
                   });
        };
        return Sides{repeated(solve), repeated(solveLocally), same};
    });
}

void addSolvers(Table& table)
{
    using qelMathUtilities::Roots;
    const auto row = [](const char* name, double bar) {
        return Row{name, "64 polynomials", "the steps into a local array", bar};
    };
    addSolver(
        table, row("roots, quadratic", 2.0), {{1, 6, 3}}, 2,
        [](const double* c, Roots& roots) { return qelMathUtilities::QuadraticSolver(c[0], c[1], c[2], roots); },
        [](const double* c, LocalRoots& roots) { solveQuadratic(c[0], c[1], roots); });
    addSolver(
        table, row("roots, cubic", 1.05), {{1, -6, 11, -6.5}}, 3,
        [](const double* c, Roots& roots) { return qelMathUtilities::CubicSolver(c[0], c[1], c[2], c[3], roots); },
        [](const double* c, LocalRoots& roots) { solveCubic(c[0], c[1], c[2], c[3], roots); });
    addSolver(
        table, row("roots, quartic", 1.05), {{1, -10, 35, -50, 23}}, 4,
        [](const double* c, Roots& roots) {
            return qelMathUtilities::QuarticSolver(c[0], c[1], c[2], c[3], c[4], roots);
        },
        [](const double* c, LocalRoots& roots) { solveQuartic(c[0], c[1], c[2], c[3], c[4], roots); });
}

double roundLocally(double value, unsigned short digits, double step)
{
    if (step > 1e-10)
    {
        value = step * static_cast<int>((value + step / 2) / step);
    }
    const double factor = std::pow(10.0, digits);
    return std::floor(factor * value + 0.5) / factor;
}

void addRound(Table& table)
{
    table.add(Row{"round", "64 values", "the steps in place", 3}, [] {
        const auto values = std::make_shared<std::vector<double>>();
        for (int i = 0; i < 64; ++i)
        {
            values->push_back(1.2345 * i - 20);
        }
        const auto ours = [values] {
            double sum = 0;
            for (const double value : *values)
            {
                sum += qelDouble::round(value, 2, 0.0);
            }
            return sum;
        };
        const auto theirs = [values] {
            double sum = 0;
            for (const double value : *values)
            {
                sum += roundLocally(value, 2, 0.0);
            }
            return sum;
        };
        return sides(ours, theirs);
    });
}

SYSTEMTIME timeOf(WORD hour)
{
    SYSTEMTIME time = {};
    time.wYear = 2026;
    time.wMonth = 3;
    time.wDay = 14;
    time.wHour = hour;
    return time;
}

unsigned long long ticks(const FILETIME& time)
{
    return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

int secondsRawly(const SYSTEMTIME& a, const SYSTEMTIME& b)
{
    FILETIME first;
    FILETIME second;
    SystemTimeToFileTime(&a, &first);
    SystemTimeToFileTime(&b, &second);
    return static_cast<int>(static_cast<long long>(ticks(first) - ticks(second)) / 10000000);
}

SYSTEMTIME addRawly(const SYSTEMTIME& time, int hours)
{
    FILETIME shifted;
    SystemTimeToFileTime(&time, &shifted);
    const unsigned long long sum = ticks(shifted) + static_cast<unsigned long long>(hours) * 36000000000ULL;
    shifted.dwLowDateTime = static_cast<DWORD>(sum);
    shifted.dwHighDateTime = static_cast<DWORD>(sum >> 32);
    SYSTEMTIME result;
    FileTimeToSystemTime(&shifted, &result);
    return result;
}

void addTimes(Table& table)
{
    table.add(Row{"time difference in seconds", "two times", "raw calls", 1.1,
                  "The call into the DLL, which also returns the order of the times, adds 2.6 ns."},
              [] {
                  const SYSTEMTIME a = timeOf(17);
                  const SYSTEMTIME b = timeOf(8);
                  const auto ours = [a, b] {
                      int seconds = 0;
                      qelTimeUtilities::getDifferenceBetweenTimesInSeconds(a, b, seconds);
                      return seconds;
                  };
                  return sides(ours, [a, b] { return secondsRawly(a, b); });
              });
    table.add(Row{"add hours", "one time", "raw calls", 1.1}, [] {
        const SYSTEMTIME time = timeOf(17);
        const auto ours = [time] {
            SYSTEMTIME result;
            qelTimeUtilities::addTime(time, 30, result);
            return result;
        };
        const auto theirs = [time] { return addRawly(time, 30); };
        const auto same = [ours, theirs] {
            const SYSTEMTIME mine = ours();
            const SYSTEMTIME other = theirs();
            return memcmp(&mine, &other, sizeof mine) == 0;
        };
        return Sides{repeated(ours), repeated(theirs), same};
    });
}
} // namespace

void qelBench::addNumerics(Table& table)
{
    table.family("Numerics");
    addSolvers(table);
    addRound(table);
    addTimes(table);
}
