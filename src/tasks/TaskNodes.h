// Queues of tasks and their memory. Not part of the public interface.
#ifndef QEL_TASK_NODES_H
#define QEL_TASK_NODES_H

#include <stddef.h>
#include <stdint.h>

namespace qelTasks
{
struct Task
{
    void (*function)(void*);
    void* argument;
};

/// One task of a queue, which is a linked list. The debugger views depend on the names of its members.
struct TaskNode
{
    TaskNode* next;
    Task task;
};

/// Length of a queue, deliberately in 16 bits, so that 65,536 tasks count as none.
uint16_t countTasks(const TaskNode* queue);

/**
 * Allocator of nodes, in blocks, so that most tasks are queued without an allocation. Nodes given back are reused; the
 * blocks are freed with this object.
 */
class TaskNodes
{
public:
    TaskNodes();
    ~TaskNodes();

    TaskNodes(const TaskNodes&) = delete;
    TaskNodes& operator=(const TaskNodes&) = delete;

    /// A node for `task` in front of `next`. Throws `std::bad_alloc` without changing anything.
    TaskNode* make(const Task& task, TaskNode* next);

    /// Gives back a whole queue; `queue` may be null.
    void giveBack(TaskNode* queue);

    /// The queue for a copy of a pool with this queue.
    TaskNode* copyQueue(const TaskNode* queue);

private:
    void reserve(size_t count);

    TaskNode* m_blocks; ///< the first node of each block, which links the blocks and holds no task
    TaskNode* m_spare;  ///< free nodes
    size_t m_spareLength;
};
} // namespace qelTasks

#endif
