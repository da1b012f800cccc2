// The operators new and delete, on the heap of the C runtime.

#include <vcruntime_exception.h>
#include <vcruntime_new.h>

#include <stdint.h>
#include <stdlib.h>

extern "C" _ACRTIMP int __cdecl _callnewh(size_t size);

const std::nothrow_t std::nothrow{};

void* operator new(size_t size)
{
    for (;;)
    {
        if (void* memory = malloc(size))
        {
            return memory;
        }
        // The handler that a program has set may free memory: then once more.
        if (_callnewh(size) == 0)
        {
            // What the compiler asks for where the size of an array has overflown.
            if (size == SIZE_MAX)
            {
                throw std::bad_array_new_length();
            }
            throw std::bad_alloc();
        }
    }
}

void* operator new[](size_t size)
{
    return operator new(size);
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return operator new(size);
    }
    catch (...)
    {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept
{
    free(memory);
}

void operator delete[](void* memory) noexcept
{
    free(memory);
}

void operator delete(void* memory, size_t) noexcept
{
    free(memory);
}

void operator delete[](void* memory, size_t) noexcept
{
    free(memory);
}
