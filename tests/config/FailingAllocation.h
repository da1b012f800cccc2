// Lack of memory at one moment.
#ifndef QEL_TEST_FAILING_ALLOCATION_H
#define QEL_TEST_FAILING_ALLOCATION_H

#include "support/ImportHook.h"

#include <stdlib.h>

namespace qelTest
{
/// While it lives, the DLL's allocation with the given number, counted from 0, fails.
class FailingAllocation
{
public:
    explicit FailingAllocation(int number)
        : m_malloc("malloc", &allocate)
    {
        left() = number;
    }

    /// Whether the DLL got as far as that allocation.
    bool happened() const { return left() < 0; }

private:
    static int& left()
    {
        static int left = 0;
        return left;
    }

    static void* allocate(size_t bytes) { return left()-- == 0 ? nullptr : malloc(bytes); }

    ImportHook m_malloc;
};

/// Calls `attempt` with each of its allocations failing in turn, and at last with none, and `check` after each: whether
/// one failed is its argument.
template <class Attempt, class Check> int failEachAllocation(const Attempt& attempt, const Check& check)
{
    for (int number = 0;; ++number)
    {
        bool failed = false;
        {
            const FailingAllocation failing(number);
            attempt();
            failed = failing.happened();
        }
        check(failed);
        if (!failed)
        {
            return number;
        }
    }
}
} // namespace qelTest

#endif
