// The library loaded, used and unloaded while the process runs.

#include "tasks/LoadedPool.h"

#include <atomic>

using qelTest::LoadedLibrary;
using qelTest::LoadedPool;

namespace
{
void increment(void* counter)
{
    ++*static_cast<std::atomic<int>*>(counter);
}

void arriveAndWait(void* event)
{
    HANDLE* events = static_cast<HANDLE*>(event);
    SetEvent(events[0]);
    WaitForSingleObject(events[1], INFINITE);
}

TEST(qelThreadsPoolUnload, TwoHundredTimesUsedAndUnloaded)
{
    for (int round = 0; round < 200; ++round)
    {
        ASSERT_FALSE(LoadedLibrary::isLoaded()) << round;
        std::atomic<int> ran(0);
        const LoadedLibrary library;
        LoadedPool pool(library, 3);
        for (int i = 0; i < 20; ++i)
        {
            pool.queue(&increment, &ran);
        }
        pool.wait();
        ASSERT_EQ(ran, 20) << round;
        pool.destroy();
        library.unload();
        // The workers gave the library back before the wait returned.
        ASSERT_FALSE(LoadedLibrary::isLoaded()) << round;
    }
}

TEST(qelThreadsPoolUnload, WorkersThatNeverGotATaskEndByThemselves)
{
    for (int round = 0; round < 50; ++round)
    {
        const LoadedLibrary library;
        LoadedPool pool(library, 3);
        pool.destroy();
        library.unload();
        ASSERT_TRUE(LoadedLibrary::isUnloadedSoon()) << round;
    }
}

TEST(qelThreadsPoolUnload, StaysLoadedUntilTheRunningTaskEnds)
{
    HANDLE events[2] = {CreateEventW(nullptr, TRUE, FALSE, nullptr), CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    for (int round = 0; round < 20; ++round)
    {
        ResetEvent(events[0]);
        ResetEvent(events[1]);
        const LoadedLibrary library;
        LoadedPool pool(library, 2);
        pool.queue(&arriveAndWait, events);
        ASSERT_EQ(WaitForSingleObject(events[0], 30000), WAIT_OBJECT_0);
        pool.destroy();
        library.unload();
        Sleep(2);
        ASSERT_TRUE(LoadedLibrary::isLoaded());
        SetEvent(events[1]);
        ASSERT_TRUE(LoadedLibrary::isUnloadedSoon()) << round;
    }
    CloseHandle(events[0]);
    CloseHandle(events[1]);
}
} // namespace
