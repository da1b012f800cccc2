// Bounded measuring and scrubbing of text. Not part of the public interface; other subsystems may use it.
#ifndef QEL_TEXT_H
#define QEL_TEXT_H

#include <windows.h>

#include <stddef.h>
#include <string.h>
#include <wchar.h>

namespace qelText
{
/// Greatest length of a text, and capacity of both scratch buffers, in units.
const size_t kCapacity = 0x80000;

/// Units before the terminator, at most kCapacity; 0 for null.
inline size_t measure(const wchar_t* text)
{
    return text == nullptr ? 0 : wcsnlen(text, kCapacity);
}

/// Overwrites memory with zeros in a way that the optimiser keeps.
inline void scrub(void* memory, size_t bytes)
{
    SecureZeroMemory(memory, bytes);
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

/// The first `what` in the text from `text` to `end`, or null; an empty one is found at once.
inline const wchar_t* find(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t whatLength)
{
    if (whatLength == 0)
    {
        return text;
    }
    while (static_cast<size_t>(end - text) >= whatLength)
    {
        const wchar_t* hit = wmemchr(text, *what, static_cast<size_t>(end - text) - whatLength + 1);
        if (hit == nullptr || wmemcmp(hit, what, whatLength) == 0)
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
