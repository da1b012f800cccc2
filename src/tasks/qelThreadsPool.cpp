#include "qelThreadsPool.h"

#include "tasks/WorkerGroup.h"

using qelTasks::Lock;
using qelTasks::TaskNode;
using qelTasks::WorkerGroup;

qelThreadsPool::qelThreadsPool(int threadCount)
    : m_threadCount(threadCount)
    , m_threadHandles(nullptr)
    , m_taskList(nullptr)
    , m_queueMutex(nullptr)
    , m_workEvent(nullptr)
    , m_stopRequested(false)
{
    WorkerGroup* group = WorkerGroup::start(threadCount, &m_taskList);
    m_threadHandles = group->handles();
    m_queueMutex = group->lock();
    m_workEvent = group->event();
}

qelThreadsPool::qelThreadsPool(const qelThreadsPool& other)
    : m_threadCount(other.m_threadCount)
    , m_threadHandles(other.m_threadHandles)
    , m_taskList(nullptr)
    , m_queueMutex(other.m_queueMutex)
    , m_workEvent(other.m_workEvent)
    , m_stopRequested(false)
{
    WorkerGroup* group = WorkerGroup::of(m_queueMutex);
    {
        const Lock guard(group->lock());
        m_taskList = group->copyQueue(other.m_taskList);
        m_stopRequested = other.m_stopRequested;
    }
    group->join();
}

qelThreadsPool& qelThreadsPool::operator=(const qelThreadsPool& other)
{
    if (this == &other)
    {
        return *this;
    }

    // First: when out of memory, this pool stays as it was.
    TaskNode* tasks = nullptr;
    bool stopRequested = false;
    WorkerGroup* group = WorkerGroup::of(other.m_queueMutex);
    {
        const Lock guard(group->lock());
        tasks = group->copyQueue(other.m_taskList);
        stopRequested = other.m_stopRequested;
    }

    if (m_queueMutex != other.m_queueMutex)
    {
        group->join();
        WorkerGroup::of(m_queueMutex)->leave(&m_taskList);
        m_threadCount = other.m_threadCount;
        m_threadHandles = other.m_threadHandles;
        m_queueMutex = other.m_queueMutex;
        m_workEvent = other.m_workEvent;
    }

    const Lock guard(group->lock());
    group->replace(&m_taskList, tasks);
    m_stopRequested = stopRequested;
    if (stopRequested)
    {
        group->requestStop(&m_taskList);
    }
    return *this;
}

qelThreadsPool::~qelThreadsPool()
{
    WorkerGroup::of(m_queueMutex)->leave(&m_taskList);
}

void qelThreadsPool::QueueTask(void (*task)(void*), void* argument)
{
    WorkerGroup* group = WorkerGroup::of(m_queueMutex);
    const Lock guard(group->lock());
    group->push(&m_taskList, {task, argument});
}

void qelThreadsPool::WaitForThreadsToFinishWork()
{
    WorkerGroup* group = WorkerGroup::of(m_queueMutex);
    {
        const Lock guard(group->lock());
        m_stopRequested = true;
        group->requestStop(&m_taskList);
    }

    // Windows waits for no more at once. Deliberately there is no second wait.
    if (m_threadCount > MAXIMUM_WAIT_OBJECTS)
    {
        return;
    }
    HANDLE started[MAXIMUM_WAIT_OBJECTS];
    DWORD count = 0;
    for (int i = 0; i < m_threadCount; ++i)
    {
        if (m_threadHandles[i] != nullptr)
        {
            started[count] = m_threadHandles[i];
            ++count;
        }
    }
    if (count > 0)
    {
        WaitForMultipleObjects(count, started, TRUE, INFINITE);
    }
}
