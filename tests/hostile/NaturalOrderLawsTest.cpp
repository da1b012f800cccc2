// Which laws of an order the natural order keeps, over all pairs of short names and all triples of shorter ones.
#include "qelString.h"
#include "support/StringRules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using std::wstring;

using Names = std::vector<wstring>;

/// A letter, digits, and units before and after the digits.
const wchar_t kAlphabet[] = L"a019-~";

/// All texts of up to `longest` units.
Names namesOf(const wstring& alphabet, size_t longest)
{
    Names texts = {L""};
    for (size_t i = 0; texts[i].size() < longest; ++i)
    {
        for (const wchar_t unit : alphabet)
        {
            texts.push_back(texts[i] + unit);
        }
    }
    return texts;
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

using Results = std::vector<std::vector<int>>;

/// compareWithNumbers() of each name with each.
Results resultsOf(const Names& names)
{
    std::vector<qelString> strings;
    for (const wstring& name : names)
    {
        strings.emplace_back(name.c_str());
    }
    Results all(strings.size(), std::vector<int>(strings.size()));
    for (size_t i = 0; i < strings.size(); ++i)
    {
        for (size_t k = 0; k < strings.size(); ++k)
        {
            all[i][k] = qelString::compareWithNumbers(strings[i], strings[k]);
        }
    }
    return all;
}

/// How often a name is less than a second one and that less than a third one, but the first not less than the third.
struct Intransitive
{
    int triples = 0;
    int withADigitAgainstALowUnit = 0;
};

Intransitive intransitiveOf(const Names& names)
{
    const Results order = resultsOf(names);
    Intransitive found;
    for (size_t i = 0; i < names.size(); ++i)
    {
        for (size_t k = 0; k < names.size(); ++k)
        {
            for (size_t m = 0; m < names.size() && order[i][k] < 0; ++m)
            {
                if (order[k][m] < 0 && order[i][m] >= 0)
                {
                    ++found.triples;
                    found.withADigitAgainstALowUnit += haveADigitAgainstALowUnit(names[i], names[k]) ||
                                                               haveADigitAgainstALowUnit(names[k], names[m]) ||
                                                               haveADigitAgainstALowUnit(names[i], names[m])
                                                           ? 1
                                                           : 0;
                }
            }
        }
    }
    return found;
}
} // namespace

TEST(NaturalOrderLaws, EveryNameEqualsItself)
{
    for (const wstring& name : namesOf(kAlphabet, 3))
    {
        EXPECT_EQ(0, qelString::compareWithNumbers(name.c_str(), name.c_str()));
    }
}

TEST(NaturalOrderLaws, FollowTheStatedStepsForAllPairs)
{
    const Names names = namesOf(kAlphabet, 3);
    const Results order = resultsOf(names);
    for (size_t i = 0; i < names.size(); ++i)
    {
        for (size_t k = 0; k < names.size(); ++k)
        {
            EXPECT_EQ(qelTest::naturalOrder(names[i], names[k]), order[i][k])
                << names[i].c_str() << ' ' << names[k].c_str();
        }
    }
}

TEST(NaturalOrderLaws, OnlyBeginningsAndDigitsAgainstLowUnitsAreNotAntisymmetric)
{
    const Names names = namesOf(kAlphabet, 3);
    const Results order = resultsOf(names);
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
            const wstring& a = names[i];
            const wstring& b = names[k];
            if (order[i][k] + order[k][i] == 1)
            {
                // The shorter one ends before any difference, so it equals the longer, which is greater than it.
                ++beginnings;
                EXPECT_TRUE(order[i][k] == 0 ? a.size() < b.size() : b.size() < a.size())
                    << a.c_str() << ' ' << b.c_str();
            }
            else
            {
                // A digit of the first name is less than whatever is none, and a low unit of it less than any digit.
                ++digits;
                EXPECT_EQ(-1, order[i][k]);
                EXPECT_TRUE(haveADigitAgainstALowUnit(a, b)) << a.c_str() << ' ' << b.c_str();
            }
        }
    }
    EXPECT_EQ(33411, pairs);
    EXPECT_EQ(360, beginnings);
    EXPECT_EQ(6159, digits);
}

TEST(NaturalOrderLaws, OnlyTriplesWithADigitAgainstALowUnitAreNotTransitive)
{
    // Such as 1 < - < 1: a digit and a low unit are less than each other. The empty name and 42 others, 79,507 triples.
    const Intransitive found = intransitiveOf(namesOf(kAlphabet, 2));
    EXPECT_EQ(2364, found.triples);
    EXPECT_EQ(2364, found.withADigitAgainstALowUnit);
}

TEST(NaturalOrderLaws, TriplesWithoutALowUnitAreTransitive)
{
    EXPECT_EQ(0, intransitiveOf(namesOf(L"a01~", 3)).triples);
}
