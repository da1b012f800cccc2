#include "support/OpenHandles.h"

#include <windows.h>

int qelTest::openHandles(size_t end)
{
    // Handles are multiples of 4, given out from the smallest free one.
    int count = 0;
    for (size_t value = 4; value < end; value += 4)
    {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0 ? 1 : 0;
    }
    return count;
}
