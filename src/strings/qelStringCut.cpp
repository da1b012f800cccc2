// Substrings and trimming.

#include "qelString.h"

#include "strings/StringAccess.h"
#include "strings/Text.h"
#include "strings/UnitSet.h"

namespace
{
// Deliberately without the carriage return.
const qelUnits::FewUnits defaultTrimSet = {3, L"\t\n "};

/// Units that a range covers; 0 when it does not start inside the text.
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

/// Sets `text` to a part of itself.
void keep(qelString& text, const wchar_t* part, size_t length)
{
    if (qelText::fits(length))
    {
        qelStringAccess::assign(text, part, length);
    }
    else
    {
        text.empty();
    }
}

template <class Set> void trimLeft(qelString& text, const Set& set)
{
    const wchar_t* first = qelStringAccess::textOf(text);
    const wchar_t* end = first + qelText::measureOwn(first);
    if (first == end)
    {
        return;
    }
    first = qelUnits::skipMembers(first, end, set);
    keep(text, first, static_cast<size_t>(end - first));
}

template <class Set> void trimRight(qelString& text, const Set& set)
{
    const wchar_t* first = qelStringAccess::textOf(text);
    const wchar_t* end = first + qelText::measureOwn(first);
    if (first == end)
    {
        return;
    }
    keep(text, first, static_cast<size_t>(qelUnits::skipMembersBack(first, end, set) - first));
}
} // namespace

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
    return qelStringAccess::stringOf(m_rep->m_data, kept);
}

qelString qelString::right(int n) const
{
    const int units = length();
    if (n >= units)
    {
        return *this;
    }
    const int kept = n < 0 ? 0 : n;
    return qelStringAccess::stringOf(m_rep->m_data + (units - kept), static_cast<size_t>(kept));
}

// A negative count means the rest.
qelString qelString::mid(int start, int count) const
{
    const size_t units = countInside(m_rep->m_data, start, count < 0 ? kMaxLength : count);
    return units == 0 ? qelString() : qelStringAccess::stringOf(m_rep->m_data + start, units);
}

qelString qelString::mid(int start) const
{
    return mid(start, kMaxLength);
}

qelString qelString::copy(const qelString& source, int start, int count)
{
    const size_t units = countInside(source.m_rep->m_data, start, count);
    return units == 0 ? empty() : qelStringAccess::assign(*this, source.m_rep->m_data + start, units);
}

qelString qelString::copy(const qelString& source, int start)
{
    return copy(source, start, kMaxLength);
}

void qelString::TrimLeft()
{
    trimLeft(*this, defaultTrimSet);
}

void qelString::TrimRight()
{
    trimRight(*this, defaultTrimSet);
}

void qelString::TrimLeft(const qelString& set)
{
    trimLeft(*this, UnitSet(set.m_rep->m_data, static_cast<size_t>(set.length())));
}

void qelString::TrimRight(const qelString& set)
{
    trimRight(*this, UnitSet(set.m_rep->m_data, static_cast<size_t>(set.length())));
}

void qelString::StringToArr(qelArray<wchar_t>& chars) const
{
    const long units = length();
    const long before = chars.length() < 0 ? 0 : chars.length();
    chars.setLogicalLength(before + units);
    for (long i = 0; i < units; ++i)
    {
        chars[before + i] = m_rep->m_data[i];
    }
}
