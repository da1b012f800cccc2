// What Visual C++'s <time.h> declares and Wine's does not.
#pragma once

#include_next <time.h>

struct timespec
{
    time_t tv_sec;
    long tv_nsec;
};
