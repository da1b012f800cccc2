/**
 * @file
 * @brief Real roots of polynomials up to degree four.
 */
#ifndef QEL_MATH_UTILITIES_H
#define QEL_MATH_UTILITIES_H

#include "qelArray.h"
#include "qelExport.h"

/**
 * @brief Real roots of polynomials up to degree four.
 * @ingroup numerics
 *
 * Coefficients go from the highest power down. Every solver first empties `roots` (its storage stays), writes the roots
 * in the order in which it finds them, never sorted, and returns their number. One absolute tolerance, 1e-9, decides
 * what counts as zero.
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
 * @par Cost
 * Constant; the only allocation is the storage of the roots, where there is none yet.
 *
 * @par Failure
 * Degenerate input gives 0 roots; nothing is reported. A coefficient that is not a number takes whatever branch its
 * comparisons lead to. Where one root is much larger than another, the small one is wrong: each has an error in about
 * the 16th digit of the largest (roots 1, 10,000,000 and 1e14 give -8274 for the 1).
 *
 * @warning QuadraticSolver() deliberately computes its discriminant as `b*b - 4*a*b`. Where `a` is not near zero it
 * thus solves `a*x*x + b*x + b = 0`, and `c` takes no part. The other two solvers build on it, and so do their callers.
 */
namespace qelMathUtilities
{
/// The list that the solvers write to.
using Roots = qelArray<double, qelArrayMemCopyReallocator<double>, qelArrayMemoryController<double>>;

/// The circle constant, computed as the arc cosine of -1 when the library is loaded.
QEL_API extern const double PI;

/**
 * Degree two; see the warning above. Writes the smaller root first when `a` is positive; one root when the discriminant
 * is zero, none when it is negative. With `|a| < 1e-9`: the root of `b*x + c`, or none when `b` is exactly 0.
 */
QEL_API int QuadraticSolver(double a, double b, double c, Roots& roots);

/**
 * Degree three; with `|a| < 1e-9` the quadratic solver's roots of the rest. With `|d| < 1e-9` zero is a root: it comes
 * first, before what the quadratic solver gives for `a, b, c`, unless that has a zero already. Otherwise up to three
 * distinct roots, by trigonometry or by Cardano's formula.
 *
 * With B = b/a, C = c/a, D = d/a: where a root is repeated, `9*B*C - 27*D - 2*B*B*B` decides. A negative value makes
 * both roots not-a-number (1, -4, 5, -2 with its roots 1, 1 and 2 gives two numbers, its mirror image 1, 4, 5, 2 none).
 */
QEL_API int CubicSolver(double a, double b, double c, double d, Roots& roots);

/**
 * Degree four by Ferrari's method; with `|a| < 1e-9` the cubic solver's roots of the rest, and with `|e| < 1e-9` zero
 * is a root, treated as by the cubic solver. The last step solves two quadratics with QuadraticSolver(), so where it
 * applies the values written are in general no roots of the given polynomial.
 */
QEL_API int QuarticSolver(double a, double b, double c, double d, double e, Roots& roots);
} // namespace qelMathUtilities

#endif
