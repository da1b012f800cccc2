#include "support/StringRules.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace
{
using std::wstring;

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool isAllDigits(const wstring& text, size_t from)
{
    return std::all_of(text.begin() + static_cast<ptrdiff_t>(from), text.end(), isDigit);
}

/// Length of the escape at `at`, or 0 when there is none there.
size_t escapeLength(const std::string& text, size_t at)
{
    const auto byte = [&text](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    if ((byte(at) & 0x5C) != 0x5C || (byte(at + 1) & 0x4D) != 0x4D || (byte(at + 2) & 0x2B) != 0x2B)
    {
        return 0;
    }
    return at + 8 <= text.size() ? 8 : 5;
}

/// 0 for what is no hexadecimal number.
char byteOfPair(const std::string& pair)
{
    return static_cast<char>(std::strtol(pair.c_str(), nullptr, 16));
}
} // namespace

int qelTest::naturalOrder(const wstring& a, const wstring& b)
{
    if (a.empty() || b.empty())
    {
        return a.empty() ? (b.empty() ? 0 : -1) : 1;
    }
    if (a == b)
    {
        return 0;
    }
    for (size_t i = 0; i < a.size(); ++i)
    {
        if (i >= b.size())
        {
            return 1;
        }
        if (!isDigit(a[i]))
        {
            if (a[i] != b[i])
            {
                return a[i] < b[i] ? -1 : 1;
            }
            continue;
        }
        if (!isDigit(b[i]))
        {
            return -1;
        }
        const int left = _wtoi(a.c_str() + i);
        const int right = _wtoi(b.c_str() + i);
        if (left != right)
        {
            return left < right ? -1 : 1;
        }
        if (isAllDigits(a, i) && isAllDigits(b, i))
        {
            return 0;
        }
    }
    return 0;
}

std::vector<wstring> qelTest::tokensOf(const wstring& text, const wstring& separators, const wstring& quotes)
{
    std::vector<wstring> tokens;
    wstring token;
    wchar_t quote = 0;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const wchar_t c = text[i];
        if (quote != 0)
        {
            token += c;
            if (c == quote && i + 1 < text.size() && text[i + 1] == quote)
            {
                token += text[++i];
            }
            else if (c == quote)
            {
                quote = 0;
            }
        }
        else if (quotes.find(c) != wstring::npos)
        {
            token += c;
            quote = c;
        }
        else if (separators.find(c) == wstring::npos)
        {
            token += c;
        }
        else if (!token.empty())
        {
            tokens.push_back(token);
            token.clear();
        }
    }
    if (!token.empty())
    {
        tokens.push_back(token);
    }
    return tokens;
}

qelTest::MifText qelTest::withoutMifEscapes(const std::string& text)
{
    static const unsigned codePages[] = {0, 932, 950, 949, 1361, 936};
    MifText result = {"", 0};
    for (size_t i = 0; i < text.size();)
    {
        const size_t length = escapeLength(text, i);
        if (length == 0)
        {
            result.bytes += text[i++];
            continue;
        }
        const char selector = i + 3 < text.size() ? text[i + 3] : '0';
        result.codePage = selector >= '1' && selector <= '5' ? codePages[selector - '0'] : 0;
        if (length == 8)
        {
            result.bytes += byteOfPair(text.substr(i + 4, 2));
            result.bytes += byteOfPair(text.substr(i + 6, 2));
        }
        i += length;
    }
    result.bytes = result.bytes.c_str();
    return result;
}
