// Finds string literals in text. Not part of the public interface.
#ifndef QEL_LITERALS_H
#define QEL_LITERALS_H

#include "qelString.h"
#include "strings/TextSearch.h"

namespace qelLiterals
{
/// The first `literal` from `text` to `end`, or null.
template <size_t Size> const wchar_t* find(const wchar_t* text, const wchar_t* end, const wchar_t (&literal)[Size])
{
    return qelTextSearch::find(text, end, literal, Size - 1);
}

/// The same in a whole string.
template <size_t Size> const wchar_t* find(const qelString& text, const wchar_t (&literal)[Size])
{
    const wchar_t* begin = text.getStringW();
    return find(begin, begin + text.length(), literal);
}
} // namespace qelLiterals

#endif
