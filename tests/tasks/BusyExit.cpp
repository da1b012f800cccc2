// Ends while its workers are busy, in the way that the argument names; the exit code tells that it got there.

#include "qelThreadsPool.h"

#include <windows.h>

#include <stdlib.h>
#include <string.h>

namespace
{
volatile LONG running = 0;

void sleepForEver(void*)
{
    InterlockedIncrement(&running);
    Sleep(INFINITE);
}

void computeForEver(void*)
{
    InterlockedIncrement(&running);
    for (volatile unsigned i = 0;;)
    {
        i = i + 1;
    }
}

void queueForEver(void* pool)
{
    InterlockedIncrement(&running);
    static_cast<qelThreadsPool*>(pool)->QueueTask(&queueForEver, pool);
}

void throwSomething(void*)
{
    throw 1;
}

void makeBusy(qelThreadsPool& pool)
{
    pool.QueueTask(&queueForEver, &pool);
    pool.QueueTask(&sleepForEver, nullptr);
    pool.QueueTask(&computeForEver, nullptr);
    while (running < 20)
    {
        Sleep(1);
    }
}

void sleepAll(qelThreadsPool& pool)
{
    for (int i = 0; i < 8; ++i)
    {
        pool.QueueTask(&sleepForEver, nullptr);
    }
    while (running < 4)
    {
        Sleep(1);
    }
}
} // namespace

int main(int argc, char** argv)
{
    const char* way = argc > 1 ? argv[1] : "";
    if (strcmp(way, "destroyed") == 0)
    {
        qelThreadsPool pool;
        sleepAll(pool);
    }
    else if (strcmp(way, "static") == 0)
    {
        static qelThreadsPool pool;
        sleepAll(pool);
    }
    else if (strcmp(way, "leaked") == 0)
    {
        makeBusy(*new qelThreadsPool);
    }
    else if (strcmp(way, "ExitProcess") == 0)
    {
        qelThreadsPool pool;
        makeBusy(pool);
        ExitProcess(42);
    }
    else if (strcmp(way, "throw") == 0)
    {
        qelThreadsPool pool;
        pool.QueueTask(&throwSomething, nullptr);
        pool.WaitForThreadsToFinishWork();
    }
    else if (strcmp(way, "keepBusy") == 0 || strcmp(way, "endInATask") == 0)
    {
        const HMODULE module = LoadLibraryW(L"qelTasksBusyModule.dll");
        const FARPROC function = module != nullptr ? GetProcAddress(module, way) : nullptr;
        if (function == nullptr)
        {
            return 2;
        }
        reinterpret_cast<void (*)()>(function)();
        return 4; // the module has another opinion
    }
    else
    {
        return 1;
    }
    return 42;
}
