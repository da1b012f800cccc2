// What the loader calls in a DLL.

#include "initialisers.h"
#include "securityCookie.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

// Without protection of its own: it sets the cookie.
extern "C" __declspec(safebuffers) BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        setSecurityCookie();
        if (!keepExitFunctionsInModule() || !runInitialisers())
        {
            return FALSE;
        }
    }
    const BOOL result = DllMain(module, reason, reserved);
    if (reason == DLL_PROCESS_DETACH)
    {
        runExitFunctions();
    }
    return result;
}
