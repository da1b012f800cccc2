// What the tests of the pool share.
#ifndef QEL_TEST_POOL_TEST_H
#define QEL_TEST_POOL_TEST_H

#include "qelThreadsPool.h"
#include "support/ImportHook.h"
#include "support/PrivateMembers.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdlib.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

struct PoolHandles
{
    using type = void** qelThreadsPool::*;
    friend type member(PoolHandles);
};

struct PoolLock
{
    using type = void* qelThreadsPool::*;
    friend type member(PoolLock);
};

struct PoolEvent
{
    using type = void* qelThreadsPool::*;
    friend type member(PoolEvent);
};

template struct PrivateMember<PoolHandles, &qelThreadsPool::m_threadHandles>;
template struct PrivateMember<PoolLock, &qelThreadsPool::m_queueMutex>;
template struct PrivateMember<PoolEvent, &qelThreadsPool::m_workEvent>;

namespace qelTest
{
inline HANDLE workerOf(const qelThreadsPool& pool, int index)
{
    return (pool.*member(PoolHandles()))[index];
}

inline CRITICAL_SECTION* lockOf(const qelThreadsPool& pool)
{
    return static_cast<CRITICAL_SECTION*>(pool.*member(PoolLock()));
}

inline HANDLE eventOf(const qelThreadsPool& pool)
{
    return pool.*member(PoolEvent());
}

inline bool isSignalled(HANDLE handle)
{
    return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
}

/// Whether the condition becomes true within 30 s.
inline bool comesTrue(const std::function<bool()>& condition)
{
    for (const ULONGLONG end = GetTickCount64() + 30000; GetTickCount64() < end; Sleep(1))
    {
        if (condition())
        {
            return true;
        }
    }
    return condition();
}

/// Long enough for a worker that wrongly goes on to be noticed.
inline void giveWorkersTime()
{
    Sleep(60);
}

/// Keeps workers in a task until it is opened.
class Gate
{
public:
    Gate()
        : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
    }

    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() { CloseHandle(m_event); }

    static void task(void* gate) { static_cast<Gate*>(gate)->pass(); }

    void open() { SetEvent(m_event); }
    int arrived() const { return m_arrived; }
    int passed() const { return m_passed; }

    void pass()
    {
        ++m_arrived;
        WaitForSingleObject(m_event, INFINITE);
        ++m_passed;
    }

    /// Queues `workers` tasks and returns when they keep as many workers.
    void occupy(qelThreadsPool& pool, int workers)
    {
        const int before = m_arrived;
        for (int i = 0; i < workers; ++i)
        {
            pool.QueueTask(&Gate::task, this);
        }
        ASSERT_TRUE(comesTrue([&] { return m_arrived == before + workers; }));
    }

private:
    HANDLE m_event;
    std::atomic<int> m_arrived{0};
    std::atomic<int> m_passed{0};
};

/// Notes which tasks ran, in their order.
class Journal
{
public:
    struct Entry
    {
        Journal* journal;
        int number;
    };

    explicit Journal(int count = 16)
    {
        for (int i = 0; i < count; ++i)
        {
            m_entries.push_back({this, i});
        }
    }

    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    static void task(void* entry)
    {
        const auto* noted = static_cast<const Entry*>(entry);
        const std::lock_guard<std::mutex> lock(noted->journal->m_mutex);
        noted->journal->m_numbers.push_back(noted->number);
    }

    void queue(qelThreadsPool& pool, int number)
    {
        pool.QueueTask(&Journal::task, &m_entries[static_cast<size_t>(number)]);
    }

    std::vector<int> numbers()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_numbers;
    }

private:
    std::mutex m_mutex;
    std::vector<Entry> m_entries;
    std::vector<int> m_numbers;
};

inline void increment(void* counter)
{
    ++*static_cast<std::atomic<int>*>(counter);
}

/// Tells when the workers of a pool have ended, even after the pool is gone.
class WorkersWatch
{
public:
    WorkersWatch(const qelThreadsPool& pool, int workers)
    {
        for (int i = 0; i < workers; ++i)
        {
            HANDLE handle = nullptr;
            DuplicateHandle(GetCurrentProcess(), workerOf(pool, i), GetCurrentProcess(), &handle, SYNCHRONIZE, FALSE,
                            0);
            m_handles.push_back(handle);
        }
    }

    WorkersWatch(const WorkersWatch&) = delete;
    WorkersWatch& operator=(const WorkersWatch&) = delete;

    ~WorkersWatch()
    {
        for (HANDLE handle : m_handles)
        {
            CloseHandle(handle);
        }
    }

    /// How many have not ended.
    int running() const
    {
        int count = 0;
        for (HANDLE handle : m_handles)
        {
            count += isSignalled(handle) ? 0 : 1;
        }
        return count;
    }

    /// Whether all end within 30 s.
    bool end() const
    {
        return comesTrue([this] { return running() == 0; });
    }

private:
    std::vector<HANDLE> m_handles;
};

/// Open handles of this process.
inline int liveHandles()
{
    int count = 0;
    for (uintptr_t value = 4; value < 0x1000; value += 4)
    {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

/// While it lives, counts the blocks that the library allocates and frees.
class HeapCount
{
public:
    HeapCount()
        : m_malloc("malloc", &HeapCount::count)
        , m_free("free", &HeapCount::discount)
    {
        allocated() = 0;
        allocatedBytes() = 0;
        freed() = 0;
    }

    static std::atomic<int>& allocated()
    {
        static std::atomic<int> blocks;
        return blocks;
    }

    static std::atomic<size_t>& allocatedBytes()
    {
        static std::atomic<size_t> bytes;
        return bytes;
    }

    static std::atomic<int>& freed()
    {
        static std::atomic<int> blocks;
        return blocks;
    }

private:
    static void* count(size_t bytes)
    {
        ++allocated();
        allocatedBytes() += bytes;
        return malloc(bytes);
    }

    static void discount(void* block)
    {
        freed() += block != nullptr ? 1 : 0;
        free(block);
    }

    ImportHook m_malloc;
    ImportHook m_free;
};
} // namespace qelTest

#endif
