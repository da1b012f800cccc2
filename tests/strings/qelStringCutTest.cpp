#include "strings/TextSupport.h"

#include <gtest/gtest.h>

using namespace qelTest;

namespace
{
const int kIntMax = 2147483647;
const int kIntMin = -kIntMax - 1;

TEST(qelStringLeft, ReturnsTheFirstUnits)
{
    const qelString text(L"abcdef");
    EXPECT_EQ(plain(text.left(2)), L"ab");
    EXPECT_EQ(plain(text.left(5)), L"abcde");
    EXPECT_TRUE(isShared(text.left(0), qelString()));
}

TEST(qelStringLeft, ReturnsTheEmptyTextForANegativeNumber)
{
    EXPECT_TRUE(isShared(qelString(L"abc").left(-1), qelString()));
    EXPECT_TRUE(isShared(qelString(L"abc").left(kIntMin), qelString()));
    EXPECT_TRUE(isShared(qelString().left(-1), qelString()));
}

TEST(qelStringLeft, SharesTheWholeText)
{
    const qelString text(L"abc");
    EXPECT_TRUE(isShared(text.left(3), text));
    EXPECT_TRUE(isShared(text.left(kIntMax), text));
}

TEST(qelStringRight, ReturnsTheLastUnits)
{
    const qelString text(L"abcdef");
    EXPECT_EQ(plain(text.right(2)), L"ef");
    EXPECT_EQ(plain(text.right(5)), L"bcdef");
    EXPECT_TRUE(isShared(text.right(0), qelString()));
}

TEST(qelStringRight, ReturnsTheEmptyTextForANegativeNumber)
{
    EXPECT_TRUE(isShared(qelString(L"abc").right(-1), qelString()));
    EXPECT_TRUE(isShared(qelString(L"abc").right(kIntMin), qelString()));
}

TEST(qelStringRight, SharesTheWholeText)
{
    const qelString text(L"abc");
    EXPECT_TRUE(isShared(text.right(3), text));
    EXPECT_TRUE(isShared(text.right(kIntMax), text));
}

TEST(qelStringMid, ReturnsUpToCountUnits)
{
    const qelString text(L"abcdef");
    EXPECT_EQ(plain(text.mid(1, 3)), L"bcd");
    EXPECT_EQ(plain(text.mid(4, 10)), L"ef");
    EXPECT_EQ(plain(text.mid(4, kIntMax)), L"ef");
    EXPECT_EQ(plain(text.mid(2)), L"cdef");
    EXPECT_EQ(plain(text.mid(5)), L"f");
}

TEST(qelStringMid, BuildsANewTextEvenOfTheWhole)
{
    const qelString text(L"abc");
    EXPECT_EQ(plain(text.mid(0)), L"abc");
    EXPECT_FALSE(isShared(text.mid(0), text));
    EXPECT_FALSE(isShared(text.mid(0, 3), text));
}

TEST(qelStringMid, ReturnsTheEmptyTextOutsideTheText)
{
    const qelString text(L"abc");
    EXPECT_TRUE(isShared(text.mid(3), qelString()));
    EXPECT_TRUE(isShared(text.mid(4), qelString()));
    EXPECT_TRUE(isShared(text.mid(-1), qelString()));
    EXPECT_TRUE(isShared(text.mid(-1, 2), qelString()));
    EXPECT_TRUE(isShared(text.mid(1, 0), qelString()));
    EXPECT_TRUE(isShared(text.mid(kIntMax, kIntMax), qelString()));
    EXPECT_TRUE(isShared(text.mid(kIntMin, kIntMax), qelString()));
    EXPECT_TRUE(isShared(text.mid(kIntMin), qelString()));
    EXPECT_TRUE(isShared(qelString().mid(0), qelString()));
}

TEST(qelStringMid, ReturnsTheRestForANegativeCount)
{
    const qelString text(L"abcdef");
    EXPECT_EQ(plain(text.mid(2, -1)), L"cdef");
    EXPECT_EQ(plain(text.mid(0, kIntMin)), L"abcdef");
    EXPECT_EQ(plain(text.mid(5, -7)), L"f");
    EXPECT_TRUE(isShared(text.mid(6, -1), qelString()));
    EXPECT_TRUE(isShared(text.mid(7, -1), qelString()));
    EXPECT_TRUE(isShared(text.mid(-1, -1), qelString()));
    EXPECT_TRUE(isShared(text.mid(kIntMin, kIntMin), qelString()));
    EXPECT_TRUE(isShared(qelString().mid(0, -1), qelString()));
}

TEST(qelStringMid, HandlesTheLongestText)
{
    const qelString text = repeated(kLongestText, L'a');
    EXPECT_EQ(text.mid(0).length(), kLongestText);
    EXPECT_EQ(text.mid(1).length(), kLongestResult);
    EXPECT_EQ(text.left(kLongestResult).length(), kLongestResult);
    EXPECT_EQ(text.right(kLongestResult).length(), kLongestResult);
}

TEST(qelStringCopy, TakesUpToCountUnitsOfTheSource)
{
    const qelString source(L"abcdef");
    qelString text(L"old");
    EXPECT_EQ(plain(text.copy(source, 1, 3)), L"bcd");
    EXPECT_EQ(plain(text), L"bcd");
    text.copy(source, 4, 100);
    EXPECT_EQ(plain(text), L"ef");
    text.copy(source, 2);
    EXPECT_EQ(plain(text), L"cdef");
    EXPECT_EQ(plain(source), L"abcdef");
}

TEST(qelStringCopy, ReturnsAStringThatSharesTheResult)
{
    qelString text;
    const qelString result = text.copy(L"abcdef", 1, 2);
    EXPECT_TRUE(isShared(result, text));
}

TEST(qelStringCopy, BuildsANewTextEvenOfTheWhole)
{
    const qelString source(L"abc");
    qelString text;
    text.copy(source, 0);
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, source));
}

TEST(qelStringCopy, EmptiesTheStringForARangeOutsideTheSource)
{
    const int ranges[][2] = {{-1, 2}, {3, 1}, {4, 1}, {0, 0}, {0, -1}, {kIntMin, 1}, {kIntMax, 1}};
    for (const auto& range : ranges)
    {
        qelString text(L"old");
        EXPECT_TRUE(isShared(text.copy(L"abc", range[0], range[1]), qelString())) << range[0];
        EXPECT_TRUE(isShared(text, qelString())) << range[0];
    }
    for (const int start : {-1, 3, kIntMin, kIntMax})
    {
        qelString text(L"old");
        text.copy(L"abc", start);
        EXPECT_TRUE(isShared(text, qelString())) << start;
    }
}

TEST(qelStringCopy, TakesItselfAsSource)
{
    qelString text(L"abcdef");
    text.copy(text, 2, 2);
    EXPECT_EQ(plain(text), L"cd");
}

TEST(qelStringCopy, RenewsTheNarrowForm)
{
    qelString text(L"old");
    EXPECT_STREQ(text.getStringA(), "old");
    text.copy(L"abc", 1);
    EXPECT_STREQ(text.getStringA(), "bc");
}

std::wstring trimmedLeft(const wchar_t* text, const wchar_t* set)
{
    qelString trimmed(text);
    trimmed.TrimLeft(set);
    return plain(trimmed);
}

std::wstring trimmedRight(const wchar_t* text, const wchar_t* set)
{
    qelString trimmed(text);
    trimmed.TrimRight(set);
    return plain(trimmed);
}

TEST(qelStringTrim, RemovesTabsLineFeedsAndSpacesByDefault)
{
    qelString text(L" \t\n a b \n\t ");
    text.TrimLeft();
    EXPECT_EQ(plain(text), L"a b \n\t ");
    text.TrimRight();
    EXPECT_EQ(plain(text), L"a b");
}

TEST(qelStringTrim, KeepsCarriageReturnsByDefault)
{
    qelString text(L" \r a \r ");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(plain(text), L"\r a \r");
}

TEST(qelStringTrim, KeepsOtherWhiteSpaceByDefault)
{
    qelString text(L"\v\fa\u00a0");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(plain(text), L"\v\fa\u00a0");
}

TEST(qelStringTrim, BecomesTheSharedEmptyTextWhenNothingIsLeft)
{
    qelString left(L" \t ");
    left.TrimLeft();
    EXPECT_TRUE(isShared(left, qelString()));
    qelString right(L" \t ");
    right.TrimRight();
    EXPECT_TRUE(isShared(right, qelString()));
}

TEST(qelStringTrim, LeavesTheEmptyTextAsItIs)
{
    qelString text;
    const char* narrow = text.getStringA();
    text.TrimLeft();
    text.TrimRight();
    text.TrimLeft(L"x");
    text.TrimRight(L"x");
    EXPECT_TRUE(isShared(text, qelString()));
    EXPECT_EQ(text.getStringA(), narrow);
}

TEST(qelStringTrim, RemovesTheUnitsOfTheSetFromOneEndOnly)
{
    EXPECT_EQ(trimmedLeft(L"xyaxy", L"yx"), L"axy");
    EXPECT_EQ(trimmedRight(L"xyaxy", L"yx"), L"xya");
    EXPECT_EQ(trimmedLeft(L" a", L"x"), L" a");
    EXPECT_EQ(trimmedRight(L"a ", L"x"), L"a ");
    EXPECT_EQ(trimmedLeft(L"\r\na", L"\r\n"), L"a");
}

TEST(qelStringTrim, RemovesNothingForAnEmptySet)
{
    EXPECT_EQ(trimmedLeft(L" a ", L""), L" a ");
    EXPECT_EQ(trimmedRight(L" a ", L""), L" a ");
}

TEST(qelStringTrim, RebuildsTheTextEvenWhenNothingIsTrimmed)
{
    qelString text(L"abc");
    const qelString before(text);
    text.TrimLeft();
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, before));
    const qelString between(text);
    text.TrimRight(L"");
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, between));
}

TEST(qelStringTrim, LeavesStringsThatSharedTheText)
{
    qelString text(L" a ");
    const qelString other(text);
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(plain(other), L" a ");
}

TEST(qelStringTrim, TakesItselfAsSet)
{
    qelString left(L"abc");
    left.TrimLeft(left);
    EXPECT_EQ(plain(left), L"");
    qelString right(L"abc");
    right.TrimRight(right);
    EXPECT_EQ(plain(right), L"");
}

TEST(qelStringTrim, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    qelString text = repeated(kLongestText, L' ');
    text.TrimLeft(L"x");
    EXPECT_TRUE(isShared(text, qelString()));
    text = repeated(kLongestText, L' ');
    text.TrimRight(L"x");
    EXPECT_TRUE(isShared(text, qelString()));

    text = (std::wstring(kLongestResult, L'a') + L' ').c_str();
    text.TrimRight();
    EXPECT_EQ(text, repeated(kLongestResult, L'a'));
    text.TrimLeft();
    EXPECT_EQ(text, repeated(kLongestResult, L'a'));
    text = (L' ' + std::wstring(kLongestResult, L'a')).c_str();
    text.TrimLeft();
    EXPECT_EQ(text.length(), kLongestResult);
    text = repeated(kLongestText, L' ');
    text.TrimLeft();
    EXPECT_EQ(text.length(), 0);
}

TEST(qelStringTrim, TakesSetsOfAnySize)
{
    const std::wstring all = manyUnits(1, 60000);
    EXPECT_EQ(trimmedLeft(L"abc\xffffxyz", all.c_str()), L"\xffffxyz");
    EXPECT_EQ(trimmedRight(L"abc\xffffxyz", all.c_str()), L"abc\xffff");
    for (int size = 1; size < 40; ++size)
    {
        const std::wstring set = manyUnits(0x100, size);
        const std::wstring in = set + set;
        const wchar_t behind[] = {static_cast<wchar_t>(0x100 + size), 0};
        ASSERT_EQ(trimmedLeft((in + behind + in).c_str(), set.c_str()), behind + in) << size;
        ASSERT_EQ(trimmedRight((in + behind + in).c_str(), set.c_str()), in + behind) << size;
    }
}

/// Leaves every bit set in the stack that the next calls use.
void fillStack()
{
    volatile unsigned char stack[0x8000];
    for (size_t i = 0; i < sizeof stack; ++i)
    {
        stack[i] = 0xFF;
    }
}

TEST(qelStringTrim, TakesEachUnitForItselfInLargeSets)
{
    const std::wstring others = manyUnits(0x2000, 100);
    for (const wchar_t unit : {L'\x80', L'\x1fff', L'\x2064', L'\xfffe', L'\xffff'})
    {
        const std::wstring text(1, unit);
        fillStack();
        EXPECT_EQ(trimmedLeft(text.c_str(), others.c_str()), text);
        fillStack();
        EXPECT_EQ(trimmedLeft(text.c_str(), (others + unit).c_str()), L"");
    }
}

TEST(qelStringTrim, StaysQuickWithLargeSets)
{
    const qelString set(manyUnits(1, 60000).c_str());
    const Stopwatch watch;
    qelString left = repeated(kLongestResult, 60000);
    qelString right(left);
    left.TrimLeft(set);
    right.TrimRight(set);
    EXPECT_EQ(left.length() + right.length(), 0);
    EXPECT_LT(watch.seconds(), 2);
}

TEST(qelStringTrim, AgreesWithTheStandardLibraryOnRandomText)
{
    RandomText random(1003);
    for (int round = 0; round < 10000; ++round)
    {
        const std::wstring text = random.text<wchar_t>(L"abc", 8);
        const std::wstring set = random.text<wchar_t>(L"ab", 3);
        const size_t first = text.find_first_not_of(set);
        const size_t last = text.find_last_not_of(set);
        ASSERT_EQ(trimmedLeft(text.c_str(), set.c_str()), first == std::wstring::npos ? L"" : text.substr(first))
            << round;
        ASSERT_EQ(trimmedRight(text.c_str(), set.c_str()), text.substr(0, last + 1)) << round;
    }
}
} // namespace
