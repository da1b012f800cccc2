// A module with a pool whose worker is inside the lock of the queue when the process ends. The system ends the worker
// there, then it unloads the module, and the pool and a copy of it are destroyed.

#include "qelThreadsPool.h"
#include "support/ImportHook.h"
#include "support/PrivateMembers.h"

#include <windows.h>

struct PoolLock
{
    using type = void* qelThreadsPool::*;
    friend type member(PoolLock);
};

template struct PrivateMember<PoolLock, &qelThreadsPool::m_queueMutex>;

extern "C" __declspec(dllexport) void keepBusy();
extern "C" __declspec(dllexport) void endInATask();

namespace
{
void* lockOfPool = nullptr;
DWORD endingThread = 0;
volatile LONG isInside = 0;

/// Called by a worker that finds the queue empty after a task, in the lock.
BOOL WINAPI stayInsideTheLock(HANDLE)
{
    InterlockedExchange(&isInside, 1);
    Sleep(INFINITE);
    return FALSE;
}

/// Windows ends a process that enters the lock of an ended thread while it ends, Wine lets it in: both would hide the
/// mistake, so it gets an exit code of its own.
void WINAPI enterLock(CRITICAL_SECTION* section)
{
    if (section == lockOfPool && isInside != 0 && GetCurrentThreadId() == endingThread)
    {
        TerminateProcess(GetCurrentProcess(), 5);
    }
    EnterCriticalSection(section);
}

void doNothing(void*) {}

/// Ends the process as soon as another worker is inside the lock.
void endProcess(void*)
{
    endingThread = GetCurrentThreadId();
    while (isInside == 0)
    {
        Sleep(1);
    }
    ExitProcess(6); // the witness has another opinion
}

/// Made before the pool, and so destroyed after it: the exit code tells that the process got there.
struct Witness
{
    ~Witness() { TerminateProcess(GetCurrentProcess(), 42); }
};

void runUntilAWorkerIsInside(void (*task)(void*))
{
    static const Witness witness;
    static const qelTest::ImportHook resetHook("ResetEvent", &stayInsideTheLock);
    static const qelTest::ImportHook enterHook("EnterCriticalSection", &enterLock);
    static qelThreadsPool pool;
    static const qelThreadsPool copy(pool);
    lockOfPool = pool.*member(PoolLock());
    pool.QueueTask(task, nullptr);
    while (isInside == 0)
    {
        Sleep(1);
    }
}
} // namespace

void keepBusy()
{
    endingThread = GetCurrentThreadId();
    runUntilAWorkerIsInside(&doNothing);
}

void endInATask()
{
    runUntilAWorkerIsInside(&endProcess);
    Sleep(INFINITE);
}
