/**
 * @file
 * @brief Real roots of polynomials up to degree four.
 *
 * @code
 * qelMathUtilities::Roots roots;
 * const int count = qelMathUtilities::CubicSolver(1, -6, 11, -6, roots);   // 3: close to 3, 1 and 2
 * @endcode
 *
 * Coefficients go from the highest power down. Every solver first empties `roots` (its storage stays), writes the roots
 * in the order in which it finds them, never sorted, and returns their number.
 *
 * One absolute tolerance, 1e-9, decides what counts as zero. A coefficient that is not a number takes whatever branch
 * its comparisons lead to.
 *
 * @warning QuadraticSolver() deliberately computes its discriminant as `b*b - 4*a*b`. Where `a` is not near zero it thus
 * solves `a*x*x + b*x + b = 0`, and `c` takes no part. The other two solvers build on it, and so do their callers.
 *
 * - **Failure**: degenerate input gives 0 roots; nothing is reported.
 * - **Cost**: constant; the only allocations are the storage of `roots` and, for degree four, of two temporary arrays.
 * - **Threads**: any, with one `roots` array each.
 */
#ifndef QEL_MATH_UTILITIES_H
#define QEL_MATH_UTILITIES_H

#include "qelArray.h"
#include "qelExport.h"

namespace qelMathUtilities
{
/// The list that the solvers write to.
typedef qelArray<double, qelArrayMemCopyReallocator<double>, qelArrayMemoryController<double>> Roots;

/// The circle constant, computed as the arc cosine of -1 when the library is loaded.
QEL_API extern const double PI;

/// Two roots, one, or none of degree two; see the warning above. With `|a| < 1e-9`: the root of `b*x + c`, or none.
QEL_API int QuadraticSolver(double a, double b, double c, Roots& roots);

/**
 * One to three roots of degree three; with `|a| < 1e-9` those of the quadratic solver. With `|d| < 1e-9` zero is a root
 * and comes first, before the roots of the quadratic that is left. Repeated roots are written once; in that case a
 * negative right-hand term makes both roots not-a-number.
 */
QEL_API int CubicSolver(double a, double b, double c, double d, Roots& roots);

/// Up to four roots of degree four through its resolvent cubic; with `|a| < 1e-9` or `|e| < 1e-9` as the cubic solver.
QEL_API int QuarticSolver(double a, double b, double c, double d, double e, Roots& roots);
} // namespace qelMathUtilities

#endif
