#include "Harness.h"

#include "qelVersion.h"

#include <windows.h>

#include <cpuid.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <regex>
#include <utility>

using namespace qelBench;

namespace
{
const double kSample = 0.4e6;  // nanoseconds of a side in a round
const double kRowBudget = 1e9; // of a whole row, beyond the fewest rounds
const int kFewestRounds = 3;
const long kFirstSize = 1024; // growth: units
const long kLastSize = 32768;

struct Options
{
    std::regex filter{"."};
    int rounds = 101;
    bool rows = true;
    bool growth = false;
};

/// Middle and spread of what the rounds gave.
struct Spread
{
    double low;
    double median;
    double high;
};

Spread spreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto at = [&values](double part) {
        return values[static_cast<size_t>(std::lround(part * static_cast<double>(values.size() - 1)))];
    };
    return {at(0.1), at(0.5), at(0.9)};
}

std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
        {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

std::string number(double value)
{
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

/// One JSON object, printed when it is complete.
class Line
{
public:
    explicit Line(const char* kind) { add("kind", kind); }

    Line& add(const char* name, const std::string& value) { return addRaw(name, quoted(value)); }
    Line& add(const char* name, double value) { return addRaw(name, number(value)); }

    Line& add(const char* name, const std::vector<double>& values)
    {
        std::string list;
        for (const double value : values)
        {
            list += (list.empty() ? "" : ", ") + number(value);
        }
        return addRaw(name, "[" + list + "]");
    }

    Line& add(const char* name, const Spread& spread)
    {
        return add(name, spread.median).add("low", spread.low).add("high", spread.high);
    }

    void print() const
    {
        std::printf("{%s}\n", m_members.c_str());
        (void)std::fflush(stdout);
    }

private:
    Line& addRaw(const char* name, const std::string& value)
    {
        m_members += (m_members.empty() ? "" : ", ") + quoted(name) + ": " + value;
        return *this;
    }

    std::string m_members;
};

/// Calls that fill a sample: long enough for the clock, short enough to fall between two interruptions.
long callsPerSample(const Side& side, Clock clock)
{
    long calls = 1;
    while (calls < (1L << 24) && side(clock, calls) < kSample)
    {
        calls *= 2;
    }
    return calls;
}

/// One side of a row with its number of calls.
class Timed
{
public:
    Timed(Side side, Clock clock)
        : m_side(std::move(side))
        , m_clock(clock)
        , m_calls(callsPerSample(m_side, clock))
    {
    }

    /// Nanoseconds of one call in this round.
    double sample()
    {
        m_samples.push_back(m_side(m_clock, m_calls) / static_cast<double>(m_calls));
        return m_samples.back();
    }

    double median() const { return spreadOf(m_samples).median; }

private:
    Side m_side;
    Clock m_clock;
    long m_calls;
    std::vector<double> m_samples;
};

/// Copies as many bytes as a memory-bound row must read.
Side copying(double bytes)
{
    const auto size = static_cast<size_t>(std::max(bytes, 1.0));
    const auto from = std::make_shared<std::vector<char>>(size, 'x');
    const auto to = std::make_shared<std::vector<char>>(size);
    return repeated([from, to, size] {
        std::memcpy(to->data(), from->data(), size);
        keep(to->data());
        return 0;
    });
}

/// Calls `round` as often as asked for, unless that takes too long.
template <class Round> void forRounds(int rounds, const Round& round)
{
    const double begin = now(Clock::wall);
    for (int i = 0; i < rounds && (i < kFewestRounds || now(Clock::wall) - begin < kRowBudget); ++i)
    {
        round(i);
    }
}

void timeRow(const Row& row, const Sides& sides, int rounds, Line& line)
{
    Timed ours(sides.ours, row.clock);
    Timed peer(sides.peer, row.clock);
    Timed copied(copying(row.bytes), row.clock);
    std::vector<double> ratios;
    std::vector<double> shares;
    forRounds(rounds, [&](int i) {
        // Whoever comes second finds another cache: the sides change places.
        const double peerFirst = i % 2 == 0 ? 0 : peer.sample();
        const double our = ours.sample();
        ratios.push_back(our / (i % 2 == 0 ? peer.sample() : peerFirst));
        shares.push_back(row.bytes > 0 ? copied.sample() / our : 0);
    });
    line.add("ours", ours.median()).add("theirs", peer.median()).add("ratio", spreadOf(ratios));
    line.add("share", spreadOf(shares).median).add("rounds", static_cast<double>(ratios.size()));
}

bool runRow(const Table::Entry& entry, int rounds)
{
    const Row& row = entry.row;
    Line line("row");
    line.add("family", entry.family).add("name", row.name).add("size", row.size).add("peer", row.peer);
    line.add("bar", row.bar).add("reason", row.reason).add("unit", row.unit);
    line.add("clock", row.clock == Clock::thread ? "thread" : "wall");
    const Sides sides = entry.make();
    const bool same = sides.same();
    line.add("same", same ? 1 : 0);
    if (same)
    {
        timeRow(row, sides, rounds, line);
    }
    line.print();
    return same;
}

/// Slope of the line of least squares through the logarithms.
double exponentOf(const std::vector<double>& sizes, const std::vector<double>& times)
{
    double meanX = 0;
    double meanY = 0;
    const auto count = static_cast<double>(sizes.size());
    for (size_t i = 0; i < sizes.size(); ++i)
    {
        meanX += std::log(sizes[i]) / count;
        meanY += std::log(times[i]) / count;
    }
    double covariance = 0;
    double variance = 0;
    for (size_t i = 0; i < sizes.size(); ++i)
    {
        const double x = std::log(sizes[i]) - meanX;
        covariance += x * (std::log(times[i]) - meanY);
        variance += x * x;
    }
    return covariance / variance;
}

void runGrowth(const Table::GrowthEntry& entry, int rounds)
{
    std::vector<double> sizes;
    std::vector<Timed> timed;
    for (long n = kFirstSize; n <= kLastSize; n *= 2)
    {
        sizes.push_back(static_cast<double>(n));
        timed.emplace_back(entry.make(n), Clock::thread);
    }
    std::vector<double> exponents;
    forRounds(rounds, [&](int) {
        std::vector<double> times;
        for (Timed& size : timed)
        {
            times.push_back(size.sample());
        }
        exponents.push_back(exponentOf(sizes, times));
    });
    std::vector<double> medians;
    for (const Timed& size : timed)
    {
        medians.push_back(size.median());
    }
    Line line("growth");
    line.add("family", entry.family).add("name", entry.growth.name).add("bar", entry.growth.bar);
    line.add("reason", entry.growth.reason).add("exponent", spreadOf(exponents));
    line.add("rounds", static_cast<double>(exponents.size())).add("sizes", sizes).add("times", medians).print();
}

std::string processorName()
{
    unsigned registers[12] = {};
    unsigned* part = registers;
    for (unsigned i = 0; i < 3; ++i, part += 4)
    {
        __get_cpuid(0x80000002U + i, part, part + 1, part + 2, part + 3);
    }
    char name[sizeof registers + 1] = {};
    std::memcpy(name, registers, sizeof registers);
    return name;
}

std::string systemName()
{
    using WineVersion = const char*(CDECL*)();
    void* address = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"));
    const auto wine = reinterpret_cast<WineVersion>(address);
    return wine != nullptr ? std::string("Wine ") + wine() : "Windows";
}

void printMachine()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    Line line("machine");
    line.add("processor", processorName()).add("processors", static_cast<double>(info.dwNumberOfProcessors));
    line.add("system", systemName()).add("compiler", "GCC " __VERSION__).add("version", QEL_VERSION_TEXT);
    line.add("threadClock", threadClockSource()).print();
}

/// Rows for the test of the bench itself: a bar that is missed, one that is met, sides that differ.
void addSelfTest(Table& table)
{
    table.family("self-test");
    const auto counted = [](int count) {
        return repeated([count] {
            int sum = 0;
            for (int i = 0; i < count; ++i)
            {
                keep(&i);
                sum += i;
            }
            return sum;
        });
    };
    const auto sides = [counted](int ours, int peer, bool same) {
        return [=] { return Sides{counted(ours), counted(peer), [same] { return same; }}; };
    };
    table.add(Row{"four times the work", "4000 steps", "1000 steps", 1.5, "It does four times the work."},
              sides(4000, 1000, true));
    table.add(Row{"a quarter of the work", "1000 steps", "4000 steps", 1.0}, sides(1000, 4000, true));
    table.add(Row{"another result", "1000 steps", "1000 steps", 1.0}, sides(1000, 1000, false));
    table.add(Growth{"work that squares", 1.15, "It does."},
              [counted](long n) { return counted(static_cast<int>(n / 32 * (n / 32))); });
    table.add(Growth{"work in proportion", 1.15}, [counted](long n) { return counted(static_cast<int>(n)); });
}

/// Leaves holes of all small sizes in the heap, as a program has them that runs for a while. In a fresh heap a block of
/// one size finds a hole and one of another is cut off what is left at the end, which takes three times as long: chance
/// would decide between the sides.
void fragmentHeap()
{
    const size_t kLargest = 512;
    const int kHoles = 32;
    for (size_t size = 16; size <= kLargest; size += 16)
    {
        void* holes[kHoles];
        for (void*& hole : holes)
        {
            hole = std::malloc(size);
            keep(std::malloc(size)); // stays, so that no two holes become one
        }
        for (void* hole : holes)
        {
            std::free(hole);
        }
    }
}

bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i)
    {
        const std::string option = argv[i];
        const bool hasValue = i + 1 < argc;
        if (option == "--filter" && hasValue)
        {
            options.filter.assign(argv[++i], std::regex::ECMAScript | std::regex::icase);
        }
        else if (option == "--rounds" && hasValue)
        {
            options.rounds = std::max(1, static_cast<int>(std::strtol(argv[++i], nullptr, 10)));
        }
        else if (option == "--growth")
        {
            options.rows = false;
            options.growth = true;
        }
        else if (option == "--all")
        {
            options.growth = true;
        }
        else
        {
            (void)std::fprintf(stderr, "usage: bench [--filter REGEX] [--rounds N] [--growth | --all]\n");
            return false;
        }
    }
    return true;
}

bool runAll(const Table& table, const Options& options)
{
    bool right = true;
    printMachine();
    for (const Table::Entry& entry : table.rows())
    {
        const Row& row = entry.row;
        const std::string title = entry.family + ": " + row.name + ", " + row.size + ", " + row.peer;
        if (options.rows && std::regex_search(title, options.filter))
        {
            right = runRow(entry, options.rounds) && right;
        }
    }
    for (const Table::GrowthEntry& entry : table.growths())
    {
        if (options.growth && std::regex_search(entry.family + ": " + entry.growth.name, options.filter))
        {
            runGrowth(entry, options.rounds);
        }
    }
    return right;
}
} // namespace

int qelBench::run(const Table& table, int argc, char** argv)
{
    try
    {
        Options options;
        if (!parse(argc, argv, options))
        {
            return 2;
        }
        Table complete(table);
        if (std::getenv("QEL_BENCH_SELF_TEST") != nullptr)
        {
            addSelfTest(complete);
        }
        fragmentHeap();
        return runAll(complete, options) ? 0 : 1;
    }
    catch (const std::exception& error)
    {
        (void)std::fprintf(stderr, "bench: %s\n", error.what());
        return 2;
    }
}
