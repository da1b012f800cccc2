// What Visual C++'s <wchar.h> declares and Wine's does not.
#pragma once

#include_next <wchar.h>

#ifdef __cplusplus
extern "C"
{
#endif

    _ACRTIMP errno_t __cdecl _wcsset_s(wchar_t*, size_t, wchar_t);
    _ACRTIMP errno_t __cdecl _wcserror_s(wchar_t*, size_t, int);

#ifdef __cplusplus
}
#endif
