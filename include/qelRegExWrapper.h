/**
 * @file
 * @brief Matching of whole texts against a pattern.
 *
 * @code
 * qelRegExWrapper profile;
 * profile.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
 * qelArray<qelString> parts;
 * if (profile.match(L"HEA 200", parts)) { ... }   // parts are "HEA 200", "HEA" and "200"
 * @endcode
 *
 * The syntax is that of ECMAScript as Boost.Xpressive reads it; `docs/patterns.md` lists it, what differs, and which
 * patterns are dangerous.
 *
 * - **Scale**: texts of any length and patterns of up to some thousand characters. The pattern is compiled on every
 *   call and nothing is kept between calls.
 * - **Limits**: a call that needs more than 50 million steps or 256 MiB of stack gives up and does not match, so that
 *   no pattern can hang or end the process.
 * - **Ownership**: a wrapper keeps one text, shared with whoever gave it; results are texts of their own.
 * - **Failure**: an invalid pattern, a limit and running out of memory all look like a text that does not match;
 *   nothing is thrown.
 * - **Threads**: one at a time.
 */
#ifndef QEL_REG_EX_WRAPPER_H
#define QEL_REG_EX_WRAPPER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/// @brief One pattern; see the head of this file.
class QEL_API qelRegExWrapper
{
public:
    /// The empty pattern, which matches the empty text only.
    qelRegExWrapper();

    /// Share the pattern of `other`. O(1).
    qelRegExWrapper(const qelRegExWrapper& other);
    qelRegExWrapper& operator=(const qelRegExWrapper& other);

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
