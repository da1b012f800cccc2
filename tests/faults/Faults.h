// Which functions of other modules fail in these tests, and how; which never do, and why.
#ifndef QEL_TEST_FAULTS_H
#define QEL_TEST_FAULTS_H

#include <string>
#include <vector>

namespace qelTest
{
/// One way in which an imported function fails.
struct Fault
{
    const char* call;  ///< name of the function with MinGW
    const char* alias; ///< its name with the UCRT, where that is another one; else null
    const char* how;
    void* failing; ///< does and returns what the real one does then
};

const std::vector<Fault>& faults();

/// Functions that are not made to fail.
struct Spared
{
    const char* reason;
    std::vector<const char*> calls;
};

const std::vector<Spared>& spared();
} // namespace qelTest

#endif
