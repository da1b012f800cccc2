// The tables of docs/system-calls.md.
#ifndef QEL_TEST_PAGE_H
#define QEL_TEST_PAGE_H

#include <string>

namespace qelTest
{
/// Calls and outcomes, then how each function fails, then the functions that do not.
std::string pageOfSystemCalls();
} // namespace qelTest

#endif
