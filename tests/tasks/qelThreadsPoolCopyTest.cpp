// Copies: what they share, what is their own, and who keeps the workers alive.

#include "tasks/PoolTest.h"

#include <memory>
#include <thread>
#include <utility>

using qelTest::comesTrue;
using qelTest::eventOf;
using qelTest::Gate;
using qelTest::giveWorkersTime;
using qelTest::HeapCount;
using qelTest::increment;
using qelTest::isSignalled;
using qelTest::Journal;
using qelTest::mutexOf;
using qelTest::WorkersWatch;

using Numbers = std::vector<int>;

struct PoolTasks
{
    using type = qelTasks::TaskNode* qelThreadsPool::*;
    friend type member(PoolTasks);
};

struct PoolCount
{
    using type = int qelThreadsPool::*;
    friend type member(PoolCount);
};

struct PoolStop
{
    using type = bool qelThreadsPool::*;
    friend type member(PoolStop);
};

template struct PrivateMember<PoolTasks, &qelThreadsPool::m_taskList>;
template struct PrivateMember<PoolCount, &qelThreadsPool::m_threadCount>;
template struct PrivateMember<PoolStop, &qelThreadsPool::m_stopRequested>;

namespace
{
// Allocations of a copy of `pool`, which are its nodes and the list that it is built from.
int allocationsOfCopy(const qelThreadsPool& pool)
{
    const HeapCount heap;
    const qelThreadsPool copy(pool);
    return HeapCount::allocated();
}

bool isStopRequested(const qelThreadsPool& pool)
{
    return pool.*member(PoolStop());
}

TEST(qelThreadsPoolCopy, SharesTheHandles)
{
    qelThreadsPool pool(2);
    const qelThreadsPool copy(pool);
    EXPECT_EQ(copy.*member(PoolCount()), 2);
    EXPECT_EQ(copy.*member(PoolHandles()), pool.*member(PoolHandles()));
    EXPECT_EQ(mutexOf(copy), mutexOf(pool));
    EXPECT_EQ(eventOf(copy), eventOf(pool));
    EXPECT_FALSE(isStopRequested(copy));
    pool.WaitForThreadsToFinishWork();
    EXPECT_FALSE(isStopRequested(copy)) << "the flag of a copy is its own";
    const qelThreadsPool later(pool);
    EXPECT_TRUE(isStopRequested(later));
}

TEST(qelThreadsPoolCopy, HoldsTheTasksInPassesOverEverShorterParts)
{
    // Seen through a pool that gets its own copy back: its workers then serve the list of the copy's copy.
    for (int pending = 0; pending <= 3; ++pending)
    {
        Journal journal;
        Gate gate;
        qelThreadsPool pool(1);
        gate.occupy(pool, 1);
        for (int i = pending; i > 0; --i)
        {
            journal.queue(pool, i); // position i from the head
        }
        {
            const qelThreadsPool copy(pool);
            pool = copy;
        }
        gate.open();
        pool.WaitForThreadsToFinishWork();

        // Both times: for n tasks from the head, runs 1; 2 1; 3 2 1; ...; n ... 1.
        const auto passes = [](const Numbers& from) {
            Numbers to;
            for (size_t length = 1; length <= from.size(); ++length)
            {
                for (size_t i = length; i > 0; --i)
                {
                    to.push_back(from[i - 1]);
                }
            }
            return to;
        };
        Numbers positions;
        for (int i = 1; i <= pending; ++i)
        {
            positions.push_back(i);
        }
        EXPECT_EQ(journal.numbers(), passes(passes(positions))) << pending;
    }
}

TEST(qelThreadsPoolCopy, OfTwoTasksHoldsThemAs121)
{
    // By hand: 1, 2, 1 pushed; the copy of that holds 1; 2 1; 1 2 1 from its head.
    Journal journal;
    Gate gate;
    qelThreadsPool pool(1);
    gate.occupy(pool, 1);
    journal.queue(pool, 2);
    journal.queue(pool, 1);
    const qelThreadsPool copy(pool);
    pool = copy;
    gate.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(journal.numbers(), (Numbers{1, 2, 1, 1, 2, 1}));
}

TEST(qelThreadsPoolCopy, HasNTimesNPlusOneHalfNodes)
{
    for (int tasks : {0, 1, 2, 3, 10, 100})
    {
        qelThreadsPool pool(0);
        for (int i = 0; i < tasks; ++i)
        {
            pool.QueueTask(&increment, nullptr);
        }
        EXPECT_EQ(allocationsOfCopy(pool), tasks + tasks * (tasks + 1) / 2) << tasks;
    }
}

TEST(qelThreadsPoolCopy, TakesTheLengthFromThe16BitCount)
{
    qelThreadsPool pool(0);
    for (int i = 0; i < 65536; ++i)
    {
        pool.QueueTask(&increment, nullptr);
    }
    EXPECT_EQ(allocationsOfCopy(pool), 0);
    pool.QueueTask(&increment, nullptr);
    pool.QueueTask(&increment, nullptr);
    EXPECT_EQ(allocationsOfCopy(pool), 2 + 3);
}

TEST(qelThreadsPoolCopy, IsNeverServed)
{
    std::atomic<int> ran(0);
    std::atomic<int> ranOnCopy(0);
    Gate gate;
    qelThreadsPool pool(2);
    gate.occupy(pool, 2);
    pool.QueueTask(&increment, &ran);
    qelThreadsPool copy(pool);
    copy.QueueTask(&increment, &ranOnCopy);
    gate.open();
    EXPECT_TRUE(comesTrue([&] { return ran == 1; }));
    copy.QueueTask(&increment, &ranOnCopy);
    giveWorkersTime();
    pool.WaitForThreadsToFinishWork();
    copy.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(ranOnCopy, 0);
}

TEST(qelThreadsPoolCopy, DoesNotWakeWorkersForItsOwnTasks)
{
    qelThreadsPool pool(1);
    qelThreadsPool copy(pool);
    copy.QueueTask(&increment, nullptr);
    EXPECT_FALSE(isSignalled(eventOf(pool)));
    pool.WaitForThreadsToFinishWork();
}

TEST(qelThreadsPoolCopy, MayGoBeforeTheOriginal)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(2);
    {
        qelThreadsPool copy(pool);
        const qelThreadsPool second(copy);
        copy.QueueTask(&increment, nullptr);
    }
    for (int i = 0; i < 100; ++i)
    {
        pool.QueueTask(&increment, &ran);
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 100);
}

TEST(qelThreadsPoolCopy, KeepsTheWorkersOfADestroyedOriginal)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(2);
    const qelThreadsPool copy(*pool);
    const WorkersWatch workers(*pool, 2);
    gate.occupy(*pool, 2);
    for (int i = 0; i < 50; ++i)
    {
        pool->QueueTask(&increment, &ran);
    }
    pool.reset();
    EXPECT_EQ(ran, 0);
    gate.open();
    EXPECT_TRUE(comesTrue([&] { return ran == 50; }));
    giveWorkersTime();
    EXPECT_EQ(workers.running(), 2) << "they wait for the last copy";
}

TEST(qelThreadsPoolCopy, CanBeWaitedForInsteadOfADestroyedOriginal)
{
    std::atomic<int> ran(0);
    std::vector<qelThreadsPool> pools;
    pools.emplace_back(2);
    for (int i = 0; i < 200; ++i)
    {
        pools[0].QueueTask(&increment, &ran);
    }
    pools.reserve(100); // copies the pool and destroys the original
    const WorkersWatch workers(pools[0], 2);
    pools[0].WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 200);
    EXPECT_EQ(workers.running(), 0);
}

TEST(qelThreadsPoolCopy, DoesNotStopTheWorkersOfALivingOriginal)
{
    std::atomic<int> ran(0);
    std::atomic<bool> returned(false);
    qelThreadsPool pool(2);
    qelThreadsPool copy(pool);
    std::thread waiter([&] {
        copy.WaitForThreadsToFinishWork();
        returned = true;
    });
    giveWorkersTime();
    EXPECT_FALSE(returned);
    EXPECT_FALSE(isSignalled(eventOf(pool))) << "workers sleep meanwhile";
    pool.QueueTask(&increment, &ran);
    EXPECT_TRUE(comesTrue([&] { return ran == 1; }));
    pool.WaitForThreadsToFinishWork();
    waiter.join();
    EXPECT_TRUE(returned);
}

TEST(qelThreadsPoolCopy, ThatWaitsEndsTheWorkersWhenTheOriginalGoes)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(2);
    qelThreadsPool copy(*pool);
    gate.occupy(*pool, 2);
    pool->QueueTask(&increment, &ran);
    std::thread waiter([&] { copy.WaitForThreadsToFinishWork(); });
    ASSERT_TRUE(comesTrue([&] { return isStopRequested(copy); }));
    giveWorkersTime();
    pool.reset();
    gate.open();
    waiter.join();
    EXPECT_EQ(ran, 1);
}

TEST(qelThreadsPoolCopy, TheLastOneStopsTheWorkers)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(2);
    auto copy = std::make_unique<qelThreadsPool>(*pool);
    auto last = std::make_unique<qelThreadsPool>(*copy);
    const WorkersWatch workers(*pool, 2);
    gate.occupy(*pool, 2);
    pool->QueueTask(&increment, &ran);
    pool.reset();
    copy.reset();
    last.reset();
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(gate.passed(), 2);
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolCopy, OfAFinishedPoolIsFinished)
{
    qelThreadsPool pool(3);
    pool.WaitForThreadsToFinishWork();
    qelThreadsPool copy(pool);
    copy.WaitForThreadsToFinishWork();
    EXPECT_TRUE(isStopRequested(copy));
}

TEST(qelThreadsPoolAssign, ToItselfChangesNothing)
{
    Journal journal;
    Gate gate;
    qelThreadsPool pool(1);
    gate.occupy(pool, 1);
    journal.queue(pool, 1);
    journal.queue(pool, 2);
    const qelThreadsPool& same = pool;
    pool = same;
    gate.open();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(journal.numbers(), (Numbers{2, 1}));
}

TEST(qelThreadsPoolAssign, GivesUpTheFormerWorkersAndTasks)
{
    std::atomic<int> ran(0);
    std::atomic<int> ranElsewhere(0);
    Gate gate;
    qelThreadsPool pool(2);
    qelThreadsPool other(1);
    const WorkersWatch workers(pool, 2);
    gate.occupy(pool, 2);
    pool.QueueTask(&increment, &ran);
    pool = other;
    EXPECT_EQ(pool.*member(PoolCount()), 1);
    EXPECT_EQ(pool.*member(PoolHandles()), other.*member(PoolHandles()));
    EXPECT_EQ(mutexOf(pool), mutexOf(other));
    EXPECT_EQ(eventOf(pool), eventOf(other));
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(ran, 0);

    pool.QueueTask(&increment, &ran);
    other.QueueTask(&increment, &ranElsewhere);
    other.WaitForThreadsToFinishWork();
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(ranElsewhere, 1);
}

TEST(qelThreadsPoolAssign, LeavesTheFormerWorkersToTheCopies)
{
    std::atomic<int> ran(0);
    Gate gate;
    qelThreadsPool pool(1);
    qelThreadsPool copy(pool);
    const qelThreadsPool other(0);
    gate.occupy(pool, 1);
    pool.QueueTask(&increment, &ran);
    pool = other;
    gate.open();
    copy.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 1);
}

TEST(qelThreadsPoolAssign, ReplacesTheListOfACopy)
{
    const HeapCount heap;
    {
        qelThreadsPool pool(0);
        pool.QueueTask(&increment, nullptr);
        pool.QueueTask(&increment, nullptr);
        qelThreadsPool copy(pool);
        const int before = HeapCount::freed();
        copy = pool;
        EXPECT_EQ(HeapCount::freed() - before, 3 + 2) << "three nodes of its own, two of building";
        EXPECT_NE(copy.*member(PoolTasks()), nullptr);
        copy = qelThreadsPool(0);
        EXPECT_EQ(copy.*member(PoolTasks()), nullptr);
    }
    EXPECT_EQ(HeapCount::freed(), HeapCount::allocated());
}

TEST(qelThreadsPoolAssign, ToTheOriginalKeepsItServed)
{
    Journal journal;
    std::atomic<int> ran(0);
    qelThreadsPool pool(1);
    qelThreadsPool copy(pool);
    journal.queue(copy, 7);
    pool = copy;
    EXPECT_TRUE(comesTrue([&] { return journal.numbers() == Numbers{7}; })) << "sleeping workers are woken";
    pool.QueueTask(&increment, &ran);
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(journal.numbers(), Numbers{7});
}

TEST(qelThreadsPoolAssign, OfAWaitedCopyToTheOriginalStopsIt)
{
    qelThreadsPool pool(2);
    qelThreadsPool copy(pool);
    std::thread waiter([&] { copy.WaitForThreadsToFinishWork(); });
    ASSERT_TRUE(comesTrue([&] { return isStopRequested(copy); }));
    pool = copy;
    waiter.join();
    EXPECT_TRUE(isStopRequested(pool));
}

TEST(qelThreadsPoolCopy, MayBeMadeWhileTheWorkersAreBusy)
{
    std::atomic<int> ran(0);
    qelThreadsPool pool(2);
    for (int round = 0; round < 100; ++round)
    {
        for (int i = 0; i < 20; ++i)
        {
            pool.QueueTask(&increment, &ran);
        }
        const qelThreadsPool copy(pool);
    }
    pool.WaitForThreadsToFinishWork();
    EXPECT_EQ(ran, 2000);
}

TEST(qelThreadsPoolCopy, MayDieInAnyOrderAHundredTimes)
{
    for (int round = 0; round < 100; ++round)
    {
        std::atomic<int> ran(0);
        std::vector<std::unique_ptr<qelThreadsPool>> pools;
        pools.push_back(std::make_unique<qelThreadsPool>(2));
        const WorkersWatch workers(*pools[0], 2);
        for (size_t i = 0; i < 3; ++i)
        {
            pools[0]->QueueTask(&increment, &ran);
            pools.push_back(std::make_unique<qelThreadsPool>(*pools[i]));
        }
        for (int left = 4, pick = round; left > 0; --left)
        {
            const auto victim = pools.begin() + pick % left;
            pick /= left;
            if (round % 3 == 0 && left == 1)
            {
                (*victim)->WaitForThreadsToFinishWork();
            }
            pools.erase(victim);
        }
        ASSERT_TRUE(workers.end()) << round;
    }
}
} // namespace
