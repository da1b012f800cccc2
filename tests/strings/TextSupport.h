// What the tests of text share.
#ifndef QEL_TEST_TEXT_SUPPORT_H
#define QEL_TEST_TEXT_SUPPORT_H

#include "qelString.h"

#include <chrono>
#include <cstdlib>
#include <random>
#include <string>

namespace qelTest
{
/// The greatest length of a text, and of the result of a concatenation, replacement or format.
const int kLongestText = 524288;
const int kLongestResult = 524287;

inline std::wstring plain(const qelString& text)
{
    return text.getStringW();
}

inline qelString repeated(int count, wchar_t unit)
{
    return qelString(std::wstring(static_cast<size_t>(count), unit).c_str());
}

/// `count` units in ascending order.
inline std::wstring manyUnits(int first, int count)
{
    std::wstring units;
    for (int unit = first; unit < first + count; ++unit)
    {
        units += static_cast<wchar_t>(unit);
    }
    return units;
}

/// For tests of what must not take a time that grows with the square of the text.
class Stopwatch
{
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count(); }

private:
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

inline bool isShared(const qelString& a, const qelString& b)
{
    return a.getStringW() == b.getStringW();
}

/// Lets the C runtime come back from its invalid-parameter handling, which ends the process by default.
class LenientRuntime
{
public:
    LenientRuntime()
        : m_previous(_set_invalid_parameter_handler(ignore))
    {
    }

    ~LenientRuntime() { _set_invalid_parameter_handler(m_previous); }

    LenientRuntime(const LenientRuntime&) = delete;
    LenientRuntime& operator=(const LenientRuntime&) = delete;

private:
    static void ignore(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

    _invalid_parameter_handler m_previous;
};

/// Short texts out of a small alphabet, the same in every run.
class RandomText
{
public:
    explicit RandomText(unsigned seed)
        : m_engine(seed)
    {
    }

    int number(int lowest, int highest)
    {
        return lowest + static_cast<int>(m_engine() % static_cast<unsigned>(highest - lowest + 1));
    }

    template <class Char> std::basic_string<Char> text(const std::basic_string<Char>& alphabet, int longest)
    {
        std::basic_string<Char> result;
        for (int left = number(0, longest); left > 0; --left)
        {
            result += alphabet[m_engine() % alphabet.size()];
        }
        return result;
    }

private:
    std::mt19937 m_engine;
};
} // namespace qelTest

#endif
