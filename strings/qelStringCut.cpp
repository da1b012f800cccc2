// Cutting and trimming.

#include "qelString.h"

#include "strings/Text.h"

namespace
{
// Deliberately without the carriage return: callers count on its staying.
const wchar_t defaultTrimSet[] = L"\t\n ";
const size_t defaultTrimSetLength = 3;

bool contains(const wchar_t* set, size_t length, wchar_t c)
{
    return wmemchr(set, c, length) != nullptr;
}

/// Units that a range has of a text of `units`; 0 when it does not start inside.
size_t countInside(int start, int count, int units)
{
    if (start < 0 || start >= units || count < 1)
    {
        return 0;
    }
    return static_cast<size_t>(count < units - start ? count : units - start);
}
} // namespace

qelString qelString::left(int n) const
{
    const int units = length();
    if (n >= units)
    {
        return *this;
    }
    return qelString(represent(m_rep->m_data, n < 0 ? 0 : static_cast<size_t>(n)));
}

qelString qelString::right(int n) const
{
    const int units = length();
    if (n >= units)
    {
        return *this;
    }
    const int kept = n < 0 ? 0 : n;
    return qelString(represent(m_rep->m_data + (units - kept), static_cast<size_t>(kept)));
}

qelString qelString::mid(int start, int count) const
{
    const size_t units = countInside(start, count, length());
    return units == 0 ? qelString() : qelString(represent(m_rep->m_data + start, units));
}

qelString qelString::mid(int start) const
{
    return mid(start, kMaxLength);
}

qelString qelString::copy(const qelString& source, int start, int count)
{
    const size_t units = countInside(start, count, source.length());
    return adopt(units == 0 ? m_repEmpty : represent(source.m_rep->m_data + start, units));
}

qelString qelString::copy(const qelString& source, int start)
{
    return copy(source, start, kMaxLength);
}

void qelString::TrimLeft()
{
    trimFront(defaultTrimSet, defaultTrimSetLength);
}

void qelString::TrimRight()
{
    trimBack(defaultTrimSet, defaultTrimSetLength);
}

void qelString::TrimLeft(const qelString& set)
{
    trimFront(set.m_rep->m_data, qelText::measure(set.m_rep->m_data));
}

void qelString::TrimRight(const qelString& set)
{
    trimBack(set.m_rep->m_data, qelText::measure(set.m_rep->m_data));
}

void qelString::trimFront(const wchar_t* set, size_t setLength)
{
    if (isEmpty() != 0)
    {
        return;
    }
    const wchar_t* text = m_rep->m_data;
    const wchar_t* end = text + qelText::measure(text);
    while (text < end && contains(set, setLength, *text))
    {
        ++text;
    }
    adopt(represent(text, static_cast<size_t>(end - text)));
}

void qelString::trimBack(const wchar_t* set, size_t setLength)
{
    if (isEmpty() != 0)
    {
        return;
    }
    const wchar_t* text = m_rep->m_data;
    size_t kept = qelText::measure(text);
    while (kept > 0 && contains(set, setLength, text[kept - 1]))
    {
        --kept;
    }
    adopt(represent(text, kept));
}

void qelString::StringToArr(qelArray<wchar_t>& chars) const
{
    const long units = length();
    const long before = chars.length();
    chars.setLogicalLength(before + units);
    for (long i = 0; i < units; ++i)
    {
        chars[before + i] = m_rep->m_data[i];
    }
}
