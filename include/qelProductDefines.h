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
 * The host names its product once; other modules ask for the name and for the path made of it.
 *
 * @par Example
 * @code
 * qelProductDefines::setOVProductName(L"Orvalis"); // once, at start-up
 * qelProductDefines::getOVProductName();           // == L"Orvalis"
 * qelProductDefines::getOVProduct();               // == L"Kelvara\\Orvalis\\"
 * @endcode
 *
 * @par Ownership
 * Both texts belong to the process. The pointers that the getters return never change, so a caller that keeps one sees
 * later changes.
 *
 * @par Threads
 * There is no lock: set the name before other threads read it.
 *
 * @par Failure
 * A name that is null or too long is an invalid-parameter failure of the C runtime; see setOVProductName().
 */
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
     * Sets the name and rebuilds the path. `name` is copied and may be what a getter returned. Name and path have 259
     * characters at most, so a name of more than 250 characters is too long for the path. A text that does not fit, and
     * a null name, is an invalid-parameter failure of the C runtime, which may end the process. Where that returns, the
     * copying step that failed has emptied its text and later steps went on from there: a name of 260 characters or
     * more becomes empty; with a shorter one that is too long for the path, the path becomes "\" or empty.
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
