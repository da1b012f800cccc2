/**
 * @file
 * @brief qelString with the C++ standard library: conversions, hash, orderings, streams. Opt-in.
 *
 * Everything here is inline and compiled by the host with its own standard library: nothing crosses the DLL boundary,
 * and the DLL never includes this header.
 */
#ifndef QEL_STANDARD_LIBRARY_H
#define QEL_STANDARD_LIBRARY_H

#include "qelString.h"

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

/// @cond
// Declared as in windows.h, which no header of the library includes.
extern "C" __declspec(dllimport) int __stdcall MultiByteToWideChar(unsigned int, unsigned long, const char*, int,
                                                                   wchar_t*, int);
extern "C" __declspec(dllimport) int __stdcall WideCharToMultiByte(unsigned int, unsigned long, const wchar_t*, int,
                                                                   char*, int, const char*, int*);
/// @endcond

/**
 * @brief Converts between qelString and standard strings (wide, UTF-8), and orders qelString in standard containers.
 * @ingroup text
 *
 * The header also has `std::hash`, output to wide streams, and readable values in GoogleTest messages.
 *
 * @par Example
 * @code
 * const std::string bytes = qelStandardLibrary::toUtf8(L"Stütze");
 * bytes.size();                               // == 7u
 * qelStandardLibrary::fromUtf8(bytes);        // == L"Stütze"
 *
 * const qelString mark(std::wstring(L"P12").c_str()); // a std::wstring needs no conversion function
 * qelStandardLibrary::toView(mark).substr(1); // == L"12"
 *
 * qelStandardLibrary::NaturalLess()(L"P9", L"P10"); // == true
 * @endcode
 */
namespace qelStandardLibrary
{
/// A view of `text`, valid until `text` is next changed or destroyed. O(n): the length is counted.
inline std::wstring_view toView(const qelString& text)
{
    return text.getStringW();
}

/// A copy of `text`.
inline std::wstring toWide(const qelString& text)
{
    return text.getStringW();
}

/// A string of `text`, which need not be null-terminated: up to the first 0 and at most 524,288 units. Copies twice;
/// for null-terminated text use the constructor of qelString.
inline qelString fromWide(std::wstring_view text)
{
    return std::wstring(text.substr(0, qelString::kMaxLength)).c_str();
}

/// `text` in UTF-8, without a BOM; an unpaired surrogate becomes U+FFFD.
inline std::string toUtf8(const qelString& text)
{
    const unsigned int utf8 = 65001;
    const wchar_t* units = text.getStringW();
    const int length = text.length();
    std::string bytes;
    if (length > 0)
    {
        const int size = WideCharToMultiByte(utf8, 0, units, length, nullptr, 0, nullptr, nullptr);
        bytes.resize(static_cast<size_t>(size));
        WideCharToMultiByte(utf8, 0, units, length, bytes.data(), size, nullptr, nullptr);
    }
    return bytes;
}

/// A string of the UTF-8 text `bytes`: up to the first 0 and at most 524,288 code units. Invalid bytes become U+FFFD; a
/// BOM is kept, as U+FEFF.
inline qelString fromUtf8(std::string_view bytes)
{
    const unsigned int utf8 = 65001;
    // A code unit takes at most three bytes; one more for a pair that the limit cuts.
    bytes = bytes.substr(0, 3 * static_cast<size_t>(qelString::kMaxLength) + 1);
    const char* begin = bytes.data();
    const int size = static_cast<int>(bytes.size());
    std::wstring units;
    if (size > 0)
    {
        const int length = MultiByteToWideChar(utf8, 0, begin, size, nullptr, 0);
        units.resize(static_cast<size_t>(length));
        MultiByteToWideChar(utf8, 0, begin, size, units.data(), length);
    }
    return units.c_str();
}

/// Ordinal order, by code unit: qelString's `<`.
struct OrdinalLess
{
    /// Whether `a` comes before `b`.
    bool operator()(const qelString& a, const qelString& b) const { return a < b; }
};

/// Case-insensitive order: qelString::compareNoCase().
struct CaseInsensitiveLess
{
    /// Whether `a` comes before `b`, ignoring case.
    bool operator()(const qelString& a, const qelString& b) const { return qelString::compareNoCase(a, b) < 0; }
};

/**
 * Natural order: numbers by value, so that P9 comes before P10; everything else by code unit; a string before any
 * longer one that starts with it. Unlike qelString::compareWithNumbers() it is a strict weak ordering, so `std::sort`
 * and `std::map` can use it. Both agree on names whose numbers have no leading zeros and at most nine digits, wherever
 * compareWithNumbers() gives opposite answers for (a, b) and (b, a). Strings that differ only in leading zeros are
 * equivalent: a map keeps one of P7 and P007.
 */
struct NaturalLess
{
    /// Whether `a` comes before `b`.
    bool operator()(const qelString& a, const qelString& b) const
    {
        const wchar_t* left = a.getStringW();
        const wchar_t* right = b.getStringW();
        while (*left != 0 && *right != 0)
        {
            if (isDigit(*left) && isDigit(*right))
            {
                const std::wstring_view x = takeNumber(left);
                const std::wstring_view y = takeNumber(right);
                if (x != y)
                {
                    return x.size() != y.size() ? x.size() < y.size() : x < y;
                }
            }
            else if (*left != *right)
            {
                return *left < *right;
            }
            else
            {
                ++left;
                ++right;
            }
        }
        return *left == 0 && *right != 0;
    }

private:
    static bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

    /// Moves `text` past its digits and returns them without leading zeros.
    static std::wstring_view takeNumber(const wchar_t*& text)
    {
        while (*text == L'0')
        {
            ++text;
        }
        const wchar_t* begin = text;
        while (isDigit(*text))
        {
            ++text;
        }
        return {begin, static_cast<size_t>(text - begin)};
    }
};
} // namespace qelStandardLibrary

/// @cond
// Equal strings have equal hashes. O(n).
template <> struct std::hash<qelString>
{
    size_t operator()(const qelString& text) const
    {
        return std::hash<std::wstring_view>()(qelStandardLibrary::toView(text));
    }
};
/// @endcond

/// Writes the string to a wide stream.
inline std::wostream& operator<<(std::wostream& out, const qelString& text)
{
    return out << text.getStringW();
}

/// How GoogleTest prints a string: quoted, in UTF-8.
inline void PrintTo(const qelString& text, std::ostream* out)
{
    *out << '"' << qelStandardLibrary::toUtf8(text) << '"';
}

#endif
