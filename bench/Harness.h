// Sets operations of the library beside what a user would write or pick instead, in one process and in turns.
#ifndef QEL_BENCH_HARNESS_H
#define QEL_BENCH_HARNESS_H

#include "Clocks.h"

#include <functional>
#include <string>
#include <vector>

namespace qelBench
{
/// What a row of the table says beside its figures.
struct Row
{
    std::string name;
    std::string size;
    std::string peer;
    double bar = 0;          ///< greatest ratio of ours to the peer's time; 0 where the row only reports
    const char* reason = ""; ///< why the library loses here, where it does
    Clock clock = Clock::thread;
    double bytes = 0;        ///< bytes that memory-bound work must read: its share of the copy bandwidth is told
    const char* unit = "ns"; ///< of both figures
};

/// Does its work so many times; returns how long that took by the clock, in nanoseconds.
using Side = std::function<double(Clock clock, long calls)>;

/// Both sides of a row, and whether they give the same.
struct Sides
{
    Side ours;
    Side peer;
    std::function<bool()> same;
};

/// Work that grows with n, and the exponent that its cost may grow with; 0 where the exponent is only reported.
struct Growth
{
    std::string name;
    double bar = 0;
    const char* reason = "";
};

/// All that can be timed. Nothing is prepared before it is its turn: the data of a row live as long as its sides.
class Table
{
public:
    using MakeSides = std::function<Sides()>;
    using MakeSide = std::function<Side(long n)>;

    /// The rows that follow belong to this family.
    void family(const std::string& name) { m_family = name; }

    void add(const Row& row, const MakeSides& make) { m_rows.push_back({m_family, row, make}); }
    void add(const Growth& growth, const MakeSide& make) { m_growths.push_back({m_family, growth, make}); }

    struct Entry
    {
        std::string family;
        Row row;
        MakeSides make;
    };

    struct GrowthEntry
    {
        std::string family;
        Growth growth;
        MakeSide make;
    };

    const std::vector<Entry>& rows() const { return m_rows; }
    const std::vector<GrowthEntry>& growths() const { return m_growths; }

private:
    std::string m_family;
    std::vector<Entry> m_rows;
    std::vector<GrowthEntry> m_growths;
};

/// Keeps the optimiser from dropping work whose result nobody reads, and from taking it out of a loop.
inline void keep(const void* result)
{
#if defined(__GNUC__)
    __asm__ __volatile__("" : : "r"(result) : "memory");
#else
    static const void* volatile kept;
    kept = result;
#endif
}

/// Repeats an operation; what it returns is destroyed within the time taken.
template <class Operation> Side repeated(const Operation& operation)
{
    return [operation](Clock clock, long calls) {
        const double begin = now(clock);
        for (long i = 0; i < calls; ++i)
        {
            const auto result = operation();
            keep(&result);
        }
        return now(clock) - begin;
    };
}

/// For work that uses up its input: `prepare` makes that anew for each call, and does not count.
template <class Prepare, class Operation> Side prepared(const Prepare& prepare, const Operation& operation)
{
    return [prepare, operation](Clock clock, long calls) {
        double taken = 0;
        for (long i = 0; i < calls; ++i)
        {
            auto input = prepare();
            const double begin = now(clock);
            operation(input);
            keep(&input);
            taken += now(clock) - begin;
        }
        return taken;
    };
}

/// A figure that is no time.
inline Side figure(double value)
{
    return [value](Clock, long calls) { return value * static_cast<double>(calls); };
}

/// Runs the program: times what the command line asks for, and prints one JSON object a line. Returns its exit status.
int run(const Table& table, int argc, char** argv);
} // namespace qelBench

#endif
