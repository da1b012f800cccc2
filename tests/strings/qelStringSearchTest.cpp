#include "strings/TextSupport.h"
#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace qelTest;

namespace
{
TEST(qelStringFind, ReturnsTheFirstPositionAtOrAfterStart)
{
    const qelString text(L"abcabc");
    EXPECT_EQ(text.find(L"bc"), 1);
    EXPECT_EQ(text.find(L"bc", 1), 1);
    EXPECT_EQ(text.find(L"bc", 2), 4);
    EXPECT_EQ(text.find(L"bc", 5), -1);
    EXPECT_EQ(text.find(L"abcabc"), 0);
    EXPECT_EQ(text.find(L"abcabcd"), -1);
    EXPECT_EQ(text.find(L"x"), -1);
}

TEST(qelStringFind, GoesOnAfterAFalseStart)
{
    EXPECT_EQ(qelString(L"aaab").find(L"aab"), 1);
    EXPECT_EQ(qelString(L"abababac").find(L"abac"), 4);
}

TEST(qelStringFind, ReturnsMinusOneForAStartOutsideTheText)
{
    const qelString text(L"abc");
    EXPECT_EQ(text.find(L"a", -1), -1);
    EXPECT_EQ(text.find(L"c", 3), -1);
    EXPECT_EQ(text.find(L"c", 2147483647), -1);
    EXPECT_EQ(text.find(L"a", -2147483647 - 1), -1);
}

TEST(qelStringFind, FindsAnEmptyTextAtStart)
{
    EXPECT_EQ(qelString(L"abc").find(L""), 0);
    EXPECT_EQ(qelString(L"abc").find(L"", 2), 2);
}

TEST(qelStringFind, ReturnsMinusOneForAnEmptyTextAtTheEnd)
{
    EXPECT_EQ(qelString(L"abc").find(L"", 3), -1);
    EXPECT_EQ(qelString().find(L"", 0), -1);
    EXPECT_EQ(qelString().find(L"a", 0), -1);
}

TEST(qelStringFind, FindsTheStringItself)
{
    const qelString text(L"abc");
    EXPECT_EQ(text.find(text), 0);
    EXPECT_EQ(text.find(text, 1), -1);
}

TEST(qelStringFind, AgreesWithTheStandardLibraryOnRepetitiveText)
{
    RandomText random(1010);
    for (int round = 0; round < 2000; ++round)
    {
        // Texts whose beginnings and ends fit nearly everywhere, longer and shorter than what is sought.
        const std::wstring unit = random.text<wchar_t>(L"ab", 5) + L"a";
        std::wstring text;
        while (text.size() < 1500)
        {
            text += random.number(0, 40) == 0 ? random.text<wchar_t>(L"ab", 9) : unit;
        }
        const auto from = static_cast<size_t>(random.number(0, 1400));
        std::wstring what = text.substr(from, static_cast<size_t>(random.number(1, 400)));
        if (random.number(0, 2) == 0)
        {
            what[what.size() / 2] ^= 3;
        }
        const auto start = static_cast<size_t>(random.number(0, 1000));
        const size_t expected = text.find(what, start);
        ASSERT_EQ(qelString(text.c_str()).find(what.c_str(), static_cast<int>(start)),
                  expected == std::wstring::npos ? -1 : static_cast<int>(expected))
            << round;
    }
}

TEST(qelStringFind, StaysQuickWhenTheTextNearlyFitsEverywhere)
{
    const std::wstring half(kLongestText / 2, L'a');
    const qelString text((half + std::wstring(kLongestText / 2 - 1, L'a')).c_str());
    const Stopwatch watch;
    EXPECT_EQ(text.find((half + L'b').c_str()), -1);
    EXPECT_EQ(text.find((L'b' + half).c_str()), -1);
    EXPECT_EQ(text.find((half.substr(1000) + L'b' + half.substr(0, 1000)).c_str()), -1);
    EXPECT_EQ(text.find(half.c_str(), 100), 100);
    EXPECT_LT(watch.seconds(), 2);
}

TEST(qelStringFind, ReturnsMinusOneWhenTheVeryLastPlaceFails)
{
    // Every place begins and ends right; there are up to 40 of them.
    const std::wstring what = std::wstring(20, L'a') + L"b" + std::wstring(20, L'a');
    for (size_t places = 1; places <= 40; ++places)
    {
        const std::wstring text(what.size() - 1 + places, L'a');
        EXPECT_EQ(qelString(text.c_str()).find(what.c_str()), -1) << places;
        EXPECT_EQ(qelString((text + what).c_str()).find(what.c_str()), static_cast<int>(text.size())) << places;
    }
}

// The two are different, and yet equal for every hash that is a polynomial over whole numbers of 64 bits.
TEST(qelStringFind, ComparesTextThatHasTheHashOfWhatIsSought)
{
    const size_t length = 2048;
    std::wstring sought;
    std::wstring same;
    for (size_t i = 0; i < length; ++i)
    {
        size_t ones = 0;
        for (size_t rest = i; rest != 0; rest /= 2)
        {
            ones += rest % 2;
        }
        sought += ones % 2 == 0 ? L'a' : L'b';
        same += ones % 2 == 0 ? L'b' : L'a';
    }
    // First so many that differ, each elsewhere, that hashes are looked at instead.
    std::wstring text;
    for (size_t i = 0; i < 40; ++i)
    {
        text += sought;
        text[i * length + 37 * i + 500] = L'x';
    }
    text += same + sought;
    EXPECT_EQ(qelString(text.c_str()).find(sought.c_str()), static_cast<int>(text.find(sought)));
    text.pop_back();
    EXPECT_EQ(qelString(text.c_str()).find(sought.c_str()), -1);
}

TEST(qelStringFind, ReachesTheLastUnitOfTheLongestText)
{
    qelString text = repeated(kLongestText - 1, L'a');
    text = (std::wstring(text.getStringW()) + L'b').c_str();
    ASSERT_EQ(text.length(), kLongestText);
    EXPECT_EQ(text.find(L"b"), kLongestText - 1);
    EXPECT_EQ(text.find(L"ab", 5), kLongestText - 2);
    EXPECT_EQ(text.find(L"b", kLongestText - 1), kLongestText - 1);
    EXPECT_EQ(text.find(L"b", kLongestText), -1);
}

TEST(qelStringFind, AgreesWithTheStandardLibrary)
{
    RandomText random(1001);
    for (int round = 0; round < 20000; ++round)
    {
        const std::wstring text = random.text<wchar_t>(L"ab", 12);
        const std::wstring what = random.text<wchar_t>(L"ab", 4);
        const int start = random.number(-1, 13);
        const bool inside = start >= 0 && start < static_cast<int>(text.size());
        const size_t hit = inside ? text.find(what, static_cast<size_t>(start)) : std::wstring::npos;
        ASSERT_EQ(qelString(text.c_str()).find(what.c_str(), start), static_cast<int>(hit)) << round;
    }
}

TEST(qelStringFindLastOf, ReturnsTheLastPositionOfAWideUnit)
{
    const qelString text(L"C:\\a\\b");
    EXPECT_EQ(text.find_last_of(L'\\'), 4);
    EXPECT_EQ(text.find_last_of(static_cast<unsigned short>(L'\\')), 4);
    EXPECT_EQ(text.find_last_of(L'C'), 0);
    EXPECT_EQ(text.find_last_of(L'b'), 5);
    EXPECT_EQ(text.find_last_of(L'x'), -1);
    EXPECT_EQ(text.find_last_of(static_cast<unsigned short>('x')), -1);
}

TEST(qelStringFindLastOf, FindsNothingInTheEmptyText)
{
    EXPECT_EQ(qelString().find_last_of(L'a'), -1);
    EXPECT_EQ(qelString().find_last_of(L'\0'), -1);
    EXPECT_EQ(qelString().find_last_of('a'), -1);
    EXPECT_EQ(qelString().find_last_of('\0'), -1);
}

TEST(qelStringFindLastOf, DoesNotSeeTheTerminator)
{
    EXPECT_EQ(qelString(L"abc").find_last_of(L'\0'), -1);
    EXPECT_EQ(qelString(L"abc").find_last_of('\0'), -1);
}

TEST(qelStringFindLastOf, SearchesTheNarrowFormForAByte)
{
    // No byte beyond ASCII is a character of UTF-8.
    const qelString text(byCodePage(L"a\u00e4b\u00e4c", L"a\uff71b\uff71c", L"axbxc"));
    EXPECT_EQ(text.find_last_of(byCodePage('\xe4', '\xb1', 'x')), 3);
    EXPECT_EQ(text.find_last_of('a'), 0);
    EXPECT_EQ(text.find_last_of('z'), -1);
}

int WINAPI convertToOneByte(UINT, DWORD, const wchar_t*, int, char* target, int, const char*, BOOL*)
{
    *target = 'x';
    return 1;
}

TEST(qelStringFindLastOf, ReadsANarrowFormOfFewerBytesThanUnitsOnlyToItsEnd)
{
    const qelTest::ImportHook hook("WideCharToMultiByte", &convertToOneByte);
    const qelString text(L"abcde");
    EXPECT_EQ(text.find_last_of('x'), 0);
    EXPECT_EQ(text.find_last_of('a'), -1);
    EXPECT_EQ(text.find_last_of('\0'), 1);
}

TEST(qelStringFindLastOf, FindsTheReplacementOfWhatTheCodePageLacks)
{
    EXPECT_EQ(qelString(L"ab\u0b85c").find_last_of('?'), byCodePage(2, 2, -1));
}
} // namespace
