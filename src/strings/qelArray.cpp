#include "qelArray.h"

#include <intrin.h>

unsigned char* qelMemoryControllerController::allocateArray(const long& count, const unsigned long long& elementSize)
{
    // An impossible size is left for the allocator to refuse.
    unsigned long long excess = 0;
    const size_t bytes = _umul128(static_cast<size_t>(count), elementSize, &excess);
    const bool fits = count >= 0 && excess == 0;
    return static_cast<unsigned char*>(::operator new(fits ? bytes : SIZE_MAX / 2));
}

void qelMemoryControllerController::deallocateArray(unsigned char*& block)
{
    ::operator delete(block);
    block = nullptr;
}
