// Runs a program of GoogleTest to the end of its tests, and says how each of them ended.
#ifndef TESTKIT_GOOGLETEST_H
#define TESTKIT_GOOGLETEST_H

#include <map>
#include <string>
#include <vector>

namespace testkit
{
enum class Outcome
{
    passed,
    failed,
    skipped,
    ended, ///< took its program down with it
};

struct Results
{
    std::vector<std::string> tests; ///< in the program's order; empty when the program says none
    std::map<std::string, Outcome> outcomes;
    std::string trouble; ///< what went wrong beside the tests; empty when nothing did
};

/**
 * Runs `program` (a path) in `folder`, once, and again for the tests behind one that ended it. What it writes is
 * gathered in the file `output`. Each run may take `seconds`.
 */
Results runTests(const std::wstring& program, const std::wstring& folder, const std::wstring& output, unsigned seconds);

/// The names that a program prints for --gtest_list_tests.
std::vector<std::string> listedTests(const std::string& text);

/// Adds the outcomes that a program reports, and returns the test that it was in when its report ends, if any.
std::string readReport(const std::string& text, std::map<std::string, Outcome>& outcomes);
} // namespace testkit

#endif
