// For test programs about state that exists once in a process.
#ifndef QEL_TEST_FRESH_PROCESS_H
#define QEL_TEST_FRESH_PROCESS_H

namespace qelTest
{
/// Whether this process was started by runEachTestAlone() to run one test.
bool runsAlone(int argc, char** argv);

/**
 * To be called by main(): runs every test of the program in a process of its own, one after the other, and returns
 * main()'s result. A test that takes longer than a minute is ended and has failed. With a filter on the command line,
 * which had better choose one test, all that it chooses run in one process.
 */
int runEachTestAlone(int argc, char** argv);
} // namespace qelTest

#endif
