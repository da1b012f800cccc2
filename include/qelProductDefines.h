/**
 * @file
 * @brief The name of the host product and the path derived from it.
 */
#ifndef QEL_PRODUCT_DEFINES_H
#define QEL_PRODUCT_DEFINES_H

#include "qelExport.h"

/**
 * @brief The name of the host product and the path derived from it; all members are static.
 * @ingroup configuration
 *
 * The host sets the name once; other modules read the name and the path.
 *
 * @par Example
 * @code
 * qelProductDefines::setOVProductName(L"Orvalis"); // once, at start-up
 * qelProductDefines::getOVProductName();           // == L"Orvalis"
 * qelProductDefines::getOVProduct();               // == L"Kelvara\\Orvalis\\"
 * @endcode
 *
 * @par Ownership
 * Both strings are process-wide. The getters always return the same pointers, so a caller that keeps one sees later
 * changes.
 *
 * @par Threads
 * No lock: set the name before other threads read it.
 */
class QEL_API qelProductDefines
{
public:
    /// The product's name; "Orvalis" until it is set.
    static const wchar_t* getOVProductName();

    /**
     * The product's path: "Kelvara\", the name and "\". Until the name is set it is deliberately different, with the
     * year of the release and no backslash at the end: "Kelvara\Orvalis\2020".
     */
    static const wchar_t* getOVProduct();

    /**
     * Sets the name and rebuilds the path. `name` is copied and may be what a getter returned. A null name, or one of
     * more than 250 characters, is an invalid-parameter failure of the C runtime, which may end the process. Where that
     * returns, a name of 260 characters or more becomes empty; with a shorter one, the path becomes "\" or empty.
     */
    static void setOVProductName(const wchar_t* name);

private:
    static void setOVProduct();

    enum : int
    {
        kCapacity = 260
    };
    static wchar_t ms_szOVProductName[kCapacity];
    static wchar_t ms_szOVProduct[kCapacity];
};

#endif
