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

// Runs under the loader lock: it keeps the handle, and makes and frees the runtime's reserve for exceptions.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, [[maybe_unused]] LPVOID processEnds)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        moduleHandle = module;
#if defined(__GNUC__) && !defined(__clang__)
        qelModule::makeExceptionReserve();
#endif
    }
#if defined(__GNUC__) && !defined(__clang__)
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr)
    {
        qelModule::freeExceptionReserve();
    }
#endif
    return TRUE;
}
