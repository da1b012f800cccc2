// Counts the handles that this process has open, to see what is never closed.
#ifndef QEL_TEST_OPEN_HANDLES_H
#define QEL_TEST_OPEN_HANDLES_H

#include <stddef.h>

namespace qelTest
{
/// Handles of files, registry keys, events and the like, of values below `end`. One by one: Wine's
/// GetProcessHandleCount always says 0.
int openHandles(size_t end = 0x4000);
} // namespace qelTest

#endif
