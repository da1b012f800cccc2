// Refers to nothing in the library: programs that load it themselves use these as well.

#include "support/GuardedMemory.h"

#include <windows.h>

void* qelTest::allocateGuarded(size_t bytes)
{
    const size_t kPage = 4096;
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
