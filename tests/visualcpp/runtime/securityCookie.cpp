#include "securityCookie.h"

#include <windows.h>

#include <intrin.h>
#include <stdint.h>

extern "C" uintptr_t __security_cookie = 0x00002B992DDFA232;

__declspec(safebuffers) void setSecurityCookie()
{
    // 48 bits, of which a text that runs over its buffer cannot write the zeros above.
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    const uintptr_t here = reinterpret_cast<uintptr_t>(&ticks);
    const uintptr_t mixed =
        (here ^ __rdtsc() ^ GetCurrentProcessId() ^ static_cast<uint64_t>(ticks.QuadPart) << 20) * 0x9E3779B97F4A7C15;
    __security_cookie = mixed >> 16;
}

extern "C" __declspec(safebuffers) void __security_check_cookie(uintptr_t cookie)
{
    if (cookie != __security_cookie)
    {
        __fastfail(2); // a cookie of the stack that has changed
    }
}
