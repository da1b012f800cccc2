#include "qelNumberCreator.h"

#include "numbering/TextBuffer.h"
#include "strings/StringAccess.h"

#include <string.h>

namespace
{
const eNumberingType kNumeric = static_cast<eNumberingType>(3);

/// `a + b + c`, built at once.
qelString join(const qelString& a, const qelString& b, const qelString& c)
{
    const auto lengthA = static_cast<size_t>(a.length());
    const auto lengthB = static_cast<size_t>(b.length());
    const auto lengthC = static_cast<size_t>(c.length());
    if (lengthA + lengthC == 0)
    {
        return b;
    }
    if (lengthA + lengthB + lengthC >= qelText::kCapacity)
    {
        return a + b + c; // too long: fails like concatenation
    }
    qelStringRepr* rep = qelStringAccess::create(lengthA + lengthB + lengthC);
    wchar_t* end = qelStringAccess::unitsOf(rep);
    memcpy(end, a.getStringW(), lengthA * sizeof(wchar_t));
    end += lengthA;
    memcpy(end, b.getStringW(), lengthB * sizeof(wchar_t));
    end += lengthB;
    memcpy(end, c.getStringW(), lengthC * sizeof(wchar_t));
    return qelStringAccess::stringOf(rep);
}

wchar_t lowestSymbol(const StructNumberingDataRange& range)
{
    return range.firstSymbol[0];
}

/// Replaces the running code with the one after it.
void advance(qelString& code, const StructNumberingDataRange& range, eNumberingType type)
{
    const int lowest = lowestSymbol(range);
    const int count = range.symbolCount;
    const auto length = static_cast<size_t>(code.length());
    qelNumbering::TextBuffer moved(length);
    memcpy(moved.text(), code.getStringW(), length * sizeof(wchar_t));
    moved.text()[length] = 0;

    bool carry = true;
    for (size_t i = length; i > 0 && carry; --i)
    {
        wchar_t& symbol = moved.text()[i - 1];
        int value = symbol - lowest + 1;
        carry = value >= count;
        if (count > 0)
        {
            value %= count; // keeps the sign: a symbol below the range stays below it
        }
        symbol = static_cast<wchar_t>(lowest + value);
    }
    if (carry)
    {
        const wchar_t leading[] = {static_cast<wchar_t>(type == kNumeric ? lowest + 1 : lowest), 0};
        code = qelString(leading) + moved.text();
    }
    else if (qelText::measure(moved.text()) != length || !qelStringAccess::overwrite(code, moved.text(), length))
    {
        code = moved.text();
    }
}
} // namespace

qelNumberCreator::qelNumberCreator()
    : m_numberingType(static_cast<eNumberingType>(0))
{
}

qelNumberCreator::qelNumberCreator(eNumberingType type, const qelString& prefix)
    : m_numberingType(type)
    , m_prefix(prefix)
{
}

// Deliberately without the range, here and in the assignment.
qelNumberCreator::qelNumberCreator(const qelNumberCreator& other)
    : m_numberingType(other.m_numberingType)
    , m_prefix(other.m_prefix)
    , m_suffix(other.m_suffix)
    , m_start(other.m_start)
    , m_current(other.m_current)
{
}

qelNumberCreator& qelNumberCreator::operator=(const qelNumberCreator& other)
{
    m_numberingType = other.m_numberingType;
    m_prefix = other.m_prefix;
    m_start = other.m_start;
    m_current = other.m_current;
    m_suffix = other.m_suffix;
    return *this;
}

qelNumberCreator::~qelNumberCreator() = default;

eNumberingType qelNumberCreator::getNumberingType() const
{
    return m_numberingType;
}

const qelString& qelNumberCreator::getNumberingPrefix() const
{
    return m_prefix;
}

const qelString& qelNumberCreator::getNumberingSufix() const
{
    return m_suffix;
}

const qelString& qelNumberCreator::getNumberingStart() const
{
    return m_start;
}

// Deliberately starts from `firstSymbol`, unlike overrideDataRange().
SetCodeTag qelNumberCreator::setNumberingType(eNumberingType type)
{
    if (type == m_numberingType)
    {
        return eCodeNotSet;
    }
    m_numberingType = type;
    m_start = m_dataRange.firstSymbol;
    m_current = m_start;
    return eCodeSet;
}

SetCodeTag qelNumberCreator::setNumberingPrefix(const qelString& prefix)
{
    if (prefix == m_prefix)
    {
        return eCodeNotSet;
    }
    m_prefix = prefix;
    return eCodeSet;
}

SetCodeTag qelNumberCreator::setNumberingSufix(const qelString& suffix)
{
    if (suffix == m_suffix)
    {
        return eCodeNotSet;
    }
    m_suffix = suffix;
    return eCodeSet;
}

SetCodeTag qelNumberCreator::setNumberingStart(const qelString& start)
{
    if (checkNumber(start) == 0)
    {
        return eCodeNotSet;
    }
    m_start = start;
    return eCodeSet;
}

SetCodeTag qelNumberCreator::overrideDataRange(const StructNumberingDataRange& range, eNumberingType type)
{
    m_dataRange = range;
    if (type == m_numberingType)
    {
        return eCodeNotSet;
    }
    m_numberingType = type;
    m_start = range.defaultStart;
    m_current = m_start;
    return eCodeSet;
}

void qelNumberCreator::reset()
{
    m_current = m_start;
}

qelString qelNumberCreator::getNextNumber()
{
    // Allocations first: no number is lost when out of memory.
    const qelString number = join(m_prefix, m_current, m_suffix);
    advance(m_current, m_dataRange, m_numberingType);
    return number;
}

int qelNumberCreator::checkNumber(const qelString& number) const
{
    const int lowest = lowestSymbol(m_dataRange);
    for (const wchar_t* at = number.getStringW(); *at != 0; ++at)
    {
        // Compares distances, because the end of the range may not fit an int.
        const int distance = *at - lowest;
        if (distance < 0 || distance >= m_dataRange.symbolCount)
        {
            return 0;
        }
    }
    return 1;
}
