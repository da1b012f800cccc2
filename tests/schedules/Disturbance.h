// Lets threads give way to each other, decided by a seed.
#ifndef QEL_TEST_DISTURBANCE_H
#define QEL_TEST_DISTURBANCE_H

#include <stdint.h>

namespace qelTest
{
/// A number that looks random, the same for the same two.
uint64_t mixed(uint64_t a, uint64_t b);

/**
 * What happens at the points where the library takes or leaves a lock, signals or waits, starts or ends a thread, or
 * closes a handle: before and behind each of these calls the thread may spin, yield or sleep. Whether it does is
 * decided by the seed, the number of the thread and the number of the point in that thread. So a seed repeats the
 * decisions; how the system shares out its processors remains its own affair.
 */
class Disturbance
{
public:
    /// Begins another schedule, for all threads. Its seed also decides how much they are disturbed.
    static void begin(uint64_t seed);

    /// Disturbs the library, which must be loaded, until it is unloaded.
    static void hookLibrary();

    /// A point of the calling thread.
    static void point();

    /// The points so far, and how many of them were yields and sleeps.
    static uint64_t points();
    static uint64_t yields();
    static uint64_t sleeps();
};
} // namespace qelTest

#endif
