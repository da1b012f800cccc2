// What the process says to a debugger.
#ifndef QEL_TEST_DEBUG_OUTPUT_H
#define QEL_TEST_DEBUG_OUTPUT_H

#include <string>
#include <vector>

namespace qelTest
{
/// Collects the texts of OutputDebugString, in the system's own way of handing them over; one object at a time.
class DebugOutput
{
public:
    DebugOutput();
    ~DebugOutput();

    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    const std::vector<std::wstring>& texts() const;

private:
    void* m_handler;
};
} // namespace qelTest

#endif
