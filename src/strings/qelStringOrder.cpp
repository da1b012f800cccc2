// Comparators and natural order.

#include "qelString.h"

#include "strings/Text.h"

#include <limits.h>
#include <stdlib.h>
#include <wchar.h>

namespace
{
bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

/// Consecutive ASCII digits, walked from the front; each of them starts a number.
class DigitRun
{
public:
    explicit DigitRun(const wchar_t* text)
        : m_at(text)
        , m_significant(text)
        , m_end(text)
    {
        while (isDigit(*m_end))
        {
            ++m_end;
        }
    }

    size_t length() const { return static_cast<size_t>(m_end - m_at); }
    bool endsText() const { return *m_end == 0; }

    /// The same digits, and nothing behind them that the runtime would read on into, as it does into other scripts.
    bool isSameNumber(const DigitRun& other) const
    {
        return length() == other.length() && wmemcmp(m_at, other.m_at, length()) == 0 && *m_end < 0x80 &&
               *other.m_end < 0x80;
    }

    /// The number that starts at the current digit, as the runtime reads it.
    int value()
    {
        // Leading zeros are stepped over once for all the numbers of the run.
        m_significant = m_significant < m_at ? m_at : m_significant;
        while (m_significant + 1 < m_end && *m_significant == L'0')
        {
            ++m_significant;
        }
        // A runtime that stops at the greatest number need not read the rest of a long run for each of its digits.
        const bool isGreatest = m_end - m_significant > kFewDigits && _wtoi(L"99999999999999999999") == INT_MAX;
        return isGreatest ? INT_MAX : _wtoi(m_significant);
    }

    void next() { ++m_at; }

private:
    static const int kFewDigits = 20;

    const wchar_t* m_at;
    const wchar_t* m_significant;
    const wchar_t* m_end;
};

/// Compares the numbers that start at each of the digits that both texts have here. True when they decide on `order`;
/// otherwise both texts are moved on behind those digits.
bool decideByNumbers(const wchar_t*& left, const wchar_t*& right, int& order)
{
    DigitRun a(left);
    DigitRun b(right);
    const size_t shared = a.length() < b.length() ? a.length() : b.length();
    const bool endsBoth = a.endsText() && b.endsText();
    if (!a.isSameNumber(b))
    {
        for (size_t i = 0; i < shared; ++i)
        {
            const int leftValue = a.value();
            const int rightValue = b.value();
            // NOLINTNEXTLINE(readability-implicit-bool-conversion): the sign of the difference
            order = (leftValue > rightValue) - (leftValue < rightValue);
            if (order != 0 || endsBoth)
            {
                return true;
            }
            a.next();
            b.next();
        }
    }
    left += shared;
    right += shared;
    return false;
}
} // namespace

int qelString::compare(const qelString& a, const qelString& b)
{
    const wchar_t* left = a.m_rep->m_data;
    const wchar_t* right = b.m_rep->m_data;
    if (left == right)
    {
        return 0;
    }
    size_t at = 0;
    unsigned long decisive = 0;
    for (;; at += qelText::kUnitsPerChunk)
    {
        const __m128i units = qelText::chunk(left + at);
        const unsigned long different = qelText::equalUnits(units, qelText::chunk(right + at)) ^ qelText::kAllUnits;
        decisive = different | qelText::unitsEqualTo(units, 0);
        if (decisive != 0)
        {
            break;
        }
    }
    at += qelText::firstUnit(decisive);
    // NOLINTNEXTLINE(readability-implicit-bool-conversion): the sign of the difference
    return (left[at] > right[at]) - (left[at] < right[at]);
}

int qelString::compare(const qelString& a, const qelString& b, int n)
{
    return n < 0 ? compare(a, b) : wcsncmp(a.m_rep->m_data, b.m_rep->m_data, static_cast<size_t>(n));
}

int qelString::compareNoCase(const qelString& a, const qelString& b)
{
    return _wcsicmp(a.m_rep->m_data, b.m_rep->m_data);
}

int qelString::compareNoCase(const qelString& a, const qelString& b, int n)
{
    return n < 0 ? compareNoCase(a, b) : _wcsnicmp(a.m_rep->m_data, b.m_rep->m_data, static_cast<size_t>(n));
}

int qelString::strCompare(const void* a, const void* b)
{
    if (a == nullptr || b == nullptr)
    {
        return 0;
    }
    return compare(*static_cast<const qelString*>(a), *static_cast<const qelString*>(b));
}

int qelString::strCompareNoCase(const void* a, const void* b)
{
    if (a == nullptr || b == nullptr)
    {
        return 0;
    }
    return compareNoCase(*static_cast<const qelString*>(a), *static_cast<const qelString*>(b));
}

// A text that begins another one, and a digit against what is none, give different answers depending on the side they
// stand on. Lists have long been sorted this way, so it stays.
int qelString::compareWithNumbers(const qelString& a, const qelString& b)
{
    if (a.isEmpty() != 0 || b.isEmpty() != 0)
    {
        return b.isEmpty() - a.isEmpty();
    }
    if (compare(a, b) == 0)
    {
        return 0;
    }
    const wchar_t* left = a.m_rep->m_data;
    const wchar_t* right = b.m_rep->m_data;
    int order = 0;
    while (*left != 0)
    {
        if (*right == 0)
        {
            return 1;
        }
        if (isDigit(*left))
        {
            if (!isDigit(*right))
            {
                return -1;
            }
            if (decideByNumbers(left, right, order))
            {
                return order;
            }
        }
        else
        {
            if (*left != *right)
            {
                return *left < *right ? -1 : 1;
            }
            ++left;
            ++right;
        }
    }
    return 0;
}
