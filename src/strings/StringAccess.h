// Makes texts and hands them over. Private members would be exported, these are not. Not part of the public interface;
// other subsystems may use it.
#ifndef QEL_STRING_ACCESS_H
#define QEL_STRING_ACCESS_H

#include "qelString.h"

struct qelStringAccess
{
    /// A representation with a count of 1 and room for `length` units and the terminator, which is set. The rest is for
    /// the caller.
    static qelStringRepr* create(size_t length);

    /// A representation of `length` units, none of which is 0; the one of the empty text for none.
    static qelStringRepr* represent(const wchar_t* text, size_t length);

    /// The same for `length` bytes in a code page; cut at the greatest length.
    static qelStringRepr* represent(const char* text, size_t length, unsigned codePage);

    /// As getStringW(), without a call.
    static const wchar_t* textOf(const qelString& text) { return text.m_rep->m_data; }

    /// The units of a representation that nobody shares yet.
    static wchar_t* unitsOf(qelStringRepr* rep) { return rep->m_data; }

    /// Counts one more string that shares the representation, and returns it.
    static qelStringRepr* share(qelStringRepr* rep)
    {
        // Nobody reads the count of the empty text, which only ever grows: let it wrap round.
        rep->m_refCount = static_cast<int>(static_cast<unsigned>(rep->m_refCount) + 1U);
        return rep;
    }

    /// Makes `text` give up what it holds and take over `rep`, whose count covers it already.
    static qelString& adopt(qelString& text, qelStringRepr* rep)
    {
        text.ReleaseCharCache();
        text.ReleaseRep();
        text.m_rep = rep;
        return text;
    }

    /// A string that takes over `rep`, likewise.
    static qelString stringOf(qelStringRepr* rep)
    {
        qelString text;
        text.m_rep = rep;
        return text;
    }

    /// A string of `length` units, none of which is 0.
    static qelString stringOf(const wchar_t* text, size_t length) { return stringOf(represent(text, length)); }

    /// The same as the new text of `target`, which it may be a part of.
    static qelString& assign(qelString& target, const wchar_t* text, size_t length)
    {
        return adopt(target, represent(text, length));
    }

    /// The same for `length` bytes in a code page.
    static qelString& assign(qelString& target, const char* text, size_t length, unsigned codePage)
    {
        return adopt(target, represent(text, length, codePage));
    }
};

#endif
