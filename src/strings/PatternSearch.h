// Matches a regular expression against a whole string, in plain types. Not part of the public interface.
#ifndef QEL_PATTERN_SEARCH_H
#define QEL_PATTERN_SEARCH_H

#include <stddef.h>

namespace qelPattern
{
/// Gets the position of one group in the string. May throw, which ends the match.
using GroupSink = void (*)(void* context, size_t start, size_t length);

/**
 * Whether the pattern matches the whole string; both must come from qelString. If so, passes the whole string and then
 * every group to the sink, except empty ones. Also false for an invalid pattern, when a limit is reached, when out of
 * memory and when the sink throws.
 */
bool match(const wchar_t* pattern, const wchar_t* text, GroupSink sink, void* context) noexcept;
} // namespace qelPattern

#endif
