// Finding, replacing, comparing and natural order.

#include "Families.h"
#include "Plain.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <cwchar>
#include <functional>
#include <string_view>

using namespace qelBench;
using std::wstring;

namespace
{
/// A text, and what is looked for in it.
struct Search
{
    Search(const wstring& searched, const wstring& wanted)
        : theirText(searched)
        , theirWhat(wanted)
        , text(searched.c_str())
        , what(wanted.c_str())
    {
    }

    wstring theirText;
    wstring theirWhat;
    qelString text;
    qelString what;
};

using Finder = int (*)(const Search& search);

int findInView(const Search& search)
{
    const size_t at = std::wstring_view(search.theirText).find(search.theirWhat);
    return at == std::wstring_view::npos ? -1 : static_cast<int>(at);
}

int findByHorspool(const Search& search)
{
    const std::boyer_moore_horspool_searcher searcher(search.theirWhat.begin(), search.theirWhat.end());
    const auto at = std::search(search.theirText.begin(), search.theirText.end(), searcher);
    return at == search.theirText.end() ? -1 : static_cast<int>(at - search.theirText.begin());
}

/// Begins with a unit that is in every name of the text, or with one that is nowhere in it; never occurs as a whole.
wstring needle(size_t length, bool common)
{
    const wstring rest = L"275 L 80x80x8 galvanised, mark 7";
    return ((common ? L"S" : L"#") + rest).substr(0, length);
}

void addFind(Table& table, long units, size_t length, bool common, bool hit)
{
    const std::string name = "find " + std::to_string(length) + ", " +
                             (common ? "common first unit, " : "rare first unit, ") + (hit ? "at the end" : "missing");
    const auto add = [&](const char* peer, double bar, Finder find) {
        Row row{name, sizeText(units, "units"), peer, bar};
        row.bytes = static_cast<double>(units) * sizeof(wchar_t);
        table.add(row, [=] {
            const wstring what = needle(length, common);
            const wstring text = sections(static_cast<size_t>(units) - length);
            const auto d = std::make_shared<const Search>(hit ? text + what : text + wstring(length, L' '), what);
            return sides([d] { return d->text.find(d->what); }, [d, find] { return find(*d); });
        });
    };
    add("std::wstring_view", 0.4, findInView);
    add("std::boyer_moore_horspool_searcher", 0.5, findByHorspool);
}

void addFinds(Table& table)
{
    for (const long units : {10000L, 500000L})
    {
        for (const bool hit : {true, false})
        {
            // A single unit that is common is not missing.
            addFind(table, units, 1, false, hit);
            addFind(table, units, 4, false, hit);
            addFind(table, units, 4, true, hit);
            addFind(table, units, 32, false, hit);
            addFind(table, units, 32, true, hit);
        }
    }
}

void addFindLast(Table& table, long units)
{
    for (const bool front : {true, false})
    {
        const std::string name = std::string("find_last_of, ") + (front ? "first unit" : "last unit");
        const auto make = [units, front] {
            wstring text = sections(static_cast<size_t>(units));
            text[front ? 0 : text.size() - 1] = L'#';
            return std::make_shared<const Search>(text, L"#");
        };
        table.add(Row{name, sizeText(units, "units"), "wcsrchr", 1.0}, [make] {
            const auto d = make();
            return sides([d] { return d->text.find_last_of(L'#'); },
                         [d] {
                             const wchar_t* text = d->theirText.c_str();
                             return static_cast<int>(wcsrchr(text, L'#') - text);
                         });
        });
        // From its stored length, rfind() would look at the last unit only.
        if (front)
        {
            table.add(Row{name, sizeText(units, "units"), "rfind", 1.0}, [make] {
                const auto d = make();
                return sides([d] { return d->text.find_last_of(L'#'); },
                             [d] { return static_cast<int>(d->theirText.rfind(L'#')); });
            });
        }
    }
}

void replaceByHand(wstring& text, const wstring& what, const wstring& with)
{
    wstring result;
    size_t at = 0;
    for (size_t hit = text.find(what); hit != wstring::npos; hit = text.find(what, at))
    {
        result.append(text, at, hit - at).append(with);
        at = hit + what.size();
    }
    text = result.append(text, at, wstring::npos);
}

void replaceByBoost(wstring& text, const wstring& what, const wstring& with)
{
    boost::replace_all(text, what, with);
}

using Replacer = void (*)(wstring& text, const wstring& what, const wstring& with);

/// `hits` times what is replaced, at equal distances.
wstring withHits(long units, long hits)
{
    wstring text = sections(static_cast<size_t>(units));
    std::replace(text.begin(), text.end(), L'2', L'4');
    for (long i = 0; i < hits; ++i)
    {
        text.replace(static_cast<size_t>(i) * static_cast<size_t>(units / hits), 3, L"210");
    }
    return text;
}

void addReplace(Table& table, long units, long hits, double bar)
{
    const auto add = [&](const char* peer, Replacer replace) {
        const std::string name = "replace all, " + sizeText(hits, "hits");
        table.add(Row{name, sizeText(units, "units"), peer, bar}, [units, hits, replace] {
            const auto d = std::make_shared<const Search>(withHits(units, hits), L"210");
            const auto ours = [d, with = qelString(L"1000")] {
                qelString text(d->text);
                text.replace(d->what, with);
                return text;
            };
            const auto theirs = [d, replace, with = wstring(L"1000")] {
                wstring text(d->theirText);
                replace(text, d->theirWhat, with);
                return text;
            };
            return sides(ours, theirs);
        });
    };
    add("hand loop", replaceByHand);
    add("boost::replace_all", replaceByBoost);
}

int signOf(int order)
{
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

void addCompare(Table& table, long units)
{
    const wstring text = sections(static_cast<size_t>(units));
    wstring other(text);
    other[2] = L'!';
    const auto add = [&](const char* name, const wstring& second, double bar) {
        table.add(Row{name, sizeText(units, "units"), "std::wstring::compare", bar}, [text, second] {
            const auto d = std::make_shared<const Search>(text, second);
            return sides([d] { return qelString::compare(d->text, d->what); },
                         [d] { return signOf(d->theirText.compare(d->theirWhat)); });
        });
    };
    add("compare, equal", text, 0.4);
    add("compare, early difference", other, 1.1);
    const auto addEquality = [&](const char* name, const wstring& second, double bar) {
        table.add(Row{name, sizeText(units, "units"), "operator== of std::wstring", bar,
                      "It is a call into the DLL. 1.05 was the best for an early difference."},
                  [text, second] {
                      const auto d = std::make_shared<const Search>(text, second);
                      return sides([d] { return d->text == d->what; }, [d] { return d->theirText == d->theirWhat; });
                  });
    };
    addEquality("operator==, equal", text, 0.4);
    addEquality("operator==, early difference", other, 1.1);
}

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

/// The number at `text`, which is moved behind it.
using TakeNumber = long (*)(const wchar_t*& text);

long takeByRuntime(const wchar_t*& text)
{
    wchar_t* end = nullptr;
    const long value = wcstol(text, &end, 10);
    text = end;
    return value;
}

long takeByHand(const wchar_t*& text)
{
    long value = 0;
    for (; isDigit(*text); ++text)
    {
        value = 10 * value + (*text - L'0');
    }
    return value;
}

/// Natural order as one writes it down: for names without leading zeros.
template <TakeNumber takeNumber> int compareByHand(const wstring& a, const wstring& b)
{
    const wchar_t* left = a.c_str();
    const wchar_t* right = b.c_str();
    while (*left != 0 && *right != 0)
    {
        if (isDigit(*left) && isDigit(*right))
        {
            const long x = takeNumber(left);
            const long y = takeNumber(right);
            if (x != y)
            {
                return x < y ? -1 : 1;
            }
        }
        else if (*left != *right)
        {
            return *left < *right ? -1 : 1;
        }
        else
        {
            ++left;
            ++right;
        }
    }
    return signOf((*left != 0) - (*right != 0));
}

/// Part numbers, no two of them the same, none the beginning of another.
std::vector<wstring> partNumbers(long count)
{
    Random random;
    std::vector<wstring> names;
    for (long i = 0; i < count; ++i)
    {
        const wchar_t* const kProfiles[] = {L"HEA", L"IPE", L"UPN", L"L"};
        names.push_back(kProfiles[random.next(4)] + std::to_wstring(100 + 20 * random.next(20)) + L"-P" +
                        std::to_wstring(i) + L"-S235");
    }
    for (size_t i = names.size(); i > 1; --i)
    {
        std::swap(names[i - 1], names[random.next(static_cast<unsigned>(i))]);
    }
    return names;
}

qelStringClassArray listOf(const std::vector<wstring>& names)
{
    qelStringClassArray list(static_cast<long>(names.size()));
    for (const wstring& name : names)
    {
        list.append(name.c_str());
    }
    return list;
}

int compareNaturally(const void* a, const void* b)
{
    return qelString::compareWithNumbers(*static_cast<const qelString*>(a), *static_cast<const qelString*>(b));
}

void sortByHandLoop(std::vector<wstring>& names)
{
    std::sort(names.begin(), names.end(),
              [](const wstring& a, const wstring& b) { return compareByHand<takeByRuntime>(a, b) < 0; });
}

void sortPlainly(std::vector<wstring>& names)
{
    std::sort(names.begin(), names.end());
}

template <TakeNumber takeNumber> void addNaturalPairs(Table& table, const char* peer, double bar)
{
    table.add(Row{"natural order", "1 k pairs of neighbours", peer, bar}, [] {
        struct Data
        {
            std::vector<wstring> theirs;
            qelStringClassArray ours;
        };
        const auto d = std::make_shared<Data>();
        d->theirs = partNumbers(1001);
        sortByHandLoop(d->theirs);
        // Neighbours as sorting compares them, one way round or the other.
        Random random;
        for (size_t i = 0; i < 1000; ++i)
        {
            std::swap(d->theirs[i], d->theirs[i + random.next(2)]);
        }
        d->ours = listOf(d->theirs);
        const auto ours = [d] {
            int sum = 0;
            for (long i = 0; i < 1000; ++i)
            {
                sum = sum * 3 + qelString::compareWithNumbers(d->ours[i], d->ours[i + 1]);
            }
            return sum;
        };
        const auto theirs = [d] {
            int sum = 0;
            for (size_t i = 0; i < 1000; ++i)
            {
                sum = sum * 3 + compareByHand<takeNumber>(d->theirs[i], d->theirs[i + 1]);
            }
            return sum;
        };
        return sides(ours, theirs);
    });
}

void addNaturalSort(Table& table, long count)
{
    const auto ours = [](qelStringClassArray& list) { list.sort(compareNaturally); };
    table.add(Row{"sort, natural order", sizeText(count, "part numbers"), "std::sort with the hand loop", 0.9}, [=] {
        const std::vector<wstring> names = partNumbers(count);
        const qelStringClassArray list = listOf(names);
        return preparedSides(copiesOf(list), ours, copiesOf(names), sortByHandLoop);
    });
    table.add(Row{"sort, natural order", sizeText(count, "part numbers"), "std::sort, ordinal order", 2.8,
                  "The strings lie apart in memory, and digits are compared as numbers. 2.76 was the best."},
              [=] {
                  const std::vector<wstring> names = partNumbers(count);
                  const qelStringClassArray list = listOf(names);
                  Sides result = preparedSides(copiesOf(list), ours, copiesOf(names), sortPlainly);
                  // The order is another one: the same names must be there.
                  result.same = [list, names, ours] {
                      qelStringClassArray sorted(list);
                      ours(sorted);
                      std::vector<wstring> mine = plain(sorted);
                      std::vector<wstring> all = names;
                      sortPlainly(mine);
                      sortPlainly(all);
                      return mine == all;
                  };
                  return result;
              });
}

template <class Operation> void addGrowth(Table& table, const char* name, const Operation& operation)
{
    table.add(Growth{name, 1.15}, [operation](long n) {
        const wstring units = sections(static_cast<size_t>(n));
        const qelString text(units.c_str());
        const qelString twin(units.c_str());
        return repeated([operation, text, twin] { return operation(text, twin); });
    });
}

void addGrowths(Table& table)
{
    addGrowth(table, "find, missing", [](const qelString& text, const qelString&) { return text.find(L"S275"); });
    addGrowth(table, "find_last_of, first unit",
              [](const qelString& text, const qelString&) { return text.find_last_of(L'#'); });
    addGrowth(table, "replace all strings", [](const qelString& text, const qelString&) {
        qelString changed(text);
        changed.replace(L"S235", L"S355J2");
        return changed;
    });
    addGrowth(table, "replace all units", [](const qelString& text, const qelString&) {
        qelString changed(text);
        changed.replace(L' ', L'_');
        return changed;
    });
    addGrowth(table, "remove all units", [](const qelString& text, const qelString&) {
        qelString changed(text);
        changed.removeAll(L' ');
        return changed;
    });
    addGrowth(table, "compare, equal",
              [](const qelString& text, const qelString& twin) { return qelString::compare(text, twin); });
    addGrowth(table, "compare ignoring case, equal",
              [](const qelString& text, const qelString& twin) { return qelString::compareNoCase(text, twin); });
    addGrowth(table, "natural order, equal",
              [](const qelString& text, const qelString& twin) { return qelString::compareWithNumbers(text, twin); });
    table.add(Growth{"classify units", 1.15}, [](long n) {
        const qelString text(wstring(static_cast<size_t>(n), L'x').c_str());
        return repeated([text] { return text.IsAlphaNumeric() && text.IsAlphabetic() && !text.IsNumeric(); });
    });
    table.add(Growth{"natural order, one long number", 1.15}, [](long n) {
        const wstring digits(static_cast<size_t>(n), L'1');
        const qelString text((digits + L"a").c_str());
        const qelString twin((digits + L"b").c_str());
        return repeated([text, twin] { return qelString::compareWithNumbers(text, twin); });
    });
    table.add(Growth{"find n / 16 equal units, missing", 1.15,
                     "The header says O(n * m) where the beginning of the needle occurs nearly everywhere."},
              [](long n) {
                  const qelString text(wstring(static_cast<size_t>(n), L'x').c_str());
                  const qelString what((wstring(static_cast<size_t>(n / 16), L'x') + L'y').c_str());
                  return repeated([text, what] { return text.find(what); });
              });
    table.add(Growth{"sort n strings, natural order", 1.25}, [](long n) {
        const qelStringClassArray list = listOf(partNumbers(n));
        return prepared(copiesOf(list), [](qelStringClassArray& names) { names.sort(compareNaturally); });
    });
}
} // namespace

void qelBench::addSearching(Table& table)
{
    table.family("Searching and order");
    addFinds(table);
    for (const long units : {29L, 10000L})
    {
        addFindLast(table, units);
    }
    addReplace(table, 10000, 0, 0.5);
    addReplace(table, 10000, 100, 0.5);
    addReplace(table, 10000, 1000, 0.7);
    addReplace(table, 450000, 50000, 0.7);
    for (const long units : {29L, 1000L})
    {
        addCompare(table, units);
    }
    addNaturalPairs<takeByRuntime>(table, "hand loop with wcstol", 0.6);
    addNaturalPairs<takeByHand>(table, "hand loop, digits by hand", 0);
    addNaturalSort(table, 20000);
    addNaturalSort(table, 100000);
    addGrowths(table);
}
