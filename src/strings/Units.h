// Loops over the units of a string, with vector instructions on x64. Not part of the public interface.
//
// Each function has a plain twin in qelUnits::plain that says what it does and serves other processors.
#ifndef QEL_UNITS_H
#define QEL_UNITS_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#if defined(__x86_64__) || defined(_M_X64)
#define QEL_HAS_SSE2
#include <emmintrin.h>
#endif
#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace qelUnits
{
namespace plain
{
/// Position of the first 0, at most `limit`. Reads no more than `limit` units or bytes.
template <class Char> size_t measure(const Char* text, size_t limit)
{
    size_t length = 0;
    while (length < limit && text[length] != 0)
    {
        ++length;
    }
    return length;
}

/// Position of the first unit that differs, or of the 0 that ends both strings.
inline size_t firstDifference(const wchar_t* a, const wchar_t* b)
{
    size_t at = 0;
    while (a[at] == b[at] && a[at] != 0)
    {
        ++at;
    }
    return at;
}

/// The first place from `text` to `end` that has `first` and, `distance` units later, `last`; or null. The text must
/// extend that far past `end`.
template <class Char> const Char* findPair(const Char* text, const Char* end, Char first, size_t distance, Char last)
{
    while (text < end && (*text != first || text[distance] != last))
    {
        ++text;
    }
    return text < end ? text : nullptr;
}
} // namespace plain

#if defined(QEL_HAS_SSE2)

/// Units per instruction. Buffers of qelString are allocated in whole chunks, so a chunk that begins inside one can be
/// read before its length is known.
const size_t kPerChunk = 8;

inline __m128i chunk(const void* text)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(text));
}

inline __m128i equal(const wchar_t* text, wchar_t c)
{
    return _mm_cmpeq_epi16(chunk(text), _mm_set1_epi16(static_cast<short>(c)));
}

inline __m128i equal(const char* text, char c)
{
    return _mm_cmpeq_epi8(chunk(text), _mm_set1_epi8(c));
}

/// The highest bit of each byte, as a mask.
inline unsigned bitsOf(__m128i bytes)
{
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

/// Position of the lowest set bit; there must be one.
inline size_t lowestBit(uint64_t bits)
{
#if defined(_MSC_VER)
    unsigned long position = 0;
    _BitScanForward64(&position, bits);
    return position;
#else
    return static_cast<size_t>(__builtin_ctzll(bits));
#endif
}

const size_t kBlock = 64;

/// An aligned block of 64 bytes, searched for a 0.
template <class Char> struct Block
{
    explicit Block(const Char* text)
    {
        const __m128i zero = _mm_setzero_si128();
        for (size_t i = 0; i < 4; ++i)
        {
            const __m128i part = chunk(text + i * sizeof(__m128i) / sizeof(Char));
            zeros[i] = sizeof(Char) == 1 ? _mm_cmpeq_epi8(part, zero) : _mm_cmpeq_epi16(part, zero);
        }
    }

    bool hasZero() const
    {
        return bitsOf(_mm_or_si128(_mm_or_si128(zeros[0], zeros[1]), _mm_or_si128(zeros[2], zeros[3]))) != 0;
    }

    /// A bit for each byte, set where its character is 0.
    uint64_t bits() const
    {
        const uint64_t low = bitsOf(zeros[0]) | bitsOf(zeros[1]) << 16;
        const uint64_t high = bitsOf(zeros[2]) | bitsOf(zeros[3]) << 16;
        return low | high << 32;
    }

    __m128i zeros[4];
};

/// Reads aligned blocks: reading before the text or past its end stays in the same page.
template <class Char> size_t measure(const Char* text, size_t limit)
{
    const auto address = reinterpret_cast<uintptr_t>(text);
    if (limit == 0 || address % sizeof(Char) != 0)
    {
        return plain::measure(text, limit);
    }
    const size_t perBlock = kBlock / sizeof(Char);
    const size_t before = address % kBlock;
    uint64_t zeros = Block<Char>(text - before / sizeof(Char)).bits() >> before;
    size_t length = 0;
    for (size_t next = perBlock - before / sizeof(Char); zeros == 0 && next < limit; next += perBlock)
    {
        const Block<Char> block(text + next);
        if (block.hasZero())
        {
            length = next;
            zeros = block.bits();
        }
    }
    if (zeros == 0)
    {
        return limit;
    }
    length += lowestBit(zeros) / sizeof(Char);
    return length < limit ? length : limit;
}

/// Only for buffers of qelString.
inline size_t firstDifference(const wchar_t* a, const wchar_t* b)
{
    const unsigned kAllEqual = 0xFFFF;
    for (size_t at = 0;; at += kPerChunk)
    {
        const __m128i same = _mm_cmpeq_epi16(chunk(a + at), chunk(b + at));
        const __m128i goesOn = _mm_andnot_si128(equal(a + at, 0), same);
        if (bitsOf(goesOn) != kAllEqual)
        {
            return at + lowestBit(~bitsOf(goesOn)) / sizeof(wchar_t);
        }
    }
}

template <class Char> const Char* findPair(const Char* text, const Char* end, Char first, size_t distance, Char last)
{
    const size_t perChunk = sizeof(__m128i) / sizeof(Char);
    for (; static_cast<size_t>(end - text) >= perChunk; text += perChunk)
    {
        const __m128i both = _mm_and_si128(equal(text, first), equal(text + distance, last));
        if (bitsOf(both) != 0)
        {
            return text + lowestBit(bitsOf(both)) / sizeof(Char);
        }
    }
    return plain::findPair(text, end, first, distance, last);
}

#else

const size_t kPerChunk = 1;
using plain::findPair;
using plain::firstDifference;
using plain::measure;

#endif

/// The first `c` in the text from `text` to `end`, or null.
template <class Char> const Char* find(const Char* text, const Char* end, Char c)
{
    return findPair(text, end, c, 0, c);
}
} // namespace qelUnits

#endif
