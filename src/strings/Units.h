// Loops over the units of a string, with vector instructions on x64. Not part of the public interface.
//
// Each function has a plain twin in qelUnits::plain that says what it does and serves other processors.
#ifndef QEL_UNITS_H
#define QEL_UNITS_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>
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
/// A set for the functions below.
struct FewUnits
{
    static const size_t kMost = 16;

    void add(wchar_t c) { units[count++] = c; }

    bool contains(wchar_t c) const
    {
        size_t i = 0;
        while (i < count && units[i] != c)
        {
            ++i;
        }
        return i < count;
    }

    size_t count;
    wchar_t units[kMost];
};

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

/// The same for the buffer of a qelString.
inline size_t measureOwn(const wchar_t* text, size_t limit)
{
    return measure(text, limit);
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

/// The last `c` in the text from `text` to `end`, or null.
inline const wchar_t* findLast(const wchar_t* text, const wchar_t* end, wchar_t c)
{
    while (text < end && end[-1] != c)
    {
        --end;
    }
    return text < end ? end - 1 : nullptr;
}

/// Position of the first unit that differs, at most `length`.
inline size_t mismatch(const wchar_t* a, const wchar_t* b, size_t length)
{
    size_t at = 0;
    while (at < length && a[at] == b[at])
    {
        ++at;
    }
    return at;
}

/// The first member of a set in the text from `text` to `end`, or `end`.
template <class Set> const wchar_t* findMember(const wchar_t* text, const wchar_t* end, const Set& set)
{
    while (text < end && !set.contains(*text))
    {
        ++text;
    }
    return text;
}

/// The first unit that is not a member, or `end`.
template <class Set> const wchar_t* skipMembers(const wchar_t* text, const wchar_t* end, const Set& set)
{
    while (text < end && set.contains(*text))
    {
        ++text;
    }
    return text;
}

/// The end of what stays without the members before `end`.
template <class Set> const wchar_t* skipMembersBack(const wchar_t* text, const wchar_t* end, const Set& set)
{
    while (text < end && set.contains(end[-1]))
    {
        --end;
    }
    return end;
}

/// Copies units to another place.
inline void copy(wchar_t* to, const wchar_t* from, size_t length)
{
    memcpy(to, from, length * sizeof(wchar_t));
}

/// Writes 0 over a text that ends with one.
inline void clear(wchar_t* text)
{
    memset(text, 0, measure(text, SIZE_MAX) * sizeof(wchar_t));
}

/// Makes units of ASCII text without a 0. False when the text is another; then `to` holds anything.
inline bool widen(wchar_t* to, const char* from, size_t length)
{
    size_t at = 0;
    for (; at < length && static_cast<signed char>(from[at]) > 0; ++at)
    {
        to[at] = static_cast<wchar_t>(from[at]);
    }
    return at == length;
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

inline void setChunk(void* text, __m128i units)
{
    _mm_storeu_si128(static_cast<__m128i*>(text), units);
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

/// Units of a text that is short enough for simple steps.
const size_t kShort = 32;

/// What it is where every byte has it.
const unsigned kAllBits = 0xFFFF;

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

/// Position of the highest set bit; there must be one.
inline size_t highestBit(unsigned bits)
{
#if defined(_MSC_VER)
    unsigned long position = 0;
    _BitScanReverse(&position, bits);
    return position;
#else
    return static_cast<size_t>(31 - __builtin_clz(bits));
#endif
}

/// 64 characters that begin at a multiple of their size, so that they lie in one page; searched for a 0.
template <class Char> struct Block
{
    explicit Block(const Char* text)
    {
        for (size_t i = 0; i < 4; ++i)
        {
            bytes[i] = oneByteEach(text + i * sizeof(__m128i));
        }
    }

    bool hasZero() const { return bitsOf(isZero(lower(lower(bytes[0], bytes[1]), lower(bytes[2], bytes[3])))) != 0; }

    /// A bit for each character, set where it is 0.
    uint64_t zeros() const
    {
        const uint64_t low = bitsOf(isZero(bytes[0])) | bitsOf(isZero(bytes[1])) << 16;
        const uint64_t high = bitsOf(isZero(bytes[2])) | bitsOf(isZero(bytes[3])) << 16;
        return low | high << 32;
    }

    __m128i bytes[4]; ///< one for each character, 0 where the character is

private:
    static __m128i lower(__m128i a, __m128i b)
    {
        return _mm_min_epu8(a, b); // NOLINT(portability-simd-intrinsics): the plain twins are what is portable
    }

    static __m128i isZero(__m128i x) { return _mm_cmpeq_epi8(x, _mm_setzero_si128()); }

    static __m128i part(const void* text) { return _mm_load_si128(static_cast<const __m128i*>(text)); }

    static __m128i oneByteEach(const char* text) { return part(text); }

    // Saturation keeps what is not 0 from becoming 0.
    static __m128i oneByteEach(const wchar_t* text) { return _mm_packs_epi16(part(text), part(text + kPerChunk)); }
};

/// Reads aligned blocks: reading before the text or past its end stays in the same page.
template <class Char> size_t measure(const Char* text, size_t limit)
{
    const size_t perBlock = 64;
    const auto address = reinterpret_cast<uintptr_t>(text);
    if (limit == 0 || address % sizeof(Char) != 0)
    {
        return plain::measure(text, limit);
    }
    const size_t before = address / sizeof(Char) % perBlock;
    uint64_t zeros = Block<Char>(text - before).zeros() >> before;
    size_t length = 0;
    for (size_t next = perBlock - before; zeros == 0 && next < limit; next += perBlock)
    {
        const Block<Char> block(text + next);
        if (block.hasZero())
        {
            length = next;
            zeros = block.zeros();
        }
    }
    if (zeros == 0)
    {
        return limit;
    }
    length += lowestBit(zeros);
    return length < limit ? length : limit;
}

/// Only for buffers of qelString. Never reads in front of the text, where the reference count may just have been
/// written: a load that covers such a store has to wait for it.
inline size_t measureOwn(const wchar_t* text, size_t limit)
{
    for (size_t at = 0; at < kShort && at < limit; at += kPerChunk)
    {
        const unsigned zeros = bitsOf(equal(text + at, 0));
        if (zeros != 0)
        {
            const size_t length = at + lowestBit(zeros) / sizeof(wchar_t);
            return length < limit ? length : limit;
        }
    }
    return limit <= kShort ? limit : kShort + measure(text + kShort, limit - kShort);
}

/// Only for buffers of qelString.
inline size_t firstDifference(const wchar_t* a, const wchar_t* b)
{
    for (size_t at = 0;; at += kPerChunk)
    {
        const __m128i same = _mm_cmpeq_epi16(chunk(a + at), chunk(b + at));
        const __m128i goesOn = _mm_andnot_si128(equal(a + at, 0), same);
        if (bitsOf(goesOn) != kAllBits)
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

inline const wchar_t* findLast(const wchar_t* text, const wchar_t* end, wchar_t c)
{
    for (; static_cast<size_t>(end - text) >= kPerChunk; end -= kPerChunk)
    {
        const unsigned hits = bitsOf(equal(end - kPerChunk, c));
        if (hits != 0)
        {
            return end - kPerChunk + highestBit(hits) / sizeof(wchar_t);
        }
    }
    return plain::findLast(text, end, c);
}

inline size_t mismatch(const wchar_t* a, const wchar_t* b, size_t length)
{
    size_t at = 0;
    for (; at + kPerChunk <= length; at += kPerChunk)
    {
        const unsigned same = bitsOf(_mm_cmpeq_epi16(chunk(a + at), chunk(b + at)));
        if (same != kAllBits)
        {
            return at + lowestBit(~same) / sizeof(wchar_t);
        }
    }
    return at + plain::mismatch(a + at, b + at, length - at);
}

/// Two bits for each member of a set in a chunk.
inline unsigned membersOf(const wchar_t* text, const FewUnits& set)
{
    const __m128i units = chunk(text);
    __m128i members = _mm_setzero_si128();
    for (size_t i = 0; i < set.count; ++i)
    {
        members = _mm_or_si128(members, _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(set.units[i]))));
    }
    return bitsOf(members);
}

inline const wchar_t* findMember(const wchar_t* text, const wchar_t* end, const FewUnits& set)
{
    for (; static_cast<size_t>(end - text) >= kPerChunk; text += kPerChunk)
    {
        const unsigned members = membersOf(text, set);
        if (members != 0)
        {
            return text + lowestBit(members) / sizeof(wchar_t);
        }
    }
    return plain::findMember(text, end, set);
}

inline const wchar_t* skipMembers(const wchar_t* text, const wchar_t* end, const FewUnits& set)
{
    for (; static_cast<size_t>(end - text) >= kPerChunk; text += kPerChunk)
    {
        const unsigned others = membersOf(text, set) ^ kAllBits;
        if (others != 0)
        {
            return text + lowestBit(others) / sizeof(wchar_t);
        }
    }
    return plain::skipMembers(text, end, set);
}

inline const wchar_t* skipMembersBack(const wchar_t* text, const wchar_t* end, const FewUnits& set)
{
    for (; static_cast<size_t>(end - text) >= kPerChunk; end -= kPerChunk)
    {
        const unsigned others = membersOf(end - kPerChunk, set) ^ kAllBits;
        if (others != 0)
        {
            return end - kPerChunk + highestBit(others) / sizeof(wchar_t) + 1;
        }
    }
    return plain::skipMembersBack(text, end, set);
}

/// Copies the first and the last `count` units, which overlap or meet.
template <size_t count> void copyEnds(wchar_t* to, const wchar_t* from, size_t length)
{
    memcpy(to + length - count, from + length - count, count * sizeof(wchar_t));
    memcpy(to, from, count * sizeof(wchar_t));
}

/// Without a call for short text.
inline void copy(wchar_t* to, const wchar_t* from, size_t length)
{
    if (length > 128)
    {
        plain::copy(to, from, length);
    }
    else if (length >= 64)
    {
        copyEnds<64>(to, from, length);
    }
    else if (length >= 32)
    {
        copyEnds<32>(to, from, length);
    }
    else if (length >= 16)
    {
        copyEnds<16>(to, from, length);
    }
    else if (length >= 8)
    {
        copyEnds<8>(to, from, length);
    }
    else if (length >= 4)
    {
        copyEnds<4>(to, from, length);
    }
    else if (length >= 2)
    {
        copyEnds<2>(to, from, length);
    }
    else if (length == 1)
    {
        *to = *from;
    }
}

/// Only for buffers of qelString. Whole chunks, without a call for short text.
inline void clear(wchar_t* text)
{
    for (size_t at = 0; at < kShort; at += kPerChunk)
    {
        const bool ends = bitsOf(equal(text + at, 0)) != 0;
        setChunk(text + at, _mm_setzero_si128());
        if (ends)
        {
            return;
        }
    }
    memset(text + kShort, 0, measure(text + kShort, SIZE_MAX) * sizeof(wchar_t));
}

inline bool widenChunk(wchar_t* to, const char* from)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    setChunk(to, _mm_unpacklo_epi8(bytes, zero));
    return bitsOf(_mm_cmpgt_epi8(bytes, zero)) == 0xFF;
}

inline bool widen(wchar_t* to, const char* from, size_t length)
{
    if (length < kPerChunk)
    {
        return plain::widen(to, from, length);
    }
    for (size_t at = 0; at + kPerChunk < length; at += kPerChunk)
    {
        if (!widenChunk(to + at, from + at))
        {
            return false;
        }
    }
    return widenChunk(to + length - kPerChunk, from + length - kPerChunk);
}

#else

const size_t kPerChunk = 1;
using plain::clear;
using plain::copy;
using plain::findLast;
using plain::findMember;
using plain::findPair;
using plain::firstDifference;
using plain::measure;
using plain::measureOwn;
using plain::mismatch;
using plain::skipMembers;
using plain::skipMembersBack;
using plain::widen;

#endif

/// The first `c` in the text from `text` to `end`, or null.
template <class Char> const Char* find(const Char* text, const Char* end, Char c)
{
    return findPair(text, end, c, 0, c);
}
} // namespace qelUnits

#endif
