// Letter case, character classes, reversing.

#include "qelString.h"

#include "strings/StringAccess.h"
#include "strings/Text.h"

#include <wctype.h>

namespace
{
/// Whether every unit is of a kind, by the runtime's current locale.
bool isAll(const wchar_t* text, int (*isKind)(wint_t))
{
    while (*text != 0 && isKind(*text) != 0)
    {
        ++text;
    }
    return *text == 0;
}

/// Replaces `text` with a copy changed by `convert`; empty when that fails.
qelString& convertCase(qelString& text, errno_t (*convert)(wchar_t*, size_t))
{
    const size_t units = qelText::measureOwn(text.getStringW());
    if (units == 0 || !qelText::fits(units))
    {
        return text.empty();
    }
    qelStringRepr* rep = qelStringAccess::represent(text.getStringW(), units);
    const bool converted = convert(qelStringAccess::unitsOf(rep), units + 1) == 0;
    qelStringAccess::adopt(text, rep);
    return converted ? text : text.empty();
}
} // namespace

bool qelString::IsAlphaNumeric() const
{
    return isAll(m_rep->m_data, iswalnum);
}

bool qelString::IsAlphabetic() const
{
    return isAll(m_rep->m_data, iswalpha);
}

bool qelString::IsNumeric() const
{
    return isEmpty() == 0 && isAll(m_rep->m_data, iswdigit);
}

qelString& qelString::toUpper()
{
    return convertCase(*this, _wcsupr_s);
}

qelString& qelString::toLower()
{
    return convertCase(*this, _wcslwr_s);
}

// In place: every string that shares the buffer is reversed too. Deliberate.
qelString qelString::strRev()
{
    // Both get the same text. The copy first, which may throw.
    qelStringRepr* const reversed = qelStringAccess::represent(m_rep->m_data, qelText::measureOwn(m_rep->m_data));
    (void)_wcsrev(m_rep->m_data);
    if (reversed != m_repEmpty)
    {
        (void)_wcsrev(reversed->m_data);
    }
    return qelStringAccess::stringOf(reversed);
}
