#include "Check.h"

#include "qelThreadsPool.h"

#include <windows.h>

namespace
{
volatile LONG done = 0;

void add(void* amount)
{
    InterlockedExchangeAdd(&done, *static_cast<LONG*>(amount));
}
} // namespace

void checkTasks()
{
    LONG amounts[] = {1, 2, 3};
    {
        qelThreadsPool pool(3);
        for (int i = 0; i < 300; ++i)
        {
            pool.QueueTask(add, &amounts[i % 3]);
        }
        const qelThreadsPool copy(pool);
        pool.WaitForThreadsToFinishWork();
    }
    CHECK(done == 600);
}
