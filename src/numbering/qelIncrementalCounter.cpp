#include "qelIncrementalCounter.h"

#include "numbering/TextBuffer.h"
#include "strings/StringAccess.h"

#include <string.h>
#include <wchar.h>
#include <wctype.h>

namespace
{
bool allDigits(const qelString& text)
{
    for (const wchar_t* at = text.getStringW(); *at != 0; ++at)
    {
        if (iswdigit(*at) == 0)
        {
            return false;
        }
    }
    return true;
}

/// NUL as a string is empty, and so occurs in every string except the empty one.
bool occursIn(wchar_t c, const wchar_t* text)
{
    if (*text == 0)
    {
        return false;
    }
    while (*text != c && *text != 0)
    {
        ++text;
    }
    return *text == c;
}

/// What every position of a code runs through.
struct Symbols
{
    int first;
    int range;
    bool numericOnly;
};

/// The character after `current`.
wchar_t nextCharacter(wchar_t current, const Symbols& symbols, const wchar_t* excluded, int& carry)
{
    const wchar_t before = current;
    do
    {
        current = static_cast<wchar_t>(current + 1);
    } while (occursIn(current, excluded) && current - symbols.first < symbols.range && current != before);

    // Deliberately an equality: a character past the end of the range never starts over.
    carry = current - symbols.first == symbols.range ? 1 : 0;
    if (carry == 0)
    {
        return current;
    }
    return symbols.numericOnly ? L'0' : static_cast<wchar_t>(symbols.first);
}

void assign(qelArray<wchar_t>& characters, const wchar_t* code, long length)
{
    characters.setLogicalLength(length);
    if (length > 0)
    {
        memcpy(&characters[0], code, static_cast<size_t>(length) * sizeof(wchar_t));
    }
}

/// Same result as appending the characters one by one: a NUL among them adds nothing, and a string past the length
/// limit fails and is empty again. `characters` is null-terminated.
qelString join(const wchar_t* characters, long positions)
{
    const auto count = static_cast<size_t>(positions);
    if (count < qelText::kCapacity && wcsnlen(characters, count) == count)
    {
        return qelString(characters);
    }
    qelNumbering::TextBuffer code(count);
    size_t length = 0;
    for (long i = 0; i < positions; ++i)
    {
        if (characters[i] == 0)
        {
            continue;
        }
        code.text()[length++] = characters[i];
        if (length == qelText::kCapacity)
        {
            qelText::refuseTooLong();
            length = 0;
        }
    }
    code.text()[length] = 0;
    return qelString(code.text());
}
} // namespace

qelIncrementalCounter::qelIncrementalCounter()
    : m_numericOnly(0)
    , m_callCount(0)
{
    m_data.userValue = -1;
    m_data.range = 1;
}

qelIncrementalCounter::~qelIncrementalCounter() = default;

// In all of these, allocations come first, so that a failed call has changed nothing.
// NOLINTNEXTLINE(modernize-use-equals-default): the default would copy in the order of the members
qelIncrementalCounter& qelIncrementalCounter::operator=(const qelIncrementalCounter& other)
{
    if (this != &other)
    {
        // Allocations first.
        assign(m_characters, other.m_characters.begin(), other.m_characters.length());
        m_data = other.m_data;
        m_numericOnly = other.m_numericOnly;
        m_counterString = other.m_counterString;
        m_callCount = other.m_callCount;
    }
    return *this;
}

int qelIncrementalCounter::setDataFrom(const StructIncrementalCounter& source)
{
    assign(m_characters, source.startValue.getStringW(), source.startValue.length());
    m_data = source;
    m_numericOnly = allDigits(m_data.startValue) && allDigits(m_data.firstCharacter) ? 1 : 0;
    m_counterString = m_data.startValue;
    m_callCount = 0;
    return 1;
}

void qelIncrementalCounter::reset()
{
    assign(m_characters, m_data.startValue.getStringW(), m_data.startValue.length());
    m_counterString = m_data.startValue;
    m_callCount = 0;
}

qelString qelIncrementalCounter::getCounterString() const
{
    return m_counterString;
}

void qelIncrementalCounter::setCounterString(const qelString& code)
{
    assign(m_characters, code.getStringW(), code.length());
    m_counterString = code;
}

qelIncrementalCounter::eIncrementStatus qelIncrementalCounter::increment()
{
    // Unsigned: the count of an unlimited counter may pass INT_MAX.
    const int callCount = static_cast<int>(static_cast<unsigned>(m_callCount) + 1U);
    const bool isRefused = m_data.maxCount != -1 && callCount >= m_data.maxCount;

    // In a buffer with a spare position in front: the counter changes only once the new code is complete.
    long length = m_characters.length();
    qelNumbering::TextBuffer buffer(static_cast<size_t>(length) + 1);
    wchar_t* code = buffer.text() + 1;
    if (length > 0)
    {
        memcpy(code, &m_characters[0], static_cast<size_t>(length) * sizeof(wchar_t));
    }
    code[length] = 0;
    const Symbols symbols = {initChar(), m_data.range, m_numericOnly == 1};
    const wchar_t* const excluded = m_data.excludedCharacters.getStringW();
    int carry = isRefused ? 0 : 1;
    for (long i = length; i > 0 && carry == 1; --i)
    {
        code[i - 1] = nextCharacter(code[i - 1], symbols, excluded, carry);
    }
    if (carry == 1)
    {
        // A number does not begin with the digit 0. A carry of the new position is ignored.
        const auto beforeFirst = static_cast<wchar_t>(symbols.first - 1);
        --code;
        ++length;
        *code = incrementAtPosition(
            beforeFirst, symbols.numericOnly ? m_data.excludedCharacters + L"0" : m_data.excludedCharacters, carry);
    }

    const auto count = static_cast<size_t>(length);
    if (qelText::measure(code) == count && qelStringAccess::overwrite(m_counterString, code, count))
    {
        assign(m_characters, code, length);
    }
    else
    {
        const qelString text = join(code, length);
        assign(m_characters, code, length);
        m_counterString = text;
    }
    m_callCount = callCount;
    return isRefused ? eMaxCountReached : eIncremented;
}

wchar_t qelIncrementalCounter::initChar() const
{
    const int length = m_data.firstCharacter.length();
    return length == 0 ? L'\0' : m_data.firstCharacter[length - 1];
}

wchar_t qelIncrementalCounter::incrementAtPosition(wchar_t current, qelString excluded, int& carry) const
{
    return nextCharacter(current, {initChar(), m_data.range, m_numericOnly == 1}, excluded.getStringW(), carry);
}
