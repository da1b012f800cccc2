// Comparators and natural order.

#include "qelString.h"

#include "strings/Text.h"

int qelString::compare(const qelString& a, const qelString& b)
{
    const wchar_t* left = a.m_rep->m_data;
    const wchar_t* right = b.m_rep->m_data;
    if (left == right)
    {
        return 0;
    }
    uint64_t units = qelText::chunk(left);
    while (units == qelText::chunk(right) && !qelText::holdsTerminator(units))
    {
        left += qelText::kUnitsPerChunk;
        right += qelText::kUnitsPerChunk;
        units = qelText::chunk(left);
    }
    while (*left == *right && *right != 0)
    {
        ++left;
        ++right;
    }
    return (*left > *right) - (*left < *right);
}
