// Mutated input for everything of the string that reads text. All memory is guarded. What comes out is compared with
// the C runtime, with Windows, or with the stated rules on a plain string.
#include "hostile/Mutation.h"
#include "qelString.h"
#include "support/StringRules.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace
{
using qelTest::Corpus;
using qelTest::GuardedHeap;
using qelTest::GuardedPlace;
using qelTest::mutated;
using qelTest::SeededRun;
using std::string;
using std::wstring;

const size_t kRoom = 4096;

wstring wideOf(unsigned codePage, const string& bytes)
{
    if (bytes.empty())
    {
        return wstring();
    }
    wstring wide(bytes.size(), L'\0');
    const auto length = static_cast<int>(bytes.size());
    wide.resize(static_cast<size_t>(MultiByteToWideChar(codePage, 0, bytes.data(), length, &wide[0], length)));
    return wide.c_str();
}

string narrowOf(const wstring& text)
{
    if (text.empty())
    {
        return string();
    }
    string bytes(text.size() * 4, '\0');
    bytes.resize(static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                                         &bytes[0], static_cast<int>(bytes.size()), "?", nullptr)));
    return bytes;
}

const Corpus<string>& bytes()
{
    static const Corpus<string> corpus = {{"HEA 200", "Tr\xE4ger \xD8 60", "\x81\x40\x82\xA0\x83\x5C",
                                           "plain text with several words", "\xEF\xBB\xBF mark", string(300, '\xE4')},
                                          {"\xFF\xFE", "\xC3\xA4", "\x80", "\r\n", string(70, 'x')}};
    return corpus;
}

const Corpus<wstring>& texts()
{
    static const Corpus<wstring> corpus = {{L"HEA 200", L"Tr\x00E4ger \x00D8 60", L"\x4E16\x754C",
                                            L"aaaaaaaaaaaaaaaaaaab", L"abcabcabcabcabd", L" \t\n words \r\n",
                                            L"\xD83D\xDE00 pair", wstring(200, L'a')},
                                           {L"a", L"ab", L"aaa", L"\t\t", L"\x0130", L"\xD83D", wstring(17, L'b')}};
    return corpus;
}

const Corpus<wstring>& numbers()
{
    static const Corpus<wstring> corpus = {
        {L"0", L"-1", L"2147483647", L"-2147483648", L"4294967296", L"99999999999999999999", L"1.5e308", L"1e-400",
         L"  +7", L"0x10", L"1d5", L"INF", L"nan", L".5.5", L"1e", L"-"},
        {L"e", L"E+", L"-", L"+", L".", L"0", L"000000000000000000000", L"9999999", L"\x0663", L" "}};
    return corpus;
}

const Corpus<wstring>& partNames()
{
    static const Corpus<wstring> corpus = {{L"item2", L"item10", L"a7", L"a007", L"P-1", L"P-12", L"P1-3", L"12",
                                            L"012", L"1.2.10", L"99999999999", L"B4294967297"},
                                           {L"0", L"1", L"10", L"-", L".", L" ", L"a", L"99999999999", L"\xFF11"}};
    return corpus;
}

const Corpus<wstring>& paths()
{
    static const Corpus<wstring> corpus = {
        {L"C:\\Data\\model.mdb", L"\\\\server\\share\\file.tar.gz", L"relative/dir/name", L"c:name.ext",
         L"..\\..\\.hidden", wstring(258, L'd') + L"\\f.e", wstring(261, L'f'),
         L"C:\\" + wstring(255, L'x') + L"\\" + wstring(255, L'y') + L"." + wstring(254, L'z')},
        {L"\\", L"/", L":", L".", L"c:", L"..", wstring(255, L'n'), wstring(256, L'.')}};
    return corpus;
}

const Corpus<string>& escapes()
{
    static const Corpus<string> corpus = {
        {"plain", "\\M+182A0", "a\\M+5B0A1z", "\\M+4A1A1\\M+3B0A1", "\\M+1829F\\M+18340", "\\M+0FFFF", "_o/3abcd"},
        {"\\", "\\M", "\\M+", "\\M+1", "\\M+182", "\\M+9ZZZZ", "\\M+1+1-1", "\\M+1 1 1", "\\M+100", "\\M+10x0x",
         "\xFF\xFF\xFF"}};
    return corpus;
}

qelString stringOf(GuardedPlace<wchar_t>& place, const wstring& text)
{
    return place.put(text);
}

class HostileStrings : public testing::Test
{
protected:
    GuardedHeap m_heap;
    GuardedPlace<wchar_t> m_wide{kRoom};
    GuardedPlace<char> m_narrow{kRoom};
    SeededRun m_run;
};
} // namespace

TEST_F(HostileStrings, NarrowTextBecomesWhatWindowsMakesOfIt)
{
    while (m_run.next())
    {
        const string text = mutated(m_run, bytes());
        const wstring expected = wideOf(CP_ACP, text);
        const qelString made = m_narrow.put(text);
        EXPECT_EQ(expected, made.getStringW());
        qelString assigned = L"before";
        assigned = m_narrow.put(text);
        EXPECT_EQ(expected, assigned.getStringW());
    }
}

TEST_F(HostileStrings, WideTextStaysAsItIsAndHasANarrowForm)
{
    while (m_run.next())
    {
        const wstring text = mutated(m_run, texts());
        const qelString made = stringOf(m_wide, text);
        ASSERT_EQ(text, made.getStringW());
        ASSERT_EQ(static_cast<int>(text.size()), made.length());
        EXPECT_EQ(narrowOf(text), made.getStringA());
        const wstring& other = mutated(m_run, texts());
        EXPECT_EQ(text + other, wstring((made + stringOf(m_wide, other)).getStringW()));
    }
}

TEST_F(HostileStrings, EscapesAreDecodedByTheStatedRules)
{
    while (m_run.next())
    {
        const string text = mutated(m_run, escapes());
        const qelTest::MifText expected = qelTest::withoutMifEscapes(text);
        qelString decoded;
        decoded.setFromMIFString(m_narrow.put(text));
        EXPECT_EQ(wideOf(expected.codePage, expected.bytes), decoded.getStringW()) << testing::PrintToString(text);
    }
}

TEST_F(HostileStrings, NumbersAreReadAsTheRuntimeReadsThem)
{
    while (m_run.next())
    {
        const wstring text = mutated(m_run, numbers());
        const qelString number = stringOf(m_wide, text);
        EXPECT_EQ(_wtoi(text.c_str()), number.toInteger());
        EXPECT_EQ(_wtol(text.c_str()), number.toLong());
        EXPECT_EQ(_wtoi(text.c_str()), number.toIntPtr());
        const double expected = _wtof(text.c_str());
        const double actual = number.toDouble();
        EXPECT_TRUE(expected == actual || (std::isnan(expected) && std::isnan(actual))) << text.c_str();
    }
}

TEST_F(HostileStrings, SearchAndReplaceAgreeWithAPlainString)
{
    while (m_run.next())
    {
        const wstring text = mutated(m_run, texts());
        const wstring what = m_run.oneIn(2) ? text.substr(text.size() / 2, static_cast<size_t>(m_run.below(5)))
                                            : mutated(m_run, texts());
        const int start = m_run.between(-1, static_cast<int>(text.size()) + 1);
        const bool isInside = start >= 0 && start < static_cast<int>(text.size());
        const size_t at = isInside ? text.find(what, static_cast<size_t>(start)) : wstring::npos;
        qelString string = stringOf(m_wide, text);
        EXPECT_EQ(at == wstring::npos ? -1 : static_cast<int>(at), string.find(stringOf(m_wide, what), start));

        wstring replaced;
        int count = 0;
        size_t from = 0;
        for (size_t next = text.find(what); !what.empty() && next != wstring::npos; next = text.find(what, from))
        {
            replaced += text.substr(from, next - from) + L"<>";
            from = next + what.size();
            ++count;
        }
        replaced += text.substr(from);
        EXPECT_EQ(count, string.replace(stringOf(m_wide, what), L"<>"));
        EXPECT_EQ(replaced, string.getStringW());
    }
}

TEST_F(HostileStrings, CutsStayInsideTheText)
{
    static const int positions[] = {INT_MIN, -2, -1, 0, 1, 2, 7, 100, INT_MAX - 1, INT_MAX};
    while (m_run.next())
    {
        const wstring text = mutated(m_run, texts());
        const wstring set = mutated(m_run, texts());
        qelString string = stringOf(m_wide, text);
        const int start = m_run.pick(positions);
        const int count = m_run.pick(positions);
        const auto length = static_cast<int>(text.size());
        const auto clamped = static_cast<size_t>(std::max(0, std::min(count, length)));
        EXPECT_EQ(text.substr(0, clamped), string.left(count).getStringW());
        EXPECT_EQ(text.substr(text.size() - clamped), string.right(count).getStringW());
        const bool isInside = start >= 0 && start < length;
        const wstring middle =
            !isInside ? wstring()
                      : text.substr(static_cast<size_t>(start), count < 0 ? wstring::npos : static_cast<size_t>(count));
        EXPECT_EQ(middle, string.mid(start, count).getStringW());
        EXPECT_EQ(text.substr(static_cast<size_t>(std::max(0, std::min(start, length)))),
                  (string >> start).getStringW());

        qelString right = string;
        string.TrimLeft(stringOf(m_wide, set));
        right.TrimRight(stringOf(m_wide, set));
        const size_t first = text.find_first_not_of(set);
        EXPECT_EQ(first == wstring::npos ? wstring() : text.substr(first), string.getStringW());
        EXPECT_EQ(text.substr(0, text.find_last_not_of(set) + 1), right.getStringW());
        right.replace(start, count, L"new"); // its result is tested elsewhere
    }
}

TEST_F(HostileStrings, TokensAgreeWithTheStatedRules)
{
    static const Corpus<wstring> corpus = {
        {L"a 'b c' d", L",a,,b,", L"''''", L"\"x'y\"z", L"a;b;c", L"'open", wstring(60, L',')},
        {L"'", L"\"", L",", L";", L" ", L"''", L"',"}};
    static const wchar_t* const sets[] = {L"", L" ", L",", L",; ", L"'", L"ab", L"\xD800"};
    static const wchar_t* const quotes[] = {L"", L"'", L"'\"", L",", L"a"};
    while (m_run.next())
    {
        const wstring text = mutated(m_run, corpus);
        const wstring separators = m_run.pick(sets);
        const wstring quote = m_run.pick(quotes);
        qelString string = stringOf(m_wide, text);
        qelArray<qelString> tokens;
        qelString::getTokens(string, tokens, separators.c_str(), quote.c_str());
        const std::vector<wstring> expected = qelTest::tokensOf(text, separators, quote);
        ASSERT_EQ(expected.size(), static_cast<size_t>(tokens.length()));
        for (size_t i = 0; i < expected.size(); ++i)
        {
            EXPECT_EQ(expected[i], tokens[static_cast<long>(i)].getStringW());
        }
    }
}

TEST_F(HostileStrings, NaturalOrderAgreesWithTheStatedSteps)
{
    int asymmetric = 0;
    while (m_run.next())
    {
        const wstring a = mutated(m_run, partNames());
        const wstring b = m_run.oneIn(2) ? mutated(m_run, partNames()) : a + (m_run.oneIn(2) ? L"1" : L"x");
        const qelString left = stringOf(m_wide, a);
        const qelString right = stringOf(m_wide, b);
        EXPECT_EQ(qelTest::naturalOrder(a, b), qelString::compareWithNumbers(left, right));
        EXPECT_EQ(qelTest::naturalOrder(b, a), qelString::compareWithNumbers(right, left));
        asymmetric += qelTest::naturalOrder(a, b) != -qelTest::naturalOrder(b, a) ? 1 : 0;
    }
    std::printf("%.1f %% of the pairs are not antisymmetric\n", 100.0 * asymmetric / m_run.count());
}

TEST_F(HostileStrings, PathsAreSplitAsTheRuntimeSplitsThem)
{
    while (m_run.next())
    {
        const wstring path = mutated(m_run, paths());
        wchar_t parts[4][260] = {};
        if (_wsplitpath_s(path.c_str(), parts[0], 260, parts[1], 260, parts[2], 260, parts[3], 260) != 0)
        {
            for (wchar_t* const part : parts)
            {
                part[0] = 0;
            }
        }
        qelString made[4];
        stringOf(m_wide, path).SplitPath(made[0], made[1], made[2], made[3]);
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ(wstring(parts[i]), made[i].getStringW())
                << "part " << i << " of " << testing::PrintToString(path);
        }
        wchar_t whole[260] = {};
        const bool fits = _wmakepath_s(whole, 260, parts[0], parts[1], parts[2], parts[3]) == 0;
        qelString joined;
        joined.MakePath(made[0], made[1], made[2], made[3]);
        EXPECT_EQ(fits ? whole : L"", wstring(joined.getStringW()));
    }
}

TEST_F(HostileStrings, FormatsOfAnyWidthAreWrittenOrRefused)
{
    static const wchar_t* const flags[] = {L"", L"-", L"0", L"+", L" ", L"#", L"-+ #0"};
    static const wchar_t* const widths[] = {L"", L"1", L"7", L"40", L"300", L"70000", L"524288", L"600000"};
    // Greater ones of whole numbers overrun a buffer of Wine's C runtime.
    static const wchar_t* const precisions[] = {L"", L".", L".0", L".3", L".20"};
    while (m_run.next())
    {
        // Wide results take long; most are short.
        const int highest = m_run.oneIn(50) ? 8 : 5;
        const auto conversion = [&](wchar_t kind) {
            return wstring(L"%") + m_run.pick(flags) + widths[m_run.below(highest)] + m_run.pick(precisions) + kind;
        };
        const wstring what = mutated(m_run, texts());
        const wstring format = L"<" + conversion(L'd') + L"|" + conversion(L's') + L"|" + conversion(L'X') + L">%%";
        const int number = m_run.between(INT_MIN / 2, INT_MAX / 2);
        std::vector<wchar_t> buffer(600);
        const int length = _scwprintf(format.c_str(), number, what.c_str(), number);
        qelString made = L"before";
        made.format(m_wide.put(format), number, what.c_str(), number);
        if (length >= 0 && length < 524288)
        {
            buffer.resize(static_cast<size_t>(length) + 1);
            _snwprintf(buffer.data(), buffer.size(), format.c_str(), number, what.c_str(), number);
            EXPECT_EQ(wstring(buffer.data()), made.getStringW()) << format.c_str();
        }
        else
        {
            EXPECT_EQ(1, made.isEmpty()) << length;
        }
    }
}

TEST_F(HostileStrings, TimesAreWrittenWithinTheLimit)
{
    static const Corpus<string> corpus = {{"%Y-%m-%d", "%H:%M:%S", "%A %B %c", "%j %U %w %x %X %y %Z", "%%", "%#c"},
                                          {"%", "%Y", "%#", "%E", "%Q", "%1", "\xE4"}};
    while (m_run.next())
    {
        const string format = mutated(m_run, corpus);
        const auto limit = static_cast<size_t>(m_run.below(80));
        tm when = {};
        when.tm_year = 120;
        when.tm_mday = m_run.between(1, 28);
        when.tm_hour = m_run.below(24);
        std::vector<char> buffer(limit + 1);
        const size_t length = strftime(buffer.data(), limit, format.c_str(), &when);
        qelString made = L"before";
        made.formatTime(limit, m_narrow.put(format), &when);
        EXPECT_EQ(wideOf(CP_ACP, length == 0 ? string() : string(buffer.data())), made.getStringW());
    }
}

TEST_F(HostileStrings, ComparisonsAgreeWithTheRuntime)
{
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    while (m_run.next())
    {
        const wstring a = mutated(m_run, texts());
        const wstring b = m_run.oneIn(3) ? mutated(m_run, texts()) : a + L"x";
        const int n = m_run.below(20);
        const qelString left = stringOf(m_wide, a);
        const qelString right = stringOf(m_wide, b);
        EXPECT_EQ(sign(wcscmp(a.c_str(), b.c_str())), qelString::compare(left, right));
        EXPECT_EQ(sign(wcsncmp(a.c_str(), b.c_str(), static_cast<size_t>(n))),
                  sign(qelString::compare(left, right, n)));
        EXPECT_EQ(sign(_wcsicmp(a.c_str(), b.c_str())), sign(qelString::compareNoCase(left, right)));
        EXPECT_EQ(sign(_wcsnicmp(a.c_str(), b.c_str(), static_cast<size_t>(n))),
                  sign(qelString::compareNoCase(left, right, n)));
    }
}
