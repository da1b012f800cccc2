// "host number": marks and part numbers for a part list, in natural order.
#include "Commands.h"
#include "Console.h"
#include "PartList.h"

#include "qelIncrementalCounter.h"
#include "qelNumberCreator.h"
#include "qelStringClassArray.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace
{
/// Parts that are equal, and so have one number.
struct Group
{
    const Part* part = nullptr; ///< the first of them
    long long pieces = 0;
    std::wstring marks; ///< of all of them, in the order of the list
};

using Groups = std::map<qelString, Group>; // by part number

/// Marks of the positions: A, B, C ... without the letters that are taken for digits.
class Marks
{
public:
    Marks()
    {
        StructIncrementalCounter letters;
        letters.startValue = L"A";
        letters.firstCharacter = L"A";
        letters.range = 26;
        letters.excludedCharacters = L"IO";
        letters.maxCount = -1;
        m_counter.setDataFrom(letters);
    }

    std::wstring next()
    {
        const qelString mark = m_counter.getCounterString();
        m_counter.increment();
        return mark.getStringW();
    }

private:
    qelIncrementalCounter m_counter;
};

/// Part numbers: the kind of part, a running number for each kind, and the material, as in B12-S355J2.
class PartNumbers
{
public:
    /// The number of `part`: that of an equal part before, or a new one.
    const qelString& numberOf(const Part& part)
    {
        const auto [entry, isNew] = m_numbers.try_emplace({part.profile, part.material, part.length});
        if (isNew)
        {
            qelNumberCreator& creator = creatorOf(prefixOf(part.type));
            creator.setNumberingSufix(qelString(L"-") + part.material);
            entry->second = creator.getNextNumber();
        }
        return entry->second;
    }

private:
    static const wchar_t* prefixOf(eDSTVType type)
    {
        switch (type)
        {
        case eDSTV_I:
            return L"B"; // beam
        case eDSTV_U:
            return L"C"; // channel
        case eDSTV_L:
            return L"A"; // angle
        case eDSTV_RO:
            return L"R"; // round tube
        case eDSTV_M:
            return L"H"; // hollow section
        case eDSTV_B:
            return L"P"; // plate
        default:
            return L"X";
        }
    }

    qelNumberCreator& creatorOf(const qelString& prefix)
    {
        const auto [entry, isNew] = m_creators.try_emplace(prefix);
        qelNumberCreator& creator = entry->second;
        if (isNew)
        {
            const auto kNumeric = static_cast<eNumberingType>(3);
            StructNumberingDataRange digits;
            digits.firstSymbol = L"0";
            digits.symbolCount = 10;
            digits.defaultStart = L"1";
            creator.setNumberingPrefix(prefix);
            creator.overrideDataRange(digits, kNumeric);
        }
        return creator;
    }

    std::map<std::tuple<qelString, qelString, double>, qelString> m_numbers; ///< by profile, material and length
    std::map<qelString, qelNumberCreator> m_creators;                        ///< by prefix; a copy would have no digits
};

Groups numberParts(const std::vector<Part>& parts)
{
    Marks marks;
    PartNumbers numbers;
    Groups groups;
    for (const Part& part : parts)
    {
        Group& group = groups[numbers.numberOf(part)];
        if (group.part == nullptr)
        {
            group.part = &part;
        }
        group.pieces += part.quantity;
        group.marks += (group.marks.empty() ? L"" : L" ") + marks.next();
    }
    return groups;
}

// Natural order takes a text for equal to a longer one that starts with it; sorting needs one order for each pair.
int inNaturalOrder(const void* a, const void* b)
{
    const qelString& left = *static_cast<const qelString*>(a);
    const qelString& right = *static_cast<const qelString*>(b);
    const int order = qelString::compareWithNumbers(left, right);
    return order != 0 ? order : qelString::compare(left, right);
}

qelStringClassArray sortedNumbers(const Groups& groups)
{
    qelStringClassArray numbers(static_cast<long>(groups.size()));
    for (const auto& group : groups)
    {
        numbers.append(group.first);
    }
    numbers.sort(inNaturalOrder);
    return numbers;
}

void printGroups(const Groups& groups, size_t limit)
{
    const qelStringClassArray numbers = sortedNumbers(groups);
    const long rows = static_cast<long>(std::min(limit, groups.size()));
    Table table({L"NUMBER", L"PROFILE", L"LENGTH", L"PIECES", L"MARKS"});
    for (long i = 0; i < rows; ++i)
    {
        const Group& group = groups.at(numbers[i]);
        table.add({numbers[i].getStringW(), group.part->profile.getStringW(), millimetres(group.part->length),
                   std::to_wstring(group.pieces), group.marks});
    }
    table.print();
    print(std::to_wstring(rows) + L" of " + std::to_wstring(groups.size()) + L" part numbers\n");
}

int run(const Arguments& arguments)
{
    PartListOptions options;
    if (!parsePartListOptions(L"number", arguments, options))
    {
        return kUsageError;
    }
    if (!options.names.empty())
    {
        printError(L"host number: \"" + options.names.front() + L"\" is no option\n");
        return kUsageError;
    }
    std::vector<Part> parts;
    if (!readParts(options.file, parts))
    {
        return 1;
    }
    printGroups(numberParts(parts), options.limit);
    return 0;
}
} // namespace

const Command numberCommand = {
    L"number",
    L"marks and part numbers for a part list",
    L"usage: host number [--file FILE] [--limit N]\n"
    L"\n"
    L"Gives every position of a part list a mark (A, B ... Z, AA ... without I and O) and every group of equal parts\n"
    L"a number: the kind of part, a running number and the material. Parts are equal that have the same profile,\n"
    L"material and length. Prints the groups in natural order of their numbers, B9 before B10, with the lengths in\n"
    L"mm, the pieces and the marks of their positions.\n"
    L"\n"
    L"  --file FILE  part list; without it, parts.csv in the current folder\n"
    L"  --limit N    print the first N groups only\n"
    L"  --help       show this text\n",
    run,
};
