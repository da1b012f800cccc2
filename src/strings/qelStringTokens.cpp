// Tokens.

#include "qelString.h"

#include "strings/StringAccess.h"
#include "strings/UnitSet.h"

namespace
{
/// Finds one token after the other. A token is a substring: only the separators between tokens are left out.
class Scanner
{
public:
    /// `breaks` are separators and quotes.
    Scanner(const wchar_t* text, const wchar_t* end, const UnitSet& separators, const UnitSet& quotes,
            const UnitSet& breaks)
        : m_next(text)
        , m_end(end)
        , m_separators(&separators)
        , m_quotes(&quotes)
        , m_breaks(&breaks)
    {
    }

    /// Moves to the next token; false after the last one.
    bool find()
    {
        // A unit that is both separator and quote counts as a quote.
        while (m_next != m_end && m_separators->contains(*m_next) && !m_quotes->contains(*m_next))
        {
            ++m_next;
        }
        m_token = m_next;
        for (m_next = qelUnits::findMember(m_next, m_end, *m_breaks); m_next != m_end && m_quotes->contains(*m_next);)
        {
            m_next = qelUnits::findMember(behindQuoted(m_next), m_end, *m_breaks);
        }
        return m_next != m_token;
    }

    const wchar_t* token() const { return m_token; }
    size_t length() const { return static_cast<size_t>(m_next - m_token); }

private:
    /// The end of a quoted section; a doubled quote is part of it.
    static const wchar_t* behindQuoted(const wchar_t* text)
    {
        const wchar_t quote = *text++;
        while (*text != 0)
        {
            if (*text++ == quote)
            {
                if (*text != quote)
                {
                    return text;
                }
                ++text;
            }
        }
        return text;
    }

    const wchar_t* m_next;
    const wchar_t* m_end;
    const wchar_t* m_token = nullptr;
    const UnitSet* m_separators;
    const UnitSet* m_quotes;
    const UnitSet* m_breaks;
};
} // namespace

void qelString::getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators)
{
    getTokens(text, tokens, separators, qelString());
}

void qelString::getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators, qelString quotes)
{
    // Copies, because any of these may be an element of the array.
    const qelString source(text);
    const qelString between(separators);
    const wchar_t* begin = source.m_rep->m_data;
    const wchar_t* end = begin + qelText::measureOwn(begin);
    const auto separatorCount = static_cast<size_t>(between.length());
    const auto quoteCount = static_cast<size_t>(quotes.length());
    const UnitSet separatorSet(between.m_rep->m_data, separatorCount);
    const UnitSet quoteSet(quotes.m_rep->m_data, quoteCount);
    const UnitSet breaks(between.m_rep->m_data, separatorCount, quotes.m_rep->m_data, quoteCount);
    const Scanner start(begin, end, separatorSet, quoteSet, breaks);

    long count = 0;
    for (Scanner scanner(start); scanner.find();)
    {
        ++count;
    }
    // Counted first, because an array grows in small steps. Each token is there before it counts.
    tokens.setLogicalLength(0);
    tokens.setLogicalLength(count);
    tokens.setLogicalLength(0);
    Scanner scanner(start);
    for (long i = 0; i < count && scanner.find(); ++i)
    {
        qelStringAccess::assign(tokens[i], scanner.token(), scanner.length());
        tokens.setLogicalLength(i + 1);
    }
}
