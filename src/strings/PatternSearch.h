// Whole-text matching with a regular expression, in plain types. Not part of the public interface.
#ifndef QEL_PATTERN_SEARCH_H
#define QEL_PATTERN_SEARCH_H

namespace qelPattern
{
/// Takes the text of one group, ended by a 0 unit and gone after the call.
using GroupSink = void (*)(void* context, const wchar_t* group);

/**
 * Whether the pattern matches the whole text. If so, the whole text and then every group go to the sink, the empty ones
 * left out. False as well for an invalid pattern, when a limit is reached, and when memory runs out or the sink throws.
 */
bool match(const wchar_t* pattern, const wchar_t* text, GroupSink sink, void* context) noexcept;
} // namespace qelPattern

#endif
