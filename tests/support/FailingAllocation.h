// Lets one allocation of the DLL fail. Only one: throwing takes memory as well.
#ifndef QEL_TEST_FAILING_ALLOCATION_H
#define QEL_TEST_FAILING_ALLOCATION_H

#include "support/ImportHook.h"

#include <cstdlib>
#include <new>

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

/// Calls `attempt`, which throws nothing, with each of its allocations failing in turn, and at last with none, and
/// `check` after each: whether one failed is its argument. Returns the number of allocations.
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

/// Calls `action` with each of its allocations failing in turn, which must throw, until it succeeds, and `check` after
/// each failure. Returns the number of failures.
template <class Action, class Check> int failEveryAllocation(const Action& action, const Check& check)
{
    for (int failures = 0;; ++failures)
    {
        try
        {
            const FailingAllocation failing(failures);
            action();
            return failures;
        }
        catch (const std::bad_alloc&)
        {
        }
        check();
    }
}
} // namespace qelTest

#endif
