// The two clocks of the benchmarks.
#ifndef QEL_BENCH_CLOCKS_H
#define QEL_BENCH_CLOCKS_H

namespace qelBench
{
enum class Clock
{
    thread, ///< processor time of the calling thread: other programs do not count
    wall,   ///< for work that other threads or services of the system do
};

/// Nanoseconds since some moment.
double now(Clock clock);

/// Where the processor time of a thread comes from on this system.
const char* threadClockSource();
} // namespace qelBench

#endif
