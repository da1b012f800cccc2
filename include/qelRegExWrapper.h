/**
 * @file
 * @brief Matching of whole texts against a pattern.
 */
#ifndef QEL_REG_EX_WRAPPER_H
#define QEL_REG_EX_WRAPPER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Matches whole texts against a pattern.
 * @ingroup text
 *
 * Checks a text against a pattern and takes out its parts. The syntax is that of ECMAScript as Boost.Xpressive reads
 * it; @ref page_docs_patterns "docs/patterns.md" lists it, what differs, and which patterns are dangerous.
 *
 * @par Example
 * @code
 * qelRegExWrapper profile;
 * profile.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
 *
 * qelArray<qelString> parts;
 * profile.match(L"HEA 200", parts); // == true
 * parts.length();                   // == 3, the whole text and the groups
 * parts[1];                         // == L"HEA"
 * parts[2];                         // == L"200"
 * @endcode
 *
 * @par Ownership
 * A wrapper keeps one text, shared with whoever gave it; results are texts of their own.
 *
 * @par Cost
 * The pattern is compiled on every call and nothing is kept between calls: made for texts of any length and patterns of
 * up to some thousand characters. A call that takes longer than a minute or needs more than 256 MiB of stack gives up,
 * so that no pattern can hang or end the process.
 *
 * @par Failure
 * An invalid pattern, a limit and memory that cannot be had all look like a text that does not match; nothing is
 * thrown.
 */
class QEL_API qelRegExWrapper
{
public:
    /// The empty pattern, which matches the empty text only.
    qelRegExWrapper();

    /// Shares the pattern of `other`. O(1).
    qelRegExWrapper(const qelRegExWrapper& other);

    /// Shares the pattern of `other`. O(1).
    qelRegExWrapper& operator=(const qelRegExWrapper& other);

    /// Gives up its share of the pattern.
    ~qelRegExWrapper();

    /// Stores the pattern. Nothing is checked here: an invalid pattern matches no text.
    void setRegularExpression(const qelString& pattern);

    /**
     * Whether the pattern matches `text` from its first to its last unit. If so, the whole text and then the text of
     * every group, in the order of the opening parentheses, are appended to `results`, which is not cleared first.
     * Whatever is empty is left out: a group that took no part or matched nothing, and an empty whole text. Positions
     * in `results` are therefore not group numbers.
     *
     * False, with `results` left as it was, when the text does not match, the pattern is invalid, or a limit is
     * reached. When memory runs out while results are appended, the ones already there stay.
     *
     * `text` may be an element of `results`.
     */
    bool match(const qelString& text, qelArray<qelString>& results);

private:
    qelString m_pattern;
};

static_assert(sizeof(qelRegExWrapper) == 16, "one text");

#endif
