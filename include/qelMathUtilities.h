/**
 * @file
 * @brief Real roots of quadratic, cubic and quartic polynomials.
 */
#ifndef QEL_MATH_UTILITIES_H
#define QEL_MATH_UTILITIES_H

#include "qelArray.h"
#include "qelExport.h"

/**
 * @brief Real roots of quadratic, cubic and quartic polynomials.
 * @ingroup numerics
 *
 * Coefficients go from the highest power down. Every solver empties `roots` (keeping its storage), writes the roots
 * unsorted and returns their number. What counts as zero is decided by an absolute tolerance of 1e-9.
 *
 * @par Example
 * @code
 * qelMathUtilities::Roots roots;
 * qelMathUtilities::CubicSolver(1, -6, 11, -6, roots); // == 3
 * qelDouble::round(roots[0], 9, 0.0);                  // == 3.0
 * qelDouble::round(roots[1], 9, 0.0);                  // == 1.0
 * qelDouble::round(roots[2], 9, 0.0);                  // == 2.0
 * @endcode
 *
 * @par Failure
 * Degenerate input gives 0 roots; NaN coefficients are not checked. Where one root is much larger than another, the
 * small one is wrong: each has an error in about the 16th digit of the largest (roots 1, 10,000,000 and 1e14 give -8274
 * for the 1).
 *
 * @warning QuadraticSolver() deliberately computes its discriminant as `b*b - 4*a*b`. Where `a` is not near zero it
 * thus solves `a*x*x + b*x + b = 0`, and ignores `c`. The other two solvers build on it.
 */
namespace qelMathUtilities
{
/// List that the solvers write to.
using Roots = qelArray<double, qelArrayMemCopyReallocator<double>, qelArrayMemoryController<double>>;

/// Pi, computed as the arc cosine of -1 when the library is loaded.
QEL_API extern const double PI;

/**
 * Roots of degree two; see the warning above. Writes the smaller root first when `a` is positive; one root when the
 * discriminant is zero, none when it is negative. With `|a| < 1e-9`: the root of `b*x + c`, or none when `b` is exactly
 * 0.
 */
QEL_API int QuadraticSolver(double a, double b, double c, Roots& roots);

/**
 * Roots of degree three; with `|a| < 1e-9` QuadraticSolver() of the rest. With `|d| < 1e-9` zero is a root: it comes
 * first, before the result of QuadraticSolver() for `a, b, c`, unless that has a zero already. Otherwise up to three
 * distinct roots, by trigonometry or Cardano's formula.
 *
 * With B = b/a, C = c/a, D = d/a: for a repeated root, a negative `9*B*C - 27*D - 2*B*B*B` makes both roots NaN (1, -4,
 * 5, -2 with its roots 1, 1 and 2 gives two numbers, its mirror image 1, 4, 5, 2 two NaNs).
 */
QEL_API int CubicSolver(double a, double b, double c, double d, Roots& roots);

/**
 * Roots of degree four by Ferrari's method; with `|a| < 1e-9` CubicSolver() of the rest, and with `|e| < 1e-9` zero is
 * a root, as in CubicSolver(). The last step solves two quadratics with QuadraticSolver(), so its results are in
 * general not roots of the given polynomial.
 */
QEL_API int QuarticSolver(double a, double b, double c, double d, double e, Roots& roots);
} // namespace qelMathUtilities

#endif
