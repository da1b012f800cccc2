#include "strings/TextSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>

using namespace qelTest;

namespace
{
int sign(int value)
{
    return (value > 0) - (value < 0);
}

TEST(qelStringCompare, IsOrdinal)
{
    EXPECT_EQ(qelString::compare(L"a", L"B"), 1);
    EXPECT_EQ(qelString::compare(L"B", L"a"), -1);
    EXPECT_EQ(qelString::compare(L"abc", L"abc"), 0);
    EXPECT_EQ(qelString::compare(L"abc", L"abcd"), -1);
    EXPECT_EQ(qelString::compare(L"abcd", L"abc"), 1);
    EXPECT_EQ(qelString::compare(L"", L""), 0);
    EXPECT_EQ(qelString::compare(L"", L"a"), -1);
    EXPECT_EQ(qelString::compare(L"a\xffff", L"a\x0001"), 1);
    EXPECT_EQ(qelString::compare(L"\x7fff", L"\x8000"), -1);
}

TEST(qelStringCompare, ComparesAtMostSoManyUnits)
{
    EXPECT_EQ(qelString::compare(L"abcX", L"abcY", 3), 0);
    EXPECT_LT(qelString::compare(L"abcX", L"abcY", 4), 0);
    EXPECT_GT(qelString::compare(L"b", L"a", 1), 0);
    EXPECT_EQ(qelString::compare(L"b", L"a", 0), 0);
    EXPECT_LT(qelString::compare(L"ab", L"abc", 100), 0);
    EXPECT_EQ(qelString::compare(L"ab", L"abc", 2), 0);
    EXPECT_LT(qelString::compare(L"\x7fff", L"\x8000", 1), 0);
}

TEST(qelStringCompare, TakesANegativeNumberOfUnitsAsNoLimit)
{
    EXPECT_LT(qelString::compare(L"abcX", L"abcY", -1), 0);
    EXPECT_EQ(qelString::compare(L"abc", L"abc", INT_MIN), 0);
    EXPECT_LT(qelString::compareNoCase(L"abcX", L"ABCy", -1), 0);
    EXPECT_EQ(qelString::compareNoCase(L"abc", L"ABC", INT_MIN), 0);
}

TEST(qelStringCompareNoCase, IgnoresCase)
{
    EXPECT_EQ(qelString::compareNoCase(L"HEA", L"hea"), 0);
    EXPECT_LT(qelString::compareNoCase(L"HEA", L"heb"), 0);
    EXPECT_GT(qelString::compareNoCase(L"b", L"A"), 0);
    EXPECT_LT(qelString::compareNoCase(L"a", L"B"), 0);
    EXPECT_EQ(qelString::compareNoCase(L"", L""), 0);
    EXPECT_GT(qelString::compareNoCase(L"a", L""), 0);
    EXPECT_LT(qelString::compareNoCase(L"", L"a"), 0);
}

TEST(qelStringCompareNoCase, ComparesAtMostSoManyUnits)
{
    EXPECT_EQ(qelString::compareNoCase(L"HEA1", L"hea2", 3), 0);
    EXPECT_LT(qelString::compareNoCase(L"HEA1", L"hea2", 4), 0);
    EXPECT_EQ(qelString::compareNoCase(L"a", L"b", 0), 0);
}

TEST(qelStringCompareNoCase, AgreesWithTheRuntime)
{
    for (wchar_t c = 1; c < 0x300; ++c)
    {
        const wchar_t text[] = {c, 0};
        for (const wchar_t* other : {L"a", L"Z", L"\u00e4", L"\u00c4"})
        {
            ASSERT_EQ(sign(qelString::compareNoCase(text, other)), sign(_wcsicmp(text, other))) << c;
            ASSERT_EQ(sign(qelString::compareNoCase(text, other, 1)), sign(_wcsnicmp(text, other, 1))) << c;
        }
    }
}

TEST(qelStringComparator, ComparesWhatThePointersPointTo)
{
    const qelString a(L"a");
    const qelString capitalA(L"A");
    const qelString b(L"b");
    EXPECT_EQ(qelString::strCompare(&a, &b), -1);
    EXPECT_EQ(qelString::strCompare(&b, &a), 1);
    EXPECT_EQ(qelString::strCompare(&a, &a), 0);
    EXPECT_EQ(qelString::strCompare(&a, &capitalA), 1);
    EXPECT_LT(qelString::strCompareNoCase(&a, &b), 0);
    EXPECT_GT(qelString::strCompareNoCase(&b, &a), 0);
    EXPECT_EQ(qelString::strCompareNoCase(&a, &capitalA), 0);
}

TEST(qelStringComparator, ReturnsZeroForANullPointer)
{
    const qelString a(L"a");
    EXPECT_EQ(qelString::strCompare(nullptr, &a), 0);
    EXPECT_EQ(qelString::strCompare(&a, nullptr), 0);
    EXPECT_EQ(qelString::strCompare(nullptr, nullptr), 0);
    EXPECT_EQ(qelString::strCompareNoCase(nullptr, &a), 0);
    EXPECT_EQ(qelString::strCompareNoCase(&a, nullptr), 0);
    EXPECT_EQ(qelString::strCompareNoCase(nullptr, nullptr), 0);
}

TEST(qelStringComparator, ServesTheSortOfTheRuntime)
{
    qelString texts[] = {L"c", L"a", L"b"};
    std::qsort(texts, 3, sizeof(qelString), qelString::strCompare);
    EXPECT_EQ(plain(texts[0] + texts[1] + texts[2]), L"abc");
}

int natural(const std::wstring& a, const std::wstring& b)
{
    return qelString::compareWithNumbers(a.c_str(), b.c_str());
}

TEST(qelStringNaturalOrder, ComparesNumbersByValue)
{
    EXPECT_EQ(natural(L"item2", L"item10"), -1);
    EXPECT_EQ(natural(L"item10", L"item2"), 1);
    EXPECT_EQ(natural(L"x9", L"x10"), -1);
    EXPECT_EQ(natural(L"HEA 200 b", L"HEA 1000 a"), -1);
    EXPECT_EQ(natural(L"2x10", L"2x9"), 1);
}

TEST(qelStringNaturalOrder, ComparesOtherUnitsByCodeValue)
{
    EXPECT_EQ(natural(L"a", L"B"), 1);
    EXPECT_EQ(natural(L"B", L"a"), -1);
    EXPECT_EQ(natural(L"\x7fff", L"\x8000"), -1);
    EXPECT_EQ(natural(L"abc", L"abc"), 0);
}

TEST(qelStringNaturalOrder, PutsTheEmptyTextFirst)
{
    EXPECT_EQ(natural(L"", L"a"), -1);
    EXPECT_EQ(natural(L"", L"1"), -1);
    EXPECT_EQ(natural(L"a", L""), 1);
    EXPECT_EQ(natural(L"", L""), 0);
}

TEST(qelStringNaturalOrder, CallsABeginningEqualButALongerTextGreater)
{
    EXPECT_EQ(natural(L"abc", L"abcd"), 0);
    EXPECT_EQ(natural(L"abcd", L"abc"), 1);
    EXPECT_EQ(natural(L"abc", L"abc1"), 0);
    EXPECT_EQ(natural(L"abc1", L"abc"), 1);
    EXPECT_EQ(natural(L"a1", L"a1b"), 0);
    EXPECT_EQ(natural(L"a1b", L"a1"), 1);
}

TEST(qelStringNaturalOrder, PutsADigitOfTheLeftTextBeforeWhateverIsNone)
{
    EXPECT_EQ(natural(L"1", L"a"), -1);
    EXPECT_EQ(natural(L"1", L"!"), -1);
    EXPECT_EQ(natural(L"a1", L"a "), -1);
}

TEST(qelStringNaturalOrder, ComparesADigitOfTheRightTextByCodeValue)
{
    EXPECT_EQ(natural(L"a", L"1"), 1);
    EXPECT_EQ(natural(L"!", L"1"), -1);
    EXPECT_EQ(natural(L":", L"1"), 1);
}

TEST(qelStringNaturalOrder, CallsNumbersOfOneValueAtTheEndEqual)
{
    EXPECT_EQ(natural(L"x07", L"x7"), 0);
    EXPECT_EQ(natural(L"x7", L"x07"), 0);
    EXPECT_EQ(natural(L"a7", L"a007"), 0);
    EXPECT_EQ(natural(L"0", L"000"), 0);
    EXPECT_EQ(natural(L"010", L"10"), 0);
}

TEST(qelStringNaturalOrder, ComparesTheOtherDigitsOfANumberAgain)
{
    // 07 and 7 are equal; then the 7 of the one meets what follows the 7 of the other.
    EXPECT_EQ(natural(L"07a", L"7a"), -1);
    EXPECT_EQ(natural(L"7a", L"07a"), 1);
    EXPECT_EQ(natural(L"7!", L"07!"), -1);
    EXPECT_EQ(natural(L"010x", L"10x"), 1);
    EXPECT_EQ(natural(L"10x", L"010x"), -1);
    EXPECT_EQ(natural(L"00x", L"0"), 1);
    EXPECT_EQ(natural(L"0", L"00x"), 0);
}

TEST(qelStringNaturalOrder, DoesNotReadOnBehindANumberOfZeros)
{
    EXPECT_EQ(natural(L"0 9", L"7 5"), -1);
    EXPECT_EQ(natural(L"0 9", L"00 5"), -1);
    EXPECT_EQ(natural(L"00-9", L"0-5"), -1);
}

TEST(qelStringNaturalOrder, TakesOnlyAsciiDigitsForDigits)
{
    EXPECT_EQ(natural(L"\u0661", L"\u0662"), -1);
    EXPECT_EQ(natural(L"1", L"\u0660"), -1);
    EXPECT_EQ(natural(L"\uff19", L"\uff11\uff10"), 1);
}

/// The stated steps, one for one.
int naturalByTheBook(const std::wstring& a, const std::wstring& b)
{
    const auto isDigit = [](wchar_t c) { return c >= 0x30 && c <= 0x39; };
    const auto isAllDigits = [&](const std::wstring& text) {
        for (const wchar_t c : text)
        {
            if (!isDigit(c))
            {
                return false;
            }
        }
        return true;
    };
    if (a.empty() && !b.empty())
    {
        return -1;
    }
    if (!a.empty() && b.empty())
    {
        return 1;
    }
    if (a == b)
    {
        return 0;
    }
    for (size_t i = 0;;)
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
        }
        else if (!isDigit(b[i]))
        {
            return -1;
        }
        else
        {
            const std::wstring restA = a.substr(i);
            const std::wstring restB = b.substr(i);
            const int numberA = _wtoi(restA.c_str());
            const int numberB = _wtoi(restB.c_str());
            if (numberA != numberB)
            {
                return numberA < numberB ? -1 : 1;
            }
            if (isAllDigits(restA) && isAllDigits(restB))
            {
                return 0;
            }
        }
        if (++i >= a.size())
        {
            return 0;
        }
    }
}

TEST(qelStringNaturalOrder, AgreesWithTheStatedStepsOnRandomText)
{
    RandomText random(1004);
    const std::wstring alphabets[] = {L"0x", L"01x", L"0129.:a", L"07\u0661\uff17x", L"019"};
    for (int round = 0; round < 60000; ++round)
    {
        const std::wstring& alphabet = alphabets[round % 5];
        const std::wstring a = random.text(alphabet, 7);
        const std::wstring b = random.text(alphabet, 7);
        const std::wstring front = random.text<wchar_t>(L"a0", 2);
        ASSERT_EQ(natural(front + a, front + b), naturalByTheBook(front + a, front + b)) << front << a << " " << b;
    }
}

TEST(qelStringNaturalOrder, AgreesWithTheStatedStepsBehindACommonBeginning)
{
    RandomText random(1011);
    const std::wstring alphabets[] = {L"0123456789",
                                      L"00019",
                                      L"0129.:a",
                                      L"07\u0661\uff17x",
                                      L"9\u0669",
                                      L"1-",
                                      L"0017\u0660\uff10\u0666\u00a0\u3000 -"};
    for (int round = 0; round < 70000; ++round)
    {
        const std::wstring& alphabet = alphabets[round % 7];
        const std::wstring front = random.text(alphabet, 24);
        const std::wstring a = front + random.text(alphabet, 3);
        const std::wstring b = front + random.text(alphabet, 3);
        ASSERT_EQ(natural(a, b), naturalByTheBook(a, b)) << a << " " << b;
    }
}

TEST(qelStringNaturalOrder, AgreesWithTheStatedStepsOnNumbersOutOfRange)
{
    RandomText random(1005);
    for (int round = 0; round < 20000; ++round)
    {
        const std::wstring same = std::wstring(static_cast<size_t>(random.number(0, 30)), L'9');
        const std::wstring zeros = std::wstring(static_cast<size_t>(random.number(0, 12)), L'0');
        const std::wstring a = zeros + same + random.text<wchar_t>(L"089", 14) + random.text<wchar_t>(L"x1", 1);
        const std::wstring b = same + random.text<wchar_t>(L"089", 14) + random.text<wchar_t>(L"x1", 1);
        ASSERT_EQ(natural(a, b), naturalByTheBook(a, b)) << a << " " << b;
        ASSERT_EQ(natural(b, a), naturalByTheBook(b, a)) << b << " " << a;
    }
}

TEST(qelStringNaturalOrder, StaysQuickOnLongRunsOfDigits)
{
    const size_t half = 250000;
    const std::wstring digits(half, L'7');
    const std::wstring zeros(half, L'0');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(natural(digits + L"x", digits + L"y"), -1);
    EXPECT_EQ(natural(digits + L"1x", digits + L"2x"), -1);
    EXPECT_EQ(natural(zeros + digits + L"x", digits + L"x"), 1);
    EXPECT_EQ(natural(zeros + L"8x", zeros + L"7x"), 1);
    const auto spent = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(std::chrono::duration_cast<std::chrono::seconds>(spent).count(), 5);
}

TEST(qelStringNaturalOrder, StaysQuickOnDigitsOfSeveralScripts)
{
    for (const wchar_t* const pair : {L"1\u0663", L"0\u0660", L"0\u0663"})
    {
        std::wstring digits;
        for (int i = 0; i < 200000; ++i)
        {
            digits += pair;
        }
        const Stopwatch watch;
        EXPECT_EQ(natural(digits + L"1x", digits + L"2x"), -1);
        EXPECT_LT(watch.seconds(), 5) << digits[1];
    }
}
} // namespace
