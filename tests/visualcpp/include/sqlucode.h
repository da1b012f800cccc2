// What Visual C++'s <sqlucode.h> declares and Wine's does not.
#pragma once

#include_next <sqlucode.h>

#ifdef __cplusplus
extern "C"
{
#endif

    SQLRETURN WINAPI SQLDriverConnectW(SQLHDBC, SQLHWND, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLSMALLINT*,
                                       SQLUSMALLINT);

#ifdef __cplusplus
}
#endif
