// Which laws of an order the natural order keeps, over all pairs and triples of short names.
#include "qelString.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{
using std::wstring;

/// All texts of up to three units of these: a letter, digits, and units before and after the digits.
const std::vector<wstring>& names()
{
    static const std::vector<wstring> all = [] {
        std::vector<wstring> texts = {L""};
        for (size_t i = 0; texts[i].size() < 3; ++i)
        {
            for (const wchar_t unit : wstring(L"a019-~"))
            {
                texts.push_back(texts[i] + unit);
            }
        }
        return texts;
    }();
    return all;
}

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

/// Whether one name has a digit where the other has a unit that comes before all digits.
bool haveADigitAgainstALowUnit(const wstring& a, const wstring& b)
{
    for (size_t i = 0; i < a.size() && i < b.size(); ++i)
    {
        if (isDigit(a[i]) != isDigit(b[i]))
        {
            return (isDigit(a[i]) ? b[i] : a[i]) < L'0';
        }
    }
    return false;
}

/// compareWithNumbers() of each name with each.
std::vector<std::vector<int>> results()
{
    std::vector<qelString> strings;
    for (const wstring& name : names())
    {
        strings.emplace_back(name.c_str());
    }
    std::vector<std::vector<int>> all(strings.size(), std::vector<int>(strings.size()));
    for (size_t i = 0; i < strings.size(); ++i)
    {
        for (size_t k = 0; k < strings.size(); ++k)
        {
            all[i][k] = qelString::compareWithNumbers(strings[i], strings[k]);
        }
    }
    return all;
}
} // namespace

TEST(NaturalOrderLaws, EveryNameEqualsItself)
{
    for (const wstring& name : names())
    {
        EXPECT_EQ(0, qelString::compareWithNumbers(name.c_str(), name.c_str()));
    }
}

TEST(NaturalOrderLaws, OnlyBeginningsAndDigitsAgainstLowUnitsAreNotAntisymmetric)
{
    const auto order = results();
    int pairs = 0;
    int beginnings = 0;
    int digits = 0;
    for (size_t i = 0; i < order.size(); ++i)
    {
        for (size_t k = i + 1; k < order.size(); ++k)
        {
            ++pairs;
            if (order[i][k] == -order[k][i])
            {
                continue;
            }
            const wstring& a = names()[i];
            const wstring& b = names()[k];
            if (order[i][k] + order[k][i] == 1)
            {
                // The shorter one ends before any difference, so it equals the longer, which is greater than it.
                ++beginnings;
                EXPECT_TRUE(order[i][k] == 0 ? a.size() < b.size() : b.size() < a.size())
                    << a.c_str() << ' ' << b.c_str();
            }
            else
            {
                ++digits;
                EXPECT_EQ(-1, order[i][k]);
                EXPECT_TRUE(haveADigitAgainstALowUnit(a, b)) << a.c_str() << ' ' << b.c_str();
            }
        }
    }
    std::printf("of %d pairs %d are not antisymmetric (%.1f %%): %d beginnings, %d digits against low units\n", pairs,
                beginnings + digits, 100.0 * (beginnings + digits) / pairs, beginnings, digits);
}
