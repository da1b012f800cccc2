// What tests expect in the ANSI code page of the system they run on.
#ifndef QEL_TEST_ANSI_CODE_PAGE_H
#define QEL_TEST_ANSI_CODE_PAGE_H

#include <windows.h>

#include <string>

namespace qelTest
{
/// That of three values, each written out for one ANSI code page: 1252, Japanese with characters of two bytes, UTF-8.
template <class T> T byCodePage(T in1252, T in932, T inUtf8)
{
    const UINT codePage = GetACP();
    return codePage == 932 ? in932 : codePage == CP_UTF8 ? inUtf8 : in1252;
}

/// Two characters beyond ASCII that the ANSI code page has. The second byte of the Japanese one is a backslash.
inline std::wstring ansiText()
{
    return byCodePage(L"\x00E9\x20AC", L"\x30BD\xFF71", L"\x00E9\x20AC");
}

/// The same two in the ANSI code page.
inline std::string ansiBytes()
{
    return byCodePage("\xE9\x80", "\x83\x5C\xB1", "\xC3\xA9\xE2\x82\xAC");
}

/// Any bytes as the system takes them for text in the ANSI code page.
inline std::wstring fromAnsi(const std::string& bytes)
{
    std::wstring text(bytes.size(), 0);
    const int room = static_cast<int>(bytes.size());
    text.resize(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), room, &text[0], room)));
    return text;
}
} // namespace qelTest

#endif
