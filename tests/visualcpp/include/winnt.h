// What Visual C++'s <winnt.h> declares and Wine's does not.
#pragma once

#include_next <winnt.h>

#ifdef __cplusplus
extern "C"
{
#endif

#define InterlockedExchange64 _InterlockedExchange64
    long long _InterlockedExchange64(long long volatile*, long long);
#pragma intrinsic(_InterlockedExchange64)

#ifdef __cplusplus
}
#endif
