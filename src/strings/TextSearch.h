// Finds a substring. Not part of the public interface; other subsystems may use it.
#ifndef QEL_TEXT_SEARCH_H
#define QEL_TEXT_SEARCH_H

#include <stddef.h>

namespace qelTextSearch
{
/// The first `what` in the text from `text` to `end`, or null; an empty one is found at once. O(n) in all cases.
const wchar_t* find(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t whatLength);
} // namespace qelTextSearch

#endif
