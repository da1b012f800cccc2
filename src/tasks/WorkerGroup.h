// The worker threads of a pool and what they share with it. Not part of the public interface.
#ifndef QEL_WORKER_GROUP_H
#define QEL_WORKER_GROUP_H

#include "tasks/TaskNodes.h"

#include <windows.h>

namespace qelTasks
{
/**
 * The threads of one pool and their shared state, except the queue itself: its lock and length, the memory for tasks,
 * and the event that idle workers wait for.
 *
 * Reference-counted, because a pool may be destroyed while its workers run. The pool, each copy of it and each worker
 * hold a reference; the last one deletes the group.
 *
 * The head of the queue is a member of the pool object. Workers touch it only under the lock, and never after the pool
 * has left the group. Copies have queues too, which no worker ever touches.
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

    /// The workers in order of creation, null where the system refused one.
    HANDLE* handles() const { return m_handles; }

    /// Adds a reference.
    void join();

    /// Empties `queue` and drops a reference. If the workers serve that queue, each ends with its current task.
    void leave(TaskNode** queue);

    // The caller must hold the lock. `queue` is the one that the workers serve, or that of a copy.

    void push(TaskNode** queue, const Task& task);

    /// The queue for a copy of the pool with this queue; for replace().
    TaskNode* copyQueue(const TaskNode* queue);

    /// Replaces the tasks in `queue`.
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
    HMODULE m_module;  ///< this DLL, to which each worker has a reference; null when the system does not say
    volatile LONG m_references;
    TaskNode** m_queue; ///< head of the queue served; null when its pool has left
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
