// Where Wine 8 gives other results than Windows: what the tests of files expect under either.
#ifndef QEL_WINE_DIFFERENCES_H
#define QEL_WINE_DIFFERENCES_H

#include <windows.h>

#include <stdio.h>

namespace qelTest
{
inline bool underWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// What the scanners give where nothing but white space is left: Wine's do not tell the end of the file from a token
/// that does not match.
inline int scannedBehindBlanks()
{
    return underWine() ? 0 : EOF;
}

/// What fread gives where an end-of-file character is next in a stream with a key: Wine's takes the failure for a
/// number of bytes.
inline size_t readAtEndOfFileCharacter()
{
    return underWine() ? static_cast<size_t>(-1) : 0;
}
} // namespace qelTest

#endif
