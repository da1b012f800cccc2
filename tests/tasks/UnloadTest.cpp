// The library loaded, used and unloaded while the process runs. Its exports are reached by their names, since importing
// one would keep the DLL loaded.

#include "qelThreadsPool.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>

namespace
{
#if defined(_MSC_VER)
const char* const kConstructor = "??0qelThreadsPool@@QEAA@H@Z";
const char* const kDestructor = "??1qelThreadsPool@@QEAA@XZ";
const char* const kQueueTask = "?QueueTask@qelThreadsPool@@QEAAXP6AXPEAX@Z0@Z";
const char* const kWait = "?WaitForThreadsToFinishWork@qelThreadsPool@@QEAAXXZ";
#else
const char* const kConstructor = "_ZN14qelThreadsPoolC1Ei";
const char* const kDestructor = "_ZN14qelThreadsPoolD1Ev";
const char* const kQueueTask = "_ZN14qelThreadsPool9QueueTaskEPFvPvES0_";
const char* const kWait = "_ZN14qelThreadsPool26WaitForThreadsToFinishWorkEv";
#endif

const wchar_t* const kLibrary = L"VarnelQELRoots.dll";

// A pool made of the exports of a library that is loaded for as long as this object says so.
class LoadedPool
{
public:
    explicit LoadedPool(int workers)
        : m_module(LoadLibraryW(kLibrary))
    {
        reinterpret_cast<void (*)(void*, int)>(address(kConstructor))(m_pool, workers);
    }

    LoadedPool(const LoadedPool&) = delete;
    LoadedPool& operator=(const LoadedPool&) = delete;

    void queue(void (*task)(void*), void* argument)
    {
        reinterpret_cast<void (*)(void*, void (*)(void*), void*)>(address(kQueueTask))(m_pool, task, argument);
    }

    void wait() { reinterpret_cast<void (*)(void*)>(address(kWait))(m_pool); }
    void destroy() { reinterpret_cast<void (*)(void*)>(address(kDestructor))(m_pool); }
    void unload() { FreeLibrary(m_module); }

private:
    void* address(const char* name) const
    {
        const FARPROC function = m_module != nullptr ? GetProcAddress(m_module, name) : nullptr;
        if (function == nullptr)
        {
            ADD_FAILURE() << name;
            exit(1);
        }
        return reinterpret_cast<void*>(function);
    }

    HMODULE m_module;
    alignas(qelThreadsPool) unsigned char m_pool[sizeof(qelThreadsPool)];
};

bool isLoaded()
{
    return GetModuleHandleW(kLibrary) != nullptr;
}

bool isUnloadedSoon()
{
    for (int i = 0; i < 30000 && isLoaded(); ++i)
    {
        Sleep(1);
    }
    return !isLoaded();
}

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
        ASSERT_FALSE(isLoaded()) << round;
        std::atomic<int> ran(0);
        LoadedPool pool(3);
        for (int i = 0; i < 20; ++i)
        {
            pool.queue(&increment, &ran);
        }
        pool.wait();
        ASSERT_EQ(ran, 20) << round;
        pool.destroy();
        pool.unload();
        // The workers gave the library back before the wait returned.
        ASSERT_FALSE(isLoaded()) << round;
    }
}

TEST(qelThreadsPoolUnload, WorkersThatNeverGotATaskEndByThemselves)
{
    for (int round = 0; round < 50; ++round)
    {
        LoadedPool pool(3);
        pool.destroy();
        pool.unload();
        ASSERT_TRUE(isUnloadedSoon()) << round;
    }
}

TEST(qelThreadsPoolUnload, StaysLoadedUntilTheRunningTaskEnds)
{
    HANDLE events[2] = {CreateEventW(nullptr, TRUE, FALSE, nullptr), CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    for (int round = 0; round < 20; ++round)
    {
        ResetEvent(events[0]);
        ResetEvent(events[1]);
        LoadedPool pool(2);
        pool.queue(&arriveAndWait, events);
        ASSERT_EQ(WaitForSingleObject(events[0], 30000), WAIT_OBJECT_0);
        pool.destroy();
        pool.unload();
        Sleep(2);
        ASSERT_TRUE(isLoaded());
        SetEvent(events[1]);
        ASSERT_TRUE(isUnloadedSoon()) << round;
    }
    CloseHandle(events[0]);
    CloseHandle(events[1]);
}
} // namespace
