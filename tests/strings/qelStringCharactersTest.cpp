#include "strings/TextSupport.h"
#include "support/ImportHook.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cwctype>

using namespace qelTest;

namespace
{
errno_t refuse(wchar_t*, size_t)
{
    return EINVAL;
}

TEST(qelStringCase, IsEmptyWhereTheRuntimeRefuses)
{
    const qelTest::ImportHook upper("_wcsupr_s", &refuse);
    const qelTest::ImportHook lower("_wcslwr_s", &refuse);
    qelString text(L"abc");
    const qelString other(text);
    EXPECT_EQ(text.toUpper().isEmpty(), 1);
    text = other;
    EXPECT_EQ(text.toLower().isEmpty(), 1);
    EXPECT_EQ(plain(other), L"abc");
}

TEST(qelStringCharacters, AreAlphaNumericWhenAllAreLettersOrDigits)
{
    EXPECT_TRUE(qelString(L"HEA200").IsAlphaNumeric());
    EXPECT_FALSE(qelString(L"HEA 200").IsAlphaNumeric());
    EXPECT_FALSE(qelString(L"200-").IsAlphaNumeric());
}

TEST(qelStringCharacters, AreAlphabeticWhenAllAreLetters)
{
    EXPECT_TRUE(qelString(L"HEA").IsAlphabetic());
    EXPECT_FALSE(qelString(L"HEA2").IsAlphabetic());
    EXPECT_FALSE(qelString(L"-HEA").IsAlphabetic());
}

TEST(qelStringCharacters, AreNumericWhenAllAreDigits)
{
    EXPECT_TRUE(qelString(L"0123456789").IsNumeric());
    EXPECT_FALSE(qelString(L"12a").IsNumeric());
    EXPECT_FALSE(qelString(L"-1").IsNumeric());
    EXPECT_FALSE(qelString(L"1.5").IsNumeric());
    EXPECT_FALSE(qelString(L" 1").IsNumeric());
}

TEST(qelStringCharacters, OfTheEmptyTextAreAlphabeticButNotNumeric)
{
    EXPECT_TRUE(qelString().IsAlphaNumeric());
    EXPECT_TRUE(qelString().IsAlphabetic());
    EXPECT_FALSE(qelString().IsNumeric());
}

TEST(qelStringCharacters, AreOfTheKindThatTheRuntimeSees)
{
    for (wchar_t c = 1; c < 0x400; ++c)
    {
        const wchar_t text[] = {L'a', c, 0};
        const wchar_t digits[] = {L'1', c, 0};
        ASSERT_EQ(qelString(text).IsAlphaNumeric(), std::iswalnum(c) != 0) << c;
        ASSERT_EQ(qelString(text).IsAlphabetic(), std::iswalpha(c) != 0) << c;
        ASSERT_EQ(qelString(digits).IsNumeric(), std::iswdigit(c) != 0) << c;
    }
}

TEST(qelStringCase, ConvertsTheText)
{
    qelString text(L"Hea 200 b");
    EXPECT_EQ(&text.toUpper(), &text);
    EXPECT_EQ(plain(text), L"HEA 200 B");
    EXPECT_EQ(&text.toLower(), &text);
    EXPECT_EQ(plain(text), L"hea 200 b");
}

TEST(qelStringCase, ConvertsAsTheRuntimeDoes)
{
    std::wstring all;
    for (wchar_t c = 1; c < 0x600; ++c)
    {
        all += c;
    }
    std::wstring upper(all);
    std::wstring lower(all);
    ASSERT_EQ(_wcsupr_s(&upper[0], upper.size() + 1), 0);
    ASSERT_EQ(_wcslwr_s(&lower[0], lower.size() + 1), 0);
    qelString text(all.c_str());
    EXPECT_EQ(plain(text.toUpper()), upper);
    text = all.c_str();
    EXPECT_EQ(plain(text.toLower()), lower);
}

TEST(qelStringCase, LeavesStringsThatSharedTheTextAndRenewsTheNarrowForm)
{
    qelString text(L"aB");
    const qelString other(text);
    EXPECT_STREQ(text.getStringA(), "aB");
    text.toUpper();
    EXPECT_STREQ(text.getStringA(), "AB");
    text.toLower();
    EXPECT_STREQ(text.getStringA(), "ab");
    EXPECT_EQ(plain(other), L"aB");
}

TEST(qelStringCase, RebuildsTheTextEvenWhenItStaysTheSame)
{
    qelString text(L"AB");
    const qelString before(text);
    text.toUpper();
    EXPECT_FALSE(isShared(text, before));
    text = L"ab";
    const qelString between(text);
    text.toLower();
    EXPECT_FALSE(isShared(text, between));
}

TEST(qelStringCase, LeavesTheEmptyTextEmpty)
{
    qelString text;
    EXPECT_TRUE(isShared(text.toUpper(), qelString()));
    EXPECT_TRUE(isShared(text.toLower(), qelString()));
}

TEST(qelStringCase, DropsTheNarrowFormOfTheEmptyText)
{
    qelString text;
    (void)text.getStringA();
    ASSERT_NE(charCacheOf(text), nullptr);
    text.toUpper();
    EXPECT_EQ(charCacheOf(text), nullptr);
    (void)text.getStringA();
    text.toLower();
    EXPECT_EQ(charCacheOf(text), nullptr);
}

TEST(qelStringCase, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    qelString text = repeated(kLongestResult, L'a');
    EXPECT_EQ(text.toUpper(), repeated(kLongestResult, L'A'));
    EXPECT_EQ(text.toLower(), repeated(kLongestResult, L'a'));
    text = repeated(kLongestText, L'a');
    EXPECT_TRUE(isShared(text.toUpper(), qelString()));
    text = repeated(kLongestText, L'a');
    EXPECT_TRUE(isShared(text.toLower(), qelString()));
}

TEST(qelStringReverse, ReversesTheTextAndReturnsANewString)
{
    qelString text(L"abc");
    const qelString result = text.strRev();
    EXPECT_EQ(plain(text), L"cba");
    EXPECT_EQ(plain(result), L"cba");
    EXPECT_FALSE(isShared(result, text));
}

TEST(qelStringReverse, ReversesEveryStringThatSharesTheText)
{
    qelString text(L"abcd");
    const qelString other(text);
    const qelString separate(L"abcd");
    const wchar_t* where = text.getStringW();
    text.strRev();
    EXPECT_EQ(plain(other), L"dcba");
    EXPECT_EQ(text.getStringW(), where);
    EXPECT_EQ(plain(separate), L"abcd");
}

TEST(qelStringReverse, KeepsTheNarrowFormAsItWas)
{
    qelString text(L"abc");
    const char* narrow = text.getStringA();
    const qelString result = text.strRev();
    EXPECT_EQ(text.getStringA(), narrow);
    EXPECT_STREQ(text.getStringA(), "abc");
    EXPECT_STREQ(result.getStringA(), "cba");
}

TEST(qelStringReverse, LeavesTheEmptyTextEmpty)
{
    qelString text;
    EXPECT_TRUE(isShared(text.strRev(), qelString()));
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringReverse, HandlesTheLongestText)
{
    qelString text((std::wstring(kLongestText - 1, L'a') + L'b').c_str());
    const qelString result = text.strRev();
    EXPECT_EQ(result.length(), kLongestText);
    EXPECT_EQ(result[0], L'b');
    EXPECT_EQ(text[0], L'b');
}
} // namespace
