#include "support/MemorySearch.h"

#include <windows.h>

#include <string.h>

size_t qelTest::occurrences(const void* memory, size_t size, const void* bytes, size_t count)
{
    const auto* at = static_cast<const unsigned char*>(memory);
    const unsigned char* end = at + size;
    const int first = *static_cast<const unsigned char*>(bytes);
    size_t found = 0;
    while (static_cast<size_t>(end - at) >= count)
    {
        at = static_cast<const unsigned char*>(memchr(at, first, static_cast<size_t>(end - at) - count + 1));
        if (at == nullptr)
        {
            break;
        }
        found += memcmp(at, bytes, count) == 0 ? 1U : 0U;
        ++at;
    }
    return found;
}

size_t qelTest::occurrencesInHeaps(const void* bytes, size_t count)
{
    MEMORY_BASIC_INFORMATION region = {};
    VirtualQuery(&region, &region, sizeof region);
    const void* stack = region.AllocationBase;
    size_t found = 0;
    const unsigned char* at = nullptr;
    while (VirtualQuery(at, &region, sizeof region) == sizeof region)
    {
        const bool readable = region.State == MEM_COMMIT &&
                              (region.Protect == PAGE_READWRITE || region.Protect == PAGE_EXECUTE_READWRITE);
        if (readable && region.Type == MEM_PRIVATE && region.AllocationBase != stack)
        {
            found += occurrences(region.BaseAddress, region.RegionSize, bytes, count);
        }
        at = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize;
    }
    return found;
}
