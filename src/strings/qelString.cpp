// Construction, assignment, access, comparison operators and concatenation. The other operations are in qelString*.cpp,
// by topic.

#include "qelString.h"

#include "strings/CodePage.h"
#include "strings/StringAccess.h"
#include "strings/Text.h"

static_assert(qelString::kMaxLength == qelText::kCapacity, "one limit, told to callers and to the library's sources");

namespace
{
char* allocateNarrow(int bytes)
{
    return static_cast<char*>(::operator new(static_cast<size_t>(bytes) + 1));
}

/// The narrow form of a string, in a block of its own.
char* narrowCopy(const wchar_t* text, int units)
{
    // Nearly every string takes one byte per unit: try that before measuring.
    char* narrow = allocateNarrow(units);
    int bytes = units == 0 ? 0 : qelCodePage::toAnsi(text, units, narrow, units);
    if (bytes == 0 && units > 0)
    {
        qelText::scrub(narrow, static_cast<size_t>(units));
        ::operator delete(narrow);
        const int needed = qelCodePage::toAnsi(text, units, nullptr, 0);
        narrow = allocateNarrow(needed);
        bytes = qelCodePage::toAnsi(text, units, narrow, needed);
    }
    narrow[bytes] = 0;
    return narrow;
}
} // namespace

qelStringRepr::qelStringRepr(wchar_t* data)
    : m_data(data)
    , m_refCount(1)
{
}

qelStringRepr::~qelStringRepr()
{
    qelText::scrubOwn(m_data);
}

void qelStringRepr::operator delete(void* block)
{
    ::operator delete(block);
}

qelStringRepr* qelStringAccess::create(size_t length)
{
    // One block for both: the text follows the representation, in whole chunks.
    const size_t lastChunk = length / qelUnits::kPerChunk * qelUnits::kPerChunk;
    void* block = ::operator new(sizeof(qelStringRepr) + (lastChunk + qelUnits::kPerChunk) * sizeof(wchar_t));
    auto* data = reinterpret_cast<wchar_t*>(static_cast<unsigned char*>(block) + sizeof(qelStringRepr));
    memset(data + lastChunk, 0, qelUnits::kPerChunk * sizeof(wchar_t));
    return new (block, qelPlacement()) qelStringRepr(data);
}

qelStringRepr* qelStringAccess::represent(const wchar_t* text, size_t length)
{
    if (length == 0)
    {
        return qelString::m_repEmpty;
    }
    qelStringRepr* rep = create(length);
    qelUnits::copy(rep->m_data, text, length);
    return rep;
}

qelStringRepr* qelStringAccess::represent(const char* text, size_t length, unsigned codePage)
{
    if (length == 0)
    {
        return qelString::m_repEmpty;
    }
    qelStringRepr* rep = create(length);
    // Every code page that Windows uses as ANSI code page has ASCII in its place.
    if (codePage == CP_ACP && length <= qelText::kCapacity && qelUnits::widen(rep->m_data, text, length))
    {
        return rep;
    }
    // No code page produces more units than bytes, so one conversion suffices.
    const int room = static_cast<int>(length);
    const auto made = static_cast<size_t>(MultiByteToWideChar(codePage, 0, text, room, rep->m_data, room));
    memset(rep->m_data + made, 0, (length - made) * sizeof(wchar_t));
    const size_t units = qelText::measureOwn(rep->m_data, qelText::kCapacity);
    // The destructor wipes up to the terminator only: leave nothing after it.
    qelText::scrub(rep->m_data + units, (made - units) * sizeof(wchar_t));
    if (units == 0)
    {
        delete rep;
        return qelString::m_repEmpty;
    }
    return rep;
}

qelString::qelString()
    : m_rep(m_repEmpty)
    , m_charCache(nullptr)
{
}

qelString::qelString(const wchar_t* text)
    : m_rep(qelStringAccess::represent(text, qelText::measure(text)))
    , m_charCache(nullptr)
{
}

qelString::qelString(const unsigned short* text)
    : qelString(qelText::wide(text))
{
}

qelString::qelString(const char* text)
    : m_rep(qelStringAccess::represent(text, qelCodePage::measure(text), CP_ACP))
    , m_charCache(nullptr)
{
}

qelString::qelString(const qelString& other)
    : m_rep(qelStringAccess::share(other.m_rep))
    , m_charCache(nullptr)
{
}

// Deliberate: an empty array leaves m_rep null.
qelString::qelString(const qelArray<wchar_t>& chars, int first, int last)
    : m_rep(nullptr)
    , m_charCache(nullptr)
{
    if (chars.length() <= 0)
    {
        return;
    }
    m_rep = m_repEmpty;
    if (first < 0 || first > last || last >= chars.length())
    {
        return;
    }
    // Zeros are skipped.
    size_t units = 0;
    for (int i = first; i <= last; ++i)
    {
        units += chars[i] != 0 ? 1U : 0U;
    }
    if (units > 0 && qelText::fits(units))
    {
        m_rep = qelStringAccess::create(units);
        wchar_t* to = m_rep->m_data;
        for (int i = first; i <= last; ++i)
        {
            if (chars[i] != 0)
            {
                *to++ = chars[i];
            }
        }
    }
}

qelString::~qelString()
{
    ReleaseRep();
    ReleaseCharCache();
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing to do for strings that share a buffer already
qelString& qelString::operator=(const qelString& other)
{
    if (m_rep != other.m_rep)
    {
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): it does not understand the reference count
        qelStringAccess::adopt(*this, qelStringAccess::share(other.m_rep));
    }
    return *this;
}

// Builds the new buffer before releasing the old one: the argument may point into either form.
qelString& qelString::operator=(const wchar_t* text)
{
    qelStringAccess::assign(*this, text, qelText::measure(text));
    return *this;
}

qelString& qelString::operator=(const unsigned short* text)
{
    *this = qelText::wide(text);
    return *this;
}

qelString& qelString::operator=(const char* text)
{
    *this = qelString(text);
    return *this;
}

qelString qelString::setFromUnsignedShortString(const unsigned short* text)
{
    *this = text;
    return *this;
}

qelString& qelString::empty()
{
    return qelStringAccess::adopt(*this, m_repEmpty);
}

const wchar_t* qelString::getStringW() const
{
    return m_rep->m_data;
}

const unsigned short* qelString::getStringWAsUnsignedShort() const
{
    return reinterpret_cast<const unsigned short*>(m_rep->m_data);
}

const char* qelString::getStringA() const
{
    if (m_charCache == nullptr)
    {
        m_charCache = narrowCopy(m_rep->m_data, length());
    }
    return m_charCache;
}

int qelString::length() const
{
    return static_cast<int>(qelText::measureOwn(m_rep->m_data));
}

int qelString::isEmpty() const
{
    return m_rep->m_data[0] == 0 ? 1 : 0;
}

const wchar_t& qelString::operator[](int index) const
{
    return m_rep->m_data[index];
}

// Uses the scratch buffer: after a write over the terminator the string runs on into what the buffer held there.
// Deliberate.
qelString& qelString::setAt(int index, const wchar_t& c)
{
    const wchar_t unit = c;
    const size_t units = qelText::measureOwn(m_rep->m_data);
    if (!qelText::fits(units))
    {
        return empty();
    }
    memcpy(qelStringTempBufferWide, m_rep->m_data, (units + 1) * sizeof(wchar_t));
    if (index >= 0 && index < kMaxLength)
    {
        qelStringTempBufferWide[index] = unit;
    }
    return *this = qelStringTempBufferWide;
}

qelString& qelString::setAt(int index, const unsigned short& c)
{
    return setAt(index, static_cast<wchar_t>(c));
}

qelString& qelString::setAt(int index, const char& c)
{
    return setAt(index, qelCodePage::unit(c));
}

bool qelString::operator==(const qelString& other) const
{
    return qelText::areEqualOwn(m_rep->m_data, other.m_rep->m_data);
}

bool qelString::operator!=(const qelString& other) const
{
    return !qelText::areEqualOwn(m_rep->m_data, other.m_rep->m_data);
}

bool qelString::operator<(const qelString& other) const
{
    return qelText::compareOwn(m_rep->m_data, other.m_rep->m_data) < 0;
}

bool qelString::operator>(const qelString& other) const
{
    return qelText::compareOwn(m_rep->m_data, other.m_rep->m_data) > 0;
}

qelString qelString::operator+(const qelString& other) const
{
    const size_t front = qelText::measureOwn(m_rep->m_data);
    const size_t back = qelText::measureOwn(other.m_rep->m_data);
    if (front + back == 0 || !qelText::fits(front + back))
    {
        return qelString();
    }
    qelStringRepr* rep = qelStringAccess::create(front + back);
    qelUnits::copy(rep->m_data, m_rep->m_data, front);
    qelUnits::copy(rep->m_data + front, other.m_rep->m_data, back);
    return qelStringAccess::stringOf(rep);
}

const qelString& qelString::operator+=(const qelString& other)
{
    return *this = *this + other;
}

qelString& qelString::operator>>=(int count)
{
    if (count < 1)
    {
        return *this;
    }
    const int units = length();
    const int dropped = count < units ? count : units;
    return qelStringAccess::assign(*this, m_rep->m_data + dropped, static_cast<size_t>(units - dropped));
}

qelString qelString::operator>>(int count) const
{
    qelString result(*this);
    result >>= count;
    return result;
}

void qelString::ReleaseRep()
{
    if (m_rep != nullptr && m_rep != m_repEmpty && --m_rep->m_refCount < 1)
    {
        delete m_rep;
        m_rep = nullptr;
    }
}

void qelString::ReleaseCharCache()
{
    if (m_charCache != nullptr)
    {
        qelText::scrub(m_charCache, qelUnits::measure(m_charCache, SIZE_MAX));
        ::operator delete(m_charCache);
        m_charCache = nullptr;
    }
}
