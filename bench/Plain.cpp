#include "Plain.h"

#include <windows.h>

std::string qelBench::sizeText(long size, const char* of)
{
    const std::string number = size < 1000        ? std::to_string(size)
                               : size % 1000 != 0 ? std::to_string(size)
                               : size < 1000000   ? std::to_string(size / 1000) + " k"
                                                  : std::to_string(size / 1000000) + " M";
    return number + " " + of;
}

std::wstring qelBench::sections(size_t length)
{
    const wchar_t* const kNames[] = {L"HEA 200 S355;",   L"IPE 300 S235;",   L"UPN 140 S235;",
                                     L"L 80x80x8 S355;", L"RO 60.3x4 S235;", L"HEB 1000 S460;"};
    Random random;
    std::wstring text;
    while (text.size() < length)
    {
        text += kNames[random.next(6)];
    }
    text.resize(length);
    return text;
}

std::string qelBench::narrowed(const std::wstring& text)
{
    const int units = static_cast<int>(text.size());
    // No unit needs more than two bytes.
    std::string bytes(2 * text.size(), '\0');
    bytes.resize(static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), units, bytes.data(),
                                                         static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

std::wstring qelBench::widened(const std::string& text)
{
    const int bytes = static_cast<int>(text.size());
    // No byte becomes more than one unit.
    std::wstring units(text.size(), L'\0');
    units.resize(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, units.data(), bytes)));
    return units;
}
