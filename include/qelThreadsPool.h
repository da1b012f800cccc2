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
 * @brief Runs queued tasks on worker threads and waits for all of them: a small, one-shot thread pool.
 * @ingroup workers
 *
 * A pool starts its worker threads when it is made. A task is a plain function with one pointer. After the wait a pool
 * runs nothing more; there is no way to start its workers again.
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
 * The pool never owns what a task's argument points to. Code and data of a task must stay until it has run. While any
 * worker runs, the library stays loaded, whoever frees it.
 *
 * @par Threads
 * Any thread may queue tasks, tasks on their own pool included. Only one thread at a time may assign to a pool or
 * destroy it, and none may use it then. What tasks share with each other is the caller's to protect; they must not
 * touch one qelString on two threads at once.
 *
 * @par Cost
 * One thread a worker, at most 64 workers; a task is queued in O(1). Made for a handful of coarse tasks a worker, with
 * fewer than 65,536 tasks pending at any time. The length of the queue is a 16-bit count: a queue of exactly 65,536
 * tasks, or a multiple, counts as empty, so workers leave it alone until its length changes and, once waited for, end
 * without running the rest. A task takes 24 bytes. That memory serves later tasks of the pool and its copies, and is
 * freed when pool, copies and workers are all gone.
 *
 * @par Failure
 * Nothing reports an error. A worker that the system refuses is left out; a pool that gets no event starts no worker.
 * Memory that cannot be had surfaces from the allocation and leaves the pool as it was.
 *
 * @par Order
 * None is promised. Pending tasks are taken last in, first out.
 */
class QEL_API qelThreadsPool
{
public:
    /// Starts `threadCount` workers; none when it is 0 or less.
    qelThreadsPool(int threadCount = 4);

    /**
     * A pool without workers of its own. It shares the handles of `other`, whose workers go on serving the pool that
     * they were started with, and gets a list of its own that nobody ever runs: for n tasks pending in `other`, the
     * first n, n - 1, ..., 1 of them, n * (n + 1) / 2 nodes of 24 bytes. n is the 16-bit count. Nobody can queue or
     * take tasks meanwhile.
     *
     * A copy may outlive the pool that it was made from, but does not keep its workers or its tasks.
     */
    qelThreadsPool(const qelThreadsPool& other);

    /**
     * Gives up the workers and the list as the destructor does and becomes a copy of `other`. Assigning a pool to
     * itself changes nothing. A pool that gets one of its own copies back keeps its workers, which then serve the list
     * built from that copy.
     */
    qelThreadsPool& operator=(const qelThreadsPool& other);

    /**
     * Never waits for a task: where WaitForThreadsToFinishWork() was not called before, each worker ends with the task
     * that it is running, and pending tasks are dropped. A copy leaves the workers alone. The last of pool, copies and
     * workers closes the handles. Safe while the process ends.
     */
    ~qelThreadsPool();

    /**
     * Queues one task for the next free worker; `task` must not be null. Never runs the task itself, and waits for
     * nothing but the short lock of the queue. O(1). A task queued after the wait began runs only if a worker is still
     * busy then, which is certain for tasks queued by a task. On a copy, a task is only stored.
     */
    void QueueTask(void (*task)(void*), void* argument);

    /**
     * Lets the workers run what is queued, then end, and returns when all have ended. With more than 64 workers it
     * returns at once and the workers end on their own. On a copy it only waits: the workers end when somebody waits
     * for the pool that they serve, or destroys it.
     *
     * A task that waits for its own pool waits for ever; so does a caller inside DllMain, because a thread cannot end
     * before that returns.
     */
    void WaitForThreadsToFinishWork();

private:
    int m_threadCount;              ///< number of workers, as given
    void** m_threadHandles;         ///< the workers in the order of their creation; shared with copies
    qelTasks::TaskNode* m_taskList; ///< pending tasks, last one first; null when there are none
    void* m_queueMutex;             ///< the critical section that guards the list and the flag; shared with copies
    void* m_workEvent;              ///< manual reset; signalled while there is work or the pool is stopping; shared
    bool m_stopRequested;           ///< set when this pool is waited for
};

static_assert(sizeof(qelThreadsPool) == 48, "hosts are compiled against this layout");

#endif
