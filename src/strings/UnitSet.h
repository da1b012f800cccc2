// A set of units, for trimming and tokenizing. Not part of the public interface.
#ifndef QEL_UNIT_SET_H
#define QEL_UNIT_SET_H

#include "strings/Text.h"

/// Sets are nearly always short and ASCII. Other units of a short set are searched; a long set has a bit for every
/// possible unit.
class UnitSet
{
public:
    /// Keeps a pointer to `units`.
    UnitSet(const wchar_t* units, size_t length)
        : m_units(units)
        , m_length(length)
    {
        for (size_t i = 0; i < length; ++i)
        {
            if (units[i] < kAscii)
            {
                m_ascii[units[i] / 64] |= uint64_t(1) << units[i] % 64;
            }
        }
        if (!isShort())
        {
            memset(m_bits, 0, sizeof m_bits);
            for (size_t i = 0; i < length; ++i)
            {
                m_bits[units[i] / kBitsPerByte] |= bitOf(units[i]);
            }
        }
    }

    UnitSet(const UnitSet&) = delete;
    UnitSet& operator=(const UnitSet&) = delete;

    bool contains(wchar_t c) const
    {
        if (c < kAscii)
        {
            return (m_ascii[c / 64] >> c % 64 & 1) != 0;
        }
        return isShort() ? isAmongFew(c) : (m_bits[c / kBitsPerByte] & bitOf(c)) != 0;
    }

private:
    static const size_t kFew = 16;
    static const wchar_t kAscii = 0x80;
    static const unsigned kBitsPerByte = 8;

    static unsigned char bitOf(wchar_t c) { return static_cast<unsigned char>(1U << c % kBitsPerByte); }

    bool isShort() const { return m_length <= kFew; }

    bool isAmongFew(wchar_t c) const
    {
        size_t i = 0;
        while (i < m_length && m_units[i] != c)
        {
            ++i;
        }
        return i < m_length;
    }

    const wchar_t* m_units;
    size_t m_length;
    uint64_t m_ascii[kAscii / 64] = {};
    unsigned char m_bits[0x10000 / kBitsPerByte]; // unused in a short set
};

#endif
