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

inline const wchar_t* wide(const unsigned short* text)
{
    return reinterpret_cast<const wchar_t*>(text);
}
} // namespace qelText

#endif
