// Letter case, kinds of characters and their order within the text.

#include "qelString.h"

#include "strings/Text.h"

#include <wctype.h>

namespace
{
/// Whether every unit of the text is of a kind, as the runtime's current locale sees it.
bool isAll(const wchar_t* text, int (*isKind)(wint_t))
{
    while (*text != 0 && isKind(*text) != 0)
    {
        ++text;
    }
    return *text == 0;
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
    const size_t units = qelText::measureOwn(m_rep->m_data);
    if (!qelText::fits(units))
    {
        return empty();
    }
    const qelString changed(represent(m_rep->m_data, units));
    return _wcsupr_s(changed.m_rep->m_data, units + 1) == 0 ? *this = changed : empty();
}

qelString& qelString::toLower()
{
    const size_t units = qelText::measureOwn(m_rep->m_data);
    if (!qelText::fits(units))
    {
        return empty();
    }
    const qelString changed(represent(m_rep->m_data, units));
    return _wcslwr_s(changed.m_rep->m_data, units + 1) == 0 ? *this = changed : empty();
}

// In place although others may share the text: callers rely on seeing all of them turned round.
qelString qelString::strRev()
{
    (void)_wcsrev(m_rep->m_data);
    return qelString(represent(m_rep->m_data, qelText::measureOwn(m_rep->m_data)));
}
