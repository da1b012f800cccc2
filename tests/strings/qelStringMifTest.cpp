#include "strings/TextSupport.h"
#include "support/AnsiCodePage.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <vector>

using namespace qelTest;

namespace
{
std::wstring decoded(const std::string& text)
{
    qelString result(L"old");
    result.setFromMIFString(text.c_str());
    return plain(result);
}

TEST(qelStringMif, DecodesAnEscapeInItsCodePage)
{
    EXPECT_EQ(decoded("\\M+182A0"), L"\u3042");
    EXPECT_EQ(decoded("a\\M+182A0b\\M+182a2c"), L"a\u3042b\u3044c");
}

TEST(qelStringMif, ChoosesTheCodePageByTheSelector)
{
    EXPECT_EQ(decoded("\\M+18C8E"), L"\u6708");
    EXPECT_EQ(decoded("\\M+2A4A4"), L"\u4e2d");
    EXPECT_EQ(decoded("\\M+3B0A1"), L"\uac00");
    EXPECT_EQ(decoded("\\M+48861"), L"\uac00");
    EXPECT_EQ(decoded("\\M+5D6D0"), L"\u4e2d");
    for (const char* other : {"\\M+0C3A9", "\\M+6C3A9", "\\M+9C3A9", "\\M+xC3A9"})
    {
        EXPECT_EQ(decoded(other), byCodePage(L"\u00c3\u00a9", L"\uff83\uff69", L"\u00e9"));
    }
}

TEST(qelStringMif, LetsTheLastSelectorDecideForTheWholeText)
{
    EXPECT_EQ(decoded("\\M+5D6D0\\M+2A4A4"), L"\u7b22\u4e2d");
    EXPECT_EQ(decoded("\\M+58341\\M+0C3A9"),
              byCodePage(L"\u0192\u0041\u00c3\u00a9", L"\u30a2\uff83\uff69", L"\ufffd\u0041\u00e9"));
}

TEST(qelStringMif, ConvertsTextWithoutEscapesFromTheAnsiCodePage)
{
    EXPECT_EQ(decoded(("abc " + ansiBytes()).c_str()), L"abc " + ansiText());
    EXPECT_EQ(decoded("a\\b+M\\"), L"a\\b+M\\");
}

TEST(qelStringMif, IsEmptyForNullAndEmptyText)
{
    qelString text(L"old");
    EXPECT_TRUE(isShared(text.setFromMIFString(nullptr), qelString()));
    EXPECT_TRUE(isShared(text, qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.setFromMIFString(""), qelString()));
}

TEST(qelStringMif, ReturnsAStringThatSharesTheText)
{
    qelString text;
    const qelString result = text.setFromMIFString("abc");
    EXPECT_EQ(plain(result), L"abc");
    EXPECT_TRUE(isShared(result, text));
}

TEST(qelStringMif, WritesNothingForACutEscapeAndGoesOnFiveBytesLater)
{
    EXPECT_EQ(decoded("ab\\M+"), L"ab");
    EXPECT_EQ(decoded("ab\\M+1"), L"ab");
    EXPECT_EQ(decoded("ab\\M+18"), L"ab");
    EXPECT_EQ(decoded("ab\\M+182"), L"ab2");
    EXPECT_EQ(decoded("ab\\M+182A"), L"ab2A");
}

TEST(qelStringMif, TakesTheSelectorOfACutEscape)
{
    // The two bytes of the first escape are one character of code page 932, as the cut one asks for.
    EXPECT_EQ(decoded("\\M+582A0\\M+1"), L"\u3042");
    EXPECT_EQ(decoded("\\M+18341\\M+"), byCodePage(L"\u0192\u0041", L"\u30a2", L"\ufffd\u0041"));
}

TEST(qelStringMif, TakesWhateverHasTheBitsForAnEscape)
{
    // 0x7C, 0x5F and 0x7F have the bits of backslash; 0x4F of M; 0x3F, 0x6B and 0x2F of the plus sign.
    EXPECT_EQ(decoded("|M+182A0"), L"\u3042");
    EXPECT_EQ(decoded("\\O+182A0"), L"\u3042");
    EXPECT_EQ(decoded("\\M?182A0"), L"\u3042");
    EXPECT_EQ(decoded("~Ok182A0"), L"\u3042");
    EXPECT_EQ(decoded("\\]+182A0"), L"\u3042");
    EXPECT_EQ(decoded("\xdc\xcd\xab"
                      "182A0"),
              L"\u3042");
    EXPECT_EQ(decoded("\\L+182A0"), L"\\L+182A0");
    EXPECT_EQ(decoded("[M+182A0"), L"[M+182A0");
    EXPECT_EQ(decoded("\\M*182A0"), L"\\M*182A0");
}

TEST(qelStringMif, ReadsPairsAsHexadecimalNumbersOfTheRuntime)
{
    EXPECT_EQ(decoded("\\M+0 1 2"), L"\x01\x02");
    EXPECT_EQ(decoded("\\M+1+5-1"), L"\x05\uf8f3");
    EXPECT_EQ(decoded("\\M+04g4G"), L"\x04\x04");
    EXPECT_EQ(decoded("\\M+1bBBb"), L"\uff7b\uff7b");
}

TEST(qelStringMif, EndsAtADecodedZero)
{
    EXPECT_EQ(decoded("a\\M+14100b"), L"aA");
    EXPECT_EQ(decoded("a\\M+1zz41b"), L"a");
    EXPECT_EQ(decoded("a\\M+10x41b"), L"a");
    EXPECT_EQ(decoded("\\M+10041b"), L"");
}

TEST(qelStringMif, TakesItsOwnNarrowForm)
{
    qelString text(L"\\M+182A0 and a good deal of text behind it");
    text.setFromMIFString(text.getStringA());
    EXPECT_EQ(plain(text), L"\u3042 and a good deal of text behind it");
}

TEST(qelStringMif, CutsAtTheLongestText)
{
    for (const int extra : {-1, 0, 1, 1000})
    {
        const std::string text(static_cast<size_t>(kLongestText + extra), 'a');
        qelString result;
        result.setFromMIFString(text.c_str());
        EXPECT_EQ(result, repeated(extra < 0 ? kLongestText + extra : kLongestText, L'a')) << extra;
    }
}

TEST(qelStringMif, DecodesTheLongestTextOutOfEscapesOnly)
{
    std::string text;
    for (int i = 0; i < kLongestText; ++i)
    {
        text += "\\M+182A0";
    }
    qelString result;
    result.setFromMIFString(text.c_str());
    EXPECT_EQ(result, repeated(kLongestText, L'\u3042'));
}

TEST(qelStringMif, NeverReadsBehindTheInput)
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const size_t page = info.dwPageSize;
    char* block = static_cast<char*>(VirtualAlloc(nullptr, 2 * page, MEM_RESERVE, PAGE_NOACCESS));
    ASSERT_NE(block, nullptr);
    ASSERT_NE(VirtualAlloc(block, page, MEM_COMMIT, PAGE_READWRITE), nullptr);
    const std::string full = "\\M+182A0\\M+182A0";
    for (size_t length = 0; length <= full.size(); ++length)
    {
        char* text = block + page - length - 1;
        std::memcpy(text, full.c_str(), length);
        text[length] = 0;
        qelString result;
        result.setFromMIFString(text);
        EXPECT_LE(result.length(), static_cast<int>(length));
    }
    VirtualFree(block, 0, MEM_RELEASE);
}

/// The stated steps, one for one, on a copy with room behind it.
std::wstring decodedByTheBook(const std::string& text)
{
    std::vector<char> input(text.begin(), text.end());
    input.resize(text.size() + 8);
    std::string output;
    int n = 0;
    for (size_t i = 0; i < text.size();)
    {
        unsigned word = 0;
        std::memcpy(&word, &input[i], 4);
        if ((word & 0x2B4D5C) != 0x2B4D5C)
        {
            output += input[i++];
            continue;
        }
        const char selector[] = {input[i + 3], 0};
        n = std::atoi(selector);
        if (i + 8 > text.size())
        {
            i += 5;
            continue;
        }
        for (size_t pair = i + 4; pair < i + 8; pair += 2)
        {
            const char digits[] = {input[pair], input[pair + 1], 0};
            unsigned value = 0;
            (void)std::sscanf(digits, "%x", &value);
            output += static_cast<char>(value);
        }
        i += 8;
    }
    const UINT pages[] = {CP_ACP, 932, 950, 949, 1361, 936};
    output = output.c_str();
    if (output.empty())
    {
        return L"";
    }
    std::vector<wchar_t> wide(output.size() + 1);
    MultiByteToWideChar(n >= 1 && n <= 5 ? pages[n] : pages[0], 0, output.c_str(), -1, &wide[0],
                        static_cast<int>(wide.size()));
    return &wide[0];
}

TEST(qelStringMif, AgreesWithTheStatedStepsOnRandomText)
{
    RandomText random(1007);
    const std::string alphabet = "\\M+|O?0123456789Aax -\x82\xa0";
    for (int round = 0; round < 30000; ++round)
    {
        std::string text = random.text(alphabet, 6);
        for (int escapes = random.number(0, 3); escapes > 0; --escapes)
        {
            text += "\\M+" + random.text(alphabet, 7);
        }
        ASSERT_EQ(decoded(text), decodedByTheBook(text)) << text;
    }
}
} // namespace
