// A set of units, for trimming and tokenizing. Not part of the public interface.
#ifndef QEL_UNIT_SET_H
#define QEL_UNIT_SET_H

#include "strings/Text.h"

/// Sets are nearly always of a few units. A larger one has a bit for every possible unit.
class UnitSet
{
public:
    /// The units of one list, or of two.
    UnitSet(const wchar_t* units, size_t length, const wchar_t* more = nullptr, size_t moreLength = 0)
        : m_isFew(length + moreLength <= qelUnits::FewUnits::kMost)
    {
        if (!m_isFew)
        {
            memset(m_bits, 0, sizeof m_bits);
        }
        add(units, length);
        add(more, moreLength);
    }

    UnitSet(const UnitSet&) = delete;
    UnitSet& operator=(const UnitSet&) = delete;

    bool contains(wchar_t c) const { return m_isFew ? m_few.contains(c) : (m_bits[c / kBitsPerByte] & bitOf(c)) != 0; }

    /// The set when it is of a few units, else null.
    const qelUnits::FewUnits* few() const { return m_isFew ? &m_few : nullptr; }

private:
    static const unsigned kBitsPerByte = 8;

    static unsigned char bitOf(wchar_t c) { return static_cast<unsigned char>(1U << c % kBitsPerByte); }

    void add(const wchar_t* units, size_t length)
    {
        for (size_t i = 0; i < length; ++i)
        {
            if (m_isFew)
            {
                m_few.add(units[i]);
            }
            else
            {
                m_bits[units[i] / kBitsPerByte] |= bitOf(units[i]);
            }
        }
    }

    const bool m_isFew;
    qelUnits::FewUnits m_few = {};
    unsigned char m_bits[0x10000 / kBitsPerByte]; // unused in a set of a few
};

namespace qelUnits
{
inline const wchar_t* findMember(const wchar_t* text, const wchar_t* end, const UnitSet& set)
{
    return set.few() != nullptr ? findMember(text, end, *set.few()) : plain::findMember(text, end, set);
}

inline const wchar_t* skipMembers(const wchar_t* text, const wchar_t* end, const UnitSet& set)
{
    return set.few() != nullptr ? skipMembers(text, end, *set.few()) : plain::skipMembers(text, end, set);
}

inline const wchar_t* skipMembersBack(const wchar_t* text, const wchar_t* end, const UnitSet& set)
{
    return set.few() != nullptr ? skipMembersBack(text, end, *set.few()) : plain::skipMembersBack(text, end, set);
}
} // namespace qelUnits

#endif
