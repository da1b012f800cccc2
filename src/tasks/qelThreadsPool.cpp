#include "qelThreadsPool.h"

#include "tasks/WorkerGroup.h"

using qelTasks::Lock;
using qelTasks::TaskList;
using qelTasks::TaskNode;
using qelTasks::WorkerGroup;

namespace
{
/// The list and the flag for a copy of the pool whose own are given. The caller owns the nodes.
TaskNode* copyTasks(WorkerGroup& group, TaskNode* const& list, const bool& listStop, bool& stopRequested)
{
    // The copy can be much longer than the list: it is not made under the lock.
    TaskList tasks;
    uint16_t count = 0;
    {
        const Lock lock(group.lock());
        stopRequested = listStop;
        count = qelTasks::countNodes(list);
        const TaskNode* node = list;
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

/// Gives a pool the copied nodes and flag of another one that shares its group.
void assignWithin(WorkerGroup& group, TaskNode*& list, TaskNode* nodes, bool& listStop, bool stopRequested)
{
    TaskNode* old = nullptr;
    {
        const Lock lock(group.lock());
        old = group.replace(&list, nodes);
        listStop = stopRequested;
        if (stopRequested)
        {
            group.requestStop(&list);
        }
    }
    qelTasks::freeNodes(old);
}
} // namespace

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
    WorkerGroup* group = WorkerGroup::of(m_threadHandles);
    m_taskList = copyTasks(*group, other.m_taskList, other.m_stopRequested, m_stopRequested);
    group->join();
}

qelThreadsPool& qelThreadsPool::operator=(const qelThreadsPool& other)
{
    if (this == &other)
    {
        return *this;
    }

    // Built first: when memory runs out, this pool is as it was.
    bool stopRequested = false;
    WorkerGroup* group = WorkerGroup::of(other.m_threadHandles);
    TaskNode* nodes = copyTasks(*group, other.m_taskList, other.m_stopRequested, stopRequested);
    if (m_threadHandles == other.m_threadHandles)
    {
        assignWithin(*group, m_taskList, nodes, m_stopRequested, stopRequested);
        return *this;
    }

    group->join();
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
