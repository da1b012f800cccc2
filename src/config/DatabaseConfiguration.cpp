#include "config/DatabaseConfiguration.h"

#include "config/Literals.h"
#include "strings/StringAccess.h"

#include <string.h>

namespace
{
const wchar_t kElement[] = L"<DataSource";
const wchar_t kElementEnd[] = L"/>";
const size_t kElementEndLength = 2;

/// The end of the first `literal` from `text` on, or null; also null when `text` is.
template <size_t Size> const wchar_t* behind(const wchar_t* text, const wchar_t* end, const wchar_t (&literal)[Size])
{
    const wchar_t* found = text == nullptr ? nullptr : qelLiterals::find(text, end, literal);
    return found == nullptr ? nullptr : found + Size - 1;
}

/// Same as qelString::TrimLeft(): no carriage return.
bool isBlank(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n';
}

/// Sets `text` to the part from `begin` to `end`.
void set(qelString& text, const wchar_t* begin, const wchar_t* end)
{
    const auto length = static_cast<size_t>(end - begin);
    // The platform is nearly always that of the previous entry: keep its string.
    if (static_cast<size_t>(text.length()) != length || memcmp(text.getStringW(), begin, length * sizeof(wchar_t)) != 0)
    {
        qelStringAccess::assign(text, begin, length);
    }
}

/// Sets `value` to the trimmed text between the first two double quotes after the first `name` in the element; false
/// when there is none.
template <size_t Size>
bool readAttribute(const wchar_t* element, const wchar_t* end, const wchar_t (&name)[Size], qelString& value)
{
    const wchar_t* begin = behind(behind(element, end, name), end, L"\"");
    const wchar_t* last = behind(begin, end, L"\"");
    if (last == nullptr)
    {
        return false;
    }
    --last;
    while (begin < last && isBlank(*begin))
    {
        ++begin;
    }
    while (begin < last && isBlank(last[-1]))
    {
        --last;
    }
    set(value, begin, last);
    return true;
}
} // namespace

DatabaseConfiguration::DatabaseConfiguration(const qelString& text)
    : m_position(nullptr)
    , m_end(qelLiterals::find(text, L"</Orvalis>"))
{
    // The first closing tag counts even before the opening one: the section is then empty.
    if (m_end != nullptr)
    {
        m_position = behind(text.getStringW(), m_end, L"<Orvalis>");
    }
}

long DatabaseConfiguration::mostEntries() const
{
    long count = 0;
    const wchar_t* position = m_position;
    while ((position = behind(position, m_end, kElement)) != nullptr)
    {
        ++count;
    }
    return count;
}

bool DatabaseConfiguration::next(qelDataSource& entry)
{
    while (m_position != nullptr)
    {
        const wchar_t* element = behind(m_position, m_end, kElement);
        // A "/>" before the element belongs to something else: skip both.
        m_position = behind(element, m_end, kElementEnd);
        if (m_position != nullptr)
        {
            const wchar_t* end = m_position - kElementEndLength;
            if (readAttribute(element, end, L"Platform", entry.m_Platform) &&
                readAttribute(element, end, L"Name", entry.m_Name) &&
                readAttribute(element, end, L"Value", entry.m_ConnectionString))
            {
                return true;
            }
        }
    }
    return false;
}
