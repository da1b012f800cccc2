// Counts what the DLL under test allocates, and lets allocations fail.
#ifndef QEL_TEST_ALLOCATIONS_H
#define QEL_TEST_ALLOCATIONS_H

#include <cstddef>

namespace qelTest
{
namespace allocations
{
/// How many allocations fail, from the chosen one on.
enum class Failing
{
    once,
    forGood
};

/// From now on the DLL's allocations are watched; stays so until the process ends.
void watch();

/// Counts this thread's allocations from 0 and lets that with the number fail; none for a negative one.
void arm(int number, Failing failing);

/// Ends that. Returns how many allocations there were, failed ones included.
int disarm();

/// Blocks that the DLL has allocated and not freed.
size_t live();

/// Tells of a block that the DLL gave away and the host is about to free.
void givenAway(void* block);
} // namespace allocations
} // namespace qelTest

#endif
