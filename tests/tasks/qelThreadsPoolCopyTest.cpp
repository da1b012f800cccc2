// Copies: what they share, what is their own, and what remains when the original is destroyed.

#include "tasks/PoolTest.h"

#include <memory>
#include <optional>
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
using qelTest::lockOf;
using qelTest::workerOf;
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
// How many tasks run when a pool with that many pending ones gets its own copy back. Its worker then serves the queue
// of a copy's copy: from n tasks the steps lead to n(n+1)/2, twice.
int tasksRunAfterCopyingTwice(int pending)
{
    std::atomic<int> ran(0);
    Gate gate;
    qelThreadsPool pool(1);
    gate.occupy(pool, 1);
    for (int i = 0; i < pending; ++i)
    {
        pool.QueueTask(&increment, &ran);
    }
    const qelThreadsPool copy(pool);
    pool = copy;
    gate.open();
    pool.WaitForThreadsToFinishWork();
    return ran;
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
    EXPECT_EQ(lockOf(copy), lockOf(pool));
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

TEST(qelThreadsPoolCopy, HasNTimesNPlusOneHalfTasks)
{
    EXPECT_EQ(tasksRunAfterCopyingTwice(0), 0);
    EXPECT_EQ(tasksRunAfterCopyingTwice(1), 1);
    EXPECT_EQ(tasksRunAfterCopyingTwice(2), 6);      // 3
    EXPECT_EQ(tasksRunAfterCopyingTwice(10), 1540);  // 55
    EXPECT_EQ(tasksRunAfterCopyingTwice(25), 52975); // 325
}

TEST(qelThreadsPoolCopy, TakesTheLengthFromThe16BitCount)
{
    EXPECT_EQ(tasksRunAfterCopyingTwice(65536), 0);
    EXPECT_EQ(tasksRunAfterCopyingTwice(65536 + 2), 6);
}

TEST(qelThreadsPoolCopy, TakesTheMemoryOfItsTasksAndNoMore)
{
    qelThreadsPool pool(0);
    for (int i = 0; i < 1000; ++i)
    {
        pool.QueueTask(&increment, nullptr);
    }
    const HeapCount heap;
    const qelThreadsPool copy(pool);
    const size_t expected = 500500 * size_t{24};
    EXPECT_LT(HeapCount::allocatedBytes(), expected) << "the rest of the last block is used";
    EXPECT_GT(HeapCount::allocatedBytes(), expected - 127 * size_t{24});
    EXPECT_EQ(HeapCount::allocated(), 1);
}

TEST(qelThreadsPoolAssignment, LeavesTheMemoryOfItsOldTasksToTheirOwner)
{
    const qelThreadsPool other(0);
    qelThreadsPool pool(0);
    pool.QueueTask(&increment, nullptr);
    pool = other;
    const HeapCount heap;
    pool.QueueTask(&increment, nullptr);
    EXPECT_EQ(HeapCount::allocated(), 1) << "room of a pool that is gone was used";
}

TEST(qelThreadsPoolCopy, LeavesItsMemoryToTheNextOne)
{
    qelThreadsPool pool(0);
    for (int i = 0; i < 100; ++i)
    {
        pool.QueueTask(&increment, nullptr);
    }
    qelThreadsPool second(pool);
    {
        const qelThreadsPool third(pool);
    }
    const HeapCount heap;
    for (int round = 0; round < 100; ++round)
    {
        const qelThreadsPool copy(pool);
        EXPECT_EQ(HeapCount::allocated(), 0) << round;
    }
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

TEST(qelThreadsPoolCopy, DoesNotKeepTheTasksOfADestroyedOriginal)
{
    std::atomic<int> ran(0);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(2);
    qelThreadsPool copy(*pool);
    const qelThreadsPool second(copy);
    const WorkersWatch workers(*pool, 2);
    gate.occupy(*pool, 2);
    for (int i = 0; i < 50; ++i)
    {
        pool->QueueTask(&increment, &ran);
    }
    pool.reset();
    EXPECT_EQ(workers.running(), 2) << "never waits for a running task";
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(gate.passed(), 2);
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolCopy, IsNotServedInThePlaceOfADestroyedOriginal)
{
    std::atomic<int> ran(0);
    Gate gate;
    std::optional<qelThreadsPool> place(std::in_place, 1);
    const qelThreadsPool copy(*place);
    const WorkersWatch workers(*place, 1);
    gate.occupy(*place, 1);
    place.reset();
    place.emplace(copy);
    place->QueueTask(&increment, &ran);
    gate.open();
    EXPECT_TRUE(workers.end());
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolCopy, EndsIdleWorkersWithTheOriginal)
{
    auto pool = std::make_unique<qelThreadsPool>(3);
    const qelThreadsPool copy(*pool);
    const WorkersWatch workers(*pool, 3);
    giveWorkersTime();
    pool.reset();
    EXPECT_TRUE(workers.end());
}

TEST(qelThreadsPoolCopy, KeepsTheHandlesOpen)
{
    auto pool = std::make_unique<qelThreadsPool>(2);
    const qelThreadsPool copy(*pool);
    pool->WaitForThreadsToFinishWork();
    pool.reset();
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(isSignalled(workerOf(copy, i))) << i;
    }
    EXPECT_TRUE(isSignalled(eventOf(copy)));
}

TEST(qelThreadsPoolCopy, CanStillBeUsedWhenTheOriginalIsDestroyed)
{
    std::atomic<int> ran(0);
    Gate gate;
    std::vector<qelThreadsPool> pools;
    pools.emplace_back(2);
    gate.occupy(pools[0], 2);
    for (int i = 0; i < 200; ++i)
    {
        pools[0].QueueTask(&increment, &ran);
    }
    const WorkersWatch workers(pools[0], 2);
    pools.reserve(100); // copies the pool and destroys the original
    pools[0].QueueTask(&increment, &ran);
    gate.open();
    pools[0].WaitForThreadsToFinishWork();
    EXPECT_EQ(workers.running(), 0);
    EXPECT_EQ(ran, 0);
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

TEST(qelThreadsPoolCopy, WaitsForTheRunningTasksOfADestroyedOriginal)
{
    std::atomic<int> ran(0);
    std::atomic<bool> returned(false);
    Gate gate;
    auto pool = std::make_unique<qelThreadsPool>(2);
    qelThreadsPool copy(*pool);
    gate.occupy(*pool, 2);
    pool->QueueTask(&increment, &ran);
    std::thread waiter([&] {
        copy.WaitForThreadsToFinishWork();
        returned = true;
    });
    ASSERT_TRUE(comesTrue([&] { return isStopRequested(copy); }));
    pool.reset();
    giveWorkersTime();
    EXPECT_FALSE(returned);
    gate.open();
    waiter.join();
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
    EXPECT_EQ(lockOf(pool), lockOf(other));
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

TEST(qelThreadsPoolAssign, EndsTheFormerWorkersThoughACopyLives)
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
    EXPECT_EQ(gate.passed(), 1);
    EXPECT_EQ(ran, 0);
}

TEST(qelThreadsPoolAssign, ReplacesTheListOfACopy)
{
    const HeapCount heap;
    {
        qelThreadsPool pool(0);
        pool.QueueTask(&increment, nullptr);
        pool.QueueTask(&increment, nullptr);
        qelThreadsPool copy(pool);
        const int before = HeapCount::allocated();
        for (int i = 0; i < 1000; ++i)
        {
            copy = pool;
        }
        EXPECT_EQ(HeapCount::allocated(), before) << "each list takes the place of the one before";
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
