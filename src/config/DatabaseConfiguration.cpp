#include "config/DatabaseConfiguration.h"

#include <wchar.h>

namespace
{
/// A stretch of text; `begin` is null when there is none.
struct Span
{
    const wchar_t* begin;
    const wchar_t* end;
};

const Span kNone = {nullptr, nullptr};

/// Where `literal` first stands as a whole in `text`; kNone when it does not.
template <size_t Size> Span find(Span text, const wchar_t (&literal)[Size])
{
    const size_t length = Size - 1;
    while (static_cast<size_t>(text.end - text.begin) >= length)
    {
        const size_t starts = static_cast<size_t>(text.end - text.begin) - length + 1;
        const wchar_t* start = wmemchr(text.begin, literal[0], starts);
        if (start == nullptr)
        {
            break;
        }
        if (wmemcmp(start, literal, length) == 0)
        {
            return {start, start + length};
        }
        text.begin = start + 1;
    }
    return kNone;
}

/// As the default set of qelString::TrimLeft(): no carriage return.
bool isBlank(wchar_t c)
{
    return c == L'\t' || c == L'\n' || c == L' ';
}

Span trimmed(Span text)
{
    while (text.begin < text.end && isBlank(*text.begin))
    {
        ++text.begin;
    }
    while (text.begin < text.end && isBlank(text.end[-1]))
    {
        --text.end;
    }
    return text;
}

/// Between the first two double quotes behind the first `name` in the element, trimmed.
template <size_t Size> Span attribute(Span element, const wchar_t (&name)[Size])
{
    const Span found = find(element, name);
    const Span opening = found.begin == nullptr ? kNone : find({found.end, element.end}, L"\"");
    const Span closing = opening.begin == nullptr ? kNone : find({opening.end, element.end}, L"\"");
    return closing.begin == nullptr ? kNone : trimmed({opening.end, closing.begin});
}

/// A span has no terminator: the scratch buffer, which has room for any part of a text, lends one.
qelString toString(Span text)
{
    const auto length = static_cast<size_t>(text.end - text.begin);
    wmemcpy(qelString::qelStringTempBufferWide, text.begin, length);
    qelString::qelStringTempBufferWide[length] = 0;
    return qelString::qelStringTempBufferWide;
}
} // namespace

DatabaseConfiguration::DatabaseConfiguration(const qelString& text)
    : m_position(nullptr)
    , m_end(nullptr)
{
    const wchar_t* begin = text.getStringW();
    const Span whole = {begin, begin + text.length()};
    const Span opening = find(whole, L"<Orvalis>");
    const Span closing = opening.begin == nullptr ? kNone : find(whole, L"</Orvalis>");
    // The first closing tag counts even where it stands in front of the opening one: the section then ends before it
    // begins, and holds nothing.
    if (closing.begin != nullptr)
    {
        m_position = opening.end;
        m_end = closing.begin;
    }
}

bool DatabaseConfiguration::next(qelDataSource& entry)
{
    while (m_position < m_end)
    {
        const Span start = find({m_position, m_end}, L"<DataSource");
        // A "/>" in front of the element belongs to something else and is stepped over with it.
        const Span close = start.begin == nullptr ? kNone : find({start.end, m_end}, L"/>");
        if (close.begin == nullptr)
        {
            m_position = m_end;
            break;
        }
        m_position = close.end;

        const Span element = {start.end, close.begin};
        const Span platform = attribute(element, L"Platform");
        const Span name = attribute(element, L"Name");
        const Span value = attribute(element, L"Value");
        if (platform.begin != nullptr && name.begin != nullptr && value.begin != nullptr)
        {
            entry = qelDataSource(toString(name), toString(value), toString(platform));
            return true;
        }
    }
    return false;
}
