// Queues of tasks and the memory for them. Not part of the public interface.
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

/// One task of a queue, which is a linked list. Debuggers show its members by their names.
struct TaskNode
{
    TaskNode* next;
    Task task;
};

/// Length of a queue as pools count it: deliberately in 16 bits, so that 65,536 tasks count as none.
uint16_t countTasks(const TaskNode* queue);

/**
 * Makes the nodes of queues. Its memory comes in blocks, so that most tasks are queued without an allocation. A node
 * that is given back serves the next task; the blocks are freed with this object.
 */
class TaskNodes
{
public:
    TaskNodes();
    ~TaskNodes();

    TaskNodes(const TaskNodes&) = delete;
    TaskNodes& operator=(const TaskNodes&) = delete;

    /// A node for `task` in front of `next`. Where memory runs out, nothing has changed.
    TaskNode* make(const Task& task, TaskNode* next);

    /// Gives a whole queue back; `queue` may be null.
    void giveBack(TaskNode* queue);

    /// The queue that a copy of a pool with this queue gets.
    TaskNode* copyQueue(const TaskNode* queue);

private:
    void reserve(size_t count);

    TaskNode* m_blocks; ///< the first node of each block, which links the blocks and holds no task
    TaskNode* m_spare;  ///< nodes for the next tasks
    size_t m_spareLength;
};
} // namespace qelTasks

#endif
