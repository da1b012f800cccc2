// What libc++'s headers leave to its library, of which there is none for this target.

#include <string>

template class std::basic_string<char>;
template class std::basic_string<wchar_t>;

namespace
{
// The digits of a number, and the minus of one below zero.
std::wstring digitsOf(unsigned long long magnitude, bool negative)
{
    wchar_t digits[24];
    wchar_t* const end = digits + 24;
    wchar_t* first = end;
    do
    {
        *--first = static_cast<wchar_t>(L'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (negative)
    {
        *--first = L'-';
    }
    return std::wstring(first, end);
}
} // namespace

std::wstring std::to_wstring(long long value)
{
    const unsigned long long magnitude = static_cast<unsigned long long>(value);
    return digitsOf(value < 0 ? 0 - magnitude : magnitude, value < 0);
}

std::wstring std::to_wstring(unsigned long long value)
{
    return digitsOf(value, false);
}

std::wstring std::to_wstring(int value)
{
    return to_wstring(static_cast<long long>(value));
}

std::wstring std::to_wstring(long value)
{
    return to_wstring(static_cast<long long>(value));
}

std::wstring std::to_wstring(unsigned value)
{
    return to_wstring(static_cast<unsigned long long>(value));
}

std::wstring std::to_wstring(unsigned long value)
{
    return to_wstring(static_cast<unsigned long long>(value));
}
