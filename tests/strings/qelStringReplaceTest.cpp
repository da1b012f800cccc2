#include "strings/TextSupport.h"
#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

using namespace qelTest;

namespace
{
const int kIntMax = 2147483647;
const int kIntMin = -kIntMax - 1;

TEST(qelStringReplaceUnit, ReplacesEveryOccurrenceAndCounts)
{
    qelString text(L"a/b/c");
    EXPECT_EQ(text.replace(L'/', L'\\'), 2);
    EXPECT_EQ(plain(text), L"a\\b\\c");
}

TEST(qelStringReplaceUnit, ReturnsZeroAndRebuildsWhenAbsent)
{
    qelString text(L"abc");
    const qelString before(text);
    EXPECT_EQ(text.replace(L'x', L'y'), 0);
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, before));
}

TEST(qelStringReplaceUnit, LeavesStringsThatSharedTheText)
{
    qelString text(L"aba");
    const qelString other(text);
    EXPECT_STREQ(text.getStringA(), "aba");
    EXPECT_EQ(text.replace(L'a', L'c'), 2);
    EXPECT_STREQ(text.getStringA(), "cbc");
    EXPECT_EQ(plain(other), L"aba");
}

TEST(qelStringReplaceUnit, CutsAtTheFirstPlaceForAZeroAndCountsAll)
{
    qelString text(L"ab-cd-ef-");
    EXPECT_EQ(text.replace(L'-', L'\0'), 3);
    EXPECT_EQ(plain(text), L"ab");
}

TEST(qelStringReplaceUnit, BecomesTheSharedEmptyTextWhenCutAtTheFront)
{
    qelString text(L"-a-");
    EXPECT_EQ(text.replace(L'-', L'\0'), 2);
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringReplaceUnit, FindsNoZeroInTheText)
{
    qelString text(L"abc");
    EXPECT_EQ(text.replace(L'\0', L'x'), 0);
    EXPECT_EQ(text.replace(L'\0', L'\0'), 0);
    EXPECT_EQ(plain(text), L"abc");
}

TEST(qelStringReplaceUnit, CountsAUnitReplacedByItself)
{
    qelString text(L"aab");
    EXPECT_EQ(text.replace(L'a', L'a'), 2);
    EXPECT_EQ(plain(text), L"aab");
}

TEST(qelStringReplaceUnit, LeavesTheEmptyTextEmpty)
{
    qelString text;
    EXPECT_EQ(text.replace(L'a', L'b'), 0);
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringReplaceUnit, TakesSixteenBitUnits)
{
    qelString text(L"\xffff"
                   L"a\xffff");
    EXPECT_EQ(text.replace(static_cast<unsigned short>(0xffff), static_cast<unsigned short>('b')), 2);
    EXPECT_EQ(plain(text), L"bab");
}

TEST(qelStringReplaceUnit, ConvertsBytesFromTheAnsiCodePage)
{
    // A byte that is no character counts as the one that stands for such bytes.
    qelString text(byCodePage(L"\u20acx", L"\uff71x", L"\ufffdx"));
    EXPECT_EQ(text.replace(byCodePage('\x80', '\xb1', '\xb1'), byCodePage('\xf6', '\xb2', 'y')), 1);
    EXPECT_EQ(plain(text), byCodePage(L"\u00f6x", L"\uff72x", L"yx"));
}

TEST(qelStringReplaceUnit, CutsForAZeroByte)
{
    qelString text(L"ab;c");
    EXPECT_EQ(text.replace(';', '\0'), 1);
    EXPECT_EQ(plain(text), L"ab");
}

TEST(qelStringReplaceUnit, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    qelString text = repeated(kLongestResult, L'a');
    EXPECT_EQ(text.replace(L'a', L'b'), kLongestResult);
    EXPECT_EQ(text, repeated(kLongestResult, L'b'));

    text = repeated(kLongestText, L'a');
    EXPECT_EQ(text.replace(L'a', L'b'), kLongestText);
    EXPECT_TRUE(isShared(text, qelString()));
}

std::wstring replacedByTheBook(const std::wstring& text, const std::wstring& what, const std::wstring& with, int& count)
{
    std::wstring result;
    size_t at = 0;
    count = 0;
    if (what.empty())
    {
        return text;
    }
    for (size_t hit = text.find(what); hit != std::wstring::npos; hit = text.find(what, at))
    {
        result += text.substr(at, hit - at) + with;
        at = hit + what.size();
        ++count;
    }
    return result + text.substr(at);
}

TEST(qelStringReplaceText, ReplacesFromLeftToRight)
{
    qelString text(L"aaa");
    EXPECT_EQ(text.replace(L"aa", L"b"), 1);
    EXPECT_EQ(plain(text), L"ba");
}

TEST(qelStringReplaceText, GrowsAndShrinks)
{
    qelString text(L"a.b.c");
    EXPECT_EQ(text.replace(L".", L"---"), 2);
    EXPECT_EQ(plain(text), L"a---b---c");
    EXPECT_EQ(text.replace(L"---", L""), 2);
    EXPECT_EQ(plain(text), L"abc");
}

TEST(qelStringReplaceText, DoesNotSearchInsertedText)
{
    qelString text(L"ab");
    EXPECT_EQ(text.replace(L"a", L"aa"), 1);
    EXPECT_EQ(plain(text), L"aab");
    text = L"aabb";
    EXPECT_EQ(text.replace(L"ab", L""), 1);
    EXPECT_EQ(plain(text), L"ab");
}

TEST(qelStringReplaceText, ReturnsZeroAndKeepsTextWhenNeedleIsEmpty)
{
    qelString text(L"abc");
    const qelString before(text);
    EXPECT_EQ(text.replace(L"", L"x"), 0);
    EXPECT_TRUE(isShared(text, before));
}

TEST(qelStringReplaceText, RebuildsTheTextWithoutAnyOccurrence)
{
    qelString text(L"abc");
    const qelString before(text);
    EXPECT_EQ(text.replace(L"x", L"y"), 0);
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, before));
}

TEST(qelStringReplaceText, BecomesTheSharedEmptyTextWhenNothingIsLeft)
{
    qelString text(L"abab");
    EXPECT_EQ(text.replace(L"ab", L""), 2);
    EXPECT_TRUE(isShared(text, qelString()));
    EXPECT_EQ(text.replace(L"ab", L"c"), 0);
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringReplaceText, TakesItselfAsEitherArgument)
{
    qelString text(L"abc");
    EXPECT_EQ(text.replace(text, L"xyz"), 1);
    EXPECT_EQ(plain(text), L"xyz");
    EXPECT_EQ(text.replace(L"y", text), 1);
    EXPECT_EQ(plain(text), L"xxyzz");
    EXPECT_EQ(text.replace(text, text), 1);
    EXPECT_EQ(plain(text), L"xxyzz");
}

TEST(qelStringReplaceText, AgreesWithTheStatedStepsOnRandomText)
{
    RandomText random(1002);
    for (int round = 0; round < 20000; ++round)
    {
        const std::wstring text = random.text<wchar_t>(L"ab", 14);
        const std::wstring what = random.text<wchar_t>(L"ab", 3);
        const std::wstring with = random.text<wchar_t>(L"abc", 4);
        int expectedCount = 0;
        const std::wstring expected = replacedByTheBook(text, what, with, expectedCount);
        qelString changed(text.c_str());
        ASSERT_EQ(changed.replace(qelString(what.c_str()), qelString(with.c_str())), expectedCount) << round;
        ASSERT_EQ(plain(changed), expected) << round;
    }
}

TEST(qelStringReplaceText, StaysQuickWhenTheTextNearlyFitsEverywhere)
{
    const std::wstring part(50000, L'a');
    const std::wstring what = part.substr(25000) + L'b' + part.substr(25000);
    std::wstring source;
    std::wstring expected;
    for (int i = 0; i < 4; ++i)
    {
        source += part + what;
        expected += part + L"x";
    }
    qelString text(source.c_str());
    const Stopwatch watch;
    EXPECT_EQ(text.replace(what.c_str(), L"x"), 4);
    EXPECT_LT(watch.seconds(), 2);
    EXPECT_EQ(text.length(), static_cast<int>(expected.size()));
    EXPECT_EQ(text, qelString(expected.c_str()));
}

int boundedCopies = 0;

errno_t countingCopy(wchar_t* to, size_t room, const wchar_t* from)
{
    ++boundedCopies;
    return wcscpy_s(to, room, from);
}

// The runtimes call their handler of invalid parameters for it, Wine's does not.
TEST(qelStringReplaceText, RefusesALongerResultAsABoundedCopyOfTheRuntimeDoes)
{
    const LenientRuntime lenient;
    const ImportHook hook("wcscpy_s", countingCopy);
    qelString text = repeated(kLongestResult, L'x');
    boundedCopies = 0;
    text.replace(L"x", L"yz");
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(boundedCopies, 1);
}

TEST(qelStringReplaceText, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    const qelString base = repeated(kLongestResult - 2, L'a') + L"x";
    qelString text(base);
    EXPECT_EQ(text.replace(L"x", L"yz"), 1);
    EXPECT_EQ(text, repeated(kLongestResult - 2, L'a') + L"yz");

    text = base;
    EXPECT_EQ(text.replace(L"x", L"xyz"), 1);
    EXPECT_TRUE(isShared(text, qelString()));

    text = base;
    EXPECT_EQ(text.replace(L"a", repeated(100000, L'b')), kLongestResult - 2);
    EXPECT_TRUE(isShared(text, qelString()));

    text = repeated(kLongestText, L'a');
    EXPECT_EQ(text.replace(L"x", L"y"), 0);
    EXPECT_TRUE(isShared(text, qelString()));

    text = repeated(kLongestText, L'a');
    EXPECT_EQ(text.replace(L"aa", L"b"), kLongestText / 2);
    EXPECT_EQ(text, repeated(kLongestText / 2, L'b'));
}

std::wstring rangeReplaced(const wchar_t* text, int start, int count, const wchar_t* with)
{
    qelString changed(text);
    return plain(changed.replace(start, count, with));
}

TEST(qelStringReplaceRange, ReplacesTheRange)
{
    EXPECT_EQ(rangeReplaced(L"abcdef", 2, 3, L"XY"), L"abXYf");
    EXPECT_EQ(rangeReplaced(L"abcdef", 0, 2, L""), L"cdef");
    EXPECT_EQ(rangeReplaced(L"abcdef", 0, 6, L"x"), L"x");
}

TEST(qelStringReplaceRange, ChangesNothingForACountBelowOne)
{
    qelString text(L"abc");
    const qelString before(text);
    EXPECT_EQ(&text.replace(1, 0, L"x"), &text);
    EXPECT_TRUE(isShared(text, before));
    text.replace(1, -1, L"x");
    text.replace(1, kIntMin, L"x");
    EXPECT_TRUE(isShared(text, before));
}

TEST(qelStringReplaceRange, DropsTheTailWhenTheRangeReachesPastTheEnd)
{
    EXPECT_EQ(rangeReplaced(L"abcdef", 4, 2, L"X"), L"abcdX");
    EXPECT_EQ(rangeReplaced(L"abcdef", 4, 100, L"X"), L"abcdX");
    EXPECT_EQ(rangeReplaced(L"abcdef", 4, kIntMax, L"X"), L"abcdX");
}

TEST(qelStringReplaceRange, AppendsForAStartAtOrBehindTheEnd)
{
    EXPECT_EQ(rangeReplaced(L"abc", 3, 1, L"X"), L"abcX");
    EXPECT_EQ(rangeReplaced(L"abc", 10, 1, L"X"), L"abcX");
    EXPECT_EQ(rangeReplaced(L"abc", kIntMax, kIntMax, L"X"), L"abcX");
    EXPECT_EQ(rangeReplaced(L"", 0, 1, L"X"), L"X");
}

TEST(qelStringReplaceRange, CountsANegativeStartFromBeforeTheText)
{
    // No prefix; the suffix starts at start + count, and is the whole text when that is still before it.
    EXPECT_EQ(rangeReplaced(L"abcdef", -2, 3, L"X"), L"Xbcdef");
    EXPECT_EQ(rangeReplaced(L"abcdef", -5, 2, L"X"), L"Xabcdef");
    EXPECT_EQ(rangeReplaced(L"abcdef", kIntMin, 1, L"X"), L"Xabcdef");
}

TEST(qelStringReplaceRange, RebuildsTheTextEvenWhenItStaysTheSame)
{
    qelString text(L"abc");
    const qelString before(text);
    text.replace(1, 1, L"b");
    EXPECT_EQ(plain(text), L"abc");
    EXPECT_FALSE(isShared(text, before));
}

TEST(qelStringReplaceRange, BecomesTheSharedEmptyText)
{
    qelString text(L"abc");
    text.replace(0, 3, L"");
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringReplaceRange, TakesItselfAsReplacement)
{
    qelString text(L"abc");
    text.replace(1, 1, text);
    EXPECT_EQ(plain(text), L"aabcc");
}

TEST(qelStringReplaceRange, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    qelString text = repeated(kLongestResult - 1, L'a');
    text.replace(0, 1, L"bb");
    EXPECT_EQ(text.length(), kLongestResult);
    EXPECT_EQ(text.find(L"a"), 2);
    text.replace(0, 1, L"ccc");
    EXPECT_TRUE(isShared(text, qelString()));

    text = repeated(kLongestText, L'a');
    text.replace(0, 2, L"b");
    EXPECT_EQ(text.length(), kLongestResult);
}

TEST(qelStringRemoveAll, RemovesEveryOccurrence)
{
    qelString text(L"-a--b-");
    const qelString other(text);
    text.removeAll(L'-');
    EXPECT_EQ(plain(text), L"ab");
    EXPECT_EQ(plain(other), L"-a--b-");
}

TEST(qelStringRemoveAll, TakesSixteenBitUnitsAndBytes)
{
    // A byte that is no character counts as the one that stands for such bytes.
    const std::wstring unit(1, byCodePage(L'\u20ac', L'\uff71', L'\ufffd'));
    qelString text((L"a" + unit + L"b\xffff" + L"c").c_str());
    text.removeAll(static_cast<unsigned short>(0xffff));
    EXPECT_EQ(plain(text), L"a" + unit + L"bc");
    text.removeAll(byCodePage('\x80', '\xb1', '\xb1'));
    EXPECT_EQ(plain(text), L"abc");
}

TEST(qelStringRemoveAll, KeepsTheRepresentationWhenNothingIsRemoved)
{
    qelString text(L"abc");
    const qelString before(text);
    const char* narrow = text.getStringA();
    text.removeAll(L'x');
    text.removeAll(L'\0');
    text.removeAll('\0');
    text.removeAll(static_cast<unsigned short>(0));
    EXPECT_TRUE(isShared(text, before));
    EXPECT_EQ(text.getStringA(), narrow);
    qelString none;
    none.removeAll(L'a');
    EXPECT_TRUE(isShared(none, qelString()));
}

TEST(qelStringRemoveAll, BecomesTheSharedEmptyText)
{
    qelString text(L"aaa");
    text.removeAll(L'a');
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringRemoveAll, TakesAUnitOfTheTextItself)
{
    qelString text(L"banana");
    text.removeAll(text[1]);
    EXPECT_EQ(plain(text), L"bnn");
}

TEST(qelStringRemoveAll, HandlesTheLongestText)
{
    qelString text = repeated(kLongestText, L'a');
    text.removeAll(L'b');
    EXPECT_EQ(text.length(), kLongestText);
    text.removeAll(L'a');
    EXPECT_EQ(text.length(), 0);
}
} // namespace
