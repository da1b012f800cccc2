// The loaded DLL as a module. Not part of the public interface.
#ifndef QEL_MODULE_H
#define QEL_MODULE_H

#include <windows.h>

namespace qelModule
{
/// Handle of this DLL, which holds its resources.
HINSTANCE handle();

#if defined(__GNUC__) && !defined(__clang__)
/// Lets the compiler's runtime make what it would otherwise allocate when the first exception is thrown or caught.
void makeExceptionReserve();

/// Frees the memory that the compiler's runtime has set aside for exceptions. None may be thrown afterwards.
void freeExceptionReserve();
#endif
} // namespace qelModule

#endif
