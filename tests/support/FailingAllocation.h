// Lets one allocation of the DLL fail.
#ifndef QEL_TEST_FAILING_ALLOCATION_H
#define QEL_TEST_FAILING_ALLOCATION_H

#include "support/ImportHook.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace qelTest
{
/// While it lives, the given allocation of the DLL is refused, the first one being 1. Only that one: throwing takes
/// memory as well.
class FailingAllocation
{
public:
    explicit FailingAllocation(int which) { s_left = which; }

private:
    static void* allocate(size_t bytes)
    {
        const bool refused = --s_left == 0;
        return refused ? nullptr : malloc(bytes);
    }

    inline static int s_left = 0;

    ImportHook m_malloc{"malloc", &allocate};
};

/**
 * Calls `action` until it succeeds, refusing its first, its second, ... allocation, and `check` after each failure.
 * Returns how often it failed.
 */
template <class Action, class Check> int failEveryAllocation(Action action, Check check)
{
    for (int failures = 0;; ++failures)
    {
        try
        {
            const FailingAllocation failing(failures + 1);
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
