#include "module/Module.h"

namespace
{
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): set once, when the library is loaded
HINSTANCE moduleHandle = nullptr;
} // namespace

HINSTANCE qelModule::handle()
{
    return moduleHandle;
}

// Runs under the loader lock: it only keeps the handle.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        moduleHandle = module;
    }
    return TRUE;
}
