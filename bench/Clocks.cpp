// GetThreadTimes() is of no use for short work: it counts in steps of 10 milliseconds and more. On Windows the cycles
// of a thread are exact. Wine does not know them; there a thread is a thread of Linux, whose own clock is asked.

#include "Clocks.h"

#include <windows.h>

namespace
{
double wallTime()
{
    LARGE_INTEGER frequency;
    LARGE_INTEGER count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) * 1e9 / static_cast<double>(frequency.QuadPart);
}

double cycles()
{
    ULONG64 count = 0;
    return QueryThreadCycleTime(GetCurrentThread(), &count) ? static_cast<double>(count) : -1;
}

/// 0 where cycles are not counted. Runs for 20 milliseconds, once.
double nanosecondsPerCycle()
{
    static const double kResult = [] {
        const double begin = wallTime();
        const double firstCycle = cycles();
        if (firstCycle < 0)
        {
            return 0.0;
        }
        while (wallTime() - begin < 20e6)
        {
        }
        return (wallTime() - begin) / (cycles() - firstCycle);
    }();
    return kResult;
}

#if defined(__GNUC__) && defined(__x86_64__)
/// clock_gettime(CLOCK_THREAD_CPUTIME_ID) of Linux, by its number: programs below Wine reach the kernel all the same.
double linuxThreadTime()
{
    struct
    {
        long long seconds;
        long long nanoseconds;
    } time = {0, 0};
    long long result = 228; // NOLINT(misc-const-correctness): the call writes to it
    __asm__ __volatile__("syscall" : "+a"(result) : "D"(3LL), "S"(&time) : "rcx", "r11", "memory");
    return result == 0 ? static_cast<double>(time.seconds) * 1e9 + static_cast<double>(time.nanoseconds) : -1;
}

bool isWine()
{
    static const bool kResult = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return kResult;
}
#else
double linuxThreadTime()
{
    return -1;
}

bool isWine()
{
    return false;
}
#endif

enum class Source
{
    cycles,
    linux,
    wall,
};

Source threadSource()
{
    static const Source kResult = [] {
        if (nanosecondsPerCycle() > 0)
        {
            return Source::cycles;
        }
        return isWine() && linuxThreadTime() > 0 ? Source::linux : Source::wall;
    }();
    return kResult;
}

double threadTime()
{
    switch (threadSource())
    {
    case Source::cycles:
        return cycles() * nanosecondsPerCycle();
    case Source::linux:
        return linuxThreadTime();
    default:
        return wallTime();
    }
}
} // namespace

double qelBench::now(Clock clock)
{
    return clock == Clock::thread ? threadTime() : wallTime();
}

const char* qelBench::threadClockSource()
{
    switch (threadSource())
    {
    case Source::cycles:
        return "QueryThreadCycleTime";
    case Source::linux:
        return "the thread clock of Linux, since QueryThreadCycleTime fails under Wine";
    default:
        return "none here: wall time throughout";
    }
}
