// Regular expressions beside the bare engine, which compiles the pattern for every match as well.

#include "Families.h"
#include "Plain.h"

#include "qelRegExWrapper.h"

#include <boost/xpressive/xpressive_dynamic.hpp>

using namespace qelBench;
using std::wstring;

namespace
{
using Groups = std::vector<wstring>;

Groups matchedByEngine(const wstring& pattern, const wstring& text)
{
    const auto regex = boost::xpressive::wcregex::compile(pattern.c_str());
    boost::xpressive::wcmatch match;
    Groups groups;
    if (boost::xpressive::regex_match(text.c_str(), match, regex))
    {
        for (const auto& group : match)
        {
            if (group.matched && group.first != group.second)
            {
                groups.emplace_back(group.first, group.second);
            }
        }
    }
    return groups;
}

struct Match
{
    Match(const wstring& expression, const wstring& matched)
        : theirPattern(expression)
        , theirText(matched)
        , pattern(expression.c_str())
        , text(matched.c_str())
    {
    }

    wstring theirPattern;
    wstring theirText;
    qelString pattern;
    qelString text;
};

qelArray<qelString> matchedByUs(const qelString& pattern, const qelString& text)
{
    qelRegExWrapper expression;
    expression.setRegularExpression(pattern);
    qelArray<qelString> groups;
    expression.match(text, groups);
    return groups;
}

void addMatch(Table& table, const char* name, const std::string& size, double bar, const wstring& pattern,
              const wstring& text)
{
    table.add(Row{name, size, "raw engine", bar, "Every step of the engine is counted, and its stack is watched."},
              [pattern, text] {
                  const auto d = std::make_shared<const Match>(pattern, text);
                  return sides([d] { return matchedByUs(d->pattern, d->text); },
                               [d] { return matchedByEngine(d->theirPattern, d->theirText); });
              });
}

/// Patterns of profiles and part numbers with texts, some of which do not match.
std::vector<Match> everydayMatches()
{
    const wchar_t* const kPatterns[] = {L"(HE[ABM]) ?([0-9]+)", L"([A-Z]+)([0-9]+)-([A-Z0-9]+)",
                                        L"L ?([0-9]+)x([0-9]+)x([0-9.]+)", L"(P|M|A)[0-9]{1,6}(-[A-Z]{1,2})?"};
    const wchar_t* const kTexts[] = {L"HEA 200",  L"HEB1000",       L"IPE300-S235", L"L 80x80x8", L"L60x40x5.5",
                                     L"P1204-AB", L"M17-HEA-200-X", L"A999999",     L"UPN 140",   L"RO 60.3x4"};
    std::vector<Match> matches;
    for (const wchar_t* pattern : kPatterns)
    {
        for (const wchar_t* text : kTexts)
        {
            matches.emplace_back(pattern, text);
        }
    }
    return matches;
}

void addEverydayMatches(Table& table)
{
    table.add(Row{"match names", "40 pairs of pattern and text", "raw engine", 1.3,
                  "Every step of the engine is counted, and its stack is watched."},
              [] {
                  const auto d = std::make_shared<const std::vector<Match>>(everydayMatches());
                  const auto ours = [d] {
                      std::vector<qelArray<qelString>> results;
                      for (const Match& match : *d)
                      {
                          results.push_back(matchedByUs(match.pattern, match.text));
                      }
                      return results;
                  };
                  const auto theirs = [d] {
                      std::vector<Groups> results;
                      for (const Match& match : *d)
                      {
                          results.push_back(matchedByEngine(match.theirPattern, match.theirText));
                      }
                      return results;
                  };
                  const auto same = [ours, theirs] {
                      std::vector<Groups> results;
                      for (const auto& groups : ours())
                      {
                          results.push_back(plain(groups));
                      }
                      return results == theirs();
                  };
                  return Sides{repeated(ours), repeated(theirs), same};
              });
}
} // namespace

void qelBench::addPatterns(Table& table)
{
    table.family("Regular expressions");
    addEverydayMatches(table);
    addMatch(table, "match one long text", "20 k units", 1.5, L"[A-Z0-9x.; ]+#", sections(20000) + L"#");
    addMatch(table, "match a repeated alternation", "2 k units", 1.3, L"(x|y)*", wstring(2000, L'x'));
    table.add(Growth{"match one long text", 1.15}, [](long n) {
        const qelString text((sections(static_cast<size_t>(n)) + L"#").c_str());
        return repeated([text, pattern = qelString(L"[A-Z0-9x.; ]+#")] { return matchedByUs(pattern, text); });
    });
    const char* const kStack =
        "The engine calls itself for each unit: 480 bytes of stack a unit, which from 8 k units on "
        "are fresh pages, and later more than the cache holds. By itself, with 352 bytes a unit "
        "and on a stack used before, the engine has 1.2 to 1.3.";
    table.add(Growth{"match a repeated alternation", 1.15, kStack}, [](long n) {
        const qelString text(wstring(static_cast<size_t>(n), L'x').c_str());
        return repeated([text, pattern = qelString(L"(x|y)*")] { return matchedByUs(pattern, text); });
    });
}
