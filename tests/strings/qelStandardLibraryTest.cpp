#include "qelStandardLibrary.h"

#include "qelStringClassArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <unordered_set>
#include <vector>

namespace
{
using namespace qelStandardLibrary;

TEST(qelStandardLibraryConversion, GoesToWideStringsAndBack)
{
    EXPECT_EQ(toWide(L"Stütze"), L"Stütze");
    EXPECT_EQ(toWide(qelString()), L"");
    EXPECT_EQ(fromWide(std::wstring(L"Stütze")), L"Stütze");
    EXPECT_EQ(fromWide({}), L"");
}

TEST(qelStandardLibraryConversion, SeesTheTextItselfInAView)
{
    const qelString text = L"HEA 200";
    const std::wstring_view view = toView(text);
    EXPECT_EQ(view, L"HEA 200");
    EXPECT_EQ(view.data(), text.getStringW());
}

TEST(qelStandardLibraryConversion, TakesAViewThatIsNotTerminated)
{
    EXPECT_EQ(fromWide(std::wstring_view(L"HEA 200").substr(0, 3)), L"HEA");
}

TEST(qelStandardLibraryConversion, EndsAtAZero)
{
    EXPECT_EQ(fromWide(std::wstring_view(L"HEA\0 200", 8)), L"HEA");
    EXPECT_EQ(fromUtf8(std::string_view("HEA\0 200", 8)), L"HEA");
}

TEST(qelStandardLibraryConversion, CutsWhatIsLongerThanAStringMayBe)
{
    EXPECT_EQ(fromWide(std::wstring(524289, L'x')).length(), 524288);
    EXPECT_EQ(fromUtf8(std::string(524289, 'x')).length(), 524288);
    std::string threeBytes;
    for (int i = 0; i < 524290; ++i)
    {
        threeBytes += "\xE2\x82\xAC";
    }
    const qelString euros = fromUtf8(threeBytes);
    EXPECT_EQ(euros.length(), 524288);
    EXPECT_EQ(euros[524287], L'\x20AC');
    threeBytes.resize(3 * 524287);
    EXPECT_EQ(fromUtf8(threeBytes + "\xF0\x9D\x84\x9E")[524287], L'\xD834') << "half of a pair, as in fromWide()";
}

TEST(qelStandardLibraryConversion, GoesToUtf8AndBack)
{
    const std::string bytes = "St\xC3\xBCtze \xE4\xB8\xAD \xF0\x9D\x84\x9E";
    EXPECT_EQ(toUtf8(L"St\xFCtze \x4E2D \xD834\xDD1E"), bytes);
    EXPECT_EQ(fromUtf8(bytes), L"St\xFCtze \x4E2D \xD834\xDD1E");
    EXPECT_EQ(toUtf8(L""), "");
    EXPECT_EQ(fromUtf8({}), L"");
}

TEST(qelStandardLibraryConversion, ReplacesWhatIsNoUnicode)
{
    EXPECT_EQ(toUtf8(L"a\xD834z"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(fromUtf8("a\xFFz"), L"a\xFFFDz");
}

TEST(qelStandardLibraryConversion, KeepsAByteOrderMark)
{
    EXPECT_EQ(fromUtf8("\xEF\xBB\xBFx"), L"\xFEFFx");
}

TEST(qelStandardLibraryHash, FindsEqualStrings)
{
    std::unordered_set<qelString> names;
    names.insert(L"HEA 200");
    names.insert(L"IPE 300");
    EXPECT_EQ(names.count(qelString(L"HEA") + L" 200"), 1U);
    EXPECT_EQ(names.count(L"hea 200"), 0U);
}

TEST(qelStandardLibraryOrder, KeepsMapsByOrdinalAndByCaseInsensitiveOrder)
{
    std::map<qelString, int, OrdinalLess> exact;
    exact[L"HEA"] = 1;
    exact[L"hea"] = 2;
    EXPECT_EQ(exact.size(), 2U);
    EXPECT_EQ(exact.begin()->first, L"HEA");

    std::map<qelString, int, CaseInsensitiveLess> folded;
    folded[L"HEA"] = 1;
    folded[L"hea"] = 2;
    EXPECT_EQ(folded.size(), 1U);
}

TEST(qelStandardLibraryNaturalLess, SortsNumbersByValue)
{
    std::vector<qelString> names = {
        L"P10", L"P9", L"Q1", L"P10a", L"P2-3", L"P2-12", L"", L"P", L"12345678901234567890", L"2345678901234567890"};
    std::sort(names.begin(), names.end(), NaturalLess());
    const std::vector<qelString> expected = {
        L"", L"2345678901234567890", L"12345678901234567890", L"P", L"P2-3", L"P2-12", L"P9", L"P10", L"P10a", L"Q1"};
    EXPECT_EQ(names, expected);
}

TEST(qelStandardLibraryNaturalLess, TakesLeadingZerosForNothing)
{
    const NaturalLess less;
    EXPECT_FALSE(less(L"P7", L"P007"));
    EXPECT_FALSE(less(L"P007", L"P7"));
    EXPECT_TRUE(less(L"P007", L"P8"));
    EXPECT_TRUE(less(L"P007a", L"P7b"));
    EXPECT_TRUE(less(L"P0", L"P1"));
    EXPECT_FALSE(less(L"P0", L"P00"));
    EXPECT_TRUE(less(L"P0", L"P0a"));
}

/// Every text of up to three units out of a few that matter: digits, and units before and behind them.
std::vector<qelString> shortTexts()
{
    std::vector<std::wstring> texts = {L""};
    for (size_t i = 0; i < texts.size() && texts[i].size() < 3; ++i)
    {
        const std::wstring text = texts[i];
        for (const wchar_t unit : {L'0', L'1', L'2', L'a', L'-'})
        {
            texts.push_back(text + unit);
        }
    }
    std::vector<qelString> result;
    for (const std::wstring& text : texts)
    {
        result.emplace_back(text.c_str());
    }
    return result;
}

bool hasLeadingZero(const qelString& text)
{
    wchar_t before = 0;
    for (const wchar_t* at = text.getStringW(); *at != 0; before = *at, ++at)
    {
        const bool startsNumber = before < L'0' || before > L'9';
        if (startsNumber && at[0] == L'0' && at[1] >= L'0' && at[1] <= L'9')
        {
            return true;
        }
    }
    return false;
}

TEST(qelStandardLibraryNaturalLess, IsAStrictWeakOrdering)
{
    const std::vector<qelString> texts = shortTexts();
    const size_t count = texts.size();
    ASSERT_EQ(count, 156U);
    std::vector<std::vector<char>> less(count, std::vector<char>(count));
    for (size_t i = 0; i < count; ++i)
    {
        for (size_t j = 0; j < count; ++j)
        {
            less[i][j] = NaturalLess()(texts[i], texts[j]) ? 1 : 0;
        }
    }
    const auto equivalent = [&](size_t i, size_t j) { return less[i][j] == 0 && less[j][i] == 0; };
    size_t violations = 0;
    for (size_t i = 0; i < count; ++i)
    {
        violations += less[i][i] != 0 ? 1U : 0U;
        for (size_t j = 0; j < count; ++j)
        {
            violations += less[i][j] != 0 && less[j][i] != 0 ? 1U : 0U;
            for (size_t k = 0; k < count; ++k)
            {
                violations += less[i][j] != 0 && less[j][k] != 0 && less[i][k] == 0 ? 1U : 0U;
                violations += equivalent(i, j) && equivalent(j, k) && !equivalent(i, k) ? 1U : 0U;
            }
        }
    }
    EXPECT_EQ(violations, 0U);
}

TEST(qelStandardLibraryNaturalLess, AgreesWithCompareWithNumbersWhereThatIsAnOrder)
{
    size_t compared = 0;
    for (const qelString& a : shortTexts())
    {
        for (const qelString& b : shortTexts())
        {
            const int there = qelString::compareWithNumbers(a, b);
            if (!hasLeadingZero(a) && !hasLeadingZero(b) && there == -qelString::compareWithNumbers(b, a))
            {
                ++compared;
                ASSERT_EQ(NaturalLess()(a, b), there < 0) << testing::PrintToString(a) << testing::PrintToString(b);
            }
        }
    }
    EXPECT_GT(compared, 10000U);
}

TEST(qelStandardLibraryStreams, PrintToWideStreams)
{
    std::wostringstream out;
    out << L'<' << qelString(L"Stütze") << L'>';
    EXPECT_EQ(out.str(), L"<Stütze>");
}

TEST(qelStandardLibraryStreams, AreReadableInMessagesOfGoogleTest)
{
    EXPECT_EQ(testing::PrintToString(qelString(L"Stütze")), "\"St\xC3\xBCtze\"");
}

TEST(qelStandardLibraryPaths, NeedNoFunctionOfTheirOwn)
{
    const std::filesystem::path path(qelString(L"D:\\Data\\Stütze.mdb").getStringW());
    EXPECT_EQ(qelString(path.filename().c_str()), L"Stütze.mdb");
}
} // namespace
