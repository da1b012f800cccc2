// Whole-text matching with a regular expression, in plain types. Not part of the public interface.
#ifndef QEL_PATTERN_SEARCH_H
#define QEL_PATTERN_SEARCH_H

#include <stddef.h>

namespace qelPattern
{
/// Takes the place of one group in the text. May throw, which ends the match.
using GroupSink = void (*)(void* context, size_t start, size_t length);

/**
 * Whether the pattern matches the whole text; both are texts of representations. If so, the whole text and then every
 * group go to the sink, the empty ones left out. False as well for an invalid pattern, when a limit is reached, and when
 * memory runs out or the sink throws.
 */
bool match(const wchar_t* pattern, const wchar_t* text, GroupSink sink, void* context) noexcept;
} // namespace qelPattern

#endif
