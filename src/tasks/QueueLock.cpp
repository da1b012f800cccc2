#include "tasks/QueueLock.h"

using qelTasks::QueueLock;

namespace
{
// Tries before waiting for the mutex, and before asking whether the owner still lives.
const int kQuickTries = 200;
const int kPatientTries = 2000;

DWORD ownerOf(LONG64 state)
{
    return static_cast<DWORD>(state);
}

/// The state that follows when the thread inside leaves: no owner, and the next number.
LONG64 released(LONG64 state)
{
    return static_cast<LONG64>((static_cast<ULONG64>(state) | 0xFFFFFFFFU) + 1);
}

bool isThreadEnded(DWORD id)
{
    HANDLE thread = OpenThread(SYNCHRONIZE, FALSE, id);
    if (thread == nullptr)
    {
        return GetLastError() == ERROR_INVALID_PARAMETER; // no thread has the number any more
    }
    const bool ended = WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
    CloseHandle(thread);
    return ended;
}
} // namespace

QueueLock::QueueLock()
    : m_state(0)
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

    // No thread takes the lock twice: this one has the number of a thread that ended inside. Those who wait in front of
    // it cannot know.
    const LONG64 state = m_state;
    if (ownerOf(state) == GetCurrentThreadId())
    {
        InterlockedCompareExchange64(&m_state, released(state), state);
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
    InterlockedExchange64(&m_state, released(m_state));
}

bool QueueLock::tryAcquire()
{
    // Looking first leaves the lock's memory to its owner.
    const LONG64 state = m_state;
    return ownerOf(state) == 0 && InterlockedCompareExchange64(&m_state, state | GetCurrentThreadId(), state) == state;
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
    const LONG64 state = m_state;
    if (ownerOf(state) != 0 && isThreadEnded(ownerOf(state)))
    {
        InterlockedCompareExchange64(&m_state, released(state), state);
    }
}
