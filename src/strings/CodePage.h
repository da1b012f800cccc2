// Text in code pages. Not part of the public interface; other subsystems may use it.
#ifndef QEL_CODE_PAGE_H
#define QEL_CODE_PAGE_H

#include "strings/Text.h"

namespace qelCodePage
{
/// Bytes that the longest string can take in the ANSI code page.
inline size_t mostBytes()
{
    CPINFO page;
    return GetCPInfo(CP_ACP, &page) != 0 ? qelText::kCapacity * page.MaxCharSize : qelText::kCapacity;
}

/// Length of narrow text in bytes, at most mostBytes(); 0 for null.
inline size_t measure(const char* text)
{
    const size_t length = text == nullptr ? 0 : qelUnits::measure(text, qelText::kCapacity);
    // More can be needed only where a character takes several bytes.
    return length < qelText::kCapacity ? length : length + qelUnits::measure(text + length, mostBytes() - length);
}

/// The unit for one byte of the ANSI code page; 0 for a byte that is no character by itself.
inline wchar_t unit(char byte)
{
    wchar_t units[5] = {};
    (void)MultiByteToWideChar(CP_ACP, 0, &byte, 1, units, 5);
    return units[0];
}

/// WideCharToMultiByte to the ANSI code page with "?" for what it lacks; a null target measures.
inline int toAnsi(const wchar_t* text, int length, char* target, int capacity)
{
    // UTF-8 needs no default character and refuses one. Nearly all other code pages default to "?", and passing it is
    // slow.
    CPINFO page;
    const bool byItself = GetACP() == CP_UTF8 ||
                          (GetCPInfo(CP_ACP, &page) != 0 && page.DefaultChar[0] == '?' && page.DefaultChar[1] == 0);
    BOOL usedDefault = FALSE;
    return WideCharToMultiByte(CP_ACP, 0, text, length, target, capacity, byItself ? nullptr : "?",
                               byItself ? nullptr : &usedDefault);
}
} // namespace qelCodePage

#endif
