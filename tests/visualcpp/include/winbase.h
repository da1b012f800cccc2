// What Visual C++'s <winbase.h> declares and Wine's does not.
#pragma once

#include_next <winbase.h>

#ifdef __cplusplus
extern "C"
{
#endif

    WINBASEAPI BOOL WINAPI IsThreadAFiber(void);

#ifdef __cplusplus
}
#endif
