/**
 * @file
 * @brief A clipping mode with two limits along the Z axis.
 *
 * @code
 * qelZClipping::kClipUpperDefault = 50.0;   // for objects made from now on
 * const qelZClipping standard;              // mode 0, limits 50 and -20
 * if (standard != current) { ... }
 * @endcode
 *
 * A plain value in the model's units; copy it freely. Nothing is checked and nothing fails. The two defaults belong to
 * the process and have no lock.
 */
#ifndef QEL_Z_CLIPPING_H
#define QEL_Z_CLIPPING_H

#include "qelExport.h"

/// Clipping modes. All but the default one are defined by the modules that use the type.
enum eZClip : int
{
    eZClip_Default = 0
};

/// @brief Mode and limits of Z clipping; see the head of this file.
class QEL_API qelZClipping
{
public:
    static double kClipLowerDefault; ///< second limit of objects made by default; -20 at load
    static double kClipUpperDefault; ///< first limit of objects made by default; 20 at load

    /// Mode 0 and the limits that are the defaults now: the upper one first.
    qelZClipping();

    /// The values as they are given.
    qelZClipping(eZClip mode, double first, double second);

    /// 1 when mode and both limits are equal, else 0. A limit that is not a number equals nothing.
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
