// The workers of a pool and what they share with it. Not part of the public interface.
#ifndef QEL_WORKER_GROUP_H
#define QEL_WORKER_GROUP_H

#include "tasks/TaskNodes.h"

#include <windows.h>

namespace qelTasks
{
/**
 * The threads of one pool, and all that they need except the pool's queue: the lock of the queue, its length, the
 * memory for tasks, the event that idle workers wait for.
 *
 * A pool may be destroyed while its workers run, so a group lives on its own. The pool, each copy of it and each worker
 * hold a reference; the group goes with the last of them.
 *
 * The head of the queue is a member of the pool object. Workers touch it only under the lock, and no more once the pool
 * has left the group. Copies have queues as well, which no worker ever touches.
 */
class WorkerGroup
{
public:
    /// Starts `threadCount` workers that serve `queue`, none when it is 0 or less. The caller gets a reference.
    static WorkerGroup* start(int threadCount, TaskNode** queue);

    WorkerGroup(const WorkerGroup&) = delete;
    WorkerGroup& operator=(const WorkerGroup&) = delete;

    /// The group that the lock belongs to.
    static WorkerGroup* of(void* lock);

    CRITICAL_SECTION* lock() { return &m_lock; }
    HANDLE event() const { return m_event; }

    /// The workers in the order of their creation, null where the system refused one.
    HANDLE* handles() const { return m_handles; }

    /// Adds a reference.
    void join();

    /// Empties `queue` and drops a reference. If the workers serve that queue, each ends with its current task.
    void leave(TaskNode** queue);

    // These want the caller to hold the lock. `queue` is the one that the workers serve, or that of a copy.

    void push(TaskNode** queue, const Task& task);

    /// The queue that a copy of the pool with this queue gets; for replace().
    TaskNode* copyQueue(const TaskNode* queue);

    /// Puts other tasks in place of those in `queue`.
    void replace(TaskNode** queue, TaskNode* tasks);

    /// If the workers serve `queue`, they end when it is empty.
    void requestStop(TaskNode** queue);

private:
    WorkerGroup(int threadCount, TaskNode** queue);
    ~WorkerGroup();

    static DWORD WINAPI threadMain(void* argument);

    HANDLE startWorker();
    bool takeTask(Task& task);
    bool enterToLeave();
    bool isAnotherWorkerRunning() const;
    void updateEvent();
    void release();

    CRITICAL_SECTION m_lock; ///< guards all queues and the members from m_queue on
    HANDLE* m_handles;
    int m_threadCount; ///< never negative
    HANDLE m_event;    ///< manual reset; null when the system refused it
    volatile LONG m_references;
    TaskNode** m_queue; ///< head of the queue that is served; null when its pool has left
    uint16_t m_count;   ///< length of that queue; wraps
    bool m_stopping;    ///< workers end when the queue is empty
    bool m_signalled;   ///< state of the event
    TaskNodes m_nodes;  ///< of all queues
};

/// Holds a lock while it lives.
class Lock
{
public:
    explicit Lock(CRITICAL_SECTION* section)
        : m_section(section)
    {
        EnterCriticalSection(m_section);
    }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { LeaveCriticalSection(m_section); }

private:
    CRITICAL_SECTION* m_section;
};
} // namespace qelTasks

#endif
