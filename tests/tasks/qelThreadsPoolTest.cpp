// A pool from its construction to the end of its workers.

#include "tasks/PoolTest.h"

#include <limits.h>

#include <string>
#include <thread>
#include <type_traits>

using qelTest::comesTrue;
using qelTest::eventOf;
using qelTest::Gate;
using qelTest::giveWorkersTime;
using qelTest::increment;
using qelTest::isSignalled;
using qelTest::Journal;
using qelTest::workerOf;

using Numbers = std::vector<int>;

static_assert(sizeof(qelThreadsPool) == 48 && alignof(qelThreadsPool) == 8, "count, three handles, list, flag");
static_assert(!std::is_polymorphic<qelThreadsPool>::value, "no virtual table");
static_assert(
    std::is_same<decltype(&qelThreadsPool::QueueTask), void (qelThreadsPool::*)(void (*)(void*), void*)>::value,
    "a plain function and one pointer");
static_assert(std::is_same<decltype(&qelThreadsPool::WaitForThreadsToFinishWork), void (qelThreadsPool::*)()>::value,
              "no result");

namespace
{
TEST(qelThreadsPool, StartsFourWorkersByDefault)
{
    Gate gate;
    qelThreadsPool pool;
    for (int i = 0; i < 6; ++i)
    {
        pool.QueueTask(&Gate::task, &gate);
    }
    EXPECT_TRUE(comesTrue([&] { return gate.arrived() == 4; }));
    giveWorkersTime();
    EXPECT_EQ(gate.arrived(), 4);
    gate.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(gate.passed(), 6);
}

TEST(qelThreadsPool, RunsAsManyTasksAtOnceAsThereAreWorkers)
{
    for (int workers : {1, 3, 64})
    {
        Gate gate;
        qelThreadsPool pool(workers);
        for (int i = 0; i < workers + 2; ++i)
        {
            pool.QueueTask(&Gate::task, &gate);
        }
        EXPECT_TRUE(comesTrue([&] { return gate.arrived() == workers; }));
        giveWorkersTime();
        EXPECT_EQ(gate.arrived(), workers);
        gate.open();
        pool.WaitForThreadsToFinishWork();
        EXPECT_EQ(gate.passed(), workers + 2);
    }
}

TEST(qelThreadsPool, OnlyQueuesWithoutWorkers)
{
    for (int workers : {0, -1, INT_MIN})
    {
        std::atomic<int> ran(0);
        qelThreadsPool pool(workers);
        pool.QueueTask(&increment, &ran);
        pool.QueueTask(&increment, &ran);
        EXPECT_TRUE(isSignalled(eventOf(pool)));
        pool.WaitForThreadsToFinishWork();
        pool.QueueTask(&increment, &ran);
        pool.WaitForThreadsToFinishWork();
        EXPECT_EQ(ran, 0) << workers;
    }
}

TEST(qelThreadsPool, KeepsItsMembersInTheirOrder)
{
    qelThreadsPool pool(2);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&pool);
    int count = 0;
    memcpy(&count, bytes, sizeof count);
    EXPECT_EQ(count, 2);
    void* members[4];
    memcpy(members, bytes + 8, sizeof members);
    EXPECT_EQ(members[0], pool.*member(PoolHandles()));
    EXPECT_EQ(members[1], nullptr);
    EXPECT_EQ(members[2], qelTest::lockOf(pool));
    EXPECT_EQ(members[3], eventOf(pool));
    EXPECT_EQ(bytes[40], 0);
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(bytes[40], 1);

    qelThreadsPool negative(-3);
    // NOLINTNEXTLINE(bugprone-undefined-memory-manipulation): looks at the layout, as a host does that was built before
    memcpy(&count, &negative, sizeof count);
    EXPECT_EQ(count, -3) << "the count is kept as given";
}

std::vector<std::string>& calls()
{
    static std::vector<std::string> names;
    return names;
}

void WINAPI noteInitializeLock(CRITICAL_SECTION* section)
{
    calls().emplace_back("lock");
    InitializeCriticalSection(section);
}

HANDLE WINAPI noteCreateEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled, const wchar_t* name)
{
    const bool expected = security == nullptr && manual && !signalled && name == nullptr;
    calls().push_back(expected ? "event" : "another event");
    return CreateEventW(security, manual, signalled, name);
}

HANDLE WINAPI noteCreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                               void* argument, DWORD flags, DWORD* id)
{
    calls().push_back(security == nullptr && stack == 0 && flags == 0 ? "thread" : "another thread");
    return CreateThread(security, stack, start, argument, flags, id);
}

TEST(qelThreadsPool, HasItsLockAndItsEventBeforeTheFirstWorker)
{
    const qelTest::ImportHook lockHook("InitializeCriticalSection", &noteInitializeLock);
    const qelTest::ImportHook eventHook("CreateEventW", &noteCreateEvent);
    const qelTest::ImportHook threadHook("CreateThread", &noteCreateThread);
    calls().clear();
    qelThreadsPool pool(2);
    EXPECT_EQ(calls(), (std::vector<std::string>{"event", "lock", "thread", "thread"}));
    pool.WaitForThreadsToFinishWork();
}

TEST(qelThreadsPoolQueueTask, RunsPendingTasksLastInFirstOut)
{
    Journal journal;
    Gate gate;
    qelThreadsPool pool(1);
    gate.occupy(pool, 1);
    journal.queue(pool, 1);
    journal.queue(pool, 2);
    journal.queue(pool, 3);
    gate.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(journal.numbers(), (Numbers{3, 2, 1}));
}

TEST(qelThreadsPoolQueueTask, PutsANewTaskBeforeThosePending)
{
    Journal journal;
    Gate first;
    Gate second;
    qelThreadsPool pool(1);
    first.occupy(pool, 1);
    journal.queue(pool, 1);
    journal.queue(pool, 2);
    pool.QueueTask(&Gate::task, &second);
    journal.queue(pool, 3);
    first.open();
    ASSERT_TRUE(comesTrue([&] { return second.arrived() == 1; }));
    journal.queue(pool, 4);
    second.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(journal.numbers(), (Numbers{3, 4, 2, 1}));
}

TEST(qelThreadsPoolQueueTask, NeverRunsTheTaskItself)
{
    struct Note
    {
        static void task(void* thread) { *static_cast<DWORD*>(thread) = GetCurrentThreadId(); }
    };
    DWORD ranOn = 0;
    qelThreadsPool pool(1);
    pool.QueueTask(&Note::task, &ranOn);
    pool.WaitForThreadsToFinishWork();
    EXPECT_NE(ranOn, 0U);
    EXPECT_NE(ranOn, GetCurrentThreadId());
}

TEST(qelThreadsPoolQueueTask, HandsOverTheArgumentAsItIs)
{
    struct Note
    {
        static std::atomic<int>& nulls()
        {
            static std::atomic<int> count;
            return count;
        }
        static void task(void* argument) { nulls() += argument == nullptr ? 1 : 100; }
    };
    Note::nulls() = 0;
    qelThreadsPool pool(2);
    pool.QueueTask(&Note::task, nullptr);
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(Note::nulls(), 1);
}

TEST(qelThreadsPoolQueueTask, WakesSleepingWorkersAgainAndAgain)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(3);
    for (int i = 1; i <= 200; ++i)
    {
        pool.QueueTask(&increment, &ran);
        ASSERT_TRUE(comesTrue([&] { return ran == i; })) << i;
    }
    pool.WaitForThreadsToFinishWork();
}

TEST(qelThreadsPoolQueueTask, SignalsTheEventWhileThereIsWork)
{
    Gate gate;
    std::atomic<int> ran(0);
    qelThreadsPool pool(1);
    EXPECT_FALSE(isSignalled(eventOf(pool)));
    gate.occupy(pool, 1);
    pool.QueueTask(&increment, &ran);
    EXPECT_TRUE(isSignalled(eventOf(pool)));
    EXPECT_TRUE(isSignalled(eventOf(pool))) << "reset by hand only";
    gate.open();
    EXPECT_TRUE(comesTrue([&] { return ran == 1; }));
    EXPECT_TRUE(comesTrue([&] { return !isSignalled(eventOf(pool)); })) << "reset by the worker that finds no more";
    pool.WaitForThreadsToFinishWork();
    EXPECT_TRUE(isSignalled(eventOf(pool))) << "stays signalled from then on";
}

TEST(qelThreadsPoolQueueTask, IsOpenToTasksOfTheSamePool)
{
    struct Splitter
    {
        qelThreadsPool* pool;
        std::atomic<int>* ran;
        int depth;

        static void task(void* argument)
        {
            auto* self = static_cast<Splitter*>(argument);
            ++*self->ran;
            for (int i = 0; self->depth > 0 && i < 2; ++i)
            {
                self->pool->QueueTask(&Splitter::task, new Splitter{self->pool, self->ran, self->depth - 1});
            }
            delete self;
        }
    };

    // Most of them are queued while the pool is already stopping.
    std::atomic<int> ran(0);
    qelThreadsPool pool(4);
    pool.QueueTask(&Splitter::task, new Splitter{&pool, &ran, 11});
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 4095);
}

TEST(qelThreadsPoolQueueTask, SharesAnAllocationWithManyTasks)
{
    const qelTest::HeapCount heap;
    qelThreadsPool pool(0);
    const int before = qelTest::HeapCount::allocated();
    for (int i = 0; i < 1000; ++i)
    {
        pool.QueueTask(&increment, nullptr);
    }
    EXPECT_GT(qelTest::HeapCount::allocated(), before);
    EXPECT_LE(qelTest::HeapCount::allocated(), before + 10);
}

TEST(qelThreadsPoolQueueTask, UsesTheMemoryOfTasksThatHaveRun)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(1);
    pool.QueueTask(&increment, &ran);
    const qelTest::HeapCount heap;
    for (int i = 1; i <= 500; ++i)
    {
        pool.QueueTask(&increment, &ran);
        ASSERT_TRUE(comesTrue([&] { return ran == i + 1; })) << i;
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(qelTest::HeapCount::allocated(), 0);
}

TEST(qelThreadsPoolQueueTask, IsOpenToSeveralThreads)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(2);
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
    {
        callers.emplace_back([&] {
            for (int k = 0; k < 2000; ++k)
            {
                pool.QueueTask(&increment, &ran);
            }
        });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 8000);
}

TEST(qelThreadsPoolWait, ReturnsAfterAllTasksHaveRun)
{
    struct Slow
    {
        static void task(void* counter)
        {
            Sleep(5);
            increment(counter);
        }
    };
    std::atomic<int> ran(0);
    qelThreadsPool pool;
    for (int i = 0; i < 10; ++i)
    {
        pool.QueueTask(&Slow::task, &ran);
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 10);
}

TEST(qelThreadsPoolWait, ReturnsWhenAllWorkersHaveEnded)
{
    qelThreadsPool pool(5);
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_FALSE(isSignalled(workerOf(pool, i)));
    }
    pool.WaitForThreadsToFinishWork();
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_TRUE(isSignalled(workerOf(pool, i)));
        DWORD result = 1;
        EXPECT_TRUE(GetExitCodeThread(workerOf(pool, i), &result));
        EXPECT_EQ(result, 0U);
    }
    EXPECT_TRUE(TryEnterCriticalSection(qelTest::lockOf(pool))) << "released by all of them";
    LeaveCriticalSection(qelTest::lockOf(pool));
}

TEST(qelThreadsPoolWait, IsTheEndOfThePool)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(2);
    pool.WaitForThreadsToFinishWork();
    pool.QueueTask(&increment, &ran);
    giveWorkersTime();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolWait, TakesTasksQueuedWhileWorkersAreStillBusy)
{
    Gate gate;
    std::atomic<int> ran(0);
    qelThreadsPool pool(1);
    gate.occupy(pool, 1);
    std::thread waiter([&] { pool.WaitForThreadsToFinishWork(); });
    ASSERT_TRUE(comesTrue([&] { return isSignalled(eventOf(pool)); }));
    pool.QueueTask(&increment, &ran);
    gate.open();
    waiter.join();
    EXPECT_EQ(ran, 1);
}

TEST(qelThreadsPoolWait, WaitsForUpTo64Workers)
{
    for (int workers : {1, 64})
    {
        Gate gate;
        std::atomic<bool> returned(false);
        qelThreadsPool pool(workers);
        gate.occupy(pool, workers);
        std::thread waiter([&] {
            pool.WaitForThreadsToFinishWork();
            returned = true;
        });
        ASSERT_TRUE(comesTrue([&] { return isSignalled(eventOf(pool)); }));
        giveWorkersTime();
        EXPECT_FALSE(returned) << workers;
        gate.open();
        waiter.join();
        EXPECT_EQ(gate.passed(), workers);
    }
}

TEST(qelThreadsPoolWait, ReturnsAtOnceWithMoreThan64Workers)
{
    Gate gate;
    std::atomic<int> ran(0);
    qelThreadsPool pool(65);
    gate.occupy(pool, 65);
    pool.QueueTask(&increment, &ran);
    pool.WaitForThreadsToFinishWork(); // would hang: no worker can end yet
    EXPECT_EQ(gate.passed(), 0);
    gate.open();
    for (int i = 0; i < 65; ++i)
    {
        EXPECT_EQ(WaitForSingleObject(workerOf(pool, i), 30000), WAIT_OBJECT_0);
    }
    EXPECT_EQ(gate.passed(), 65);
    EXPECT_EQ(ran, 1) << "the workers drain the queue before they end";
}

// One worker, kept busy while `pending` tasks are queued; then it goes on.
class WrappedQueue
{
public:
    explicit WrappedQueue(int pending)
        : m_pool(1)
    {
        m_gate.occupy(m_pool, 1);
        for (int i = 0; i < pending; ++i)
        {
            m_pool.QueueTask(&increment, &m_ran);
        }
    }

    qelThreadsPool& pool() { return m_pool; }
    int ran() const { return m_ran; }

    void letWorkerGoOn()
    {
        m_gate.open();
        ASSERT_TRUE(comesTrue([&] { return m_gate.passed() == 1; }));
    }

    void queueOneMore() { m_pool.QueueTask(&increment, &m_ran); }

private:
    Gate m_gate;
    std::atomic<int> m_ran{0};
    qelThreadsPool m_pool;
};

TEST(qelThreadsPoolCount, TakesAQueueOf65536TasksForEmpty)
{
    WrappedQueue queue(65536);
    EXPECT_FALSE(isSignalled(eventOf(queue.pool()))) << "idle workers sleep";
    queue.letWorkerGoOn();
    giveWorkersTime();
    EXPECT_EQ(queue.ran(), 0);

    // One more counts as the first: it is taken, and the rest is left alone again.
    queue.queueOneMore();
    EXPECT_TRUE(comesTrue([&] { return queue.ran() == 1; }));
    giveWorkersTime();
    EXPECT_EQ(queue.ran(), 1);
    EXPECT_FALSE(isSignalled(eventOf(queue.pool())));

    queue.pool().WaitForThreadsToFinishWork();
    EXPECT_EQ(queue.ran(), 1);
}

TEST(qelThreadsPoolCount, EndsStoppingWorkersAt65536Tasks)
{
    WrappedQueue queue(65536);
    std::thread waiter([&] { queue.pool().WaitForThreadsToFinishWork(); });
    ASSERT_TRUE(comesTrue([&] { return isSignalled(eventOf(queue.pool())); }));
    queue.letWorkerGoOn();
    waiter.join();
    EXPECT_EQ(queue.ran(), 0);
}

TEST(qelThreadsPoolCount, DrainsALongerQueueDownTo65536)
{
    WrappedQueue queue(65536 + 3);
    queue.letWorkerGoOn();
    queue.pool().WaitForThreadsToFinishWork();
    EXPECT_EQ(queue.ran(), 3);
}

TEST(qelThreadsPoolCount, RunsAllOf65535Tasks)
{
    WrappedQueue queue(65535);
    queue.letWorkerGoOn();
    queue.pool().WaitForThreadsToFinishWork();
    EXPECT_EQ(queue.ran(), 65535);
}

TEST(qelThreadsPoolStress, RunsAMillionTasksOnceEach)
{
    struct Cell
    {
        static std::atomic<int>& ran()
        {
            static std::atomic<int> count;
            return count;
        }
        static void task(void* cell)
        {
            ++*static_cast<std::atomic<unsigned char>*>(cell);
            ++ran();
        }
    };
    Cell::ran() = 0;
    const int tasks = 1000000;
    std::vector<std::atomic<unsigned char>> cells(tasks);
    qelThreadsPool pool(2);
    for (int i = 0; i < tasks; ++i)
    {
        // Never so many at once that they count as none.
        if (i - Cell::ran() > 60000)
        {
            ASSERT_TRUE(comesTrue([&] { return i - Cell::ran() < 20000; }));
        }
        pool.QueueTask(&Cell::task, &cells[static_cast<size_t>(i)]);
    }
    pool.WaitForThreadsToFinishWork();
    for (int i = 0; i < tasks; ++i)
    {
        ASSERT_EQ(cells[static_cast<size_t>(i)], 1) << i;
    }
}

TEST(qelThreadsPoolStress, LosesNoTaskInAHundredPools)
{
    for (int round = 0; round < 100; ++round)
    {
        std::atomic<int> ran(0);
        qelThreadsPool pool(1 + round % 8);
        for (int i = 0; i < 300; ++i)
        {
            pool.QueueTask(&increment, &ran);
        }
        pool.WaitForThreadsToFinishWork();
        ASSERT_EQ(ran, 300) << round;
    }
}

TEST(qelThreadsPoolStress, QueuesInTimeThatDoesNotGrowWithTheQueue)
{
    const auto queueing = [](qelThreadsPool& pool, int tasks) {
        const ULONGLONG start = GetTickCount64();
        for (int i = 0; i < tasks; ++i)
        {
            pool.QueueTask(&increment, nullptr);
        }
        return GetTickCount64() - start;
    };
    qelThreadsPool pool(0);
    const ULONGLONG whileShort = queueing(pool, 10000);
    queueing(pool, 45000);
    EXPECT_LT(queueing(pool, 10000), 5 * whileShort + 200) << "a walk costs ten times as much";
}
} // namespace
