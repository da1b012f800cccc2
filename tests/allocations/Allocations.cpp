#include "allocations/Allocations.h"

#include "support/ImportHook.h"

#include <windows.h>

#include <cstdlib>
#include <mutex>
#include <unordered_set>

namespace
{
struct State
{
    std::mutex mutex;
    std::unordered_set<void*> live;
};

State& state()
{
    // Never destroyed: the DLL frees until the very end.
    static State& state = *new State();
    return state;
}

thread_local bool armed = false;
thread_local int count = 0;
thread_local int chosen = -1;
thread_local bool forGood = false;

bool fails()
{
    if (!armed)
    {
        return false;
    }
    const int number = count++;
    return chosen >= 0 && (number == chosen || (forGood && number > chosen));
}

void* remember(void* block)
{
    if (block != nullptr)
    {
        const std::lock_guard<std::mutex> lock(state().mutex);
        state().live.insert(block);
    }
    return block;
}

void forget(void* block)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().live.erase(block);
}

void* watchedMalloc(size_t bytes)
{
    return fails() ? nullptr : remember(malloc(bytes));
}

void* watchedCalloc(size_t elements, size_t bytes)
{
    return fails() ? nullptr : remember(calloc(elements, bytes));
}

void* watchedRealloc(void* block, size_t bytes)
{
    if (fails())
    {
        return nullptr;
    }
    forget(block);
    return remember(realloc(block, bytes));
}

void watchedFree(void* block)
{
    forget(block);
    free(block);
}

// A system string belongs to whoever gets it.
BSTR WINAPI watchedSysAllocString(const wchar_t* text)
{
    return fails() ? nullptr : SysAllocString(text);
}
} // namespace

void qelTest::allocations::watch()
{
    static const ImportHook hooks[] = {{"malloc", &watchedMalloc},
                                       {"calloc", &watchedCalloc},
                                       {"realloc", &watchedRealloc},
                                       {"free", &watchedFree},
                                       {"SysAllocString", &watchedSysAllocString}};
    (void)hooks;
}

void qelTest::allocations::arm(int number, Failing failing)
{
    count = 0;
    chosen = number;
    forGood = failing == Failing::forGood;
    armed = true;
}

int qelTest::allocations::disarm()
{
    armed = false;
    return count;
}

size_t qelTest::allocations::live()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().live.size();
}

void qelTest::allocations::givenAway(void* block)
{
    forget(block);
}
