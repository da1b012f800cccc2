// Replacing and removing.

#include "qelString.h"

#include "strings/CodePage.h"
#include "strings/StringAccess.h"
#include "strings/Text.h"
#include "strings/TextSearch.h"

namespace
{
int countUnit(const wchar_t* text, size_t length, wchar_t c)
{
    int count = 0;
    for (size_t i = 0; i < length; ++i)
    {
        count += text[i] == c ? 1 : 0;
    }
    return count;
}

int countText(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t whatLength)
{
    int count = 0;
    while ((text = qelTextSearch::find(text, end, what, whatLength)) != nullptr)
    {
        text += whatLength;
        ++count;
    }
    return count;
}

wchar_t* append(wchar_t* target, const wchar_t* text, size_t length)
{
    qelUnits::copy(target, text, length);
    return target + length;
}
} // namespace

int qelString::replace(wchar_t from, wchar_t to)
{
    const wchar_t* text = m_rep->m_data;
    const size_t units = qelText::measureOwn(text);
    const int count = countUnit(text, units, from);
    if (!qelText::fits(units))
    {
        empty();
        return count;
    }
    if (to == 0 && count > 0)
    {
        qelStringAccess::assign(*this, text, static_cast<size_t>(qelUnits::find(text, text + units, from) - text));
        return count;
    }
    qelStringRepr* rep = qelStringAccess::represent(text, units);
    for (size_t i = 0; count > 0 && i < units; ++i)
    {
        rep->m_data[i] = text[i] == from ? to : text[i];
    }
    qelStringAccess::adopt(*this, rep);
    return count;
}

int qelString::replace(unsigned short from, unsigned short to)
{
    return replace(static_cast<wchar_t>(from), static_cast<wchar_t>(to));
}

int qelString::replace(char from, char to)
{
    return replace(qelCodePage::unit(from), qelCodePage::unit(to));
}

int qelString::replace(const qelString& what, const qelString& with)
{
    if (what.isEmpty() != 0)
    {
        return 0;
    }
    const wchar_t* text = m_rep->m_data;
    const wchar_t* sought = what.m_rep->m_data;
    const wchar_t* inserted = with.m_rep->m_data;
    const size_t units = qelText::measureOwn(text);
    const size_t soughtUnits = qelText::measureOwn(sought);
    const size_t insertedUnits = qelText::measureOwn(inserted);
    const wchar_t* end = text + units;

    const int count = countText(text, end, sought, soughtUnits);
    const auto places = static_cast<size_t>(count);
    const size_t result = units - places * soughtUnits + places * insertedUnits;
    if (result == 0 || !qelText::fits(result))
    {
        empty();
        return count;
    }
    qelStringRepr* rep = qelStringAccess::create(result);
    wchar_t* target = rep->m_data;
    for (int i = 0; i < count; ++i)
    {
        const wchar_t* hit = qelTextSearch::find(text, end, sought, soughtUnits);
        target = append(target, text, static_cast<size_t>(hit - text));
        target = append(target, inserted, insertedUnits);
        text = hit + soughtUnits;
    }
    append(target, text, static_cast<size_t>(end - text));
    qelStringAccess::adopt(*this, rep);
    return count;
}

qelString& qelString::replace(int start, int count, const qelString& with)
{
    if (count < 1)
    {
        return *this;
    }
    const wchar_t* text = m_rep->m_data;
    const long long units = length();
    // Units that stay after the range: all of them when the range ends before the string.
    const long long behind = units - start - count;
    const long long kept = behind < 0 ? 0 : behind > units ? units : behind;
    const long long before = start < 0 ? 0 : start > units ? units : start;

    const auto front = static_cast<size_t>(before);
    const size_t middle = qelText::measureOwn(with.m_rep->m_data);
    const auto back = static_cast<size_t>(kept);
    const size_t result = front + middle + back;
    if (result == 0 || !qelText::fits(result))
    {
        return empty();
    }
    qelStringRepr* rep = qelStringAccess::create(result);
    wchar_t* target = append(rep->m_data, text, front);
    target = append(target, with.m_rep->m_data, middle);
    append(target, text + (units - kept), back);
    return qelStringAccess::adopt(*this, rep);
}

void qelString::removeAll(const wchar_t& c)
{
    const wchar_t* text = m_rep->m_data;
    const wchar_t removed = c;
    const size_t units = qelText::measureOwn(text);
    const size_t left = units - static_cast<size_t>(countUnit(text, units, removed));
    if (left == units)
    {
        return;
    }
    if (left == 0)
    {
        empty();
        return;
    }
    qelStringRepr* rep = qelStringAccess::create(left);
    wchar_t* target = rep->m_data;
    for (size_t i = 0; i < units; ++i)
    {
        if (text[i] != removed)
        {
            *target++ = text[i];
        }
    }
    qelStringAccess::adopt(*this, rep);
}

void qelString::removeAll(const unsigned short& c)
{
    removeAll(static_cast<wchar_t>(c));
}

void qelString::removeAll(const char& c)
{
    removeAll(qelCodePage::unit(c));
}
