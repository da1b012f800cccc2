// Memory that ends right before a page nobody may touch: one byte too far is an access violation.
#ifndef QEL_TEST_GUARDED_MEMORY_H
#define QEL_TEST_GUARDED_MEMORY_H

#include "support/ImportHook.h"

#include <stddef.h>

namespace qelTest
{
void* allocateGuarded(size_t bytes);
void releaseGuarded(void* block);

/// `count` items of a plain type between two pages nobody may touch; the last item ends where the second begins.
template <class T> class GuardedBuffer
{
public:
    explicit GuardedBuffer(size_t count)
        : m_items(static_cast<T*>(allocateGuarded(count * sizeof(T))))
    {
    }

    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { releaseGuarded(m_items); }

    T* get() { return m_items; }
    T& operator[](size_t i) { return m_items[i]; }

private:
    T* m_items;
};

/// While it lives, every block that the library allocates is guarded, and touching a freed one is an access violation.
class GuardedHeap
{
public:
    GuardedHeap();

private:
    ImportHook m_malloc;
    ImportHook m_free;
};
} // namespace qelTest

#endif
