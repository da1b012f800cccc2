// Loops over the units of a text, by vector instructions where the processor has them. Not part of the public interface.
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
/// Position of the first 0, at most `limit`. Reads no more than `limit` units.
inline size_t measure(const wchar_t* text, size_t limit)
{
    size_t length = 0;
    while (length < limit && text[length] != 0)
    {
        ++length;
    }
    return length;
}

/// Position of the first unit that differs, or of the 0 that ends both texts.
inline size_t firstDifference(const wchar_t* a, const wchar_t* b)
{
    size_t at = 0;
    while (a[at] == b[at] && a[at] != 0)
    {
        ++at;
    }
    return at;
}

/// The first place in `text` to `end` that has `first` and, `distance` units behind it, `last`; or null. The text goes
/// on for that distance behind `end`.
inline const wchar_t* findPair(const wchar_t* text, const wchar_t* end, wchar_t first, size_t distance, wchar_t last)
{
    while (text < end && (*text != first || text[distance] != last))
    {
        ++text;
    }
    return text < end ? text : nullptr;
}
} // namespace plain

#if defined(QEL_HAS_SSE2)

/// Units that one instruction takes. The text of a representation is stored in whole chunks, so that a chunk that
/// begins inside it can be read without looking for its end first.
const size_t kPerChunk = 8;

inline __m128i chunk(const wchar_t* text)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

inline __m128i equal(const wchar_t* text, wchar_t c)
{
    return _mm_cmpeq_epi16(chunk(text), _mm_set1_epi16(static_cast<short>(c)));
}

/// Position of the lowest bit, of which there must be one.
inline size_t lowestBit(unsigned bits)
{
#if defined(_MSC_VER)
    unsigned long position = 0;
    _BitScanForward(&position, bits);
    return position;
#else
    return static_cast<size_t>(__builtin_ctz(bits));
#endif
}

/// A bit for each of the 32 units of an aligned block of 64 bytes, set where it is 0.
inline unsigned zerosOfBlock(const wchar_t* block)
{
    const __m128i low = _mm_packs_epi16(equal(block, 0), equal(block + kPerChunk, 0));
    const __m128i high = _mm_packs_epi16(equal(block + 2 * kPerChunk, 0), equal(block + 3 * kPerChunk, 0));
    return static_cast<unsigned>(_mm_movemask_epi8(low)) | static_cast<unsigned>(_mm_movemask_epi8(high)) << 16;
}

/// Looks at aligned blocks: one that begins before the text or ends behind it lies in the same page.
inline size_t measure(const wchar_t* text, size_t limit)
{
    const size_t kPerBlock = 32;
    const auto address = reinterpret_cast<uintptr_t>(text);
    if (limit == 0 || address % sizeof(wchar_t) != 0)
    {
        return plain::measure(text, limit);
    }
    const size_t before = address % (kPerBlock * sizeof(wchar_t)) / sizeof(wchar_t);
    unsigned zeros = zerosOfBlock(text - before) >> before;
    size_t length = 0;
    for (size_t next = kPerBlock - before; zeros == 0 && next < limit; next += kPerBlock)
    {
        length = next;
        zeros = zerosOfBlock(text + length);
    }
    if (zeros == 0)
    {
        return limit;
    }
    length += lowestBit(zeros);
    return length < limit ? length : limit;
}

/// For the texts of representations only.
inline size_t firstDifference(const wchar_t* a, const wchar_t* b)
{
    const unsigned kAllEqual = 0xFFFF;
    for (size_t at = 0;; at += kPerChunk)
    {
        const __m128i same = _mm_cmpeq_epi16(chunk(a + at), chunk(b + at));
        const __m128i goesOn = _mm_andnot_si128(equal(a + at, 0), same);
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(goesOn));
        if (bits != kAllEqual)
        {
            return at + lowestBit(~bits) / sizeof(wchar_t);
        }
    }
}

inline const wchar_t* findPair(const wchar_t* text, const wchar_t* end, wchar_t first, size_t distance, wchar_t last)
{
    for (; static_cast<size_t>(end - text) >= kPerChunk; text += kPerChunk)
    {
        const __m128i both = _mm_and_si128(equal(text, first), equal(text + distance, last));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(both));
        if (bits != 0)
        {
            return text + lowestBit(bits) / sizeof(wchar_t);
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
inline const wchar_t* find(const wchar_t* text, const wchar_t* end, wchar_t c)
{
    return findPair(text, end, c, 0, c);
}
} // namespace qelUnits

#endif
