#include "soak/ProcessCounts.h"

#include "support/OpenHandles.h"

#include <windows.h>

#include <tlhelp32.h>

#include <stdlib.h>

#include <atomic>

using qelTest::LibraryBlocks;
using qelTest::ProcessCounts;

namespace
{
std::atomic<long long> blocks(0);

void* countedMalloc(size_t bytes)
{
    void* block = malloc(bytes);
    blocks += block != nullptr ? 1 : 0;
    return block;
}

void* countedCalloc(size_t count, size_t bytes)
{
    void* block = calloc(count, bytes);
    blocks += block != nullptr ? 1 : 0;
    return block;
}

void* countedRealloc(void* block, size_t bytes)
{
    void* moved = realloc(block, bytes);
    blocks += (moved != nullptr ? 1 : 0) - (block != nullptr && (moved != nullptr || bytes == 0) ? 1 : 0);
    return moved;
}

void countedFree(void* block)
{
    blocks -= block != nullptr ? 1 : 0;
    free(block);
}
} // namespace

LibraryBlocks::LibraryBlocks()
    : m_malloc("malloc", &countedMalloc)
    , m_calloc("calloc", &countedCalloc)
    , m_realloc("realloc", &countedRealloc)
    , m_free("free", &countedFree)
{
}

long long LibraryBlocks::count()
{
    return blocks;
}

int qelTest::threads()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

std::string qelTest::counted(long long number, const char* noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

ProcessCounts ProcessCounts::now()
{
    return {LibraryBlocks::count(), openHandles(), qelTest::threads()};
}
