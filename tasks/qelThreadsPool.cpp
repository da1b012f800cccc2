#include "qelThreadsPool.h"

#include "tasks/WorkerGroup.h"

using qelTasks::Lock;
using qelTasks::TaskList;
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
    WorkerGroup* group = WorkerGroup::create(threadCount, &m_taskList);
    m_threadHandles = group->handles();
    m_queueMutex = group->lock().mutex();
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
    m_taskList = other.copyTasks(m_stopRequested);
    WorkerGroup::of(m_threadHandles)->join();
}

qelThreadsPool& qelThreadsPool::operator=(const qelThreadsPool& other)
{
    if (this == &other)
    {
        return *this;
    }

    // Built first: when memory runs out, this pool is as it was.
    bool stopRequested = false;
    TaskNode* nodes = other.copyTasks(stopRequested);
    if (m_threadHandles == other.m_threadHandles)
    {
        assignWithinGroup(nodes, stopRequested);
        return *this;
    }

    WorkerGroup::of(other.m_threadHandles)->join();
    WorkerGroup::of(m_threadHandles)->leave(&m_taskList);
    qelTasks::freeNodes(m_taskList);
    m_threadCount = other.m_threadCount;
    m_threadHandles = other.m_threadHandles;
    m_taskList = nodes;
    m_queueMutex = other.m_queueMutex;
    m_workEvent = other.m_workEvent;
    m_stopRequested = stopRequested;
    return *this;
}

qelThreadsPool::~qelThreadsPool()
{
    WorkerGroup::of(m_threadHandles)->leave(&m_taskList);
    qelTasks::freeNodes(m_taskList);
}

void qelThreadsPool::QueueTask(void (*task)(void*), void* argument)
{
    auto* node = new TaskNode{nullptr, {task, argument}};
    WorkerGroup* group = WorkerGroup::of(m_threadHandles);
    const Lock lock(group->lock());
    group->push(&m_taskList, node);
}

void qelThreadsPool::WaitForThreadsToFinishWork()
{
    WorkerGroup* group = WorkerGroup::of(m_threadHandles);
    {
        const Lock lock(group->lock());
        m_stopRequested = true;
        group->requestStop(&m_taskList);
    }

    // The system waits for no more at once; deliberately there is no second wait.
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

/// The list and the flag for a copy of this pool. The caller owns the nodes.
TaskNode* qelThreadsPool::copyTasks(bool& stopRequested) const
{
    // The copy can be much longer than the list: it is not made under the lock.
    TaskList tasks;
    uint16_t count = 0;
    {
        const Lock lock(WorkerGroup::of(m_threadHandles)->lock());
        stopRequested = m_stopRequested;
        count = qelTasks::countNodes(m_taskList);
        const TaskNode* node = m_taskList;
        for (int i = 0; i < count; ++i)
        {
            tasks.push(node->task);
            node = node->next;
        }
    }
    tasks.reverse();

    // Deliberately n passes over ever fewer tasks: nobody runs the list of a copy.
    TaskList copy;
    for (int length = count; length > 0; --length)
    {
        const TaskNode* node = tasks.head();
        for (int i = 0; i < length; ++i)
        {
            copy.push(node->task);
            node = node->next;
        }
    }
    return copy.release();
}

void qelThreadsPool::assignWithinGroup(TaskNode* nodes, bool stopRequested)
{
    WorkerGroup* group = WorkerGroup::of(m_threadHandles);
    TaskNode* old = nullptr;
    {
        const Lock lock(group->lock());
        old = group->replace(&m_taskList, nodes);
        m_stopRequested = stopRequested;
        if (stopRequested)
        {
            group->requestStop(&m_taskList);
        }
    }
    qelTasks::freeNodes(old);
}
