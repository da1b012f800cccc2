#include "initialisers.h"

#include <stdlib.h>

#include <corecrt_startup.h>

extern "C"
{
    _ACRTIMP void __cdecl _initterm(_PVFV* first, _PVFV* last);
    _ACRTIMP int __cdecl _initterm_e(_PIFV* first, _PIFV* last);
}

// The linker sorts sections by what stands behind the $, so each pair embraces what the compiler has written.
#pragma section(".CRT$XIA", long, read)
#pragma section(".CRT$XIZ", long, read)
#pragma section(".CRT$XCA", long, read)
#pragma section(".CRT$XCZ", long, read)

namespace
{
__declspec(allocate(".CRT$XIA")) _PIFV firstThatCanFail[1] = {};
__declspec(allocate(".CRT$XIZ")) _PIFV lastThatCanFail[1] = {};
__declspec(allocate(".CRT$XCA")) _PVFV firstOfObjects[1] = {};
__declspec(allocate(".CRT$XCZ")) _PVFV lastOfObjects[1] = {};

_onexit_table_t exitFunctions;
bool inModule = false;
} // namespace

bool keepExitFunctionsInModule()
{
    inModule = _initialize_onexit_table(&exitFunctions) == 0;
    return inModule;
}

bool runInitialisers()
{
    if (_initterm_e(firstThatCanFail, lastThatCanFail) != 0)
    {
        return false;
    }
    _initterm(firstOfObjects, lastOfObjects);
    return true;
}

void runExitFunctions()
{
    _execute_onexit_table(&exitFunctions);
}

extern "C" int __cdecl atexit(void(__cdecl* function)(void))
{
    return inModule ? _register_onexit_function(&exitFunctions, reinterpret_cast<_onexit_t>(function))
                    : _crt_atexit(function);
}
