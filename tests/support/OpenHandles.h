// Counts the handles that this process has open, to see what is never closed.
#ifndef QEL_TEST_OPEN_HANDLES_H
#define QEL_TEST_OPEN_HANDLES_H

namespace qelTest
{
/// Handles of files, registry keys, events and the like. One by one: Wine's GetProcessHandleCount always says 0.
int openHandles();
} // namespace qelTest

#endif
