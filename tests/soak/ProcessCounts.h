// What a process holds that a leak would let grow.
#ifndef QEL_TEST_PROCESS_COUNTS_H
#define QEL_TEST_PROCESS_COUNTS_H

#include "support/ImportHook.h"

#include <string>

namespace qelTest
{
/// While it lives, counts the blocks that the library allocates less those that it frees.
class LibraryBlocks
{
public:
    LibraryBlocks();

    static long long count();

private:
    ImportHook m_malloc;
    ImportHook m_calloc;
    ImportHook m_realloc;
    ImportHook m_free;
};

/// Threads of this process.
int threads();

/// "1 thread" or "2 threads", for this noun.
std::string counted(long long number, const char* noun);

struct ProcessCounts
{
    long long blocks; ///< of the library, since the count began
    int handles;      ///< counted by asking for each
    int threads;

    static ProcessCounts now();
};
} // namespace qelTest

#endif
