// The lock of a pool's queue. Not part of the public interface.
#ifndef QEL_QUEUE_LOCK_H
#define QEL_QUEUE_LOCK_H

#include <windows.h>

namespace qelTasks
{
/**
 * A system mutex with a way past it: a free lock is taken by marking it, without a call into the system, and only those
 * who find it taken wait for the mutex. The one who has the mutex goes on trying to mark the lock, which takes no
 * longer than a few list operations.
 *
 * Like a mutex, it passes on when its owner ended inside; that happens to threads that the end of the process catches
 * there, and the pools that are destroyed after them must not hang.
 */
class QueueLock
{
public:
    /// Without the mutex, which is null where the system refuses one, waiting costs more; the lock holds all the same.
    QueueLock();
    ~QueueLock();

    QueueLock(const QueueLock&) = delete;
    QueueLock& operator=(const QueueLock&) = delete;

    HANDLE mutex() const { return m_mutex; }

    void acquire();
    void release();

private:
    bool tryAcquire();
    void acquireAsFirstInLine();
    void passOnFromEndedOwner();

    /// Low half: id of the thread inside, or 0. High half: counts the releases, so that a lock is never passed on that
    /// was left meanwhile and taken again under the same id, which the system soon gives to another thread.
    volatile LONG64 m_state;

    HANDLE m_mutex; ///< held by the first of those who wait
};

/// Holds a lock while it lives.
class Lock
{
public:
    explicit Lock(QueueLock& lock)
        : m_lock(lock)
    {
        m_lock.acquire();
    }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { m_lock.release(); }

private:
    QueueLock& m_lock;
};
} // namespace qelTasks

#endif
