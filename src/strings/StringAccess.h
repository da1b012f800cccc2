// Builds the buffers of qelString. Unlike private members of the class, these are not exported. Not part of the public
// interface; other subsystems may use it.
#ifndef QEL_STRING_ACCESS_H
#define QEL_STRING_ACCESS_H

#include "qelString.h"

#include "strings/Text.h"

struct qelStringAccess
{
    /// A representation with a count of 1 and room for `length` units and the terminator, which is set. The caller
    /// fills in the units.
    static qelStringRepr* create(size_t length);

    /// A representation of `length` units, none of which is 0; the shared empty one for length 0.
    static qelStringRepr* represent(const wchar_t* text, size_t length);

    /// The same for `length` bytes in a code page; truncated to the greatest length.
    static qelStringRepr* represent(const char* text, size_t length, unsigned codePage);

    /// Inline getStringW().
    static const wchar_t* textOf(const qelString& text) { return text.m_rep->m_data; }

    /// The writable units of a representation not yet shared.
    static wchar_t* unitsOf(qelStringRepr* rep) { return rep->m_data; }

    /// Increments the count and returns the representation.
    static qelStringRepr* share(qelStringRepr* rep)
    {
        // The count of the empty string only grows and is never read: let it wrap around.
        rep->m_refCount = static_cast<int>(static_cast<unsigned>(rep->m_refCount) + 1U);
        return rep;
    }

    /// Replaces the representation of `text` with `rep`, whose count already includes it.
    static qelString& adopt(qelString& text, qelStringRepr* rep)
    {
        if (text.m_charCache != nullptr)
        {
            text.ReleaseCharCache();
        }
        text.ReleaseRep();
        text.m_rep = rep;
        return text;
    }

    /// Changes the units of `target` where they are; returns false, and changes nothing, when it has another length or
    /// shares its buffer. No unit is 0.
    static bool overwrite(qelString& target, const wchar_t* text, size_t length)
    {
        qelStringRepr* const rep = target.m_rep;
        if (rep->m_refCount != 1 || qelText::measureOwn(rep->m_data) != length)
        {
            return false;
        }
        target.ReleaseCharCache();
        memcpy(rep->m_data, text, length * sizeof(wchar_t));
        return true;
    }

    /// A string of `rep`, likewise.
    static qelString stringOf(qelStringRepr* rep)
    {
        qelString text;
        text.m_rep = rep;
        return text;
    }

    /// A string of `length` units, none of which is 0.
    static qelString stringOf(const wchar_t* text, size_t length) { return stringOf(represent(text, length)); }

    /// Assigns them to `target`, which they may be a part of.
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
