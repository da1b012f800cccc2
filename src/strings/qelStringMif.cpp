// Text with multibyte escapes as the MIF format writes them: \M+, a selector, and two bytes as hexadecimal pairs.

#include "qelString.h"

#include "strings/StringAccess.h"
#include "strings/Text.h"

#include <limits.h>
#include <stdlib.h>

namespace
{
const size_t kEscapeLength = 8;
// Bytes skipped for a truncated escape.
const size_t kCutEscapeLength = 5;

bool hasBits(char byte, unsigned bits)
{
    return (static_cast<unsigned>(byte) & bits) == bits;
}

// Tests bits, so other characters pass as well. Deliberate.
bool isEscape(const char* text, size_t left)
{
    return left >= 3 && hasBits(text[0], '\\') && hasBits(text[1], 'M') && hasBits(text[2], '+');
}

int digit(char byte)
{
    return byte >= '0' && byte <= '9' ? byte - '0' : 0;
}

/// -1 for anything but a hexadecimal digit.
int hexDigit(char byte)
{
    const int lower = byte | 0x20;
    if (lower >= 'a' && lower <= 'f')
    {
        return lower - 'a' + 10;
    }
    return byte >= '0' && byte <= '9' ? byte - '0' : -1;
}

/// The byte of two hexadecimal characters, as "%x" reads them; 0 when there is no number.
char byteOf(const char* pair)
{
    const int high = hexDigit(pair[0]);
    const int low = hexDigit(pair[1]);
    if (high >= 0 && low >= 0)
    {
        return static_cast<char>(high * 16 + low);
    }
    // Blanks, signs and single digits.
    const char digits[] = {pair[0], pair[1], 0};
    return static_cast<char>(strtoul(digits, nullptr, 16));
}

UINT codePageOf(int selector)
{
    switch (selector)
    {
    case 1:
        return 932;
    case 2:
        return 950;
    case 3:
        return 949;
    case 4:
        return 1361;
    case 5:
        return 936;
    default:
        return CP_ACP;
    }
}
} // namespace

qelString qelString::setFromMIFString(const char* text)
{
    const size_t length = text == nullptr ? 0 : qelUnits::measure(text, INT_MAX);
    const qelText::NarrowBuffer decoded(length + 1);
    size_t made = 0;
    int selector = 0;
    size_t i = 0;
    while (i < length)
    {
        if (!isEscape(text + i, length - i))
        {
            decoded.data()[made++] = text[i++];
            continue;
        }
        // This may be the terminator, which is no digit.
        selector = digit(text[i + 3]);
        if (length - i < kEscapeLength)
        {
            i += kCutEscapeLength;
            continue;
        }
        decoded.data()[made++] = byteOf(text + i + 4);
        decoded.data()[made++] = byteOf(text + i + 6);
        i += kEscapeLength;
    }
    // A decoded 0 ends the text.
    return qelStringAccess::assign(*this, decoded.data(), qelUnits::measure(decoded.data(), made),
                                   codePageOf(selector));
}
