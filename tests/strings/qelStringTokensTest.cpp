#include "strings/TextSupport.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qelTest;

namespace
{
using Texts = std::vector<std::wstring>;

Texts contents(const qelArray<qelString>& tokens)
{
    Texts result;
    for (long i = 0; i < tokens.length(); ++i)
    {
        result.push_back(plain(tokens[i]));
    }
    return result;
}

Texts split(const wchar_t* text, const wchar_t* separators)
{
    qelString source(text);
    qelArray<qelString> tokens;
    qelString::getTokens(source, tokens, separators);
    EXPECT_EQ(plain(source), text);
    return contents(tokens);
}

Texts split(const wchar_t* text, const wchar_t* separators, const wchar_t* quotes)
{
    qelString source(text);
    qelArray<qelString> tokens;
    qelString::getTokens(source, tokens, separators, quotes);
    EXPECT_EQ(plain(source), text);
    return contents(tokens);
}

TEST(qelStringTokens, LieBetweenSeparators)
{
    EXPECT_EQ(split(L"a,b,c", L","), (Texts{L"a", L"b", L"c"}));
    EXPECT_EQ(split(L"one; two,three", L",; "), (Texts{L"one", L"two", L"three"}));
}

TEST(qelStringTokens, AreNeverEmpty)
{
    EXPECT_EQ(split(L",a,,b,", L","), (Texts{L"a", L"b"}));
    EXPECT_EQ(split(L",,,", L","), Texts());
    EXPECT_EQ(split(L"", L","), Texts());
    EXPECT_EQ(split(L"", L""), Texts());
}

TEST(qelStringTokens, AreTheWholeTextWithoutSeparators)
{
    EXPECT_EQ(split(L"a b", L""), (Texts{L"a b"}));
    EXPECT_EQ(split(L"a b", L","), (Texts{L"a b"}));
}

TEST(qelStringTokens, AreNewTexts)
{
    qelString text(L"abc");
    qelArray<qelString> tokens;
    qelString::getTokens(text, tokens, L",");
    ASSERT_EQ(tokens.length(), 1);
    EXPECT_FALSE(isShared(tokens[0], text));
}

TEST(qelStringTokens, ReplaceTheContentsAndKeepTheStorage)
{
    qelString text(L"a,b");
    qelArray<qelString> tokens(20, 5);
    tokens.append(L"old");
    tokens.append(L"older");
    tokens.append(L"oldest");
    const qelString* storage = &tokens[0];
    qelString::getTokens(text, tokens, L",");
    EXPECT_EQ(contents(tokens), (Texts{L"a", L"b"}));
    EXPECT_EQ(tokens.physicalLength(), 20);
    EXPECT_EQ(&tokens[0], storage);

    qelString none;
    qelString::getTokens(none, tokens, L",");
    EXPECT_EQ(tokens.length(), 0);
    EXPECT_EQ(tokens.physicalLength(), 20);
    qelString::getTokens(none, tokens, L",", L"'");
    EXPECT_EQ(tokens.length(), 0);
}

TEST(qelStringTokens, GrowTheStorageAsAppendingDoes)
{
    qelArray<qelString> tokens(0, 5);
    qelArray<qelString> appended(0, 5);
    std::wstring text;
    for (int count = 1; count <= 23; ++count)
    {
        text += L"x ";
        appended.append(L"x");
        qelString source(text.c_str());
        qelString::getTokens(source, tokens, L" ");
        ASSERT_EQ(tokens.length(), count);
        ASSERT_EQ(tokens.physicalLength(), appended.physicalLength()) << count;
    }
}

TEST(qelStringTokens, RenewTheNarrowFormOfReusedElements)
{
    qelArray<qelString> tokens;
    tokens.append(L"old");
    EXPECT_STREQ(tokens[0].getStringA(), "old");
    qelString text(L"new");
    qelString::getTokens(text, tokens, L",");
    EXPECT_STREQ(tokens[0].getStringA(), "new");
}

TEST(qelStringTokens, AreThoseThatWereMadeWhenMemoryRunsOut)
{
    const Texts all = {L"a", L"b", L"c"};
    const qelString separators(L",");
    qelString text(L"a,b,c");
    qelArray<qelString> tokens;
    tokens.setAt(5, L"old");
    ptrdiff_t made = 0;
    const int failures = failEveryAllocation([&] { qelString::getTokens(text, tokens, separators); },
                                             [&] {
                                                 EXPECT_EQ(contents(tokens), Texts(all.begin(), all.begin() + made));
                                                 ++made;
                                             });
    EXPECT_EQ(failures, 3);
    EXPECT_EQ(contents(tokens), all);
}

TEST(qelStringTokens, MayComeFromElementsOfTheArray)
{
    qelArray<qelString> tokens;
    tokens.append(L"a,b;c,d,e,f,g,h,i,j");
    tokens.append(L",;");
    tokens.append(L"'");
    qelString::getTokens(tokens[0], tokens, tokens[1]);
    EXPECT_EQ(contents(tokens), (Texts{L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i", L"j"}));

    tokens.setLogicalLength(0);
    tokens.append(L"a 'b c' d");
    tokens.append(L" ");
    tokens.append(L"'");
    qelString::getTokens(tokens[0], tokens, tokens[1], tokens[2]);
    EXPECT_EQ(contents(tokens), (Texts{L"a", L"'b c'", L"d"}));
}

TEST(qelStringTokens, MayUseTheTextAsItsOwnSeparators)
{
    qelString text(L"abc");
    qelArray<qelString> tokens;
    qelString::getTokens(text, tokens, text);
    EXPECT_EQ(tokens.length(), 0);
}

TEST(qelStringTokens, CoverTheLongestText)
{
    qelString text = repeated(kLongestText, L'a');
    qelArray<qelString> tokens;
    qelString::getTokens(text, tokens, L",");
    ASSERT_EQ(tokens.length(), 1);
    EXPECT_EQ(tokens[0].length(), kLongestText);

    std::wstring pairs;
    for (int i = 0; i < kLongestText / 2; ++i)
    {
        pairs += L"x,";
    }
    text = pairs.c_str();
    qelString::getTokens(text, tokens, L",", L"'");
    ASSERT_EQ(tokens.length(), kLongestText / 2);
    EXPECT_EQ(plain(tokens.last()), L"x");
}

TEST(qelStringTokens, TakeAnyNumberOfSeparatorsAndQuotes)
{
    for (int size = 1; size < 40; ++size)
    {
        const std::wstring separators = manyUnits(0x100, size);
        const std::wstring quotes = manyUnits(0x200, size);
        const std::wstring text = L"a" + separators + L"b" + quotes.back() + separators + quotes.back() + L"c";
        const Texts expected = {L"a", text.substr(1 + separators.size())};
        ASSERT_EQ(split(text.c_str(), separators.c_str(), quotes.c_str()), expected) << size;
    }
}

TEST(qelStringTokens, StayQuickWithManySeparators)
{
    const qelString separators(manyUnits(1, 60000).c_str());
    std::wstring pairs;
    for (int i = 0; i < kLongestText / 2; ++i)
    {
        pairs += L"\xfffd\xea60";
    }
    qelString text(pairs.c_str());
    qelArray<qelString> tokens;
    const Stopwatch watch;
    qelString::getTokens(text, tokens, separators);
    qelString::getTokens(text, tokens, separators, separators.left(59999));
    EXPECT_EQ(tokens.length(), kLongestText / 2);
    EXPECT_LT(watch.seconds(), 2);
}

TEST(qelStringQuotedTokens, KeepSeparatorsInsideQuotes)
{
    EXPECT_EQ(split(L"a 'b c' d", L" ", L"'"), (Texts{L"a", L"'b c'", L"d"}));
}

TEST(qelStringQuotedTokens, ArePlainOnesWithoutQuotes)
{
    EXPECT_EQ(split(L"a 'b c' d", L" ", L""), (Texts{L"a", L"'b", L"c'", L"d"}));
    EXPECT_EQ(split(L",a,,b,", L",", L""), (Texts{L"a", L"b"}));
}

TEST(qelStringQuotedTokens, AreNeverEmpty)
{
    EXPECT_EQ(split(L",a,,b,", L",", L"'"), (Texts{L"a", L"b"}));
    EXPECT_EQ(split(L"", L",", L"'"), Texts());
    EXPECT_EQ(split(L",,", L",", L"'"), Texts());
}

TEST(qelStringQuotedTokens, KeepDoubledQuotesDoubled)
{
    EXPECT_EQ(split(L"'it''s here' x", L" ", L"'"), (Texts{L"'it''s here'", L"x"}));
    EXPECT_EQ(split(L"'' x", L" ", L"'"), (Texts{L"''", L"x"}));
    EXPECT_EQ(split(L"'''a b' c", L" ", L"'"), (Texts{L"'''a b'", L"c"}));
    EXPECT_EQ(split(L"'' '' x", L" ", L"'"), (Texts{L"''", L"''", L"x"}));
}

TEST(qelStringQuotedTokens, RunToTheEndWhenAQuoteStaysOpen)
{
    EXPECT_EQ(split(L"a 'b c", L" ", L"'"), (Texts{L"a", L"'b c"}));
    EXPECT_EQ(split(L"a '", L" ", L"'"), (Texts{L"a", L"'"}));
    EXPECT_EQ(split(L"'a'' b", L" ", L"'"), (Texts{L"'a'' b"}));
}

TEST(qelStringQuotedTokens, MayHaveTheirQuotesInTheMiddle)
{
    EXPECT_EQ(split(L"ab'c d'e f", L" ", L"'"), (Texts{L"ab'c d'e", L"f"}));
}

TEST(qelStringQuotedTokens, TreatOtherQuotesInsideAsText)
{
    EXPECT_EQ(split(L"'a \" b' \"c ' d\"", L" ", L"'\""), (Texts{L"'a \" b'", L"\"c ' d\""}));
}

TEST(qelStringQuotedTokens, PreferAQuoteToASeparator)
{
    EXPECT_EQ(split(L"a,'b,c',d", L",'", L"'"), (Texts{L"a", L"'b,c'", L"d"}));
}

TEST(qelStringQuotedTokens, MayGoWithoutSeparators)
{
    EXPECT_EQ(split(L"a 'b' c", L"", L"'"), (Texts{L"a 'b' c"}));
}

Texts quotedByTheBook(const std::wstring& text, const std::wstring& separators, const std::wstring& quotes)
{
    Texts tokens;
    std::wstring current;
    bool inQuote = false;
    wchar_t quote = L' ';
    for (size_t i = 0; i < text.size(); ++i)
    {
        const wchar_t c = text[i];
        if (!inQuote)
        {
            if (quotes.find(c) != std::wstring::npos)
            {
                current += c;
                inQuote = true;
                quote = c;
            }
            else if (separators.find(c) != std::wstring::npos)
            {
                if (!current.empty())
                {
                    tokens.push_back(current);
                    current.clear();
                }
            }
            else
            {
                current += c;
            }
        }
        else
        {
            current += c;
            if (c == quote)
            {
                if (i + 1 < text.size() && text[i + 1] == quote)
                {
                    current += text[++i];
                }
                else
                {
                    inQuote = false;
                    quote = L' ';
                }
            }
        }
    }
    if (!current.empty())
    {
        tokens.push_back(current);
    }
    return tokens;
}

Texts plainByTheBook(std::wstring text, const std::wstring& separators)
{
    Texts tokens;
    wchar_t* rest = nullptr;
    for (wchar_t* token = wcstok_s(&text[0], separators.c_str(), &rest); token != nullptr;
         token = wcstok_s(nullptr, separators.c_str(), &rest))
    {
        tokens.push_back(token);
    }
    return tokens;
}

TEST(qelStringQuotedTokens, AgreeWithTheStatedStepsOnRandomText)
{
    RandomText random(1006);
    for (int round = 0; round < 20000; ++round)
    {
        const std::wstring text = random.text<wchar_t>(L"a,;'\"", 12);
        const std::wstring separators = random.text<wchar_t>(L",;'", 2);
        const std::wstring quotes = random.text<wchar_t>(L"'\"", 2);
        const Texts expected =
            quotes.empty() ? plainByTheBook(text, separators) : quotedByTheBook(text, separators, quotes);
        ASSERT_EQ(split(text.c_str(), separators.c_str(), quotes.c_str()), expected) << text;
        ASSERT_EQ(split(text.c_str(), separators.c_str()), plainByTheBook(text, separators)) << text;
    }
}
} // namespace
