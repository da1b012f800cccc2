// What Visual C++'s <string.h> declares and Wine's does not.
#pragma once

#include_next <string.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /// Not in Wine's runtime either: see ../runtime/missing.cpp.
    errno_t __cdecl _strset_s(char*, size_t, int);

#ifdef __cplusplus
}
#endif
