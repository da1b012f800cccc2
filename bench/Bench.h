// A small timing loop that sets an operation of the library beside the same one of the C++ library.
#ifndef QEL_BENCH_H
#define QEL_BENCH_H

#include "qelArray.h"
#include "qelString.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace qelBench
{
/// Results in the types of the C++ library, to compare those of both sides.
template <class T> T plain(const T& value)
{
    return value;
}

inline std::wstring plain(const qelString& text)
{
    return text.getStringW();
}

template <class T, class Reallocator> auto plain(const qelArray<T, Reallocator>& array)
{
    std::vector<decltype(plain(std::declval<T>()))> values;
    values.reserve(static_cast<size_t>(array.length()));
    for (long i = 0; i < array.length(); ++i)
    {
        values.push_back(plain(array[i]));
    }
    return values;
}

/// Keeps the optimiser from dropping the work behind a result that nobody reads.
inline void keep(const void* result)
{
#if defined(__GNUC__)
    __asm__ __volatile__("" : : "r"(result) : "memory");
#else
    static const void* volatile kept;
    kept = result;
#endif
}

/// Nanoseconds that `count` calls take.
template <class Operation> double measure(const Operation& operation, long count)
{
    const auto begin = std::chrono::steady_clock::now();
    for (long i = 0; i < count; ++i)
    {
        const auto result = operation();
        keep(&result);
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count();
}

/// Calls that fill a sample: long enough for the clock, short enough to fall between two interruptions.
template <class Operation> long callsPerSample(const Operation& operation)
{
    const double kSample = 1e6;
    long count = 1;
    while (measure(operation, count) < kSample)
    {
        count *= 2;
    }
    return count;
}

class Table
{
public:
    explicit Table(const char* peer);

    /**
     * Times both operations and prints a row. Each returns its result; a row whose results differ counts as wrong.
     * The best of many samples, taken in turns, is the one that the machine disturbed least.
     */
    template <class Ours, class Peer> void compare(const char* what, const Ours& ours, const Peer& peer)
    {
        if (plain(ours()) != plain(peer()))
        {
            printWrong(what);
            return;
        }
        const int kSamples = 30;
        const long ourCalls = callsPerSample(ours);
        const long peerCalls = callsPerSample(peer);
        double ourBest = measure(ours, ourCalls);
        double peerBest = measure(peer, peerCalls);
        for (int sample = 1; sample < kSamples; ++sample)
        {
            ourBest = std::min(ourBest, measure(ours, ourCalls));
            peerBest = std::min(peerBest, measure(peer, peerCalls));
        }
        printRow(what, ourBest / static_cast<double>(ourCalls), peerBest / static_cast<double>(peerCalls));
    }

    /// Whether every row compared like with like.
    bool isRight() const { return m_wrong == 0; }

private:
    static void printRow(const char* what, double ours, double peer);
    void printWrong(const char* what);

    int m_wrong = 0;
};

bool benchStrings();
bool benchArrays();
} // namespace qelBench

#endif
