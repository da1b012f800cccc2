// Arrays and lists of strings.

#include "Families.h"
#include "Plain.h"

#include <algorithm>
#include <cwchar>

using namespace qelBench;
using std::wstring;

namespace
{
using Doubles = qelArray<double, qelArrayMemCopyReallocator<double>>;
using Strings = qelArray<qelString>;

const char kVector[] = "std::vector";
const long kStep = 8;

struct Values
{
    std::vector<double> doubles;
    std::vector<wstring> theirs;
    std::vector<qelString> ours;
};

std::shared_ptr<const Values> valuesOf(long count)
{
    const auto values = std::make_shared<Values>();
    for (long i = 0; i < count; ++i)
    {
        values->doubles.push_back(static_cast<double>(i));
        values->theirs.push_back(L"HEA 200-P" + std::to_wstring(i));
        values->ours.emplace_back(values->theirs.back().c_str());
    }
    return values;
}

template <class Array, class T> Array appended(const std::vector<T>& values, long room)
{
    Array array(room, kStep);
    for (const T& value : values)
    {
        array.append(value);
    }
    return array;
}

template <class T> std::vector<T> pushed(const std::vector<T>& values, size_t room)
{
    std::vector<T> array;
    array.reserve(room);
    for (const T& value : values)
    {
        array.push_back(value);
    }
    return array;
}

/// Grows as the array does.
template <class T> std::vector<T> pushedInSteps(const std::vector<T>& values)
{
    std::vector<T> array;
    for (const T& value : values)
    {
        if (array.size() == array.capacity())
        {
            array.reserve(array.size() + kStep);
        }
        array.push_back(value);
    }
    return array;
}

void addAppend(Table& table)
{
    const long kCount = 10000;
    table.add(Row{"append doubles, room given", sizeText(kCount, "elements"), kVector, 1.1}, [] {
        const auto d = valuesOf(kCount);
        return sides([d] { return appended<Doubles>(d->doubles, kCount); }, [d] { return pushed(d->doubles, kCount); });
    });
    table.add(Row{"append strings, room given", sizeText(kCount, "elements"), kVector, 0.2}, [] {
        const auto d = valuesOf(kCount);
        return sides([d] { return appended<Strings>(d->ours, kCount); }, [d] { return pushed(d->theirs, kCount); });
    });
    for (const long count : {1000L, 5000L})
    {
        const char* const kPeer = "std::vector that reserves in the same steps";
        table.add(Row{"append doubles in steps of 8", sizeText(count, "elements"), kPeer, 1.05}, [count] {
            const auto d = valuesOf(count);
            return sides([d] { return appended<Doubles>(d->doubles, 0); }, [d] { return pushedInSteps(d->doubles); });
        });
        table.add(Row{"append strings in steps of 8", sizeText(count, "elements"), kPeer, 0.4}, [count] {
            const auto d = valuesOf(count);
            return sides([d] { return appended<Strings>(d->ours, 0); }, [d] { return pushedInSteps(d->theirs); });
        });
    }
}

/// Names in no order, all different.
std::vector<wstring> names(long count)
{
    const wchar_t* const kProfiles[] = {L"HEA 200 ", L"hea 1000 ", L"IPE 300 ", L"Upn 140 "};
    Random random;
    std::vector<wstring> result;
    for (long i = 0; i < count; ++i)
    {
        result.push_back(kProfiles[random.next(4)] + std::to_wstring(random.next(1000)) + L"-" + std::to_wstring(i));
    }
    return result;
}

qelStringClassArray listOf(const std::vector<wstring>& texts)
{
    qelStringClassArray list(static_cast<long>(texts.size()));
    for (const wstring& text : texts)
    {
        list.append(text.c_str());
    }
    return list;
}

bool comesBeforeIgnoringCase(const wstring& a, const wstring& b)
{
    return _wcsicmp(a.c_str(), b.c_str()) < 0;
}

void addSorts(Table& table, long count)
{
    table.add(Row{"sort, ordinal", sizeText(count, "strings"), "std::sort", 0.95}, [count] {
        const std::vector<wstring> theirs = names(count);
        const qelStringClassArray ours = listOf(theirs);
        return preparedSides(
            copiesOf(ours), [](qelStringClassArray& l) { l.sort(qelString::strCompare); }, copiesOf(theirs),
            [](std::vector<wstring>& l) { std::sort(l.begin(), l.end()); });
    });
    table.add(
        Row{"sort, ignoring case", sizeText(count, "strings"), "std::sort", 0.95,
            "Both sides compare by the same call of the runtime, which takes nearly all the time. 0.94 was the best."},
        [count] {
            const std::vector<wstring> theirs = names(count);
            const qelStringClassArray ours = listOf(theirs);
            return preparedSides(
                copiesOf(ours), [](qelStringClassArray& l) { l.sort(qelString::strCompareNoCase); }, copiesOf(theirs),
                [](std::vector<wstring>& l) { std::sort(l.begin(), l.end(), comesBeforeIgnoringCase); });
        });
}

/// A sorted list for either side, and names to look for.
struct Sorted
{
    explicit Sorted(long count)
        : theirs(names(count))
        , wanted(theirs.begin(), theirs.begin() + 256)
    {
        std::sort(theirs.begin(), theirs.end());
        ours = listOf(theirs);
        for (const wstring& name : wanted)
        {
            keys.append(name.c_str());
        }
    }

    std::vector<wstring> theirs;
    std::vector<wstring> wanted;
    qelStringClassArray ours;
    qelStringClassArray keys;
};

void addSearches(Table& table, long count)
{
    table.add(Row{"256 binary searches", sizeText(count, "strings"), "std::binary_search", 0.85}, [count] {
        const auto d = std::make_shared<const Sorted>(count);
        const auto ours = [d] {
            long found = 0;
            long at = 0;
            for (const qelString& key : d->keys)
            {
                found += d->ours.bsearch(key, at, qelString::strCompare);
            }
            return found;
        };
        const auto theirs = [d] {
            long found = 0;
            for (const wstring& key : d->wanted)
            {
                found += std::binary_search(d->theirs.begin(), d->theirs.end(), key) ? 1 : 0;
            }
            return found;
        };
        return sides(ours, theirs);
    });
    table.add(
        Row{"linear search, missing", sizeText(count, "strings"), "std::find", 3,
            "std::find compares the stored lengths, one beside the other; here each string is a block of its own. "
            "Only reading the first unit of every one takes 5 times as long among 20 k."},
        [count] {
            const auto d = std::make_shared<const Sorted>(count);
            const wstring missing = L"HEA 200 none";
            const auto theirs = [d, missing] {
                return std::find(d->theirs.begin(), d->theirs.end(), missing) != d->theirs.end() ? 1 : 0;
            };
            return sides([d, name = qelString(missing.c_str())] { return d->ours.contains(name); }, theirs);
        });
}

void addReverse(Table& table, long count)
{
    table.add(Row{"reverse", sizeText(count, "strings"), "std::reverse", 1.5}, [count] {
        struct Data
        {
            std::vector<wstring> theirs;
            qelStringClassArray ours;
        };
        const auto d = std::make_shared<Data>();
        d->theirs = names(count);
        d->ours = listOf(d->theirs);
        const auto ours = [d] { return d->ours.reverse().length(); };
        const auto theirs = [d] {
            std::reverse(d->theirs.begin(), d->theirs.end());
            return static_cast<long>(d->theirs.size());
        };
        return Sides{repeated(ours), repeated(theirs),
                     [d, ours, theirs] { return ours() == theirs() && plain(d->ours) == d->theirs; }};
    });
}

/// Names that have n units together, about: more of them would show the caches instead of the operation.
long namesOf(long units)
{
    return units / 8;
}

void addGrowths(Table& table)
{
    table.add(Growth{"append n / 8 strings, room given", 1.15}, [](long n) {
        const auto d = valuesOf(namesOf(n));
        return repeated([d, n] { return appended<Strings>(d->ours, namesOf(n)); });
    });
    table.add(Growth{"append n / 8 doubles in steps of 8", 0,
                     "Growth is linear and never geometric, deliberately: the header says n * n / 16 moves."},
              [](long n) {
                  const auto d = valuesOf(namesOf(n));
                  return repeated([d] { return appended<Doubles>(d->doubles, 0); });
              });
    table.add(Growth{"insert in front of n / 8 doubles", 1.15}, [](long n) {
        const auto doubles = appended<Doubles>(valuesOf(namesOf(n))->doubles, namesOf(n));
        return prepared(copiesOf(doubles), [](Doubles& array) { array.insertAt(0, -1.0); });
    });
    table.add(Growth{"copy n / 8 strings", 1.15}, [](long n) {
        const auto strings = appended<Strings>(valuesOf(namesOf(n))->ours, namesOf(n));
        return repeated([strings] { return Strings(strings); });
    });
    table.add(Growth{"sort n strings, ordinal", 1.25}, [](long n) {
        const qelStringClassArray list = listOf(names(n));
        return prepared(copiesOf(list), [](qelStringClassArray& l) { l.sort(qelString::strCompare); });
    });
    table.add(Growth{"sort n strings, ignoring case", 1.25}, [](long n) {
        const qelStringClassArray list = listOf(names(n));
        return prepared(copiesOf(list), [](qelStringClassArray& l) { l.sort(qelString::strCompareNoCase); });
    });
    table.add(Growth{"linear search, missing among n / 8 strings", 1.15}, [](long n) {
        const qelStringClassArray list = listOf(names(namesOf(n)));
        return repeated([list, name = qelString(L"HEA 200 none")] { return list.contains(name); });
    });
    table.add(Growth{"reverse n / 8 strings", 1.15}, [](long n) {
        const auto list = std::make_shared<qelStringClassArray>(listOf(names(namesOf(n))));
        return repeated([list] { return list->reverse().length(); });
    });
    table.add(Growth{"binary search among n / 8 strings", 1.15}, [](long n) {
        const auto d = std::make_shared<const Sorted>(namesOf(n) + 256);
        return repeated([d] {
            long at = 0;
            d->ours.bsearch(d->keys[17], at, qelString::strCompare);
            return at;
        });
    });
}
} // namespace

void qelBench::addLists(Table& table)
{
    table.family("Lists and arrays");
    addAppend(table);
    for (const long count : {20000L, 100000L})
    {
        addSorts(table, count);
        addSearches(table, count);
        addReverse(table, count);
    }
    addGrowths(table);
}
