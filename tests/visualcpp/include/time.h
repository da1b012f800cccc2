// What Visual C++'s <time.h> declares and the one of Wine 8 does not; that of Wine 10 does.
#pragma once

#define timespec qel_wine_timespec
#include_next <time.h>
#undef timespec

struct timespec
{
    time_t tv_sec;
    long tv_nsec;
};
