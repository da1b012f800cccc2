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

/// Size of a block that the library has allocated, in a guarded heap or not.
size_t sizeOfBlock(void* block);

/// What the guarded heaps of this process have seen.
struct GuardedHeapCounts
{
    long long blocks = 0;        ///< allocated
    long long unguarded = 0;     ///< allocated beyond the number of blocks that can be guarded at a time
    long long stringBuffers = 0; ///< of qelString, freed
    long long narrowForms = 0;   ///< likewise
    long long notWiped = 0;      ///< of these two, how many held anything but zeros
};

/**
 * While it lives, every block that the library allocates ends right before a closed page and is filled with anything
 * but zeros; it is closed when it is freed, and stays so until 16 GB of others have followed. A write before a block
 * ends the program when that is freed. One may live inside another.
 */
class GuardedHeap
{
public:
    GuardedHeap();

    static GuardedHeapCounts counts();

private:
    ImportHook m_malloc;
    ImportHook m_free;
    ImportHook m_freeOfProgram; ///< callers free some of the library's blocks, and so do hooks within this one
};
} // namespace qelTest

#endif
