#include "tasks/WorkerGroup.h"

using qelTasks::Task;
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

WorkerGroup* WorkerGroup::start(int threadCount, TaskNode** queue)
{
    auto* group = new WorkerGroup(threadCount > 0 ? threadCount : 0, queue);
    for (int i = 0; i < group->m_threadCount; ++i)
    {
        group->m_handles[i] = group->startWorker();
    }
    return group;
}

WorkerGroup* WorkerGroup::of(void* lock)
{
    return CONTAINING_RECORD(lock, WorkerGroup, m_lock);
}

void WorkerGroup::join()
{
    InterlockedIncrement(&m_references);
}

void WorkerGroup::leave(TaskNode** queue)
{
    const bool entered = enterToLeave();
    // Only workers act on these: where none is left but the caller, they need no lock.
    if (m_queue == queue)
    {
        m_queue = nullptr;
        m_count = 0;
        m_stopping = true;
        updateEvent();
    }
    if (entered)
    {
        m_nodes.giveBack(*queue);
        LeaveCriticalSection(&m_lock);
    }
    *queue = nullptr;
    release();
}

void WorkerGroup::push(TaskNode** queue, const Task& task)
{
    *queue = m_nodes.make(task, *queue);
    if (m_queue == queue)
    {
        ++m_count;
        updateEvent();
    }
}

TaskNode* WorkerGroup::copyQueue(const TaskNode* queue)
{
    return m_nodes.copyQueue(queue);
}

void WorkerGroup::replace(TaskNode** queue, TaskNode* tasks)
{
    m_nodes.giveBack(*queue);
    *queue = tasks;
    if (m_queue == queue)
    {
        m_count = countTasks(tasks);
        updateEvent();
    }
}

void WorkerGroup::requestStop(TaskNode** queue)
{
    if (m_queue == queue)
    {
        m_stopping = true;
        updateEvent();
    }
}

WorkerGroup::WorkerGroup(int threadCount, TaskNode** queue)
    : m_handles(new HANDLE[static_cast<size_t>(threadCount)])
    , m_threadCount(threadCount)
    , m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    , m_module(thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT))
    , m_references(1)
    , m_queue(queue)
    , m_count(0)
    , m_stopping(false)
    , m_signalled(false)
{
    InitializeCriticalSection(&m_lock);
}

WorkerGroup::~WorkerGroup()
{
    for (int i = 0; i < m_threadCount; ++i)
    {
        if (m_handles[i] != nullptr)
        {
            CloseHandle(m_handles[i]);
        }
    }
    delete[] m_handles;
    if (m_event != nullptr)
    {
        CloseHandle(m_event);
    }
    DeleteCriticalSection(&m_lock);
}

/// Null when the system refuses.
HANDLE WorkerGroup::startWorker()
{
    // A worker keeps the library loaded. The reference is taken here, because the library could be unloaded before the
    // worker starts to run.
    if (m_event == nullptr || m_module == nullptr || thisModule(0) == nullptr)
    {
        return nullptr;
    }
    join();
    const HANDLE worker = CreateThread(nullptr, 0, &threadMain, this, 0, nullptr);
    if (worker == nullptr)
    {
        InterlockedDecrement(&m_references); // never the last one
        FreeLibrary(m_module);
    }
    return worker;
}

DWORD WINAPI WorkerGroup::threadMain(void* argument)
{
    auto* group = static_cast<WorkerGroup*>(argument);
    Task task = {};
    while (group->takeTask(task))
    {
        task.function(task.argument);
    }
    const HMODULE module = group->m_module;
    group->release();
    // Does not return: the library may be gone.
    FreeLibraryAndExitThread(module, 0);
}

/// Waits for a task. False when the worker must end.
bool WorkerGroup::takeTask(Task& task)
{
    for (;;)
    {
        {
            const Lock guard(&m_lock);
            if (m_count != 0)
            {
                TaskNode* node = *m_queue;
                *m_queue = node->next;
                --m_count;
                task = node->task;
                node->next = nullptr;
                m_nodes.giveBack(node);
                return true;
            }
            if (m_stopping)
            {
                return false;
            }
            updateEvent();
        }
        WaitForSingleObject(m_event, INFINITE);
    }
}

/**
 * Enters the lock. False where somebody holds it and no other worker is left; the nodes of the queue then stay with the
 * group.
 *
 * When a process ends, Windows terminates all threads but one and signals their handles, then unloads the modules and
 * destroys their static objects. A thread terminated inside the lock still owns it. Entering it then would hang or
 * terminate the process at once, so it is only tried.
 */
bool WorkerGroup::enterToLeave()
{
    while (!TryEnterCriticalSection(&m_lock))
    {
        if (!isAnotherWorkerRunning())
        {
            return false;
        }
        Sleep(1);
    }
    return true;
}

bool WorkerGroup::isAnotherWorkerRunning() const
{
    for (int i = 0; i < m_threadCount; ++i)
    {
        // A task may end the process: then its worker is the thread that is left.
        if (m_handles[i] != nullptr && GetThreadId(m_handles[i]) != GetCurrentThreadId() &&
            WaitForSingleObject(m_handles[i], 0) == WAIT_TIMEOUT)
        {
            return true;
        }
    }
    return false;
}

/// Signals the event while there is something to do, with a system call only on a change. Where that fails, the next
/// call tries again. Requires the lock.
void WorkerGroup::updateEvent()
{
    const bool signalled = m_count != 0 || m_stopping;
    if (signalled != m_signalled && (signalled ? SetEvent(m_event) : ResetEvent(m_event)) != FALSE)
    {
        m_signalled = signalled;
    }
}

void WorkerGroup::release()
{
    if (InterlockedDecrement(&m_references) == 0)
    {
        delete this;
    }
}
