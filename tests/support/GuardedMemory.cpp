#include "support/GuardedMemory.h"

#include <windows.h>

#include <stdlib.h>

#include <set>

namespace
{
const size_t kPage = 4096;

std::set<void*>& liveBlocks()
{
    static std::set<void*> blocks;
    return blocks;
}

void* guardedMalloc(size_t bytes)
{
    void* block = qelTest::allocateGuarded(bytes);
    liveBlocks().insert(block);
    return block;
}

void guardedFree(void* block)
{
    // What the library allocated before the hook was there goes back to where it came from.
    if (liveBlocks().erase(block) != 0)
    {
        qelTest::releaseGuarded(block);
    }
    else
    {
        free(block);
    }
}
} // namespace

void* qelTest::allocateGuarded(size_t bytes)
{
    const size_t pages = (bytes + kPage - 1) / kPage;
    auto* base = static_cast<unsigned char*>(VirtualAlloc(nullptr, (pages + 2) * kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (pages > 0)
    {
        VirtualAlloc(base + kPage, pages * kPage, MEM_COMMIT, PAGE_READWRITE);
    }
    return base + (pages + 1) * kPage - bytes;
}

void qelTest::releaseGuarded(void* block)
{
    MEMORY_BASIC_INFORMATION memory;
    VirtualQuery(block, &memory, sizeof memory);
    VirtualFree(memory.AllocationBase, 0, MEM_RELEASE);
}

qelTest::GuardedHeap::GuardedHeap()
    : m_malloc("malloc", &guardedMalloc)
    , m_free("free", &guardedFree)
{
}
