// Processes that tests start.
#ifndef QEL_TEST_START_PROCESS_H
#define QEL_TEST_START_PROCESS_H

#include <windows.h>

#include <string>

namespace qelTest
{
/// Starts a process, which inherits handles. Tries again where that fails: on a busy machine Wine fails at it now and
/// then. The caller closes both handles of `process`.
inline bool startProcess(std::wstring command, PROCESS_INFORMATION& process)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    bool started = false;
    for (int attempt = 0; attempt < 3 && !started; ++attempt)
    {
        started =
            CreateProcessW(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process) != 0;
    }
    return started;
}
} // namespace qelTest

#endif
