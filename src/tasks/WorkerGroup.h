// The workers of a pool and what they share with it. Not part of the public interface.
#ifndef QEL_WORKER_GROUP_H
#define QEL_WORKER_GROUP_H

#include "tasks/QueueLock.h"
#include "tasks/TaskList.h"

#include <windows.h>

namespace qelTasks
{
/**
 * Everything that workers touch: a pool may be destroyed while they run, so it must not be part of the pool object. One
 * group belongs to a pool, the copies of that pool and the running workers; the last of them frees it.
 *
 * Of the pool object itself the workers use only the head of its list, under the lock. When that pool goes before its
 * copies, its list moves in here.
 */
class WorkerGroup
{
public:
    /// Starts `threadCount` workers that serve `list`. The caller is the first pool of the group.
    static WorkerGroup* create(int threadCount, TaskNode** list);

    /// The group that an array of handles belongs to.
    static WorkerGroup* of(void** handles);

    /// The workers' handles in the order of their creation, null where the system refused one.
    void** handles();

    QueueLock& lock() { return m_lock; }
    HANDLE event() const { return m_event; }

    /// Counts one more pool.
    void join();

    /**
     * Counts one pool less. The list that the workers serve goes over to the group and `list` is then empty; another
     * list stays as it is. When no pool is left, the workers end with their current tasks and the rest is freed.
     */
    void leave(TaskNode** list);

    /// Puts `node` at the head of `list`, for the workers if they serve that list. Under the lock.
    void push(TaskNode** list, TaskNode* node);

    /// Exchanges `list` for `nodes` and returns the old nodes. Under the lock.
    TaskNode* replace(TaskNode** list, TaskNode* nodes);

    /**
     * Lets the workers end once the queue is empty, if they serve `list` or the pool that they served is gone. If it
     * is not, they do so when it goes without having been waited for. Under the lock.
     */
    void requestStop(const TaskNode* const* list);

private:
    WorkerGroup(int threadCount, TaskNode** list);
    ~WorkerGroup();

    static void* operator new(size_t size, int handleCount);
    static void operator delete(void* block);
    static void operator delete(void* block, int handleCount);

    static DWORD WINAPI threadMain(void* argument);

    void start(void*& handle);
    void serve();
    bool takeTask(TaskNode*& node);
    void updateEvent();
    void release();

    volatile LONG m_references; ///< pools and workers
    volatile LONG m_pools;      ///< the pool that is served, and the copies
    int m_threadCount;          ///< never negative
    uint16_t m_count;           ///< length of the list that is served; wraps
    bool m_stopping;            ///< workers end when the queue is empty
    bool m_copyWaits;           ///< a copy was waited for while the pool itself lived
    bool m_abandoned;           ///< no pool is left: workers end at once
    TaskNode** m_served;        ///< head of the list that is served, in its pool or here
    TaskNode* m_inherited;      ///< the list of a pool that went before its copies
    QueueLock m_lock;           ///< guards the list that is served and the fields from m_count on
    HANDLE m_event;             ///< manual reset; signalled while workers have something to do
};
} // namespace qelTasks

#endif
