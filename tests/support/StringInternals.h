// What a qelString is made of, for tests of sharing and layout.
#ifndef QEL_TEST_STRING_INTERNALS_H
#define QEL_TEST_STRING_INTERNALS_H

#include "qelString.h"
#include "support/PrivateMembers.h"

struct StringRepresentation
{
    using type = qelStringRepr* qelString::*;
    friend type member(StringRepresentation);
};

struct StringCharCache
{
    using type = char* qelString::*;
    friend type member(StringCharCache);
};

struct RepresentationData
{
    using type = wchar_t* qelStringRepr::*;
    friend type member(RepresentationData);
};

struct RepresentationCount
{
    using type = int qelStringRepr::*;
    friend type member(RepresentationCount);
};

struct StringToCharacters
{
    using type = void (qelString::*)(qelArray<wchar_t>&) const;
    friend type member(StringToCharacters);
};

template struct PrivateMember<StringRepresentation, &qelString::m_rep>;
template struct PrivateMember<StringCharCache, &qelString::m_charCache>;
template struct PrivateMember<StringToCharacters, &qelString::StringToArr>;
template struct PrivateMember<RepresentationData, &qelStringRepr::m_data>;
template struct PrivateMember<RepresentationCount, &qelStringRepr::m_refCount>;

inline qelStringRepr* representationOf(const qelString& text)
{
    return text.*member(StringRepresentation());
}

inline const char* charCacheOf(const qelString& text)
{
    return text.*member(StringCharCache());
}

inline int shareCountOf(const qelString& text)
{
    return representationOf(text)->*member(RepresentationCount());
}

#endif
