// The end of a pool: destruction at any time, leaks, refusals of the system, and the end of the process.

#include "support/StartProcess.h"
#include "tasks/PoolTest.h"

#include <memory>
#include <new>
#include <string>
#include <thread>

using qelTest::comesTrue;
using qelTest::Gate;
using qelTest::giveWorkersTime;
using qelTest::HeapCount;
using qelTest::ImportHook;
using qelTest::increment;
using qelTest::liveHandles;
using qelTest::lockOf;
using qelTest::workerOf;
using qelTest::WorkersWatch;

namespace
{
TEST(qelThreadsPoolDestroy, StopsTheWorkersAfterTheirCurrentTasks)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(3);
    const WorkersWatch workers(*pool, 3);
    gate.occupy(*pool, 2);
    gate.occupy(*pool, 1);
    for (int i = 0; i < 100; ++i)
    {
        pool->QueueTask(&increment, &ran);
    }
    pool.reset();
    EXPECT_EQ(workers.running(), 3) << "never waits for a running task";
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(gate.passed(), 3);
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolDestroy, EndsSleepingWorkers)
{
    auto pool = std::make_unique<qelThreadsPool>(4);
    const WorkersWatch workers(*pool, 4);
    giveWorkersTime();
    pool.reset();
    EXPECT_TRUE(workers.end());
}

TEST(qelThreadsPoolDestroy, AtOnceAfterTheStart)
{
    for (int round = 0; round < 100; ++round)
    {
        auto pool = std::make_unique<qelThreadsPool>(2);
        const WorkersWatch workers(*pool, 2);
        pool.reset();
        ASSERT_TRUE(workers.end()) << round;
    }
}

TEST(qelThreadsPoolDestroy, ByATaskOfItsOwn)
{
    struct Suicide
    {
        static void task(void* pool) { delete static_cast<qelThreadsPool*>(pool); }
    };
    auto* pool = new qelThreadsPool(2);
    const WorkersWatch workers(*pool, 2);
    pool->QueueTask(&Suicide::task, pool);
    EXPECT_TRUE(workers.end());
}

TEST(qelThreadsPoolDestroy, ByItsOnlyWorkerWhileACopyIsInUse)
{
    struct Owner
    {
        std::unique_ptr<qelThreadsPool> pool = std::make_unique<qelThreadsPool>(1);
        std::atomic<bool> isTaken{false};
        std::atomic<bool> mayDestroy{false};
        std::atomic<bool> isDestroyed{false};
        static void destroy(void* argument)
        {
            auto* owner = static_cast<Owner*>(argument);
            owner->isTaken = true;
            EXPECT_TRUE(comesTrue([&] { return owner->mayDestroy.load(); }));
            owner->pool.reset();
            owner->isDestroyed = true;
        }
    };
    std::atomic<int> ran(0);
    Gate gate;
    Owner owner;
    const qelThreadsPool copy(*owner.pool);
    const WorkersWatch worker(*owner.pool, 1);
    gate.occupy(*owner.pool, 1);
    owner.pool->QueueTask(&increment, &ran);
    owner.pool->QueueTask(&Owner::destroy, &owner);
    gate.open();
    ASSERT_TRUE(comesTrue([&] { return owner.isTaken.load(); }));

    // As a copy does while it queues a task.
    CRITICAL_SECTION* lock = lockOf(copy);
    EnterCriticalSection(lock);
    owner.mayDestroy = true;
    EXPECT_TRUE(comesTrue([&] { return owner.isDestroyed.load(); }));
    LeaveCriticalSection(lock);
    EXPECT_TRUE(worker.end());
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolDestroy, DoesNotRunWhatMoreThan64WorkersHaveNotTakenYet)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(65);
    const WorkersWatch workers(*pool, 65);
    gate.occupy(*pool, 65);
    pool->QueueTask(&increment, &ran);
    pool->WaitForThreadsToFinishWork();
    pool.reset();
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(ran, 0);
}

// A pool, a copy, pending tasks; waited for or not.
void usePools(bool wait)
{
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(3);
    const WorkersWatch workers(*pool, 3);
    gate.occupy(*pool, 3);
    for (int i = 0; i < 20; ++i)
    {
        pool->QueueTask(&Gate::task, &gate);
    }
    auto copy = std::make_unique<qelThreadsPool>(*pool);
    copy->QueueTask(&Gate::task, &gate);
    if (wait)
    {
        gate.open();
        pool->WaitForThreadsToFinishWork();
        pool->QueueTask(&Gate::task, &gate);
    }
    pool.reset();
    copy.reset();
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(gate.passed(), wait ? 23 : 3);
}

TEST(qelThreadsPoolDestroy, FreesEveryBlockOnce)
{
    for (bool wait : {true, false})
    {
        const HeapCount heap;
        usePools(wait);
        EXPECT_GE(HeapCount::allocated(), 4) << "workers, handles, tasks of the pool, tasks of the copy";
        EXPECT_EQ(HeapCount::freed(), HeapCount::allocated()) << wait;
    }
}

BOOL WINAPI countClose(HANDLE handle)
{
    const BOOL closed = CloseHandle(handle);
    if (!closed)
    {
        ADD_FAILURE() << "closed a handle that was not open";
    }
    return closed;
}

TEST(qelThreadsPoolDestroy, ClosesEveryHandleOnce)
{
    const ImportHook hook("CloseHandle", &countClose);
    usePools(false);
    const int before = liveHandles();
    for (bool wait : {true, false})
    {
        for (int i = 0; i < 10; ++i)
        {
            usePools(wait);
        }
        EXPECT_EQ(liveHandles(), before) << wait;
    }
}

TEST(qelThreadsPoolDestroy, FreesAndClosesTheSameInAHundredRaces)
{
    const int before = liveHandles();
    const HeapCount heap;
    for (int round = 0; round < 100; ++round)
    {
        std::atomic<int> ran(0);
        auto pool = std::make_unique<qelThreadsPool>(4);
        const WorkersWatch workers(*pool, 4);
        for (int i = 0; i < 50; ++i)
        {
            pool->QueueTask(&increment, &ran);
        }
        pool.reset();
        ASSERT_TRUE(workers.end()) << round;
        ASSERT_LE(ran, 50);
    }
    EXPECT_EQ(HeapCount::freed(), HeapCount::allocated());
    EXPECT_EQ(liveHandles(), before);
}

TEST(qelThreadsPoolWorker, EndedByItsTaskLeavesTheOthersAtWork)
{
    struct Quit
    {
        static void task(void*) { ExitThread(5); }
    };
    std::atomic<int> ran(0);
    qelThreadsPool pool(2);
    pool.QueueTask(&Quit::task, nullptr);
    EXPECT_TRUE(
        comesTrue([&] { return qelTest::isSignalled(workerOf(pool, 0)) || qelTest::isSignalled(workerOf(pool, 1)); }));
    for (int i = 0; i < 100; ++i)
    {
        pool.QueueTask(&increment, &ran);
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 100);
}

std::atomic<int> inside(0);

// Called by a worker that finds the queue empty after a task, in the lock.
BOOL WINAPI stayInsideTheLock(HANDLE)
{
    ++inside;
    Sleep(INFINITE);
    return FALSE;
}

BOOL WINAPI endInsideTheLock(HANDLE)
{
    ++inside;
    ExitThread(0);
}

// Destroys a pool whose only worker was ended inside the lock: nobody is left who could use the queue.
void destroyWithEndedWorker(BOOL(WINAPI* whatTheWorkerDoes)(HANDLE), bool terminate)
{
    const ImportHook hook("ResetEvent", whatTheWorkerDoes);
    inside = 0;
    std::atomic<int> ran(0);
    auto pool = std::make_unique<qelThreadsPool>(1);
    auto copy = std::make_unique<qelThreadsPool>(*pool);
    const WorkersWatch worker(*pool, 1);
    pool->QueueTask(&increment, &ran);
    ASSERT_TRUE(comesTrue([&] { return inside == 1; }));
    if (terminate)
    {
        ASSERT_TRUE(TerminateThread(workerOf(*pool, 0), 0));
    }
    ASSERT_TRUE(worker.end());

    pool.reset(); // where it hangs, the watchdog comes
    copy.reset();
    EXPECT_EQ(ran, 1);
}

TEST(qelThreadsPoolDestroy, DoesNotHangWhenTheLastWorkerWasTerminatedInsideTheLock)
{
    destroyWithEndedWorker(&stayInsideTheLock, true);
}

TEST(qelThreadsPoolDestroy, DoesNotHangWhenTheLastWorkerEndedInsideTheLock)
{
    destroyWithEndedWorker(&endInsideTheLock, false);
}

HANDLE WINAPI refuseEvent(SECURITY_ATTRIBUTES*, BOOL, BOOL, const wchar_t*)
{
    return nullptr;
}

HANDLE WINAPI refuseThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*)
{
    return nullptr;
}

HANDLE WINAPI refuseEverySecondThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                                      void* argument, DWORD flags, DWORD* id)
{
    static int calls = 0;
    ++calls;
    return calls % 2 == 0 ? nullptr : CreateThread(security, stack, start, argument, flags, id);
}

BOOL WINAPI refuseModule(DWORD, const wchar_t*, HMODULE*)
{
    return FALSE;
}

// Uses a pool that cannot have any worker.
template <class Function> void useWithout(const char* name, Function* refusal)
{
    const int before = liveHandles();
    const HeapCount heap;
    {
        const ImportHook hook(name, refusal);
        std::atomic<int> ran(0);
        qelThreadsPool pool(3);
        pool.QueueTask(&increment, &ran);
        pool.QueueTask(&increment, &ran);
        qelThreadsPool copy(pool);
        copy.QueueTask(&increment, &ran);
        copy.WaitForThreadsToFinishWork();
        pool.WaitForThreadsToFinishWork();
        pool = copy;
        copy = pool;
        EXPECT_EQ(ran, 0) << name;
    }
    EXPECT_EQ(HeapCount::freed(), HeapCount::allocated()) << name;
    EXPECT_EQ(liveHandles(), before) << name;
}

TEST(qelThreadsPoolRefused, OnlyQueuesWithoutWorkers)
{
    useWithout("CreateEventW", &refuseEvent);
    useWithout("CreateThread", &refuseThread);
    useWithout("GetModuleHandleExW", &refuseModule);
}

TEST(qelThreadsPoolRefused, WorksWithTheWorkersThatItGot)
{
    std::atomic<int> ran(0);
    const int before = liveHandles();
    {
        const ImportHook hook("CreateThread", &refuseEverySecondThread);
        Gate gate;
        qelThreadsPool pool(4);
        EXPECT_EQ(workerOf(pool, 1), nullptr);
        EXPECT_EQ(workerOf(pool, 3), nullptr);
        gate.occupy(pool, 2);
        for (int i = 0; i < 100; ++i)
        {
            pool.QueueTask(&increment, &ran);
        }
        gate.open();
        pool.WaitForThreadsToFinishWork();
        EXPECT_EQ(ran, 100);
    }
    EXPECT_EQ(liveHandles(), before);
}

// The allocations of this thread that succeed before one is refused; negative when none is. The runtime needs memory of
// its own to throw.
thread_local int allocationsLeft = -1;

void* refuseOnce(size_t bytes)
{
    const bool refused = allocationsLeft == 0;
    allocationsLeft -= allocationsLeft >= 0 ? 1 : 0;
    return refused ? nullptr : malloc(bytes);
}

template <class Action> bool runsOutOfMemory(int after, Action action)
{
    allocationsLeft = after;
    bool refused = false;
    try
    {
        action();
    }
    catch (const std::bad_alloc&)
    {
        refused = true;
    }
    allocationsLeft = -1;
    return refused;
}

void runOutOfMemoryEverywhere()
{
    const ImportHook hook("malloc", &refuseOnce);
    std::atomic<int> ran(0);
    EXPECT_TRUE(runsOutOfMemory(0, [] { const qelThreadsPool pool(2); }));
    EXPECT_TRUE(runsOutOfMemory(1, [] { const qelThreadsPool pool(2); }));
    EXPECT_FALSE(runsOutOfMemory(2, [] { const qelThreadsPool pool(0); })) << "no worker that outlives it";

    Gate gate;
    qelThreadsPool pool(1);
    qelThreadsPool other(1);
    EXPECT_TRUE(runsOutOfMemory(0, [&] { pool.QueueTask(&increment, &ran); }));
    gate.occupy(pool, 1);
    for (int i = 0; i < 20; ++i)
    {
        pool.QueueTask(&increment, &ran); // a copy has 210, more than there is memory for yet
    }
    EXPECT_TRUE(runsOutOfMemory(0, [&] { const qelThreadsPool copy(pool); }));
    EXPECT_TRUE(runsOutOfMemory(0, [&] { other = pool; }));
    EXPECT_FALSE(runsOutOfMemory(1, [&] { const qelThreadsPool copy(pool); }));
    gate.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 20);
    other.QueueTask(&increment, &ran);
    other.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 21);
}

TEST(qelThreadsPoolRefused, MemoryLeavesThePoolAsItWas)
{
    runOutOfMemoryEverywhere(); // the compiler's runtime keeps handles of its own from the first exception on
    const int before = liveHandles();
    runOutOfMemoryEverywhere();
    EXPECT_EQ(liveHandles(), before);
}

// Exit code of a process of its own that ends in the given way; -1 when it hangs.
int exitCodeOf(const wchar_t* way)
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring command(path);
    command = L"\"" + command.substr(0, command.rfind(L'\\') + 1) + L"qelTasksBusyExit.exe\" " + way;
    PROCESS_INFORMATION process = {};
    if (!qelTest::startProcess(command, process))
    {
        return -2;
    }
    DWORD code = 0;
    const bool ended = WaitForSingleObject(process.hProcess, 20000) == WAIT_OBJECT_0;
    if (!ended)
    {
        TerminateProcess(process.hProcess, 3);
    }
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ended ? static_cast<int>(code) : -1;
}

TEST(qelThreadsPoolProcessEnd, IsWhatATaskThatThrowsGets)
{
    const int code = exitCodeOf(L"throw");
    EXPECT_NE(code, 42) << "the exception was swallowed";
    for (int other : {0, -1, -2})
    {
        EXPECT_NE(code, other) << "a good end, a hang, not started";
    }
}

TEST(qelThreadsPoolProcessEnd, DoesNotHangOnBusyWorkers)
{
    for (int round = 0; round < 5; ++round)
    {
        for (const wchar_t* way : {L"destroyed", L"static", L"leaked", L"ExitProcess", L"keepBusy", L"endInATask"})
        {
            EXPECT_EQ(exitCodeOf(way), 42) << std::string(way, way + wcslen(way));
        }
    }
}
} // namespace
