// The memory of a library that many threads use, guarded.
#ifndef QEL_TEST_LIBRARY_MEMORY_H
#define QEL_TEST_LIBRARY_MEMORY_H

#include <stddef.h>

namespace qelTest
{
/**
 * What the library allocates: each block ends where a page begins that nobody may touch, and a freed one may not be
 * touched either. Freed blocks keep their addresses until many others have been freed.
 */
class LibraryMemory
{
public:
    /// Guards what the library, which must be loaded, allocates until it is unloaded.
    static void hookLibrary();

    /// The blocks that the library has not freed.
    static size_t blocks();

    /// Frees them, when nobody can use them any more.
    static void drop();
};
} // namespace qelTest

#endif
