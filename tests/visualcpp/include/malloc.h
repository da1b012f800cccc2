// What Visual C++'s <malloc.h> declares and Wine's does not.
#pragma once

#include_next <malloc.h>

#ifdef __cplusplus
extern "C"
{
#endif

    _ACRTIMP int __cdecl _resetstkoflw(void);

#ifdef __cplusplus
}
#endif
