#include "qelProductDefines.h"

#include <string.h>
#include <wchar.h>

const wchar_t* qelProductDefines::getOVProductName()
{
    return ms_szOVProductName;
}

const wchar_t* qelProductDefines::getOVProduct()
{
    return ms_szOVProduct;
}

void qelProductDefines::setOVProductName(const wchar_t* name)
{
    // A copy, because the name may be what a getter returned.
    wchar_t copied[kCapacity] = {};
    (void)wcscpy_s(copied, kCapacity, name);
    memcpy(ms_szOVProductName, copied, sizeof(copied));
    setOVProduct();
}

void qelProductDefines::setOVProduct()
{
    (void)wcscpy_s(ms_szOVProduct, kCapacity, L"Kelvara\\");
    (void)wcscat_s(ms_szOVProduct, kCapacity, ms_szOVProductName);
    (void)wcscat_s(ms_szOVProduct, kCapacity, L"\\");
}
