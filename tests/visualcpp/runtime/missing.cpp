// Functions of the C runtime that Wine's does not have.

#include <errno.h>
#include <stdlib.h>
#include <string.h>

// The compiler refers to it wherever floating-point numbers are used.
extern "C" int _fltused = 0x9875;

extern "C" errno_t __cdecl _strset_s(char* buffer, size_t capacity, int character)
{
    const size_t length = buffer == nullptr ? 0 : strnlen(buffer, capacity);
    if (length == capacity)
    {
        if (length != 0)
        {
            *buffer = 0;
        }
        errno = EINVAL;
        return EINVAL;
    }
    memset(buffer, character, length);
    return 0;
}
