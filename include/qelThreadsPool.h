/**
 * @file
 * @brief A small, one-shot thread pool.
 */
#ifndef QEL_THREADS_POOL_H
#define QEL_THREADS_POOL_H

#include "qelExport.h"

namespace qelTasks
{
struct TaskNode;
}

/**
 * @brief Thread pool that runs queued tasks once and waits for all of them.
 * @ingroup workers
 *
 * The constructor starts the worker threads. A task is a plain function with one pointer. One-shot: after the wait the
 * pool runs nothing more, and its workers cannot be restarted.
 *
 * @par Example
 * @code
 * struct Part
 * {
 *     double length;
 *     bool tooLong;
 * };
 *
 * void checkPart(void* argument)
 * {
 *     Part* part = static_cast<Part*>(argument);
 *     part->tooLong = part->length > 12000.0;
 * }
 *
 * Part parts[3] = {{6000.0, false}, {15000.0, false}, {12000.0, false}};
 * qelThreadsPool pool;               // 4 workers
 * for (Part& part : parts)
 * {
 *     pool.QueueTask(checkPart, &part);
 * }
 * pool.WaitForThreadsToFinishWork(); // every part is checked, every worker has ended
 * parts[1].tooLong;                  // == true
 * parts[2].tooLong;                  // == false
 * @endcode
 *
 * @par Ownership
 * Code and data of a task must stay until it has run. While a worker runs, the library stays loaded, even after
 * FreeLibrary.
 *
 * @par Threads
 * QueueTask() is thread-safe, also from tasks of the same pool. While a pool is assigned to or destroyed, no other
 * thread may use it. The caller protects what tasks share; they must not use qelString on two threads at once.
 *
 * @par Cost
 * Queueing is O(1). Made for a handful of coarse tasks per worker, at most 64 workers, and fewer than 65,536 pending
 * tasks. The length of the queue is a 16-bit count: a queue of exactly 65,536 tasks, or a multiple, counts as empty, so
 * workers leave it alone until its length changes and, once waited for, end without running the rest. A task takes 24
 * bytes, which are reused for later tasks and freed when pool, copies and workers are all gone.
 *
 * @par Failure
 * Throws `std::bad_alloc` when out of memory and leaves the pool as it was. A thread that the system refuses to create
 * is silently missing; a pool without an event has no workers.
 *
 * @par Order
 * Not guaranteed. Pending tasks are taken last in, first out.
 */
class QEL_API qelThreadsPool
{
public:
    /// Starts `threadCount` workers; none when it is 0 or less.
    qelThreadsPool(int threadCount = 4);

    /**
     * A pool without workers. It shares the handles of `other`, whose workers keep serving `other`, and gets a task
     * list of its own that never runs: for n tasks pending in `other`, the first n, n - 1, ..., 1 of them, `n*(n+1)/2`
     * nodes of 24 bytes, n being the 16-bit count. Nobody can queue or take tasks meanwhile.
     *
     * A copy may outlive `other`, but keeps neither its workers nor its tasks.
     */
    qelThreadsPool(const qelThreadsPool& other);

    /**
     * Releases workers and tasks as the destructor does and becomes a copy of `other`. Self-assignment changes nothing.
     * A pool assigned one of its own copies keeps its workers, which then serve the list built from that copy.
     */
    qelThreadsPool& operator=(const qelThreadsPool& other);

    /**
     * Does not wait: without WaitForThreadsToFinishWork() before, each worker ends after its current task, and pending
     * tasks are dropped. A copy leaves the workers alone. The last of pool, copies and workers closes the handles. Safe
     * while the process ends.
     */
    ~qelThreadsPool();

    /**
     * Queues a task for the next free worker; `task` must not be null. Blocks only for the short lock of the queue.
     * O(1). A task queued after the wait began runs only if a worker is still busy then, which is certain for tasks
     * queued by a task. On a copy, a task is only stored.
     */
    void QueueTask(void (*task)(void*), void* argument);

    /**
     * Waits until the workers have run all queued tasks and ended. With more than 64 workers it returns at once and the
     * workers end on their own. A copy only waits: the workers end when the pool that they serve is waited for or
     * destroyed.
     *
     * Deadlocks in a task of the same pool, and in DllMain, because no thread can end before that returns.
     */
    void WaitForThreadsToFinishWork();

private:
    int m_threadCount;              ///< number of workers requested
    void** m_threadHandles;         ///< the workers in order of creation; shared with copies
    qelTasks::TaskNode* m_taskList; ///< pending tasks, last one first; null when there are none
    void* m_queueMutex;             ///< critical section that guards the list and the flag; shared with copies
    void* m_workEvent;              ///< manual reset; signalled while there is work or the pool is stopping; shared
    bool m_stopRequested;           ///< set when this pool is waited for
};

static_assert(sizeof(qelThreadsPool) == 48, "hosts are compiled against this layout");

#endif
