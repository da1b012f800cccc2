// A module that uses the library in its DllMain, when it comes and when it goes, under the loader's lock.

#include "qelLogfile.h"
#include "qelRegistry.h"
#include "qelThreadsPool.h"

#include "endings/Ways.h"

#include <windows.h>

namespace
{
void doNothing(void*) {}

/// All that a module may want to do when it goes: write to a log, read the registry, destroy a pool and strings.
void useLibrary()
{
    qelLogfile::setLogStatus(1);
    qelLogfile log(L"EndingModule.log");
    log.appendWithSave(L"In DllMain.\n");
    const qelString path = qelRegistry::getPathData(false) + L"\\file";
    qelThreadsPool pool(2);
    pool.QueueTask(&doNothing, nullptr);
}
} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        useLibrary();
        char way[32] = {};
        if (GetEnvironmentVariableA(qelTest::kWayAtAttach, way, sizeof way) != 0)
        {
            qelTest::endProcess(way);
        }
    }
    else if (reason == DLL_PROCESS_DETACH)
    {
        useLibrary();
    }
    return TRUE;
}
