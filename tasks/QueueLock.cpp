#include "tasks/QueueLock.h"

using qelTasks::QueueLock;

namespace
{
// Tries before waiting for the mutex, and before asking whether the owner still lives.
const int kQuickTries = 200;
const int kPatientTries = 2000;
} // namespace

QueueLock::QueueLock()
    : m_owner(0)
    , m_mutex(CreateMutexW(nullptr, FALSE, nullptr))
{
}

QueueLock::~QueueLock()
{
    if (m_mutex != nullptr)
    {
        CloseHandle(m_mutex);
    }
}

void QueueLock::acquire()
{
    for (int i = 0; i < kQuickTries; ++i)
    {
        if (tryAcquire())
        {
            return;
        }
        YieldProcessor();
    }

    const bool first = WaitForSingleObject(m_mutex, INFINITE) != WAIT_FAILED;
    acquireAsFirstInLine();
    if (first)
    {
        ReleaseMutex(m_mutex);
    }
}

void QueueLock::release()
{
    InterlockedExchange(&m_owner, 0);
}

bool QueueLock::tryAcquire()
{
    // Looking first leaves the lock's memory to its owner.
    return m_owner == 0 &&
           InterlockedCompareExchange(&m_owner, static_cast<LONG>(GetCurrentThreadId()), 0) == 0;
}

void QueueLock::acquireAsFirstInLine()
{
    for (int i = 1; !tryAcquire(); ++i)
    {
        if (i < kPatientTries)
        {
            SwitchToThread();
        }
        else
        {
            passOnFromEndedOwner();
            Sleep(1);
        }
    }
}

void QueueLock::passOnFromEndedOwner()
{
    const LONG owner = m_owner;
    HANDLE thread = OpenThread(SYNCHRONIZE, FALSE, static_cast<DWORD>(owner));
    // No thread has the number any more, or it has ended.
    const bool ended = thread == nullptr ? GetLastError() == ERROR_INVALID_PARAMETER
                                         : WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
    if (thread != nullptr)
    {
        CloseHandle(thread);
    }
    if (ended)
    {
        InterlockedCompareExchange(&m_owner, 0, owner);
    }
}
