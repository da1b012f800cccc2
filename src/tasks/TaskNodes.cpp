#include "tasks/TaskNodes.h"

using qelTasks::TaskNode;
using qelTasks::TaskNodes;

namespace
{
const size_t kNodesOfBlock = 127; // plus the one that links the blocks: 3 KiB
} // namespace

uint16_t qelTasks::countTasks(const TaskNode* queue)
{
    uint16_t count = 0;
    for (; queue != nullptr; queue = queue->next)
    {
        ++count;
    }
    return count;
}

TaskNodes::TaskNodes()
    : m_blocks(nullptr)
    , m_spare(nullptr)
    , m_spareLength(0)
{
}

TaskNodes::~TaskNodes()
{
    while (m_blocks != nullptr)
    {
        TaskNode* next = m_blocks->next;
        delete[] m_blocks;
        m_blocks = next;
    }
}

TaskNode* TaskNodes::make(const Task& task, TaskNode* next)
{
    reserve(1);
    TaskNode* node = m_spare;
    m_spare = node->next;
    --m_spareLength;
    *node = {next, task};
    return node;
}

void TaskNodes::giveBack(TaskNode* queue)
{
    while (queue != nullptr)
    {
        TaskNode* next = queue->next;
        queue->next = m_spare;
        m_spare = queue;
        ++m_spareLength;
        queue = next;
    }
}

TaskNode* TaskNodes::copyQueue(const TaskNode* queue)
{
    const size_t count = countTasks(queue);
    reserve(count * (count + 1) / 2);

    // Deliberately one pass over all tasks, one over all but the last, and so on.
    TaskNode* copy = nullptr;
    for (size_t length = count; length > 0; --length)
    {
        const TaskNode* node = queue;
        for (size_t i = 0; i < length; ++i)
        {
            copy = make(node->task, copy);
            node = node->next;
        }
    }
    return copy;
}

/// Allocates the next `count` nodes in advance.
void TaskNodes::reserve(size_t count)
{
    if (count <= m_spareLength)
    {
        return;
    }
    const size_t missing = count - m_spareLength;
    const size_t length = missing > kNodesOfBlock ? missing : kNodesOfBlock;
    auto* block = new TaskNode[length + 1];
    block->next = m_blocks;
    m_blocks = block;
    for (size_t i = 1; i <= length; ++i)
    {
        block[i].next = m_spare;
        m_spare = &block[i];
    }
    m_spareLength += length;
}
