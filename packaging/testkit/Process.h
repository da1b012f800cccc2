// Starts one program and waits for it.
#ifndef TESTKIT_PROCESS_H
#define TESTKIT_PROCESS_H

#include <string>

namespace testkit
{
const unsigned long kTimedOut = 0xFFFFFFFF; ///< result of a program that was ended because it took too long
const unsigned long kNotStarted = 0xFFFFFFFE;

/**
 * Runs a command line in a folder, with nothing to read, and appends what it writes to a file. Returns its exit code.
 * The program and all that it started are ended after `seconds`.
 */
unsigned long run(const std::wstring& command, const std::wstring& folder, const std::wstring& output,
                  unsigned seconds);
} // namespace testkit

#endif
