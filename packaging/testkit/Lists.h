// The two lists of the kit that people write: its programs, and the tests known to differ.
#ifndef TESTKIT_LISTS_H
#define TESTKIT_LISTS_H

#include <string>
#include <vector>

namespace testkit
{
struct Program
{
    std::string path;    ///< relative to the kit, without ".exe"
    bool writesRegistry; ///< sets values of the machine's hive
    std::string leftOut; ///< why the kit does not have it; empty when it has
};

/// A test that may fail, and why.
struct Difference
{
    std::string test;
    std::string reason;
};

/**
 * Lines "PATH", "PATH | registry" and "PATH | left out | REASON"; empty lines and those that begin with # count for
 * nothing. Throws std::runtime_error for a file that cannot be read and for any other line.
 */
std::vector<Program> readPrograms(const std::wstring& file);

/// Lines "SYSTEM | TEST | REASON". Those for `system` ("windows" or "wine") and for "any" count. Throws likewise.
std::vector<Difference> readDifferences(const std::wstring& file, const std::string& system);
} // namespace testkit

#endif
