/**
 * @file
 * @brief A clipping mode with two limits along the Z axis.
 */
#ifndef QEL_Z_CLIPPING_H
#define QEL_Z_CLIPPING_H

#include "qelExport.h"

/**
 * @brief Clipping modes.
 * @ingroup numerics
 *
 * Values other than the default are defined by the modules that use them.
 */
enum eZClip : int
{
    eZClip_Default = 0 ///< the mode of an object made by default
};

/**
 * @brief A clipping mode with two limits along the Z axis.
 * @ingroup numerics
 *
 * A plain value, in the model's units.
 *
 * @par Example
 * @code
 * const qelZClipping standard;            // mode 0, limits 20 and -20
 * standard == qelZClipping(eZClip_Default, 20.0, -20.0); // == 1
 *
 * qelZClipping::kClipUpperDefault = 50.0; // for objects made from now on
 * standard != qelZClipping();             // == 1
 * @endcode
 *
 * @par Threads
 * The two defaults are process-wide and have no lock.
 */
class QEL_API qelZClipping
{
public:
    static double kClipLowerDefault; ///< second limit of objects made by default; -20 at load
    static double kClipUpperDefault; ///< first limit of objects made by default; 20 at load

    /// Mode 0 and the current default limits, the upper one first.
    qelZClipping();

    /// The given values, unchecked.
    qelZClipping(eZClip mode, double first, double second);

    /// 1 when mode and both limits are equal, else 0. NaN equals nothing.
    int operator==(const qelZClipping& other) const;

    /// 1 when mode or a limit differs, else 0.
    int operator!=(const qelZClipping& other) const;

private:
    eZClip m_mode;
    double m_first;  ///< the upper limit in the default construction
    double m_second; ///< the lower limit in the default construction
};

static_assert(sizeof(qelZClipping) == 24, "a mode and two limits");

#endif
