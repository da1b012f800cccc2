// What Visual C++'s <math.h> declares and Wine's does not: in C++ these are functions. With Wine 8 they are macros, and
// Wine 10 has some of them as functions.
#pragma once

#ifdef __cplusplus
#define fpclassify qel_wine_fpclassify
#define isfinite qel_wine_isfinite
#define isinf qel_wine_isinf
#define isnan qel_wine_isnan
#endif

#include_next <math.h>

#ifdef __cplusplus
#undef fpclassify
#undef isfinite
#undef isinf
#undef isnan
#undef isnormal
#undef signbit

extern "C++"
{
    template <class T> inline int fpclassify(T value) noexcept
    {
        return __builtin_fpclassify(FP_NAN, FP_INFINITE, FP_NORMAL, FP_SUBNORMAL, FP_ZERO, static_cast<double>(value));
    }

    template <class T> inline bool isfinite(T value) noexcept
    {
        return __builtin_isfinite(static_cast<double>(value));
    }

    template <class T> inline bool isinf(T value) noexcept
    {
        return __builtin_isinf(static_cast<double>(value));
    }

    template <class T> inline bool isnan(T value) noexcept
    {
        return __builtin_isnan(static_cast<double>(value));
    }

    template <class T> inline bool isnormal(T value) noexcept
    {
        return __builtin_isnormal(static_cast<double>(value));
    }

    template <class T> inline bool signbit(T value) noexcept
    {
        return __builtin_signbit(static_cast<double>(value)) != 0;
    }
}
#endif
