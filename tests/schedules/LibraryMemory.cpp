#include "schedules/LibraryMemory.h"

#include "support/GuardedMemory.h"
#include "support/ImportHook.h"

#include <windows.h>

#include <stdlib.h>

#include <deque>
#include <map>
#include <mutex>

namespace
{
const size_t kKeptClosed = 256;

/// All state of the guarded memory; the lock is held only in the functions below, which call nothing of the library.
struct State
{
    std::mutex lock;
    std::map<void*, size_t> live;
    std::deque<void*> closed;
};

State& state()
{
    static State all;
    return all;
}

void close(State& all, void* block, size_t bytes)
{
    DWORD before = 0;
    if (bytes != 0)
    {
        VirtualProtect(block, bytes, PAGE_NOACCESS, &before);
    }
    all.closed.push_back(block);
    if (all.closed.size() > kKeptClosed)
    {
        qelTest::releaseGuarded(all.closed.front());
        all.closed.pop_front();
    }
}

void* allocate(size_t bytes)
{
    void* block = qelTest::allocateGuarded(bytes);
    State& all = state();
    const std::lock_guard<std::mutex> guard(all.lock);
    all.live[block] = bytes;
    return block;
}

void release(void* block)
{
    State& all = state();
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        const auto found = all.live.find(block);
        if (found != all.live.end())
        {
            close(all, block, found->second);
            all.live.erase(found);
            return;
        }
    }
    // Allocated while the library was loaded, before the hook.
    free(block);
}
} // namespace

void qelTest::LibraryMemory::hookLibrary()
{
    // They never end: the import table goes with the library.
    (void)new ImportHook("malloc", &allocate);
    (void)new ImportHook("free", &release);
}

size_t qelTest::LibraryMemory::blocks()
{
    const std::lock_guard<std::mutex> guard(state().lock);
    return state().live.size();
}

void qelTest::LibraryMemory::drop()
{
    State& all = state();
    const std::lock_guard<std::mutex> guard(all.lock);
    for (const auto& [block, bytes] : all.live)
    {
        close(all, block, bytes);
    }
    all.live.clear();
}
