// Comparators and natural order.

#include "qelString.h"

#include "strings/Text.h"

#include <limits.h>
#include <stddef.h>
#include <stdlib.h>
#include <wchar.h>

namespace
{
bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool isBeyondAscii(wchar_t c)
{
    return c >= 0x80;
}

/// Whether _wtoi may read `c` as a digit. It accepts digits of other scripts; here everything beyond ASCII may be one.
bool isPartOfNumber(wchar_t c)
{
    return isDigit(c) || isBeyondAscii(c);
}

/// Whether _wtoi reads `c` as the digit 0.
bool isZero(wchar_t c)
{
    const wchar_t behindOne[] = {L'1', c, 0};
    return c == L'0' || (isBeyondAscii(c) && _wtoi(behindOne) == 10);
}

/// Reads the numbers that start at each digit of a string, from front to back. Long runs of digits are not scanned
/// again for each of their numbers: leading zeros are skipped once, and no number needs more than a few digits.
class NumberReader
{
public:
    explicit NumberReader(const wchar_t* text)
        : m_significant(text)
        , m_end(text)
    {
    }

    /// The number that starts with the digit at `text`, as _wtoi reads it.
    int valueAt(const wchar_t* text)
    {
        m_significant = m_significant < text ? text : m_significant;
        while (isZero(*m_significant))
        {
            ++m_significant;
        }
        const wchar_t* digit = m_significant;
        long long value = 0;
        for (; isDigit(*digit); ++digit)
        {
            if (digit - m_significant == kDigitsOfGreatest)
            {
                return INT_MAX;
            }
            value = value * 10 + (*digit - L'0');
        }
        if (isBeyondAscii(*digit))
        {
            return valueOfSignificant(); // may be a digit of another script, which continues the number
        }
        return value < INT_MAX ? static_cast<int>(value) : INT_MAX;
    }

    /// Whether only digits follow from `text` on.
    bool isLastAt(const wchar_t* text)
    {
        m_end = m_end < text ? text : m_end;
        while (isDigit(*m_end))
        {
            ++m_end;
        }
        return *m_end == 0;
    }

private:
    static const ptrdiff_t kDigitsOfGreatest = 10;

    int valueOfSignificant() const
    {
        // One digit more than the greatest number has makes any longer one too great as well. The 0 keeps _wtoi from
        // skipping a blank that stands where the number has ended.
        const size_t kEnough = kDigitsOfGreatest + 1;
        wchar_t digits[1 + kEnough + 1] = L"0";
        (void)wcsncpy_s(digits + 1, kEnough + 1, m_significant, kEnough);
        return _wtoi(digits);
    }

    const wchar_t* m_significant; // after the leading zeros
    const wchar_t* m_end;         // after the digits
};
} // namespace

int qelString::compare(const qelString& a, const qelString& b)
{
    return qelText::compareOwn(a.m_rep->m_data, b.m_rep->m_data);
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

// Not symmetric: a string that is the beginning of the other, and a digit against a non-digit, compare differently in
// `a` and `b`. Deliberate.
int qelString::compareWithNumbers(const qelString& a, const qelString& b)
{
    const wchar_t* left = a.m_rep->m_data;
    const wchar_t* right = b.m_rep->m_data;
    if (*left == 0)
    {
        return *right == 0 ? 0 : -1;
    }
    size_t at = qelUnits::firstDifference(left, right);
    if (left[at] == right[at])
    {
        return 0;
    }
    // The equal part decides nothing, unless a number in it continues here.
    if (isPartOfNumber(left[at]) || isPartOfNumber(right[at]))
    {
        while (at > 0 && isPartOfNumber(left[at - 1]))
        {
            --at;
        }
    }
    NumberReader leftNumber(left + at);
    NumberReader rightNumber(right + at);
    for (; left[at] != 0; ++at)
    {
        if (right[at] == 0)
        {
            return 1;
        }
        if (!isDigit(left[at]))
        {
            if (left[at] != right[at])
            {
                return qelText::order(left[at], right[at]);
            }
            continue;
        }
        if (!isDigit(right[at]))
        {
            return -1;
        }
        const int leftValue = leftNumber.valueAt(left + at);
        const int rightValue = rightNumber.valueAt(right + at);
        if (leftValue != rightValue)
        {
            return qelText::order(leftValue, rightValue);
        }
        if (leftNumber.isLastAt(left + at) && rightNumber.isLastAt(right + at))
        {
            return 0;
        }
    }
    return 0;
}
