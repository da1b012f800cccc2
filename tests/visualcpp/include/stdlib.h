// What Visual C++'s <stdlib.h> declares and Wine's does not.
#pragma once

// Wine imports it; every module has one of its own, linked in (../runtime/initialisers.cpp).
#define atexit qel_imported_atexit
#include_next <stdlib.h>
#undef atexit

#ifdef __cplusplus
extern "C"
{
#endif

    int __cdecl atexit(void(__cdecl*)(void));

    _ACRTIMP int __cdecl ___mb_cur_max_func(void);
#define MB_CUR_MAX ___mb_cur_max_func()

    _ACRTIMP float __cdecl _strtof_l(const char*, char**, _locale_t);
    _ACRTIMP double __cdecl _strtod_l(const char*, char**, _locale_t);

    _ACRTIMP errno_t __cdecl _dupenv_s(char**, size_t*, const char*);
    _ACRTIMP errno_t __cdecl _wdupenv_s(wchar_t**, size_t*, const wchar_t*);
    _ACRTIMP errno_t __cdecl _searchenv_s(const char*, const char*, char*, size_t);
    _ACRTIMP errno_t __cdecl _wsearchenv_s(const wchar_t*, const wchar_t*, wchar_t*, size_t);

#ifdef __cplusplus
}
#endif
