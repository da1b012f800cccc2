// The thread pool and the unloading of its library, while every thread gives way at moments that a seed decides.
//
// The library loads anew for each schedule, its memory is guarded, and it has to be gone at the end with all of it.

#include "schedules/Schedule.h"

#include <stdio.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using qelTest::CountedTask;
using qelTest::Disturbance;
using qelTest::forEachSchedule;
using qelTest::LoadedPool;
using qelTest::Schedule;

namespace
{
const int kMostTasks = 24;

void runEachTaskOnce(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 4));
    schedule.queue(pool, schedule.draw(0, kMostTasks), 1, 1);
    pool.wait();
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, RunEachTaskOnceBeforeTheWaitReturns)
{
    forEachSchedule("wait", &runEachTaskOnce);
}

void destroyAtOnce(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 4));
    schedule.queue(pool, schedule.draw(0, kMostTasks), 0, 1);
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, RunNoTaskTwiceWhereThePoolIsDestroyedAtOnce)
{
    forEachSchedule("destroy", &destroyAtOnce);
}

void queueFromThreads(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 4));
    const int perThread = schedule.draw(1, 8);
    std::vector<std::thread> threads;
    for (int i = schedule.draw(2, 3); i > 0; --i)
    {
        std::vector<CountedTask*> tasks;
        for (int j = 0; j < perThread; ++j)
        {
            tasks.push_back(&schedule.task(1, 1));
        }
        threads.emplace_back([&pool, tasks] {
            for (CountedTask* task : tasks)
            {
                pool.queue(&CountedTask::run, task);
                Disturbance::point();
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    pool.wait();
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, RunTheTasksOfSeveralThreads)
{
    forEachSchedule("threads", &queueFromThreads);
}

// A task that queues two more of its kind while there are any.
struct Branch
{
    LoadedPool* pool;
    std::vector<Branch>* all;
    size_t number;
    CountedTask* counter;

    static void run(void* branch)
    {
        const auto* self = static_cast<const Branch*>(branch);
        for (size_t next : {2 * self->number + 1, 2 * self->number + 2})
        {
            if (next < self->all->size())
            {
                self->pool->queue(&Branch::run, &(*self->all)[next]);
            }
        }
        CountedTask::run(self->counter);
    }
};

void queueFromTasks(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 4));
    std::vector<Branch> branches;
    for (int i = schedule.draw(1, kMostTasks); i > 0; --i)
    {
        branches.push_back({&pool, &branches, branches.size(), &schedule.task(1, 1)});
    }
    pool.queue(&Branch::run, branches.data());
    pool.wait();
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, RunTheTasksThatTasksQueue)
{
    forEachSchedule("tasks", &queueFromTasks);
}

void copyWhileBusy(Schedule& schedule)
{
    auto pool = std::make_unique<LoadedPool>(schedule.library(), schedule.draw(1, 3));
    const bool outlives = schedule.draw(0, 1) == 1;
    schedule.queue(*pool, schedule.draw(0, 8), 1, 1);
    LoadedPool copy(*pool);
    LoadedPool second(copy);
    schedule.queue(*pool, schedule.draw(0, 8), 1, 1);
    schedule.queue(copy, schedule.draw(0, 2), 0, 0);
    second.destroy();
    if (!outlives)
    {
        copy.destroy();
    }
    pool->wait();
    pool->destroy();
    pool.reset();
    if (outlives)
    {
        schedule.queue(copy, schedule.draw(0, 2), 0, 0);
        copy.destroy();
    }
}

TEST(qelThreadsPoolSchedules, LeaveThePoolAloneWhereCopiesComeAndGo)
{
    forEachSchedule("copy", &copyWhileBusy);
}

void assignAnother(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 3));
    LoadedPool other(schedule.library(), schedule.draw(1, 3));
    schedule.queue(pool, schedule.draw(0, 8), 0, 1);
    schedule.queue(other, schedule.draw(0, 8), 1, 1);
    pool.assign(other);
    schedule.queue(pool, schedule.draw(0, 2), 0, 0);
    schedule.queue(other, schedule.draw(0, 8), 1, 1);
    other.wait();
    if (schedule.draw(0, 1) == 1)
    {
        pool.destroy();
        other.destroy();
    }
    else
    {
        other.destroy();
        pool.destroy();
    }
}

TEST(qelThreadsPoolSchedules, DropWhatIsPendingWhereAPoolBecomesAnother)
{
    forEachSchedule("assign", &assignAnother);
}

void assignOwnCopy(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), schedule.draw(1, 3));
    // What is pending runs again from the list of the copy, several times.
    schedule.queue(pool, schedule.draw(0, 5), 1, 1000);
    LoadedPool copy(pool);
    pool.assign(copy);
    schedule.queue(pool, schedule.draw(0, 5), 1, 1);
    copy.destroy();
    pool.wait();
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, LoseNoTaskWhereAPoolGetsItsOwnCopyBack)
{
    forEachSchedule("copy back", &assignOwnCopy);
}

struct Owner
{
    std::unique_ptr<LoadedPool> pool;
    CountedTask* counter;

    static void destroy(void* argument)
    {
        auto* owner = static_cast<Owner*>(argument);
        owner->pool->destroy();
        CountedTask::run(owner->counter);
    }
};

void destroyFromATask(Schedule& schedule)
{
    Owner owner = {std::make_unique<LoadedPool>(schedule.library(), schedule.draw(1, 4)), &schedule.task(1, 1)};
    schedule.queue(*owner.pool, schedule.draw(0, kMostTasks), 0, 1);
    owner.pool->queue(&Owner::destroy, &owner);
    schedule.finish(); // the owner must live as long
}

TEST(qelThreadsPoolSchedules, EndWhereATaskDestroysThePool)
{
    forEachSchedule("destroyed by a task", &destroyFromATask);
}

void endThisThread(void* counter)
{
    CountedTask::run(counter);
    ExitThread(5);
}

void loseAWorker(Schedule& schedule)
{
    const int workers = schedule.draw(2, 4);
    LoadedPool pool(schedule.library(), workers);
    schedule.queue(pool, schedule.draw(0, 8), 1, 1);
    pool.queue(&endThisThread, &schedule.task(1, 1));
    schedule.queue(pool, schedule.draw(0, 8), 1, 1);
    pool.wait();
    schedule.noteLostWorker(pool, workers);
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, RunEachTaskOnceWhereAWorkerEndsInATask)
{
    forEachSchedule("end in a task", &loseAWorker);
}

void terminateTheWorker(Schedule& schedule)
{
    LoadedPool pool(schedule.library(), 1);
    CountedTask& first = schedule.task(1, 1);
    pool.queue(&CountedTask::run, &first);
    // By then the system has started the thread: one that is terminated before keeps the system's own locks.
    while (first.runs == 0)
    {
        Sleep(0);
    }
    schedule.queue(pool, schedule.draw(0, kMostTasks), 0, 1);
    for (int i = schedule.draw(0, 50); i > 0; --i)
    {
        Disturbance::point();
    }
    schedule.noteLostWorker(pool, 1);
    EXPECT_TRUE(TerminateThread(pool.worker(0), 5));
    EXPECT_EQ(WaitForSingleObject(pool.worker(0), 30000), WAIT_OBJECT_0);
    pool.destroy();
}

TEST(qelThreadsPoolSchedules, EndWhereTheOnlyWorkerIsTerminated)
{
    forEachSchedule("terminate", &terminateTheWorker);
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!qelTest::readScheduleOptions(argc, argv))
    {
        fprintf(stderr, "usage: [--schedules NUMBER] [--seed NUMBER] [--replay NUMBER --gtest_filter=TEST]\n");
        return 2;
    }
    // They stay: to load them takes much longer than to load the library.
    for (const wchar_t* name : {L"comctl32.dll", L"odbc32.dll", L"oleaut32.dll", L"version.dll"})
    {
        LoadLibraryW(name);
    }
    qelTest::watchSchedules();
    const int result = RUN_ALL_TESTS();
    printf("%d schedules: %llu points, %llu yields, %llu sleeps\n", qelTest::schedulesRun(), Disturbance::points(),
           Disturbance::yields(), Disturbance::sleeps());
    return result;
}
