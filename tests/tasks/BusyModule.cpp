// A module with a pool whose worker is inside the lock of the queue when the process ends. The system ends the worker
// there, then the pool is destroyed.

#include "qelThreadsPool.h"
#include "support/ImportHook.h"

#include <windows.h>

extern "C" __declspec(dllexport) void keepBusy();

namespace
{
DWORD mainThread = 0;
volatile LONG isInside = 0;

BOOL WINAPI stayInsideTheLock(HANDLE event)
{
    if (GetCurrentThreadId() != mainThread)
    {
        InterlockedExchange(&isInside, 1);
        Sleep(INFINITE);
    }
    return SetEvent(event);
}

void queueAnother(void* pool)
{
    static_cast<qelThreadsPool*>(pool)->QueueTask(&queueAnother, pool);
}

/// Made before the pool, and so destroyed after it: the exit code tells that the process got there.
struct Witness
{
    ~Witness() { TerminateProcess(GetCurrentProcess(), 42); }
};
} // namespace

void keepBusy()
{
    mainThread = GetCurrentThreadId();
    static const Witness witness;
    static const qelTest::ImportHook hook("SetEvent", &stayInsideTheLock);
    static qelThreadsPool pool;
    pool.QueueTask(&queueAnother, &pool);
    while (isInside == 0)
    {
        Sleep(1);
    }
}
