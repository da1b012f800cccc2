// Looks for bytes in the memory of this process.
#ifndef QEL_TEST_MEMORY_SEARCH_H
#define QEL_TEST_MEMORY_SEARCH_H

#include <stddef.h>

namespace qelTest
{
/// How often the bytes occur in a range.
size_t occurrences(const void* memory, size_t size, const void* bytes, size_t count);

/**
 * How often the bytes occur in all heaps of this process, in freed blocks as well: that is all memory that was
 * allocated at run time, save for the stack of the calling thread.
 */
size_t occurrencesInHeaps(const void* bytes, size_t count);
} // namespace qelTest

#endif
