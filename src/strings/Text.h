// Bounded measuring and scrubbing of text. Not part of the public interface; other subsystems may use it.
#ifndef QEL_TEXT_H
#define QEL_TEXT_H

#include <windows.h>

#include <emmintrin.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <wchar.h>

namespace qelText
{
/// Greatest length of a text, and capacity of both scratch buffers, in units.
const size_t kCapacity = 0x80000;

/// Units before the terminator, at most kCapacity; 0 for null. Nothing behind either is read.
inline size_t measure(const wchar_t* text)
{
    return text == nullptr ? 0 : wcsnlen(text, kCapacity);
}

/// The text of a representation is stored in whole chunks, so that it can be measured and compared by chunks.
const size_t kUnitsPerChunk = 8;

inline __m128i chunk(const wchar_t* text)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

/// Two bits for each unit, from the lowest up: set where both chunks have the same unit.
inline unsigned long equalUnits(__m128i a, __m128i b)
{
    return static_cast<unsigned long>(_mm_movemask_epi8(_mm_cmpeq_epi16(a, b)));
}

const unsigned long kAllUnits = 0xFFFF;

/// The same bits, set where the unit is `c`.
inline unsigned long unitsEqualTo(__m128i units, wchar_t c)
{
    return equalUnits(units, _mm_set1_epi16(static_cast<short>(c)));
}

/// Position of the first of those bits, which must not all be clear, in units.
inline size_t firstUnit(unsigned long bits)
{
    unsigned long bit = 0;
    _BitScanForward(&bit, bits);
    return bit / 2;
}

/// As measure(), for the text of a representation only: reads up to the end of the chunk that holds the terminator, and
/// no chunk from `limit` on.
inline size_t measureOwn(const wchar_t* text, size_t limit = SIZE_MAX)
{
    for (size_t length = 0; length < limit; length += kUnitsPerChunk)
    {
        const unsigned long terminators = unitsEqualTo(chunk(text + length), 0);
        if (terminators != 0)
        {
            length += firstUnit(terminators);
            return length < limit ? length : limit;
        }
    }
    return limit;
}

/// Overwrites memory with zeros in a way that the optimiser keeps.
inline void scrub(void* memory, size_t bytes)
{
#if defined(__GNUC__)
    // Most texts are short, and the block store of SecureZeroMemory takes longer to start than to write them.
    memset(memory, 0, bytes);
    __asm__ __volatile__("" : : "r"(memory) : "memory");
#else
    SecureZeroMemory(memory, bytes);
#endif
}

/// Hands a result that does not fit to the runtime's invalid-parameter handling, as its bounded copies do.
inline void refuseTooLong()
{
    wchar_t full[2];
    (void)wcscpy_s(full, 2, L"--");
}

/// Whether a result of that length fits; one that does not is refused.
inline bool fits(size_t length)
{
    if (length < kCapacity)
    {
        return true;
    }
    refuseTooLong();
    return false;
}

/// Whether a set of units holds `c`; sets are short.
inline bool contains(const wchar_t* set, size_t length, wchar_t c)
{
    size_t i = 0;
    while (i < length && set[i] != c)
    {
        ++i;
    }
    return i < length;
}

/// The first `c` in the text from `text` to `end`, or null.
inline const wchar_t* findUnit(const wchar_t* text, const wchar_t* end, wchar_t c)
{
    while (static_cast<size_t>(end - text) >= kUnitsPerChunk)
    {
        const unsigned long hits = unitsEqualTo(chunk(text), c);
        if (hits != 0)
        {
            return text + firstUnit(hits);
        }
        text += kUnitsPerChunk;
    }
    while (text < end && *text != c)
    {
        ++text;
    }
    return text < end ? text : nullptr;
}

/// The first `what` in the text from `text` to `end`, or null; an empty one is found at once.
inline const wchar_t* find(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t whatLength)
{
    if (whatLength == 0)
    {
        return text;
    }
    while (static_cast<size_t>(end - text) >= whatLength)
    {
        const wchar_t* hit = findUnit(text, end - whatLength + 1, *what);
        if (hit == nullptr || memcmp(hit, what, whatLength * sizeof(wchar_t)) == 0)
        {
            return hit;
        }
        text = hit + 1;
    }
    return nullptr;
}

/// A buffer for narrow text on its way to a string, wiped before it is freed.
class NarrowBuffer
{
public:
    explicit NarrowBuffer(size_t size)
        : m_data(static_cast<char*>(::operator new(size)))
        , m_size(size)
    {
    }

    NarrowBuffer(const NarrowBuffer&) = delete;
    NarrowBuffer& operator=(const NarrowBuffer&) = delete;

    ~NarrowBuffer()
    {
        scrub(m_data, m_size);
        ::operator delete(m_data);
    }

    char* data() const { return m_data; }

private:
    char* m_data;
    size_t m_size;
};

inline const wchar_t* wide(const unsigned short* text)
{
    return reinterpret_cast<const wchar_t*>(text);
}
} // namespace qelText

#endif
