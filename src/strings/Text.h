// Length limits, measuring, comparing and wiping of strings. Not part of the public interface; other subsystems may use
// it.
#ifndef QEL_TEXT_H
#define QEL_TEXT_H

#include "strings/Units.h"

#include <windows.h>

#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <wchar.h>

namespace qelText
{
/// Greatest length of a string, and capacity of both scratch buffers, in units.
const size_t kCapacity = 0x80000;

/// Units before the terminator, at most kCapacity; 0 for null.
inline size_t measure(const wchar_t* text)
{
    return text == nullptr ? 0 : qelUnits::measure(text, kCapacity);
}

/// The same for the buffer of a qelString, which is never null, up to `limit`.
inline size_t measureOwn(const wchar_t* text, size_t limit = SIZE_MAX)
{
    return qelUnits::measureOwn(text, limit);
}

// NOLINTBEGIN(readability-implicit-bool-conversion): the sign of the difference
template <class T> int order(T a, T b)
{
    return (a > b) - (a < b);
}
// NOLINTEND(readability-implicit-bool-conversion)

/// Ordinal order of two buffers of qelString: -1, 0 or 1.
inline int compareOwn(const wchar_t* a, const wchar_t* b)
{
    const size_t at = a == b ? 0 : qelUnits::firstDifference(a, b);
    return order(a[at], b[at]);
}

/// Whether they hold the same text.
inline bool areEqualOwn(const wchar_t* a, const wchar_t* b)
{
    const size_t at = a == b ? 0 : qelUnits::firstDifference(a, b);
    return a[at] == b[at];
}

/// Overwrites memory with zeros; the optimiser cannot remove it.
inline void scrub(void* memory, size_t bytes)
{
#if defined(__GNUC__)
    // Most strings are short, and the block store of SecureZeroMemory has a long start-up time.
    memset(memory, 0, bytes);
    __asm__ __volatile__("" : : "r"(memory) : "memory");
#else
    SecureZeroMemory(memory, bytes);
#endif
}

/// The same for the buffer of a qelString, up to its terminator.
inline void scrubOwn(wchar_t* text)
{
#if defined(__GNUC__)
    qelUnits::clear(text);
    __asm__ __volatile__("" : : "r"(text) : "memory");
#else
    SecureZeroMemory(text, measureOwn(text) * sizeof(wchar_t));
#endif
}

/// Calls the runtime's invalid-parameter handler, as its bounded copies do with a result that is too long.
inline void refuseTooLong()
{
    wchar_t tooSmall[1];
    (void)wcscpy_s(tooSmall, 1, L"any text");
}

/// Whether a result of that length fits; if not, calls refuseTooLong().
inline bool fits(size_t length)
{
    if (length < kCapacity)
    {
        return true;
    }
    refuseTooLong();
    return false;
}

/// Temporary buffer for narrow text, wiped before it is freed.
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
