#include "qelIncrementalCounter.h"

#include "numbering/AllTexts.h"
#include "support/FailingAllocation.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

using qelTest::allTexts;

namespace
{
typedef qelIncrementalCounter Counter;

static_assert(Counter::eIncremented == 0 && Counter::eMaxCountReached == 1 && sizeof(Counter::eIncrementStatus) == 4,
              "values of callers");
static_assert(sizeof(StructIncrementalCounter) == 104 && sizeof(Counter) == 168, "layouts of callers");
static_assert(offsetof(StructIncrementalCounter, userValue) == 0, "order of fields");
static_assert(offsetof(StructIncrementalCounter, userText) == 8, "order of fields");
static_assert(offsetof(StructIncrementalCounter, startValue) == 24, "order of fields");
static_assert(offsetof(StructIncrementalCounter, firstCharacter) == 40, "order of fields");
static_assert(offsetof(StructIncrementalCounter, range) == 56, "order of fields");
static_assert(offsetof(StructIncrementalCounter, excludedCharacters) == 64, "order of fields");
static_assert(offsetof(StructIncrementalCounter, maxCount) == 80, "order of fields");
static_assert(offsetof(StructIncrementalCounter, extraText) == 88, "order of fields");
static_assert(std::has_virtual_destructor<Counter>::value, "callers derive from it");

const size_t kLimit = 0x80000; // greatest length of a text; results of concatenation end one before it

std::wstring text(const qelString& value)
{
    return value.getStringW();
}

/// Opens the protected operations, and the two integers that no operation shows at their places in the object.
class Probe : public qelIncrementalCounter
{
public:
    using qelIncrementalCounter::incrementAtPosition;
    using qelIncrementalCounter::initChar;

    std::wstring code() const { return text(getCounterString()); }
    int numericOnly() const { return integerAt(112); }
    int callCount() const { return integerAt(160); }
    int userValue() const { return integerAt(8); }
    int range() const { return integerAt(64); }
    int maxCount() const { return integerAt(88); }

private:
    int integerAt(size_t offset) const
    {
        const qelIncrementalCounter* self = this;
        int value = 0;
        std::memcpy(&value, reinterpret_cast<const char*>(self) + offset, sizeof(value));
        return value;
    }
};

StructIncrementalCounter record(const wchar_t* start, const wchar_t* first, int range, const wchar_t* excluded = L"",
                                int maxCount = -1)
{
    StructIncrementalCounter data;
    data.startValue = start;
    data.firstCharacter = first;
    data.range = range;
    data.excludedCharacters = excluded;
    data.maxCount = maxCount;
    return data;
}

Probe counter(const StructIncrementalCounter& data)
{
    Probe made;
    made.setDataFrom(data);
    return made;
}

/// The code after one step from `start`.
std::wstring after(const wchar_t* start, const wchar_t* first, int range, const wchar_t* excluded = L"")
{
    Probe stepped = counter(record(start, first, range, excluded));
    EXPECT_EQ(stepped.increment(), Counter::eIncremented);
    return stepped.code();
}

/// Result of one step of one position: the character, with a "+" when it carries.
std::wstring position(const Probe& probe, wchar_t current, const wchar_t* excluded = L"")
{
    int carry = -1;
    std::wstring result(1, probe.incrementAtPosition(current, excluded, carry));
    EXPECT_TRUE(carry == 0 || carry == 1);
    return carry == 1 ? result + L"+" : result;
}

TEST(StructIncrementalCounter, IsEmptyByDefault)
{
    const StructIncrementalCounter data;
    EXPECT_EQ(data.userValue, 0);
    EXPECT_EQ(data.range, 0);
    EXPECT_EQ(data.maxCount, 0);
    EXPECT_EQ(data.userText.isEmpty(), 1);
    EXPECT_EQ(data.startValue.isEmpty(), 1);
    EXPECT_EQ(data.firstCharacter.isEmpty(), 1);
    EXPECT_EQ(data.excludedCharacters.isEmpty(), 1);
    EXPECT_EQ(data.extraText.isEmpty(), 1);
}

TEST(StructIncrementalCounter, CopiesEveryField)
{
    StructIncrementalCounter data = record(L"s", L"f", 2, L"e", 3);
    data.userValue = 1;
    data.userText = L"u";
    data.extraText = L"x";
    StructIncrementalCounter assigned;
    assigned = data;
    for (const StructIncrementalCounter& copy : {StructIncrementalCounter(data), assigned})
    {
        EXPECT_EQ(copy.userValue, 1);
        EXPECT_EQ(text(copy.userText), L"u");
        EXPECT_EQ(text(copy.startValue), L"s");
        EXPECT_EQ(text(copy.firstCharacter), L"f");
        EXPECT_EQ(copy.range, 2);
        EXPECT_EQ(text(copy.excludedCharacters), L"e");
        EXPECT_EQ(copy.maxCount, 3);
        EXPECT_EQ(text(copy.extraText), L"x");
    }
}

TEST(qelIncrementalCounter, RefusesEveryStepUntilItIsConfigured)
{
    Probe fresh;
    EXPECT_EQ(fresh.userValue(), -1);
    EXPECT_EQ(fresh.range(), 1);
    EXPECT_EQ(fresh.maxCount(), 0);
    EXPECT_EQ(fresh.numericOnly(), 0);
    EXPECT_EQ(fresh.callCount(), 0);
    EXPECT_EQ(fresh.code(), L"");
    EXPECT_EQ(fresh.increment(), Counter::eMaxCountReached);
    EXPECT_EQ(fresh.increment(), Counter::eMaxCountReached);
    EXPECT_EQ(fresh.code(), L"");
    EXPECT_EQ(fresh.callCount(), 2);
}

TEST(qelIncrementalCounter, TakesOverTheRecordAndStartsAtItsStartValue)
{
    StructIncrementalCounter data = record(L"AB", L"A", 26, L"", 7);
    data.userValue = 42;
    Probe probe;
    probe.increment();
    EXPECT_EQ(probe.setDataFrom(data), 1);
    EXPECT_EQ(probe.userValue(), 42);
    EXPECT_EQ(probe.range(), 26);
    EXPECT_EQ(probe.maxCount(), 7);
    EXPECT_EQ(probe.callCount(), 0);
    EXPECT_EQ(probe.code(), L"AB");
    EXPECT_EQ(probe.getCounterString().getStringW(), data.startValue.getStringW()) << "shares the text";
}

TEST(qelIncrementalCounter, StepsThroughTheRange)
{
    EXPECT_EQ(after(L"A", L"A", 26), L"B");
    EXPECT_EQ(after(L"Y", L"A", 26), L"Z");
    EXPECT_EQ(after(L"0007", L"0", 10), L"0008");
}

TEST(qelIncrementalCounter, CarriesToTheLeft)
{
    EXPECT_EQ(after(L"0009", L"0", 10), L"0010");
    EXPECT_EQ(after(L"AZ", L"A", 26), L"BA");
    EXPECT_EQ(after(L"AZZ", L"A", 26), L"BAA");
    EXPECT_EQ(after(L"0999", L"0", 10), L"1000");
}

TEST(qelIncrementalCounter, GrowsWhenTheFirstPositionCarries)
{
    EXPECT_EQ(after(L"Z", L"A", 26), L"AA");
    EXPECT_EQ(after(L"ZZ", L"A", 26), L"AAA");
    EXPECT_EQ(after(L"ZZZZZZZZ", L"A", 26), L"AAAAAAAAA");
}

TEST(qelIncrementalCounter, NumberDoesNotGrowByAZero)
{
    EXPECT_EQ(after(L"9", L"0", 10), L"10");
    EXPECT_EQ(after(L"99", L"0", 10), L"100");
}

TEST(qelIncrementalCounter, EmptyStartGivesTheFirstCharacterOrTheDigitOne)
{
    EXPECT_EQ(after(L"", L"A", 26), L"A");
    EXPECT_EQ(after(L"", L"0", 10), L"1");
    EXPECT_EQ(after(L"", L"5", 3), L"5");
}

TEST(qelIncrementalCounter, LeavesOutExcludedCharacters)
{
    EXPECT_EQ(after(L"H", L"A", 26, L"IO"), L"J");
    EXPECT_EQ(after(L"N", L"A", 26, L"IO"), L"P");
    EXPECT_EQ(after(L"M", L"A", 26, L"NOP"), L"Q");
    EXPECT_EQ(after(L"8", L"0", 12, L":9"), L";");
}

TEST(qelIncrementalCounter, ExcludedEndOfTheRangeMakesThePositionStartOver)
{
    EXPECT_EQ(after(L"Y", L"A", 26, L"Z"), L"AA");
    EXPECT_EQ(after(L"AX", L"A", 26, L"YZ"), L"BA");
    EXPECT_EQ(after(L"8", L"0", 10, L"9"), L"10");
}

TEST(qelIncrementalCounter, CharacterBehindTheRangeIsNotExcluded)
{
    EXPECT_EQ(after(L"Z", L"A", 26, L"["), L"AA") << "the skipping ends at the end of the range";
    EXPECT_EQ(after(L"a", L"A", 26, L"b"), L"b");
}

TEST(qelIncrementalCounter, StartingOverDoesNotLookAtTheExcludedCharacters)
{
    EXPECT_EQ(after(L"BZ", L"A", 26, L"A"), L"CA") << "the first character comes back although it is excluded";
    EXPECT_EQ(after(L"Z", L"A", 26, L"A"), L"BA") << "only the position added in front leaves it out";
}

TEST(qelIncrementalCounter, StartsOverOnlyAtTheExactEndOfTheRange)
{
    Probe behind = counter(record(L"AC", L"A", 2));
    behind.increment();
    EXPECT_EQ(behind.code(), L"AD") << "a character behind the range counts on";
    for (int i = 0; i < 1000; ++i)
    {
        behind.increment();
    }
    EXPECT_EQ(behind.code(), std::wstring(L"A") + static_cast<wchar_t>(L'D' + 1000));

    EXPECT_EQ(after(L"9", L"A", 3), L":") << "one before the range counts up into it";
    EXPECT_EQ(after(L"@", L"A", 3), L"A");
}

TEST(qelIncrementalCounter, NumberStartsOverAtZeroWhateverTheFirstCharacter)
{
    EXPECT_EQ(after(L"9", L"1", 9), L"10") << "not 11";
    EXPECT_EQ(after(L"19", L"1", 9), L"20");
    EXPECT_EQ(after(L"A9", L"1", 9), L"B1") << "a code with a letter in it starts over at the first character";
}

TEST(qelIncrementalCounter, PositionAddedToANumberMayCarryAndIsZeroThen)
{
    EXPECT_EQ(after(L"0", L"0", 1), L"00") << "the range holds nothing but the zero that it may not take";
}

TEST(qelIncrementalCounter, ExcludedCharactersApplyToThePositionAddedInFront)
{
    EXPECT_EQ(after(L"9", L"0", 10, L"1"), L"20");
    EXPECT_EQ(after(L"", L"A", 26, L"AB"), L"C");
}

TEST(qelIncrementalCounter, OnlyLastOfSeveralFirstCharactersCounts)
{
    EXPECT_EQ(counter(record(L"", L"XA", 2)).initChar(), L'A');
    EXPECT_EQ(after(L"B", L"XA", 2), L"AA");
}

TEST(qelIncrementalCounter, EmptyFirstCharacterIsNul)
{
    EXPECT_EQ(counter(record(L"A", L"", 2)).initChar(), L'\0');
    EXPECT_EQ(Probe().initChar(), L'\0');
}

TEST(qelIncrementalCounter, IsNumericWhenStartAndFirstCharacterAreDigitsOnly)
{
    EXPECT_EQ(counter(record(L"0123456789", L"9876543210", 1)).numericOnly(), 1);
    EXPECT_EQ(counter(record(L"", L"", 1)).numericOnly(), 1) << "empty texts pass";
    EXPECT_EQ(counter(record(L"", L"0", 1)).numericOnly(), 1);
    EXPECT_EQ(counter(record(L"1", L"", 1)).numericOnly(), 1);
    EXPECT_EQ(counter(record(L"12A", L"0", 1)).numericOnly(), 0);
    EXPECT_EQ(counter(record(L"A12", L"0", 1)).numericOnly(), 0);
    EXPECT_EQ(counter(record(L"12", L"A0", 1)).numericOnly(), 0);
    EXPECT_EQ(counter(record(L"-1", L"0", 1)).numericOnly(), 0);
    EXPECT_EQ(counter(record(L"1 ", L"0", 1)).numericOnly(), 0);
}

TEST(qelIncrementalCounter, NumericKindIsDecidedByTheRecordNotByTheCodeSetLater)
{
    Probe probe = counter(record(L"1", L"0", 10));
    probe.setCounterString(L"A9");
    probe.increment();
    EXPECT_EQ(probe.code(), L"B0");
    EXPECT_EQ(probe.numericOnly(), 1);
    probe.setDataFrom(record(L"A", L"A", 26));
    EXPECT_EQ(probe.numericOnly(), 0);
}

TEST(qelIncrementalCounter, MaxCountCountsTheStartValue)
{
    Probe probe = counter(record(L"A", L"A", 26, L"", 3));
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_EQ(probe.increment(), Counter::eIncremented);
        EXPECT_EQ(probe.increment(), Counter::eIncremented);
        EXPECT_EQ(probe.code(), L"C");
        EXPECT_EQ(probe.increment(), Counter::eMaxCountReached);
        EXPECT_EQ(probe.increment(), Counter::eMaxCountReached);
        EXPECT_EQ(probe.code(), L"C");
        probe.reset();
        EXPECT_EQ(probe.code(), L"A");
    }
}

TEST(qelIncrementalCounter, MaxCountOfOneAndBelowAllowsNoStepAndMinusOneAny)
{
    for (int maxCount : {1, 0, -2, INT_MIN})
    {
        Probe probe = counter(record(L"A", L"A", 26, L"", maxCount));
        EXPECT_EQ(probe.increment(), Counter::eMaxCountReached) << maxCount;
        EXPECT_EQ(probe.code(), L"A");
    }
    Probe unlimited = counter(record(L"0", L"0", 10, L"", -1));
    for (int i = 0; i < 5000; ++i)
    {
        ASSERT_EQ(unlimited.increment(), Counter::eIncremented);
    }
    EXPECT_EQ(unlimited.code(), L"5000");
}

TEST(qelIncrementalCounter, RefusedStepCountsToo)
{
    Probe probe = counter(record(L"A", L"A", 26, L"", 1));
    probe.increment();
    probe.increment();
    EXPECT_EQ(probe.callCount(), 2);
}

TEST(qelIncrementalCounter, SettingTheCodeKeepsTheCallCount)
{
    Probe probe = counter(record(L"A", L"A", 26, L"", 3));
    probe.increment();
    probe.setCounterString(L"QZ");
    EXPECT_EQ(probe.callCount(), 1);
    EXPECT_EQ(probe.code(), L"QZ");
    EXPECT_EQ(probe.increment(), Counter::eIncremented);
    EXPECT_EQ(probe.code(), L"RA");
    EXPECT_EQ(probe.increment(), Counter::eMaxCountReached);
    EXPECT_EQ(probe.code(), L"RA");
}

TEST(qelIncrementalCounter, CodeMayBeSetLongerAndShorterThanTheStart)
{
    Probe probe = counter(record(L"A", L"A", 26));
    probe.setCounterString(L"ABCDEFGHIJKLMNOPQ");
    probe.increment();
    EXPECT_EQ(probe.code(), L"ABCDEFGHIJKLMNOPR");
    probe.setCounterString(L"");
    EXPECT_EQ(probe.code(), L"");
    probe.increment();
    EXPECT_EQ(probe.code(), L"A");
    probe.reset();
    EXPECT_EQ(probe.code(), L"A");
    EXPECT_EQ(probe.callCount(), 0);
}

TEST(qelIncrementalCounter, CodeHandedOutIsNotChangedByLaterSteps)
{
    Probe probe = counter(record(L"A", L"A", 26));
    const qelString start = probe.getCounterString();
    probe.increment();
    const qelString next = probe.getCounterString();
    probe.increment();
    probe.increment();
    EXPECT_EQ(text(start), L"A");
    EXPECT_EQ(text(next), L"B");
    EXPECT_EQ(probe.code(), L"D");
}

TEST(qelIncrementalCounter, CopiesGoOnIndependently)
{
    Probe probe = counter(record(L"8", L"0", 10, L"", 4));
    probe.increment();
    Probe copy(probe);
    Probe assigned;
    assigned = probe;
    probe.increment();
    probe.increment();
    EXPECT_EQ(probe.code(), L"11");
    for (Probe* other : {&copy, &assigned})
    {
        EXPECT_EQ(other->code(), L"9");
        EXPECT_EQ(other->callCount(), 1);
        EXPECT_EQ(other->numericOnly(), 1);
        EXPECT_EQ(other->increment(), Counter::eIncremented);
        EXPECT_EQ(other->code(), L"10");
        EXPECT_EQ(other->increment(), Counter::eIncremented);
        EXPECT_EQ(other->increment(), Counter::eMaxCountReached);
        other->reset();
        EXPECT_EQ(other->code(), L"8");
    }
    Probe& self = copy;
    copy = self;
    EXPECT_EQ(copy.code(), L"8");
}

/// All that a failed call could have changed.
struct Seen
{
    explicit Seen(const Probe& probe)
        : code(probe.code())
        , userValue(probe.userValue())
        , numericOnly(probe.numericOnly())
        , callCount(probe.callCount())
    {
        Probe copy(probe);
        copy.increment();
        codeAfterNextStep = copy.code();
        copy.reset();
        codeAfterReset = copy.code();
    }

    bool operator==(const Seen& other) const
    {
        return code == other.code && userValue == other.userValue && numericOnly == other.numericOnly &&
               callCount == other.callCount && codeAfterNextStep == other.codeAfterNextStep &&
               codeAfterReset == other.codeAfterReset;
    }

    std::wstring code;
    int userValue;
    int numericOnly;
    int callCount;
    std::wstring codeAfterNextStep;
    std::wstring codeAfterReset;
};

/// Runs out of memory at every allocation of `action`, on a counter that stands at `code`; returns how often.
template <class Action> int runOutOfMemoryAt(const wchar_t* code, Action action)
{
    Probe probe = counter(record(L"7", L"0", 10, L"4"));
    probe.setCounterString(code);
    const Seen before(probe);
    const int failures =
        qelTest::failEveryAllocation([&] { action(probe); }, [&] { EXPECT_TRUE(Seen(probe) == before); });
    EXPECT_FALSE(Seen(probe) == before);
    return failures;
}

TEST(qelIncrementalCounterWithoutMemory, KeepsItsStateWhenAStepFails)
{
    const auto step = [](Probe& probe) { EXPECT_EQ(probe.increment(), Counter::eIncremented); };
    // The text; for a code that grows past eight positions their storage; for one past the stack room to build it.
    EXPECT_GE(runOutOfMemoryAt(L"99", step), 1);
    EXPECT_GE(runOutOfMemoryAt(L"99999999", step), 2);
    EXPECT_GE(runOutOfMemoryAt(std::wstring(80, L'9').c_str(), step), 3);
}

TEST(qelIncrementalCounterWithoutMemory, StepsWhileNobodyElseHasTheCode)
{
    const auto step = [](Probe& probe) { EXPECT_EQ(probe.increment(), Counter::eIncremented); };
    EXPECT_EQ(runOutOfMemoryAt(L"13", step), 0);

    qelString copy;
    const auto stepBesideACopy = [&](Probe& probe) {
        copy = probe.getCounterString();
        step(probe);
    };
    EXPECT_EQ(runOutOfMemoryAt(L"13", stepBesideACopy), 1);
    EXPECT_EQ(text(copy), L"13");
}

TEST(qelIncrementalCounterWithoutMemory, DoesNotCountARefusedStepThatFails)
{
    Probe probe = counter(record(L"7", L"0", 10, L"", 2));
    probe.increment();
    const int failures = qelTest::failEveryAllocation([&] { EXPECT_EQ(probe.increment(), Counter::eMaxCountReached); },
                                                      [&] { EXPECT_EQ(probe.callCount(), 1); });
    EXPECT_EQ(probe.callCount(), 2);
    EXPECT_EQ(probe.code(), L"8");
    EXPECT_LE(failures, 1);
}

TEST(qelIncrementalCounterWithoutMemory, KeepsItsStateWhenAnotherOneCannotBeTakenOver)
{
    StructIncrementalCounter letters = record(L"a long start value", L"A", 26);
    letters.userValue = 5;
    EXPECT_EQ(runOutOfMemoryAt(L"13", [&](Probe& probe) { probe.setDataFrom(letters); }), 1);

    const Probe other = counter(letters);
    EXPECT_EQ(runOutOfMemoryAt(L"13", [&](Probe& probe) { probe = other; }), 1);

    const qelString code(L"twelve units");
    EXPECT_EQ(runOutOfMemoryAt(L"13", [&](Probe& probe) { probe.setCounterString(code); }), 1);
}

TEST(qelIncrementalCounterWithoutMemory, KeepsItsStateWhenTheResetFails)
{
    Probe brief = counter(record(L"a long start value", L"A", 26));
    brief.setCounterString(L"x");
    Probe probe(brief); // with one slot only
    const Seen before(probe);
    const int failures =
        qelTest::failEveryAllocation([&] { probe.reset(); }, [&] { EXPECT_TRUE(Seen(probe) == before); });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(probe.code(), L"a long start value");
}

TEST(qelIncrementalCounterPosition, ReportsTheCarryAndUsesTheGivenExcludedSet)
{
    const Probe letters = counter(record(L"A", L"A", 3, L"B"));
    EXPECT_EQ(position(letters, L'A'), L"B") << "the set of the call, not the one of the record";
    EXPECT_EQ(position(letters, L'A', L"B"), L"C");
    EXPECT_EQ(position(letters, L'C'), L"A+");
    EXPECT_EQ(position(letters, L'A', L"BC"), L"A+");
    EXPECT_EQ(position(letters, L'D'), L"E");
    EXPECT_EQ(position(letters, L'@'), L"A");

    const Probe digits = counter(record(L"5", L"5", 3));
    EXPECT_EQ(position(digits, L'7'), L"0+");
}

TEST(qelIncrementalCounterPosition, WrapsPast16BitsToNulWhichAnyExcludedSetLeavesOut)
{
    const Probe probe = counter(record(L"A", L"A", 26));
    EXPECT_EQ(position(probe, 0xFFFF), std::wstring(1, L'\0'));
    EXPECT_EQ(position(probe, 0xFFFF, L"ABC"), L"\x0001") << "the text of NUL is empty, and found in any other";
    EXPECT_EQ(position(probe, 0xFFFE, L"\xFFFF"), std::wstring(1, static_cast<wchar_t>(0xFFFF)))
        << "not below the end of the range any more";

    const Probe wide = counter(record(L"A", L"A", 100000));
    EXPECT_EQ(position(wide, 0xFFFE, L"\xFFFF"), L"\x0001");
    EXPECT_EQ(position(wide, 0xFFFE), std::wstring(1, static_cast<wchar_t>(0xFFFF)));

    const Probe belowNul = counter(record(L"", L"", -2));
    EXPECT_EQ(position(belowNul, 0xFFFF, L"A"), std::wstring(1, L'\0')) << "not below the end of the range";
}

TEST(qelIncrementalCounterPosition, StaysWhereItIsWhenEveryCharacterIsExcluded)
{
    std::wstring all;
    for (int c = 1; c <= 0xFFFF; ++c)
    {
        all.push_back(static_cast<wchar_t>(c));
    }
    const Probe probe = counter(record(L"A", L"A", INT_MAX));
    EXPECT_EQ(position(probe, L'C', all.c_str()), L"C");
}

TEST(qelIncrementalCounterPosition, GoesOnBehindNulWhenEveryCharacterAheadIsExcluded)
{
    std::wstring ahead;
    for (int c = 0xF001; c <= 0xFFFF; ++c)
    {
        ahead.push_back(static_cast<wchar_t>(c));
    }
    const Probe probe = counter(record(L"A", L"A", INT_MAX));
    EXPECT_EQ(position(probe, 0xF000, ahead.c_str()), L"\x0001");
}

TEST(qelIncrementalCounterPosition, EndOfTheRangeMayLieOnAnyDistance)
{
    const Probe none = counter(record(L"A", L"A", 0));
    EXPECT_EQ(position(none, L'@'), L"A+");
    EXPECT_EQ(position(none, L'A'), L"B");

    const Probe negative = counter(record(L"A", L"A", -2));
    EXPECT_EQ(position(negative, L'>'), L"A+");
    EXPECT_EQ(position(negative, L'A', L"B"), L"B") << "not below the end of the range";

    const Probe wrapped = counter(record(L"A", L"A", -65));
    EXPECT_EQ(position(wrapped, 0xFFFF), L"A+") << "NUL is 65 before A";

    const Probe greatest = counter(record(L"A", L"A", INT_MAX));
    EXPECT_EQ(position(greatest, L'A'), L"B");
    const Probe smallest = counter(record(L"A", L"A", INT_MIN));
    EXPECT_EQ(position(smallest, L'A'), L"B");
}

TEST(qelIncrementalCounter, PositionAtNulDoesNotShowInTheCode)
{
    Probe probe = counter(record(L"A", L"A", 26));
    probe.setCounterString(L"A\xFFFF");
    probe.increment();
    EXPECT_EQ(probe.code(), L"A");
    probe.increment();
    EXPECT_EQ(probe.code(), L"A\x01") << "the position is still there";

    probe.setDataFrom(record(L"Z", L"Z", 1));
    probe.setCounterString(L"\xFFFFZ");
    probe.increment();
    EXPECT_EQ(probe.code(), L"Z") << "the character behind it is kept";
}

TEST(qelIncrementalCounter, EmptyFirstCharacterCountsFromNul)
{
    Probe probe = counter(record(L"", L"", 3));
    std::vector<std::wstring> codes;
    for (int i = 0; i < 6; ++i)
    {
        probe.increment();
        codes.push_back(probe.code());
    }
    // Numeric, since empty texts are. A position in front leaves out the digit 0, and NUL with it; one that starts over
    // does so at the digit 0.
    EXPECT_EQ(codes, (std::vector<std::wstring>{L"\x01", L"\x02", L"\x01\x30", L"\x01\x31", L"\x01\x32", L"\x01\x33"}));
}

TEST(qelIncrementalCounter, NumbersAgreeWithArithmetic)
{
    Probe probe = counter(record(L"0", L"0", 10));
    for (int i = 0; i < 120000; ++i)
    {
        ASSERT_EQ(probe.code(), std::to_wstring(i));
        probe.increment();
    }
}

/// 1 is A, 26 is Z, 27 is AA: letters as a number without zero.
std::wstring lettered(int number)
{
    std::wstring letters;
    for (; number > 0; number = (number - 1) / 26)
    {
        letters.insert(letters.begin(), static_cast<wchar_t>(L'A' + (number - 1) % 26));
    }
    return letters;
}

TEST(qelIncrementalCounter, LettersAgreeWithArithmetic)
{
    Probe probe = counter(record(L"", L"A", 26));
    for (int i = 0; i < 20000; ++i)
    {
        ASSERT_EQ(probe.code(), lettered(i));
        probe.increment();
    }
}

/// The counter's rules once more, on plain numbers.
class Oracle
{
public:
    Oracle(const std::wstring& start, const std::wstring& first, int range, const std::wstring& excluded, int maxCount)
        : m_first(first.empty() ? 0 : first.back())
        , m_range(range)
        , m_maxCount(maxCount)
        , m_numeric((start + first).find_first_not_of(L"0123456789") == std::wstring::npos)
        , m_excluded(excluded)
        , m_positions(start.begin(), start.end())
    {
    }

    bool step()
    {
        ++m_calls;
        if (m_maxCount != -1 && m_calls >= m_maxCount)
        {
            return false;
        }
        size_t left = m_positions.size();
        while (left > 0)
        {
            --left;
            if (!advance(m_positions[left], m_excluded))
            {
                return true;
            }
        }
        int leading = m_first == 0 ? 0xFFFF : m_first - 1;
        advance(leading, m_numeric ? m_excluded + L"0" : m_excluded);
        m_positions.insert(m_positions.begin(), leading);
        return true;
    }

    std::wstring code() const
    {
        std::wstring shown;
        for (int position : m_positions)
        {
            if (position != 0)
            {
                shown.push_back(static_cast<wchar_t>(position));
            }
        }
        return shown;
    }

private:
    /// True when the position started over.
    bool advance(int& position, const std::wstring& excluded) const
    {
        for (;;)
        {
            position = position == 0xFFFF ? 0 : position + 1;
            const wchar_t c = static_cast<wchar_t>(position);
            const std::wstring shown = c == 0 ? std::wstring() : std::wstring(1, c);
            const bool isExcluded = !excluded.empty() && excluded.find(shown) != std::wstring::npos;
            if (!isExcluded || position >= m_first + m_range)
            {
                break;
            }
        }
        if (position != m_first + m_range)
        {
            return false;
        }
        position = m_numeric ? L'0' : m_first;
        return true;
    }

    int m_first;
    int m_range;
    int m_maxCount;
    bool m_numeric;
    std::wstring m_excluded;
    std::vector<int> m_positions;
    int m_calls = 0;
};

void compareWithOracle(const std::wstring& start, const std::wstring& first, int range, const std::wstring& excluded,
                       int maxCount, int steps)
{
    Probe probe = counter(record(start.c_str(), first.c_str(), range, excluded.c_str(), maxCount));
    Oracle oracle(start, first, range, excluded, maxCount);
    for (int i = 0; i < steps; ++i)
    {
        const bool moved = oracle.step();
        ASSERT_EQ(probe.increment(), moved ? Counter::eIncremented : Counter::eMaxCountReached);
        ASSERT_EQ(probe.code(), oracle.code())
            << "start " << testing::PrintToString(start) << " first " << testing::PrintToString(first) << " range "
            << range << " excluded " << testing::PrintToString(excluded) << " step " << i;
    }
}

TEST(qelIncrementalCounterExhaustive, SmallAlphabets)
{
    // Characters from one before the range to two behind it, all sets of three of them excluded.
    for (wchar_t first : {L'A', L'0', L'3', L'8'})
    {
        std::wstring alphabet;
        for (int c = first - 1; c <= first + 4; ++c)
        {
            alphabet.push_back(static_cast<wchar_t>(c));
        }
        for (const std::wstring& start : allTexts(alphabet, 2))
        {
            for (int range = -1; range <= 3; ++range)
            {
                for (unsigned set = 0; set < 32; ++set)
                {
                    std::wstring excluded;
                    for (unsigned bit = 0; bit < 5; ++bit)
                    {
                        if ((set >> bit & 1U) != 0)
                        {
                            excluded.push_back(static_cast<wchar_t>(first + static_cast<int>(bit)));
                        }
                    }
                    for (int maxCount : {-1, 0, 4})
                    {
                        compareWithOracle(start, std::wstring(1, first), range, excluded, maxCount, 10);
                        ASSERT_FALSE(HasFatalFailure());
                    }
                }
            }
        }
    }
}

TEST(qelIncrementalCounterExhaustive, LongRunsOfEveryStartOfUpToThreeCharacters)
{
    for (const std::wstring& start : allTexts(L"ABCD", 3))
    {
        for (const wchar_t* excluded : {L"", L"A", L"B", L"C", L"AB", L"AC", L"BC", L"ABC"})
        {
            compareWithOracle(start, L"A", 3, excluded, -1, 150);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
    for (const std::wstring& start : allTexts(L"0129", 3))
    {
        for (const wchar_t* excluded : {L"", L"0", L"1", L"2", L"01", L"02", L"12", L"012"})
        {
            compareWithOracle(start, L"0", 3, excluded, -1, 150);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST(qelIncrementalCounterExhaustive, EndsOfThe16BitCharacters)
{
    for (const std::wstring& start : allTexts(L"\x01\x02\xFFFE\xFFFF", 3))
    {
        for (const wchar_t* first : {L"", L"\x01", L"\xFFFE", L"\xFFFF"})
        {
            for (int range : {0, 1, 2, 3, 65535, 65536, 65537, -1, -65534, -65535})
            {
                for (const wchar_t* excluded : {L"", L"\x01", L"\xFFFF", L"\x01\xFFFF"})
                {
                    compareWithOracle(start, first, range, excluded, -1, 8);
                    ASSERT_FALSE(HasFatalFailure());
                }
            }
        }
    }
}

void ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

int boundedCopies = 0;

errno_t countingCopy(wchar_t* to, size_t room, const wchar_t* from)
{
    ++boundedCopies;
    return wcscpy_s(to, room, from);
}

TEST(qelIncrementalCounterLimit, CodeGrowsToTheLimitOfATextAndFailsThereAsConcatenationDoes)
{
    const _invalid_parameter_handler before = _set_invalid_parameter_handler(ignoreInvalidParameter);

    Probe fits = counter(record(std::wstring(kLimit - 2, L'Z').c_str(), L"A", 26));
    fits.increment();
    EXPECT_EQ(fits.code(), std::wstring(kLimit - 1, L'A'));

    Probe full = counter(record(std::wstring(kLimit - 1, L'Z').c_str(), L"A", 26));
    full.increment();
    EXPECT_EQ(full.code(), L"");

    // The positions are all still there, and the text begins anew behind the limit.
    Probe over = counter(record(std::wstring(kLimit, L'Z').c_str(), L"A", 26));
    EXPECT_EQ(over.code().size(), kLimit);
    {
        // The runtimes call their handler of invalid parameters for it, Wine's does not.
        const qelTest::ImportHook hook("wcscpy_s", countingCopy);
        boundedCopies = 0;
        over.increment();
        EXPECT_EQ(boundedCopies, 1);
    }
    EXPECT_EQ(over.code(), L"A");
    over.increment();
    EXPECT_EQ(over.code(), L"B");

    (void)_set_invalid_parameter_handler(before);
}
} // namespace
