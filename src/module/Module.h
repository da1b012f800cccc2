// The loaded DLL as a module. Not part of the public interface.
#ifndef QEL_MODULE_H
#define QEL_MODULE_H

#include <windows.h>

namespace qelModule
{
/// Handle of this DLL, which holds its resources.
HINSTANCE handle();
} // namespace qelModule

#endif
