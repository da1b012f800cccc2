#include "qelArray.h"

unsigned char* qelMemoryControllerController::allocateArray(const long& count, const unsigned long long& elementSize)
{
    // An impossible size is passed on for the allocator to refuse.
    const bool fits = count >= 0 && (count == 0 || elementSize <= SIZE_MAX / 2 / static_cast<size_t>(count));
    const size_t bytes = fits ? static_cast<size_t>(count) * elementSize : SIZE_MAX / 2;
    return static_cast<unsigned char*>(::operator new(bytes));
}

void qelMemoryControllerController::deallocateArray(unsigned char*& block)
{
    ::operator delete(block);
    block = nullptr;
}
