#include "tasks/WorkerGroup.h"

using qelTasks::TaskNode;
using qelTasks::WorkerGroup;

namespace
{
/// This DLL, with one more reference unless the flags say otherwise; null on failure.
HMODULE thisModule(DWORD flags)
{
    static const wchar_t place = 0;
    HMODULE module = nullptr;
    (void)GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, &place, &module);
    return module;
}
} // namespace

WorkerGroup* WorkerGroup::create(int threadCount, TaskNode** list)
{
    const int count = threadCount > 0 ? threadCount : 0;
    auto* group = new (count) WorkerGroup(count, list);
    for (int i = 0; i < count; ++i)
    {
        group->start(group->handles()[i]);
    }
    return group;
}

// One block for both: the handles stand right behind the group, so that of() finds it.
void* WorkerGroup::operator new(size_t size, int handleCount)
{
    return ::operator new(size + static_cast<size_t>(handleCount) * sizeof(void*));
}

void WorkerGroup::operator delete(void* block)
{
    ::operator delete(block);
}

void WorkerGroup::operator delete(void* block, int)
{
    ::operator delete(block);
}

WorkerGroup* WorkerGroup::of(void** handles)
{
    return reinterpret_cast<WorkerGroup*>(handles) - 1;
}

void** WorkerGroup::handles()
{
    return reinterpret_cast<void**>(this + 1);
}

void WorkerGroup::join()
{
    InterlockedIncrement(&m_references);
    InterlockedIncrement(&m_pools);
}

void WorkerGroup::leave(TaskNode** list)
{
    TaskNode* pending = nullptr;
    {
        const Lock lock(m_lock);
        if (m_served == list)
        {
            m_inherited = *list;
            *list = nullptr;
            m_served = &m_inherited;
            m_stopping = m_stopping || m_copyWaits;
        }
        if (InterlockedDecrement(&m_pools) == 0)
        {
            m_abandoned = true;
            pending = m_inherited;
            m_inherited = nullptr;
        }
        updateEvent();
    }
    freeNodes(pending);
    release();
}

void WorkerGroup::push(TaskNode** list, TaskNode* node)
{
    node->next = *list;
    *list = node;
    if (m_served == list)
    {
        ++m_count;
        if (m_count <= 1)
        {
            updateEvent();
        }
    }
}

TaskNode* WorkerGroup::replace(TaskNode** list, TaskNode* nodes)
{
    TaskNode* old = *list;
    *list = nodes;
    if (m_served == list)
    {
        m_count = countNodes(nodes);
        updateEvent();
    }
    return old;
}

void WorkerGroup::requestStop(const TaskNode* const* list)
{
    if (m_served == list || m_served == &m_inherited)
    {
        m_stopping = true;
        updateEvent();
    }
    else
    {
        m_copyWaits = true;
    }
}

WorkerGroup::WorkerGroup(int threadCount, TaskNode** list)
    : m_references(1)
    , m_pools(1)
    , m_threadCount(threadCount)
    , m_count(0)
    , m_stopping(false)
    , m_copyWaits(false)
    , m_abandoned(false)
    , m_served(list)
    , m_inherited(nullptr)
    , m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
}

WorkerGroup::~WorkerGroup()
{
    for (int i = 0; i < m_threadCount; ++i)
    {
        if (handles()[i] != nullptr)
        {
            CloseHandle(handles()[i]);
        }
    }
    if (m_event != nullptr)
    {
        CloseHandle(m_event);
    }
}

void WorkerGroup::start(void*& handle)
{
    handle = nullptr;
    if (m_lock.mutex() == nullptr || m_event == nullptr)
    {
        return;
    }

    // A worker keeps the library loaded. The reference is taken here, not by the worker: the library could be gone
    // before the worker takes its first step.
    const HMODULE module = thisModule(0);
    if (module == nullptr)
    {
        return;
    }
    InterlockedIncrement(&m_references);
    handle = CreateThread(nullptr, 0, &threadMain, this, 0, nullptr);
    if (handle == nullptr)
    {
        InterlockedDecrement(&m_references);
        FreeLibrary(module);
    }
}

DWORD WINAPI WorkerGroup::threadMain(void* argument)
{
    auto* group = static_cast<WorkerGroup*>(argument);
    group->serve();
    group->release();
    // Does not come back: there may be no library any more to come back to.
    FreeLibraryAndExitThread(thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT), 0);
}

void WorkerGroup::serve()
{
    TaskNode* node = nullptr;
    while (takeTask(node))
    {
        if (node != nullptr)
        {
            const Task task = node->task;
            delete node;
            task.function(task.argument);
        }
        else
        {
            WaitForSingleObject(m_event, INFINITE);
        }
    }
}

/// False when the worker is to end; `node` is null when there is nothing to do now.
bool WorkerGroup::takeTask(TaskNode*& node)
{
    node = nullptr;
    const Lock lock(m_lock);
    if (m_abandoned)
    {
        return false;
    }
    if (m_count == 0)
    {
        return !m_stopping;
    }
    node = *m_served;
    *m_served = node->next;
    --m_count;
    if (m_count == 0)
    {
        updateEvent();
    }
    return true;
}

/// Makes the event say whether workers have anything to do. Under the lock.
void WorkerGroup::updateEvent()
{
    if (m_count != 0 || m_stopping || m_abandoned)
    {
        SetEvent(m_event);
    }
    else
    {
        ResetEvent(m_event);
    }
}

void WorkerGroup::release()
{
    if (InterlockedDecrement(&m_references) == 0)
    {
        delete this;
    }
}
