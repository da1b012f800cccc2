// Cutting and trimming.

#include "qelString.h"

#include "strings/Text.h"

namespace
{
// Deliberately without the carriage return: callers count on its staying.
const wchar_t defaultTrimSet[] = L"\t\n ";
const size_t defaultTrimSetLength = 3;

/// Units of a text that a range covers; 0 when it does not start inside.
size_t countInside(const wchar_t* text, int start, int count)
{
    if (start < 0 || count < 1)
    {
        return 0;
    }
    const auto before = static_cast<size_t>(start);
    const size_t reached = qelText::measureOwn(text, before + static_cast<size_t>(count));
    return reached > before ? reached - before : 0;
}
} // namespace

/// Takes the units that belong to a set from one end of a text.
class qelString::Trimming
{
public:
    static void front(qelString& trimmed, const wchar_t* set, size_t setLength)
    {
        if (trimmed.isEmpty() != 0)
        {
            return;
        }
        const wchar_t* text = trimmed.m_rep->m_data;
        const wchar_t* end = text + qelText::measureOwn(text);
        while (text < end && qelText::contains(set, setLength, *text))
        {
            ++text;
        }
        keep(trimmed, text, static_cast<size_t>(end - text));
    }

    static void back(qelString& trimmed, const wchar_t* set, size_t setLength)
    {
        if (trimmed.isEmpty() != 0)
        {
            return;
        }
        const wchar_t* text = trimmed.m_rep->m_data;
        size_t kept = qelText::measureOwn(text);
        while (kept > 0 && qelText::contains(set, setLength, text[kept - 1]))
        {
            --kept;
        }
        keep(trimmed, text, kept);
    }

private:
    static void keep(qelString& trimmed, const wchar_t* text, size_t length)
    {
        trimmed.adopt(qelText::fits(length) ? represent(text, length) : m_repEmpty);
    }
};

qelString qelString::left(int n) const
{
    if (n < 0)
    {
        return qelString();
    }
    const auto kept = static_cast<size_t>(n);
    if (qelText::measureOwn(m_rep->m_data, kept + 1) <= kept)
    {
        return *this;
    }
    return qelString(represent(m_rep->m_data, kept));
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
    const size_t units = countInside(m_rep->m_data, start, count);
    return qelString(represent(units == 0 ? nullptr : m_rep->m_data + start, units));
}

qelString qelString::mid(int start) const
{
    return mid(start, kMaxLength);
}

qelString qelString::copy(const qelString& source, int start, int count)
{
    const size_t units = countInside(source.m_rep->m_data, start, count);
    return adopt(represent(units == 0 ? nullptr : source.m_rep->m_data + start, units));
}

qelString qelString::copy(const qelString& source, int start)
{
    return copy(source, start, kMaxLength);
}

void qelString::TrimLeft()
{
    Trimming::front(*this, defaultTrimSet, defaultTrimSetLength);
}

void qelString::TrimRight()
{
    Trimming::back(*this, defaultTrimSet, defaultTrimSetLength);
}

void qelString::TrimLeft(const qelString& set)
{
    Trimming::front(*this, set.m_rep->m_data, qelText::measureOwn(set.m_rep->m_data));
}

void qelString::TrimRight(const qelString& set)
{
    Trimming::back(*this, set.m_rep->m_data, qelText::measureOwn(set.m_rep->m_data));
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
