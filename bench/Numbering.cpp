// Running codes and numbers.

#include "Families.h"
#include "Plain.h"

#include "qelIncrementalCounter.h"
#include "qelNumberCreator.h"

using namespace qelBench;
using std::wstring;

namespace
{
/// A running code as one writes it: from right to left, with a carry.
class HandCounter
{
public:
    HandCounter(const wchar_t* start, wchar_t first, int range, const wchar_t* excluded)
        : m_code(start)
        , m_first(first)
        , m_last(static_cast<wchar_t>(first + range - 1))
        , m_excluded(excluded)
    {
    }

    void step()
    {
        for (size_t i = m_code.size(); i > 0; --i)
        {
            if (m_code[i - 1] < m_last)
            {
                advance(m_code[i - 1]);
                return;
            }
            m_code[i - 1] = m_first;
        }
        m_code.insert(m_code.begin(), m_first);
    }

    wstring code() const { return m_code; }

private:
    void advance(wchar_t& c) const
    {
        do
        {
            ++c;
        } while (m_excluded.find(c) != wstring::npos);
    }

    wstring m_code;
    wchar_t m_first;
    wchar_t m_last;
    wstring m_excluded;
};

struct Codes
{
    const char* size;
    const wchar_t* start;
    const wchar_t* first;
    int range;
    const wchar_t* excluded;
};

qelIncrementalCounter counterOf(const Codes& codes)
{
    StructIncrementalCounter data;
    data.startValue = codes.start;
    data.firstCharacter = codes.first;
    data.range = codes.range;
    data.excludedCharacters = codes.excluded;
    data.maxCount = -1;
    qelIncrementalCounter counter;
    counter.setDataFrom(data);
    return counter;
}

HandCounter handCounterOf(const Codes& codes)
{
    return {codes.start, codes.first[0], codes.range, codes.excluded};
}

bool countAlike(const Codes& codes)
{
    qelIncrementalCounter ours = counterOf(codes);
    HandCounter theirs = handCounterOf(codes);
    for (int i = 0; i < 5000; ++i)
    {
        ours.increment();
        theirs.step();
        if (plain(ours.getCounterString()) != theirs.code())
        {
            return false;
        }
    }
    return true;
}

void addCounter(Table& table, const Codes& codes)
{
    table.add(Row{"counter step", codes.size, "std::wstring by hand, copy returned", 1.3}, [codes] {
        const auto counter = std::make_shared<qelIncrementalCounter>(counterOf(codes));
        const auto hand = std::make_shared<HandCounter>(handCounterOf(codes));
        const auto ours = [counter] {
            counter->increment();
            return counter->getCounterString();
        };
        const auto theirs = [hand] {
            hand->step();
            return hand->code();
        };
        return Sides{repeated(ours), repeated(theirs), [codes] { return countAlike(codes); }};
    });
}

/// In its place: a copy would have no range of symbols.
std::shared_ptr<qelNumberCreator> creatorOf(const wchar_t* start)
{
    StructNumberingDataRange range;
    range.firstSymbol = L"0";
    range.symbolCount = 10;
    range.defaultStart = start;
    const auto creator = std::make_shared<qelNumberCreator>();
    creator->setNumberingPrefix(L"P");
    creator->setNumberingSufix(L"-A");
    creator->overrideDataRange(range, static_cast<eNumberingType>(3));
    return creator;
}

wstring numberByHand(HandCounter& counter)
{
    wstring number = L"P" + counter.code() + L"-A";
    counter.step();
    return number;
}

bool numberAlike(const wchar_t* start)
{
    const auto ours = creatorOf(start);
    HandCounter theirs(start, L'0', 10, L"");
    for (int i = 0; i < 5000; ++i)
    {
        if (plain(ours->getNextNumber()) != numberByHand(theirs))
        {
            return false;
        }
    }
    return true;
}

void addNextNumber(Table& table)
{
    const wchar_t* const kStart = L"10000000";
    table.add(Row{"next number", "11 units", "std::wstring by hand, copy returned", 1.5}, [kStart] {
        const auto creator = creatorOf(kStart);
        const auto hand = std::make_shared<HandCounter>(kStart, L'0', 10, L"");
        return Sides{repeated([creator] { return creator->getNextNumber(); }),
                     repeated([hand] { return numberByHand(*hand); }), [kStart] { return numberAlike(kStart); }};
    });
}
} // namespace

void qelBench::addNumbering(Table& table)
{
    table.family("Numbering");
    addCounter(table, {"8 digits", L"10000000", L"0", 10, L""});
    addCounter(table, {"8 letters without I and O", L"AAAAAAAA", L"A", 26, L"IO"});
    addNextNumber(table);
    table.add(Growth{"counter step, code of n digits", 1.15}, [](long n) {
        const wstring start(static_cast<size_t>(n), L'1');
        const auto counter = std::make_shared<qelIncrementalCounter>(counterOf({"", start.c_str(), L"0", 10, L""}));
        return repeated([counter] { return counter->increment(); });
    });
    table.add(Growth{"next number, code of n digits", 1.15}, [](long n) {
        const wstring start(static_cast<size_t>(n), L'1');
        const auto creator = creatorOf(start.c_str());
        return repeated([creator] { return creator->getNextNumber(); });
    });
}
