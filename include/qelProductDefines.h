/**
 * @file
 * @brief The name of the host product and the path derived from it.
 *
 * @code
 * qelProductDefines::setOVProductName(L"Orvalis");      // once, at start-up
 * qelProductDefines::getOVProduct();                    // Kelvara\Orvalis\ with a backslash at the end
 * @endcode
 *
 * Two texts of the process without a lock: set the name before other threads read it. The pointers that the getters
 * return never change, so a caller that keeps one sees later changes.
 */
#ifndef QEL_PRODUCT_DEFINES_H
#define QEL_PRODUCT_DEFINES_H

#include "qelExport.h"

/// Static operations only.
class QEL_API qelProductDefines
{
public:
    /// The product's name; "Orvalis" until it is set.
    static const wchar_t* getOVProductName();

    /**
     * The product's path: "Kelvara\", the name and "\". Until the name is set it is deliberately another text, with the
     * year of the release and no backslash at the end: "Kelvara\Orvalis\2020".
     */
    static const wchar_t* getOVProduct();

    /**
     * Sets the name and rebuilds the path. Name and path have 259 characters at most. One that does not fit, and a null
     * name, is an invalid-parameter failure of the C runtime; where that returns, the step that failed has emptied its
     * text, so a name that is too long becomes empty and a path that is too long becomes "\".
     */
    static void setOVProductName(const wchar_t* name);

private:
    static void setOVProduct();

    static const int kCapacity = 260;
    static wchar_t ms_szOVProductName[kCapacity];
    static wchar_t ms_szOVProduct[kCapacity];
};

#endif
