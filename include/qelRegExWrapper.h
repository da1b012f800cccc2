/**
 * @file
 * @brief Matches a regular expression against a whole string.
 */
#ifndef QEL_REG_EX_WRAPPER_H
#define QEL_REG_EX_WRAPPER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Matches a regular expression against a whole string and returns its groups.
 * @ingroup text
 *
 * The syntax is ECMAScript's as implemented by Boost.Xpressive; @ref page_docs_patterns "docs/patterns.md" lists it,
 * the differences, and which patterns are dangerous.
 *
 * @par Example
 * @code
 * qelRegExWrapper profile;
 * profile.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
 *
 * qelArray<qelString> parts;
 * profile.match(L"HEA 200", parts); // == true
 * parts.length();                   // == 3, the whole string and the groups
 * parts[1];                         // == L"HEA"
 * parts[2];                         // == L"200"
 * @endcode
 *
 * @par Cost
 * The pattern is compiled on every call; nothing is kept. Made for strings of any length and patterns of up to a few
 * thousand characters. A call that takes longer than a minute or needs more than 256 MiB of stack gives up, so no
 * pattern can hang or crash the process.
 *
 * @par Failure
 * Never throws. An invalid pattern, a limit reached and running out of memory all look like no match.
 */
class QEL_API qelRegExWrapper
{
public:
    /// The empty pattern, which matches only an empty string.
    qelRegExWrapper();

    /// Shares the pattern of `other`. O(1).
    qelRegExWrapper(const qelRegExWrapper& other);

    /// Shares the pattern of `other`. O(1).
    qelRegExWrapper& operator=(const qelRegExWrapper& other);

    /// Releases the pattern.
    ~qelRegExWrapper();

    /// Sets the regular expression. Not checked here: an invalid one matches nothing.
    void setRegularExpression(const qelString& pattern);

    /**
     * Whether the pattern matches all of `text`. If so, appends to `results`, which is not cleared first, the whole
     * string and then every group, in the order of the opening parentheses. Empty ones are left out: groups that did
     * not take part or matched nothing, and an empty `text`. Positions in `results` are therefore not group numbers.
     *
     * Otherwise returns false and leaves `results` as it was; only when memory runs out while results are appended,
     * those already appended stay.
     *
     * `text` may be an element of `results`.
     */
    bool match(const qelString& text, qelArray<qelString>& results);

private:
    qelString m_pattern;
};

static_assert(sizeof(qelRegExWrapper) == 16, "one text");

#endif
