// What Visual C++'s <ctype.h> declares and Wine's does not.
#pragma once

#include_next <ctype.h>

#ifdef __cplusplus
extern "C"
{
#endif

    _ACRTIMP int __cdecl _islower_l(int, _locale_t);
    _ACRTIMP int __cdecl _isupper_l(int, _locale_t);

#ifdef __cplusplus
}
#endif
