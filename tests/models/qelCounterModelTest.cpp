// A counter and a number creator against the stated steps on plain strings.
#include "qelIncrementalCounter.h"
#include "qelNumberCreator.h"
#include "support/SeededRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>
#include <string>
#include <utility>

namespace
{
using qelTest::SeededRun;
using std::wstring;

bool isAllDigits(const wstring& text)
{
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

/// Codes that begin near the end of all characters as well.
wstring randomCode(SeededRun& run)
{
    static const wchar_t* const alphabets[] = {L"0123456789", L"ABYZ", L"AZaz09", L"\xFFFD\xFFFE\xFFFF", L"9"};
    return qelTest::randomText(run, run.pick(alphabets), 4);
}

struct CounterData
{
    wstring startValue;
    wstring firstCharacter;
    int range = 1;
    wstring excluded;
    int maxCount = 0;
};

class CounterModel
{
public:
    void setData(const CounterData& data)
    {
        m_data = data;
        m_isNumeric = isAllDigits(data.startValue) && isAllDigits(data.firstCharacter);
        reset();
    }

    void reset()
    {
        setCode(m_data.startValue);
        m_calls = 0;
    }

    void setCode(const wstring& code)
    {
        m_units = code;
        m_code = code;
    }

    bool increment()
    {
        ++m_calls;
        const bool isOver = m_data.maxCount != -1 && m_calls >= m_data.maxCount;
        if (!isOver)
        {
            step();
        }
        // A unit that has come to 0 does not show.
        m_code = m_units;
        m_code.erase(std::remove(m_code.begin(), m_code.end(), L'\0'), m_code.end());
        return !isOver;
    }

    wchar_t first() const { return m_data.firstCharacter.empty() ? L'\0' : m_data.firstCharacter.back(); }

    wchar_t next(wchar_t current, const wstring& excluded, bool& carry) const
    {
        carry = false;
        int above = 0;
        do
        {
            current = static_cast<wchar_t>(current + 1);
            above = current - first();
        } while (isExcluded(current, excluded) && above < m_data.range);
        if (above == m_data.range)
        {
            carry = true;
            return m_isNumeric ? L'0' : first();
        }
        return current;
    }

    const wstring& code() const { return m_code; }
    size_t length() const { return m_units.size(); }

private:
    /// The character 0 makes an empty text, which is found in every other.
    static bool isExcluded(wchar_t current, const wstring& excluded)
    {
        return excluded.find(current) != wstring::npos || (current == 0 && !excluded.empty());
    }

    void step()
    {
        bool carry = true;
        for (size_t i = m_units.size(); carry && i > 0; --i)
        {
            m_units[i - 1] = next(m_units[i - 1], m_data.excluded, carry);
        }
        if (carry)
        {
            const auto before = static_cast<wchar_t>(first() - 1);
            m_units.insert(m_units.begin(), next(before, m_data.excluded + (m_isNumeric ? L"0" : L""), carry));
        }
    }

    CounterData m_data;
    bool m_isNumeric = true;
    wstring m_units;
    wstring m_code;
    int m_calls = 0;
};

class OpenCounter final : public qelIncrementalCounter
{
public:
    using qelIncrementalCounter::incrementAtPosition;
    using qelIncrementalCounter::initChar;
};

/// Two counters beside their models, and one operation at a time on both.
class Counters
{
public:
    explicit Counters(SeededRun& run)
        : m_run(run)
    {
    }

    void operate()
    {
        const int at = m_run.below(2);
        OpenCounter& counter = m_counters[at];
        CounterModel& model = m_models[at];
        const int kind = m_run.below(100);
        if (kind < 3 || model.length() > 40)
        {
            configure(counter, model);
        }
        else if (kind < 6)
        {
            counter.reset();
            model.reset();
        }
        else if (kind < 12)
        {
            const wstring code = randomCode(m_run);
            counter.setCounterString(code.c_str());
            model.setCode(code);
        }
        else if (kind < 15)
        {
            counter = m_counters[1 - at];
            model = CounterModel(m_models[1 - at]);
        }
        else if (kind < 20)
        {
            stepOnePosition(counter, model);
        }
        else
        {
            EXPECT_EQ(model.increment() ? qelIncrementalCounter::eIncremented : qelIncrementalCounter::eMaxCountReached,
                      counter.increment());
        }
    }

    void check() const
    {
        for (int i = 0; i < 2; ++i)
        {
            ASSERT_EQ(m_models[i].code(), m_counters[i].getCounterString().getStringW());
            ASSERT_EQ(m_models[i].first(), m_counters[i].initChar());
            const OpenCounter copied(m_counters[i]);
            ASSERT_EQ(m_models[i].code(), copied.getCounterString().getStringW());
        }
    }

private:
    void configure(qelIncrementalCounter& counter, CounterModel& model)
    {
        static const wchar_t* const firsts[] = {L"0", L"A", L"a", L"xA", L"Z", L"1", L"", L"\xFFFC"};
        static const wchar_t* const excludeds[] = {L"", L"", L"IO", L"579", L"0", L"9Z", L"B", L"\xFFFF"};
        static const int ranges[] = {10, 10, 26, 26, 1, 2, 3, 0, -1, 5};
        static const int maxCounts[] = {-1, -1, -1, 0, 1, 30};
        CounterData data;
        data.startValue = randomCode(m_run);
        data.firstCharacter = m_run.pick(firsts);
        data.range = m_run.pick(ranges);
        data.excluded = m_run.pick(excludeds);
        data.maxCount = m_run.pick(maxCounts);

        StructIncrementalCounter record;
        record.startValue = data.startValue.c_str();
        record.firstCharacter = data.firstCharacter.c_str();
        record.range = data.range;
        record.excludedCharacters = data.excluded.c_str();
        record.maxCount = data.maxCount;
        EXPECT_EQ(1, counter.setDataFrom(record));
        model.setData(data);
    }

    void stepOnePosition(const OpenCounter& counter, const CounterModel& model)
    {
        const auto current = static_cast<wchar_t>(m_run.oneIn(2) ? m_run.between(L'0', L'Z') : m_run.below(0x10000));
        const wstring excluded = qelTest::randomText(m_run, L"123789ABYZ", 5);
        bool expectedCarry = false;
        int carry = 7;
        EXPECT_EQ(model.next(current, excluded, expectedCarry),
                  counter.incrementAtPosition(current, excluded.c_str(), carry));
        EXPECT_EQ(expectedCarry ? 1 : 0, carry);
    }

    SeededRun& m_run;
    OpenCounter m_counters[2];
    CounterModel m_models[2];
};

struct Range
{
    wstring firstSymbol;
    int symbolCount = 0;
    wstring defaultStart;

    /// 0 when there is none.
    wchar_t lowest() const { return firstSymbol.empty() ? L'\0' : firstSymbol.front(); }

    bool allows(const wstring& code) const
    {
        return std::all_of(code.begin(), code.end(),
                           [this](wchar_t c) { return c >= lowest() && c - lowest() < symbolCount; });
    }
};

struct CreatorModel
{
    int type = 0;
    wstring prefix;
    wstring suffix;
    wstring start;
    wstring current;
    Range range;

    /// All but the range.
    void assign(const CreatorModel& other)
    {
        const Range own = range;
        *this = CreatorModel(other);
        range = own;
    }

    wstring next()
    {
        const wstring number = prefix + current + suffix;
        const int lowest = range.lowest();
        const int count = range.symbolCount;
        bool carry = true;
        for (size_t i = current.size(); carry && i > 0; --i)
        {
            int value = current[i - 1] - lowest + 1;
            carry = value >= count;
            value = count > 0 ? value % count : value;
            current[i - 1] = static_cast<wchar_t>(lowest + value);
        }
        current = current.c_str();
        const auto leading = static_cast<wchar_t>(type == 3 ? lowest + 1 : lowest);
        if (carry && leading != 0)
        {
            current.insert(current.begin(), leading);
        }
        return number;
    }
};

class OpenCreator final : public qelNumberCreator
{
public:
    using qelNumberCreator::checkNumber;
    using qelNumberCreator::qelNumberCreator;
};

/// Two number creators beside their models, and one operation at a time on both.
class Creators
{
public:
    explicit Creators(SeededRun& run)
        : m_run(run)
        , m_creators{OpenCreator(), OpenCreator(static_cast<eNumberingType>(3), L"P")}
    {
        m_models[1].type = 3;
        m_models[1].prefix = L"P";
    }

    void operate()
    {
        m_at = m_run.below(2);
        const int kind = m_run.below(100);
        if (kind < 4 || model().current.size() > 40)
        {
            overrideRange();
        }
        else if (kind < 8)
        {
            setType();
        }
        else if (kind < 14)
        {
            setFixedTexts();
        }
        else if (kind < 20)
        {
            setStart();
        }
        else if (kind < 24)
        {
            creator().reset();
            model().current = model().start;
        }
        else if (kind < 27)
        {
            creator() = m_creators[1 - m_at];
            model().assign(m_models[1 - m_at]);
        }
        else
        {
            EXPECT_EQ(model().next(), creator().getNextNumber().getStringW());
        }
    }

    void check()
    {
        for (int i = 0; i < 2; ++i)
        {
            const CreatorModel& model = m_models[i];
            const OpenCreator& creator = m_creators[i];
            ASSERT_EQ(model.type, static_cast<int>(creator.getNumberingType()));
            ASSERT_EQ(model.prefix, creator.getNumberingPrefix().getStringW());
            ASSERT_EQ(model.suffix, creator.getNumberingSufix().getStringW());
            ASSERT_EQ(model.start, creator.getNumberingStart().getStringW());
            // A copy gives the next number away, and has no range.
            OpenCreator copied(creator);
            CreatorModel expected;
            expected.assign(model);
            ASSERT_EQ(expected.next(), copied.getNextNumber().getStringW());
            ASSERT_EQ(expected.next(), copied.getNextNumber().getStringW());
        }
        const wstring code = randomCode(m_run);
        ASSERT_EQ(model().range.allows(code) ? 1 : 0, creator().checkNumber(code.c_str()));
    }

private:
    qelNumberCreator& base() { return m_creators[m_at]; }
    OpenCreator& creator() { return m_creators[m_at]; }
    CreatorModel& model() { return m_models[m_at]; }

    void overrideRange()
    {
        static const wchar_t* const firsts[] = {L"0", L"A", L"a", L"AB", L"", L"\xFFF0"};
        static const int counts[] = {10, 26, 1, 2, 36, 0, -3};
        Range range;
        range.firstSymbol = m_run.pick(firsts);
        range.symbolCount = m_run.pick(counts);
        range.defaultStart = randomCode(m_run);
        StructNumberingDataRange record;
        record.firstSymbol = range.firstSymbol.c_str();
        record.symbolCount = range.symbolCount;
        record.defaultStart = range.defaultStart.c_str();
        const int type = m_run.below(5);
        const bool isNew = type != model().type;
        EXPECT_EQ(isNew ? eCodeSet : eCodeNotSet, base().overrideDataRange(record, static_cast<eNumberingType>(type)));
        model().range = range;
        if (isNew)
        {
            startOver(type, range.defaultStart);
        }
    }

    void setType()
    {
        const int type = m_run.below(5);
        const bool isNew = type != model().type;
        EXPECT_EQ(isNew ? eCodeSet : eCodeNotSet, base().setNumberingType(static_cast<eNumberingType>(type)));
        if (isNew)
        {
            startOver(type, wstring(model().range.firstSymbol));
        }
    }

    void startOver(int type, const wstring& start)
    {
        model().type = type;
        model().start = start;
        model().current = start;
    }

    void setFixedTexts()
    {
        const wstring prefix = qelTest::randomText(m_run, L"PQ", 2);
        const wstring suffix = qelTest::randomText(m_run, L"-x", 2);
        EXPECT_EQ(prefix == model().prefix ? eCodeNotSet : eCodeSet, base().setNumberingPrefix(prefix.c_str()));
        EXPECT_EQ(suffix == model().suffix ? eCodeNotSet : eCodeSet, base().setNumberingSufix(suffix.c_str()));
        model().prefix = prefix;
        model().suffix = suffix;
    }

    void setStart()
    {
        const wstring start = randomCode(m_run);
        const bool isValid = model().range.allows(start);
        EXPECT_EQ(isValid ? eCodeSet : eCodeNotSet, base().setNumberingStart(start.c_str()));
        if (isValid)
        {
            model().start = start;
        }
    }

    SeededRun& m_run;
    OpenCreator m_creators[2];
    CreatorModel m_models[2];
    int m_at = 0;
};
} // namespace

TEST(qelIncrementalCounterModel, AgreesWithTheStatedSteps)
{
    SeededRun run;
    Counters counters(run);
    while (run.next())
    {
        counters.operate();
        counters.check();
    }
}

TEST(qelNumberCreatorModel, AgreesWithTheStatedSteps)
{
    SeededRun run;
    Creators creators(run);
    while (run.next())
    {
        creators.operate();
        creators.check();
    }
}
