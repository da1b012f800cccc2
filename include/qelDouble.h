/**
 * @file
 * @brief Rounding of floating-point values.
 */
#ifndef QEL_DOUBLE_H
#define QEL_DOUBLE_H

#include "qelExport.h"

/**
 * @brief Rounding of floating-point values; all members are static.
 * @ingroup numerics
 *
 * Rounds to decimals or to multiples of a step, and removes floating-point noise.
 *
 * @par Example
 * @code
 * qelDouble::round(2.346, 2, 0.0);    // == 2.35
 * qelDouble::round(7.3, 0, 5.0);      // == 5.0, the nearest multiple of 5
 * qelDouble::longRound(2.99999, 0.0); // == 3, without the noise
 * @endcode
 */
class QEL_API qelDouble
{
public:
    /// Offset that longRound() uses when the one given is out of range.
    static const double MinRoundOffset;

    /**
     * Snaps `value` to a multiple of `step` when `step` is above 1e-10, then rounds to `digits` decimals, halves up.
     * Snapping adds half a step and truncates towards zero, so a negative value may end one step closer to zero than
     * the nearest multiple (-7.3 with step 5 gives 0). A quotient outside the 32-bit range counts as -2,147,483,648;
     * nothing is reported.
     */
    static double round(double value, unsigned short digits, double step);

    /**
     * Moves `value` away from zero by `offset` and truncates towards zero. An offset below 0.0001 or above 0.9999 is
     * replaced by MinRoundOffset; 0.5 rounds halves away from zero. A result outside the 32-bit range is
     * -2,147,483,648.
     */
    static long longRound(const double& value, double offset);
};

#endif
