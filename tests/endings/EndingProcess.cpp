// A process that ends at a bad moment, in one of several ways.
//
// usage: qelEndingProcess MOMENT WAY WHO
//   MOMENT  tasks, log, registry, dialog or module: what goes on, or in "attach" the load of a module that ends it
//   WAY     ExitProcess, TerminateProcess, exit or abort
//   WHO     main or another: the thread that ends the process

#include "qelLogfile.h"
#include "qelProgressCtrl.h"
#include "qelRegistry.h"
#include "qelThreadsPool.h"

#include "endings/Ways.h"

#include <windows.h>

#include <stdlib.h>
#include <string.h>

namespace
{
const LONG kBusy = 20; // rounds after which everything is under way

volatile LONG rounds = 0;
const char* way = "";

void queueForEver(void* pool)
{
    InterlockedIncrement(&rounds);
    static_cast<qelThreadsPool*>(pool)->QueueTask(&queueForEver, pool);
}

void endInATask(void*)
{
    qelTest::endProcess(way);
}

DWORD WINAPI writeForEver(void*)
{
    const qelString name = L"EndingProcess.log";
    for (qelLogfile log(name);; InterlockedIncrement(&rounds))
    {
        log.appendWithSave(L"A line that may be the last one.\n");
    }
}

DWORD WINAPI askForEver(void*)
{
    for (;; InterlockedIncrement(&rounds))
    {
        (void)qelRegistry::getPathData(false);
    }
}

DWORD WINAPI endFromHere(void*)
{
    while (rounds < kBusy)
    {
        Sleep(1);
    }
    qelTest::endProcess(way);
    return 0;
}

void start(LPTHREAD_START_ROUTINE routine)
{
    CloseHandle(CreateThread(nullptr, 0, routine, nullptr, 0, nullptr));
}

/// Draws until the process ends, or until it has shown enough.
void showDialog(bool forEver)
{
    qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn();
    qelProgressCtrl::activate(L"Ending");
    for (int i = 0; forEver || i <= kBusy; ++i)
    {
        qelProgressCtrl::setPercentage(i % 100, 1);
        InterlockedIncrement(&rounds);
    }
}

/// Sets off what goes on, in threads of its own save for the dialog.
bool begin(const char* moment, bool endsHere)
{
    if (strcmp(moment, "tasks") == 0)
    {
        // Destroyed by exit(), after its workers have been ended.
        static qelThreadsPool pool(3);
        pool.QueueTask(&queueForEver, &pool);
        pool.QueueTask(&queueForEver, &pool);
        while (rounds < kBusy)
        {
            Sleep(1);
        }
        if (!endsHere)
        {
            pool.QueueTask(&endInATask, nullptr);
            Sleep(INFINITE);
        }
    }
    else if (strcmp(moment, "log") == 0)
    {
        qelLogfile::setLogStatus(1);
        start(&writeForEver);
    }
    else if (strcmp(moment, "registry") == 0)
    {
        start(&askForEver);
        start(&askForEver);
    }
    else if (strcmp(moment, "dialog") == 0)
    {
        if (!endsHere)
        {
            start(&endFromHere);
        }
        showDialog(!endsHere);
    }
    else if (strcmp(moment, "module") == 0 || strcmp(moment, "attach") == 0)
    {
        SetEnvironmentVariableA(qelTest::kWayAtAttach, strcmp(moment, "attach") == 0 ? way : nullptr);
        if (LoadLibraryW(L"qelEndingModule.dll") == nullptr)
        {
            return false;
        }
        rounds = kBusy;
    }
    else
    {
        return false;
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
    {
        return 2;
    }
    way = argv[2];
    const bool endsHere = strcmp(argv[3], "main") == 0;
    if (!begin(argv[1], endsHere))
    {
        return 4;
    }
    if (!endsHere)
    {
        start(&endFromHere);
        Sleep(INFINITE);
    }
    return static_cast<int>(endFromHere(nullptr));
}
