// Tasks that wait to be run. Not part of the public interface.
#ifndef QEL_TASK_LIST_H
#define QEL_TASK_LIST_H

#include <stdint.h>

namespace qelTasks
{
struct Task
{
    void (*function)(void*);
    void* argument;
};

/// A task in a list. Tasks never change, so every node carries its own, and lists with the same tasks share no memory.
struct TaskNode
{
    TaskNode* next;
    Task task;
};

inline void freeNodes(TaskNode* head)
{
    while (head != nullptr)
    {
        TaskNode* next = head->next;
        delete head;
        head = next;
    }
}

/// Length of a list as pools count it: deliberately in 16 bits, so that 65,536 tasks count as none.
inline uint16_t countNodes(const TaskNode* head)
{
    uint16_t count = 0;
    for (; head != nullptr; head = head->next)
    {
        ++count;
    }
    return count;
}

/// Owns a list while it is being built.
class TaskList
{
public:
    TaskList() = default;
    TaskList(const TaskList&) = delete;
    TaskList& operator=(const TaskList&) = delete;
    ~TaskList() { freeNodes(m_head); }

    const TaskNode* head() const { return m_head; }

    void push(const Task& task) { m_head = new TaskNode{m_head, task}; }

    void reverse()
    {
        TaskNode* rest = release();
        while (rest != nullptr)
        {
            TaskNode* node = rest;
            rest = rest->next;
            node->next = m_head;
            m_head = node;
        }
    }

    /// Hands the nodes over to the caller.
    TaskNode* release()
    {
        TaskNode* head = m_head;
        m_head = nullptr;
        return head;
    }

private:
    TaskNode* m_head = nullptr;
};
} // namespace qelTasks

#endif
