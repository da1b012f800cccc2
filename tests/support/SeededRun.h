// Tests that repeat themselves by chance: the same seed gives the same steps.
#ifndef QEL_TEST_SEEDED_RUN_H
#define QEL_TEST_SEEDED_RUN_H

#include <stddef.h>

#include <random>
#include <string>

namespace qelTest
{
/**
 * The steps of one test. A test that fails, or a program that crashes, prints the step and a command line that leads
 * there again.
 *
 * @code
 * SeededRun run;
 * while (run.next())
 * {
 *     doSomething(run.below(100));
 * }
 * @endcode
 */
class SeededRun
{
public:
    /// To be called by main() after GoogleTest has taken its options: takes `--seed N` and `countOption` with a number
    /// from the command line. False, after a message, when there is anything else on it.
    static bool readOptions(int argc, char** argv, const char* countOption, int defaultCount);

    /// As many steps as the command line says, or a fraction of them.
    explicit SeededRun(int divisor = 1);
    ~SeededRun();

    SeededRun(const SeededRun&) = delete;
    SeededRun& operator=(const SeededRun&) = delete;

    /// Whether there is another step. None after a failure.
    bool next();

    /// A number from 0 to `bound - 1`.
    int below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

    /// A number from `first` to `last`.
    int between(int first, int last) { return first + below(last - first + 1); }

    /// True once in `n` times.
    bool oneIn(int n) { return below(n) == 0; }

    /// One of the items.
    template <class T, size_t count> const T& pick(const T (&items)[count])
    {
        return items[static_cast<size_t>(below(static_cast<int>(count)))];
    }

    /// The step under way, from 1.
    int step() const { return m_step; }

    int count() const { return m_count; }

    /// Prints where the run stands, and how to get there again.
    void print() const;

private:
    std::mt19937 m_random;
    int m_divisor;
    int m_count;
    int m_step;
    SeededRun* m_outer; ///< the run under way before this one
};

/// Up to `longest` units of `alphabet`.
std::wstring randomText(SeededRun& run, const std::wstring& alphabet, int longest);
} // namespace qelTest

#endif
