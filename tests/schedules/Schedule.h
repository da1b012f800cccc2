// One use of the thread pool under a disturbance, from loading the library to its end.
#ifndef QEL_TEST_SCHEDULE_H
#define QEL_TEST_SCHEDULE_H

#include "schedules/Disturbance.h"
#include "tasks/LoadedPool.h"

#include <atomic>
#include <deque>

namespace qelTest
{
/// A task that counts how often it has run, and how often it should.
struct CountedTask
{
    std::atomic<int> runs{0};
    int least = 0;
    int most = 0;

    static void run(void* task);
};

class Schedule
{
public:
    explicit Schedule(uint64_t seed);

    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;

    const LoadedLibrary& library() const { return m_library; }

    /// A number from `least` to `most`, by the seed; for the main thread.
    int draw(int least, int most);

    /// A task that has to run so often.
    CountedTask& task(int least, int most);

    /// Queues as many of them.
    void queue(LoadedPool& pool, int count, int least, int most);

    /// To be called when a worker of `pool` was ended from outside, before the pool is destroyed: it can no longer give
    /// back what it shares with the pool, and its reference to the library. finish() closes and checks that.
    void noteLostWorker(const LoadedPool& pool, int workers);

    /// Unloads the library, and checks that it goes, that it has freed its memory, and how often each task has run.
    void finish();

private:
    const uint64_t m_seed;
    uint64_t m_drawn = 0;
    LoadedLibrary m_library;
    std::deque<CountedTask> m_tasks;
    std::deque<HANDLE> m_lostHandles;
};

/**
 * What each schedule of a test is given: a number that --schedules, shared out among the tests, and --seed decide, or
 * that of --replay. Ends with the first that fails, whose number the message has.
 */
void forEachSchedule(const char* test, void (*body)(Schedule&));

/// Reads the options that are left on the command line. False when they cannot be understood.
bool readScheduleOptions(int argc, char** argv);

/// Ends the process when a schedule hangs or crashes, and says which.
void watchSchedules();

int schedulesRun();
} // namespace qelTest

#endif
