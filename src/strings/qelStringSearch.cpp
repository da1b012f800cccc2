// Searching.

#include "qelString.h"

#include "strings/Text.h"
#include "strings/TextSearch.h"

int qelString::find(const qelString& what, int start) const
{
    const wchar_t* text = m_rep->m_data;
    const int units = length();
    if (start < 0 || start >= units)
    {
        return -1;
    }
    const wchar_t* sought = what.m_rep->m_data;
    const wchar_t* hit = qelTextSearch::find(text + start, text + units, sought, qelText::measureOwn(sought));
    return hit == nullptr ? -1 : static_cast<int>(hit - text);
}

int qelString::find_last_of(wchar_t c) const
{
    const wchar_t* text = m_rep->m_data;
    const wchar_t* hit = qelUnits::findLast(text, text + qelText::measureOwn(text), c);
    return hit == nullptr ? -1 : static_cast<int>(hit - text);
}

int qelString::find_last_of(unsigned short c) const
{
    return find_last_of(static_cast<wchar_t>(c));
}

// Deliberate: the range is the length of the wide form, but the bytes are those of the narrow one.
int qelString::find_last_of(char c) const
{
    const char* text = getStringA();
    const int bytes = static_cast<int>(qelUnits::measure(text, SIZE_MAX));
    const int units = length();
    // A narrow form shorter than that is read only up to its terminator.
    int i = units <= bytes ? units - 1 : bytes;
    while (i >= 0 && text[i] != c)
    {
        --i;
    }
    return i;
}
