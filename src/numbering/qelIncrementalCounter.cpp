#include "qelIncrementalCounter.h"

#include "numbering/TextBuffer.h"

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

/// The one-character text of NUL is the empty one, which every text has but the empty one.
bool occursIn(wchar_t c, const wchar_t* text)
{
    return *text != 0 && wcschr(text, c) != nullptr;
}

void split(const qelString& code, qelArray<wchar_t>& characters)
{
    const long length = code.length();
    characters.setLogicalLength(length);
    if (length > 0)
    {
        memcpy(&characters[0], code.getStringW(), static_cast<size_t>(length) * sizeof(wchar_t));
    }
}

/// What appending the characters one by one to an empty text gives: a NUL adds nothing, and a text that would outgrow
/// the limit fails and is empty again.
qelString join(const qelArray<wchar_t>& characters)
{
    const long positions = characters.length();
    qelNumbering::TextBuffer code(static_cast<size_t>(positions));
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

int qelIncrementalCounter::setDataFrom(const StructIncrementalCounter& source)
{
    m_data = source;
    m_numericOnly = allDigits(m_data.startValue) && allDigits(m_data.firstCharacter) ? 1 : 0;
    reset();
    return 1;
}

void qelIncrementalCounter::reset()
{
    split(m_data.startValue, m_characters);
    m_counterString = m_data.startValue;
    m_callCount = 0;
}

qelString qelIncrementalCounter::getCounterString() const
{
    return m_counterString;
}

void qelIncrementalCounter::setCounterString(const qelString& code)
{
    split(code, m_characters);
    m_counterString = code;
}

qelIncrementalCounter::eIncrementStatus qelIncrementalCounter::increment()
{
    // Counted without sign: the count of an unlimited counter may pass the greatest int.
    m_callCount = static_cast<int>(static_cast<unsigned>(m_callCount) + 1U);
    eIncrementStatus status = eMaxCountReached;
    if (m_data.maxCount == -1 || m_callCount < m_data.maxCount)
    {
        status = eIncremented;
        int carry = 1;
        for (long i = m_characters.length() - 1; i >= 0 && carry == 1; --i)
        {
            m_characters[i] = incrementAtPosition(m_characters[i], m_data.excludedCharacters, carry);
        }
        if (carry == 1)
        {
            // A number does not begin with the digit 0.
            const auto beforeFirst = static_cast<wchar_t>(initChar() - 1);
            m_characters.insertAt(0, incrementAtPosition(beforeFirst,
                                                         m_numericOnly == 1 ? m_data.excludedCharacters + L"0"
                                                                            : m_data.excludedCharacters,
                                                         carry));
        }
    }
    m_counterString = join(m_characters);
    return status;
}

wchar_t qelIncrementalCounter::initChar() const
{
    const int length = m_data.firstCharacter.length();
    return length == 0 ? L'\0' : m_data.firstCharacter[length - 1];
}

wchar_t qelIncrementalCounter::incrementAtPosition(wchar_t current, qelString excluded, int& carry) const
{
    const int first = initChar();
    const wchar_t* left = excluded.getStringW();
    const wchar_t before = current;
    do
    {
        current = static_cast<wchar_t>(current + 1);
    } while (occursIn(current, left) && current - first < m_data.range && current != before);

    // An equality by design: a character behind the end of the range never starts over.
    carry = current - first == m_data.range ? 1 : 0;
    if (carry == 0)
    {
        return current;
    }
    return m_numericOnly == 1 ? L'0' : static_cast<wchar_t>(first);
}
