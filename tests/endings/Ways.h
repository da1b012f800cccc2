// The ways in which a process ends.
#ifndef QEL_TEST_WAYS_H
#define QEL_TEST_WAYS_H

#include <windows.h>

#include <stdlib.h>
#include <string.h>

namespace qelTest
{
const int kExitCode = 42;
const int kExitCodeOfAbort = 3; // the C runtime's

/// The environment variable that tells qelEndingModule.dll to end the process while it is loaded.
const char kWayAtAttach[] = "QEL_TEST_WAY_AT_ATTACH";

inline void endProcess(const char* way)
{
    if (strcmp(way, "ExitProcess") == 0)
    {
        ExitProcess(kExitCode);
    }
    if (strcmp(way, "TerminateProcess") == 0)
    {
        TerminateProcess(GetCurrentProcess(), kExitCode);
    }
    if (strcmp(way, "exit") == 0)
    {
        exit(kExitCode);
    }
    if (strcmp(way, "abort") == 0)
    {
#if defined(_MSC_VER)
        // Neither a message nor a report, which would also change the exit code.
        _set_abort_behavior(0, _WRITE_ABORT_MSG | _CALL_REPORTFAULT);
#endif
        abort();
    }
}
} // namespace qelTest

#endif
