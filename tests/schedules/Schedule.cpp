#include "schedules/Schedule.h"

#include "schedules/LibraryMemory.h"

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

using qelTest::CountedTask;
using qelTest::LoadedPool;
using qelTest::Schedule;

namespace
{
const ULONGLONG kLongestSchedule = 60000; // ms

// Of the test program's command line.
int schedulesOfAll = 200;
uint64_t seedOfAll = 1;
uint64_t replayed = 0;

int count = 0;
std::atomic<uint64_t> current(0);
std::atomic<ULONGLONG> begun(0);

void say(const char* what)
{
    fprintf(stderr, "%s: --replay %llu\n", what, static_cast<unsigned long long>(current));
    fflush(stderr);
}

DWORD WINAPI watch(void*)
{
    while (begun == 0 || GetTickCount64() - begun < kLongestSchedule)
    {
        Sleep(500);
    }
    say("a schedule hangs");
    TerminateProcess(GetCurrentProcess(), 3);
    return 0;
}

LONG WINAPI sayWhatCrashed(EXCEPTION_POINTERS* exception)
{
    fprintf(stderr, "exception %08lX at %p\n", exception->ExceptionRecord->ExceptionCode,
            exception->ExceptionRecord->ExceptionAddress);
    say("a schedule crashes");
    TerminateProcess(GetCurrentProcess(), 4);
    return EXCEPTION_EXECUTE_HANDLER;
}

bool readNumber(const char* text, uint64_t& value)
{
    char* end = nullptr;
    value = strtoull(text, &end, 10);
    return end != text && *end == 0;
}
} // namespace

void CountedTask::run(void* task)
{
    Disturbance::point();
    ++static_cast<CountedTask*>(task)->runs;
    Disturbance::point();
}

Schedule::Schedule(uint64_t seed)
    : m_seed(seed)
{
    current = seed;
    begun = GetTickCount64();
    Disturbance::begin(seed);
    LibraryMemory::hookLibrary();
    Disturbance::hookLibrary();
}

int Schedule::draw(int least, int most)
{
    const auto range = static_cast<uint64_t>(most - least + 1);
    return least + static_cast<int>(mixed(~m_seed, ++m_drawn) % range);
}

CountedTask& Schedule::task(int least, int most)
{
    CountedTask& task = m_tasks.emplace_back();
    task.least = least;
    task.most = most;
    return task;
}

void Schedule::queue(LoadedPool& pool, int number, int least, int most)
{
    for (int i = 0; i < number; ++i)
    {
        pool.queue(&CountedTask::run, &task(least, most));
        Disturbance::point();
    }
}

void Schedule::noteLostWorker(const LoadedPool& pool, int workers)
{
    for (int i = 0; i < workers; ++i)
    {
        m_lostHandles.push_back(pool.worker(i));
    }
    m_lostHandles.push_back(pool.event());
}

void Schedule::finish()
{
    m_library.unload();
    if (!m_lostHandles.empty())
    {
        // All but the lost worker give the library back. Its own reference is the last.
        for (size_t i = 0; i + 1 < m_lostHandles.size(); ++i)
        {
            EXPECT_EQ(WaitForSingleObject(m_lostHandles[i], 30000), WAIT_OBJECT_0);
        }
        EXPECT_TRUE(LoadedLibrary::isLoaded());
        m_library.unload();
    }
    EXPECT_TRUE(LoadedLibrary::isUnloadedSoon());
    // What the workers share, their handles, and the memory of the tasks.
    EXPECT_EQ(LibraryMemory::blocks(), m_lostHandles.empty() ? 0u : 3u);
    LibraryMemory::drop();
    for (const HANDLE handle : m_lostHandles)
    {
        EXPECT_TRUE(CloseHandle(handle));
    }
    for (const CountedTask& task : m_tasks)
    {
        EXPECT_GE(task.runs, task.least);
        EXPECT_LE(task.runs, task.most);
    }
    begun = 0;
}

void qelTest::forEachSchedule(const char* test, void (*body)(Schedule&))
{
    uint64_t seed = seedOfAll;
    for (const char* at = test; *at != 0; ++at)
    {
        seed = mixed(seed, static_cast<unsigned char>(*at));
    }
    const int tests = testing::UnitTest::GetInstance()->test_to_run_count();
    const int number = replayed != 0 ? 1 : (schedulesOfAll + tests - 1) / tests;
    for (int i = 0; i < number && !testing::Test::HasFailure(); ++i)
    {
        // Never 0, which replays nothing.
        Schedule schedule(replayed != 0 ? replayed : mixed(seed, static_cast<uint64_t>(i)) | 1);
        body(schedule);
        if (begun != 0)
        {
            schedule.finish();
        }
        ++count;
    }
    EXPECT_FALSE(testing::Test::HasFailure()) << "again with --replay " << current;
}

bool qelTest::readScheduleOptions(int argc, char** argv)
{
    auto schedules = static_cast<uint64_t>(schedulesOfAll);
    for (int i = 1; i < argc; i += 2)
    {
        const std::string name = argv[i];
        uint64_t* value = name == "--schedules" ? &schedules
                          : name == "--seed"    ? &seedOfAll
                          : name == "--replay"  ? &replayed
                                                : nullptr;
        if (value == nullptr || i + 1 == argc || !readNumber(argv[i + 1], *value))
        {
            return false;
        }
    }
    schedulesOfAll = static_cast<int>(schedules);
    return schedules > 0 && schedules <= INT_MAX;
}

void qelTest::watchSchedules()
{
    SetUnhandledExceptionFilter(&sayWhatCrashed);
    CloseHandle(CreateThread(nullptr, 0, &watch, nullptr, 0, nullptr));
}

int qelTest::schedulesRun()
{
    return count;
}
