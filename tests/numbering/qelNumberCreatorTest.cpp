#include "qelNumberCreator.h"

#include "numbering/AllTexts.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

using qelTest::allTexts;

namespace
{
static_assert(eCodeSet == 0 && eCodeNotSet == 2 && sizeof(SetCodeTag) == 4, "values of callers");
static_assert(std::is_same<std::underlying_type<eNumberingType>::type, int>::value, "its values are the callers'");
static_assert(sizeof(StructNumberingDataRange) == 80 && sizeof(qelNumberCreator) == 160, "layouts of callers");
static_assert(offsetof(StructNumberingDataRange, rangeValue) == 0, "order of fields");
static_assert(offsetof(StructNumberingDataRange, rangeName) == 8, "order of fields");
static_assert(offsetof(StructNumberingDataRange, firstSymbol) == 24, "order of fields");
static_assert(offsetof(StructNumberingDataRange, symbolCount) == 40, "order of fields");
static_assert(offsetof(StructNumberingDataRange, defaultStart) == 48, "order of fields");
static_assert(offsetof(StructNumberingDataRange, rangeText) == 64, "order of fields");
static_assert(std::has_virtual_destructor<qelNumberCreator>::value, "callers derive from it");

const eNumberingType kNone = static_cast<eNumberingType>(0);
const eNumberingType kLetters = static_cast<eNumberingType>(1);
const eNumberingType kNumeric = static_cast<eNumberingType>(3);
const eNumberingType kOther = static_cast<eNumberingType>(-7);

const size_t kLimit = 0x80000; // greatest length of a text; results of concatenation end one before it

std::wstring text(const qelString& value)
{
    return value.getStringW();
}

/// Opens the protected operation and, at their places in the object, the fields that have no getter.
class Probe : public qelNumberCreator
{
public:
    using qelNumberCreator::checkNumber;
    using qelNumberCreator::qelNumberCreator;

    Probe() = default;
    Probe(const Probe&) = default;
    Probe& operator=(const Probe&) = default;

    std::wstring prefix() const { return text(getNumberingPrefix()); }
    std::wstring suffix() const { return text(getNumberingSufix()); }
    std::wstring start() const { return text(getNumberingStart()); }
    std::wstring current() const { return text(*static_cast<const qelString*>(fieldAt(144))); }
    const StructNumberingDataRange& range() const { return *static_cast<const StructNumberingDataRange*>(fieldAt(64)); }
    std::wstring next() { return text(getNextNumber()); }

private:
    const void* fieldAt(size_t offset) const
    {
        const qelNumberCreator* self = this;
        return reinterpret_cast<const char*>(self) + offset;
    }
};

/// A range with something in every field.
StructNumberingDataRange range(const wchar_t* firstSymbol, int symbolCount, const wchar_t* defaultStart)
{
    StructNumberingDataRange made;
    made.rangeValue = 77;
    made.rangeName = L"a name";
    made.rangeText = L"a text";
    made.firstSymbol = firstSymbol;
    made.symbolCount = symbolCount;
    made.defaultStart = defaultStart;
    return made;
}

/// A creator whose next running code is `start`; the type must not be 0.
Probe creator(const wchar_t* firstSymbol, int symbolCount, const wchar_t* start, eNumberingType type)
{
    Probe made;
    EXPECT_EQ(made.overrideDataRange(range(firstSymbol, symbolCount, start), type), eCodeSet);
    return made;
}

std::vector<std::wstring> numbers(Probe& probe, int count)
{
    std::vector<std::wstring> made;
    for (int i = 0; i < count; ++i)
    {
        made.push_back(probe.next());
    }
    return made;
}

typedef std::vector<std::wstring> Texts;

void expectEmpty(const StructNumberingDataRange& checked)
{
    EXPECT_EQ(checked.rangeValue, 0);
    EXPECT_EQ(checked.symbolCount, 0);
    EXPECT_EQ(checked.rangeName.isEmpty(), 1);
    EXPECT_EQ(checked.firstSymbol.isEmpty(), 1);
    EXPECT_EQ(checked.defaultStart.isEmpty(), 1);
    EXPECT_EQ(checked.rangeText.isEmpty(), 1);
}

TEST(StructNumberingDataRange, IsEmptyByDefault)
{
    expectEmpty(StructNumberingDataRange());
}

TEST(qelNumberCreator, IsEmptyByDefault)
{
    const Probe fresh;
    EXPECT_EQ(fresh.getNumberingType(), kNone);
    EXPECT_EQ(fresh.prefix(), L"");
    EXPECT_EQ(fresh.suffix(), L"");
    EXPECT_EQ(fresh.start(), L"");
    EXPECT_EQ(fresh.current(), L"");
    expectEmpty(fresh.range());
}

TEST(qelNumberCreator, StartsWithTheGivenTypeAndPrefix)
{
    const Probe fresh(kOther, L"P-");
    EXPECT_EQ(fresh.getNumberingType(), kOther);
    EXPECT_EQ(fresh.prefix(), L"P-");
    EXPECT_EQ(fresh.suffix(), L"");
    EXPECT_EQ(fresh.start(), L"");
    EXPECT_EQ(fresh.current(), L"");
    expectEmpty(fresh.range());
}

TEST(qelNumberCreator, CopyHasNoRange)
{
    Probe original = creator(L"0", 10, L"7", kNumeric);
    original.setNumberingPrefix(L"<");
    original.setNumberingSufix(L">");
    original.next();

    const Probe copy(original);
    EXPECT_EQ(copy.getNumberingType(), kNumeric);
    EXPECT_EQ(copy.prefix(), L"<");
    EXPECT_EQ(copy.suffix(), L">");
    EXPECT_EQ(copy.start(), L"7");
    EXPECT_EQ(copy.current(), L"8");
    expectEmpty(copy.range());
}

TEST(qelNumberCreator, AssignmentLeavesTheRangeOfTheTargetAlone)
{
    Probe original = creator(L"0", 10, L"7", kNumeric);
    original.setNumberingPrefix(L"<");
    original.setNumberingSufix(L">");
    original.next();

    StructNumberingDataRange own = range(L"A", 26, L"Q");
    own.rangeValue = 5;
    own.rangeName = L"own name";
    own.rangeText = L"own text";
    Probe target;
    target.overrideDataRange(own, kLetters);
    target = original;
    EXPECT_EQ(target.getNumberingType(), kNumeric);
    EXPECT_EQ(target.prefix(), L"<");
    EXPECT_EQ(target.suffix(), L">");
    EXPECT_EQ(target.start(), L"7");
    EXPECT_EQ(target.current(), L"8");
    EXPECT_EQ(target.range().rangeValue, 5);
    EXPECT_EQ(text(target.range().rangeName), L"own name");
    EXPECT_EQ(text(target.range().firstSymbol), L"A");
    EXPECT_EQ(target.range().symbolCount, 26);
    EXPECT_EQ(text(target.range().defaultStart), L"Q");
    EXPECT_EQ(text(target.range().rangeText), L"own text");

    Probe fresh;
    fresh = original;
    expectEmpty(fresh.range());
}

TEST(qelNumberCreator, AssignmentToItselfDoesNothing)
{
    Probe probe = creator(L"0", 10, L"7", kNumeric);
    const Probe& self = probe;
    probe = self;
    EXPECT_EQ(text(probe.range().firstSymbol), L"0");
    EXPECT_EQ(numbers(probe, 2), (Texts{L"7", L"8"}));
}

TEST(qelNumberCreator, CopyCountsInItsRangeOnceItIsGivenOne)
{
    const Probe original = creator(L"0", 10, L"8", kNumeric);
    Probe copy(original);
    EXPECT_EQ(copy.overrideDataRange(range(L"0", 10, L"1"), kNumeric), eCodeNotSet);
    EXPECT_EQ(numbers(copy, 3), (Texts{L"8", L"9", L"10"}));
}

TEST(qelNumberCreator, PrefixAndSuffixReportWhetherTheyChanged)
{
    Probe probe;
    EXPECT_EQ(probe.setNumberingPrefix(L""), eCodeNotSet);
    EXPECT_EQ(probe.setNumberingPrefix(L"P"), eCodeSet);
    EXPECT_EQ(probe.setNumberingPrefix(qelString(L"P")), eCodeNotSet);
    EXPECT_EQ(probe.setNumberingPrefix(L"p"), eCodeSet) << "letter case is a change";
    EXPECT_EQ(probe.setNumberingPrefix(L"pp"), eCodeSet);
    EXPECT_EQ(probe.setNumberingPrefix(L"p"), eCodeSet);
    EXPECT_EQ(probe.prefix(), L"p");
    EXPECT_EQ(probe.suffix(), L"");

    EXPECT_EQ(probe.setNumberingSufix(L""), eCodeNotSet);
    EXPECT_EQ(probe.setNumberingSufix(L"S"), eCodeSet);
    EXPECT_EQ(probe.setNumberingSufix(L"S"), eCodeNotSet);
    EXPECT_EQ(probe.setNumberingSufix(probe.getNumberingPrefix()), eCodeSet);
    EXPECT_EQ(probe.suffix(), L"p");
    EXPECT_EQ(probe.setNumberingSufix(L""), eCodeSet);
    EXPECT_EQ(probe.suffix(), L"");
}

TEST(qelNumberCreator, GettersReturnTheStoredTextsThemselves)
{
    Probe probe;
    const qelString& prefix = probe.getNumberingPrefix();
    const qelString& suffix = probe.getNumberingSufix();
    const qelString& start = probe.getNumberingStart();
    probe.setNumberingPrefix(L"P");
    probe.setNumberingSufix(L"S");
    probe.overrideDataRange(range(L"0", 10, L"4"), kNumeric);
    EXPECT_EQ(text(prefix), L"P");
    EXPECT_EQ(text(suffix), L"S");
    EXPECT_EQ(text(start), L"4");
}

TEST(qelNumberCreator, AnotherTypeStartsOverFromTheFirstSymbolText)
{
    Probe probe = creator(L"ABC", 26, L"K", kLetters);
    probe.next();
    EXPECT_EQ(probe.setNumberingType(kOther), eCodeSet);
    EXPECT_EQ(probe.getNumberingType(), kOther);
    EXPECT_EQ(probe.start(), L"ABC") << "the whole text, not the default start";
    EXPECT_EQ(probe.current(), L"ABC");
}

TEST(qelNumberCreator, SameTypeChangesNothing)
{
    Probe probe = creator(L"A", 26, L"K", kLetters);
    probe.next();
    EXPECT_EQ(probe.setNumberingType(kLetters), eCodeNotSet);
    EXPECT_EQ(probe.start(), L"K");
    EXPECT_EQ(probe.current(), L"L");

    Probe fresh;
    EXPECT_EQ(fresh.setNumberingType(kNone), eCodeNotSet) << "a fresh creator has type 0";
}

TEST(qelNumberCreator, StartMustConsistOfSymbolsOfTheRange)
{
    Probe probe = creator(L"B", 3, L"C", kLetters);
    for (const wchar_t* refused : {L"A", L"E", L"BA", L"EB", L"BCDE", L"b", L" "})
    {
        EXPECT_EQ(probe.setNumberingStart(refused), eCodeNotSet) << testing::PrintToString(refused);
        EXPECT_EQ(probe.start(), L"C");
    }
    for (const wchar_t* accepted : {L"B", L"D", L"BCD", L"DDDD", L""})
    {
        EXPECT_EQ(probe.setNumberingStart(accepted), eCodeSet);
        EXPECT_EQ(probe.start(), accepted);
    }
}

TEST(qelNumberCreator, StartThatIsSetAlreadyIsSetAgain)
{
    Probe probe = creator(L"B", 3, L"C", kLetters);
    EXPECT_EQ(probe.setNumberingStart(L"C"), eCodeSet);
    EXPECT_EQ(probe.setNumberingStart(L"C"), eCodeSet);
}

TEST(qelNumberCreator, StartDoesNotTouchTheNextNumberBeforeReset)
{
    Probe probe = creator(L"0", 10, L"5", kNumeric);
    EXPECT_EQ(probe.setNumberingStart(L"1"), eCodeSet);
    EXPECT_EQ(numbers(probe, 2), (Texts{L"5", L"6"}));
    probe.reset();
    EXPECT_EQ(numbers(probe, 2), (Texts{L"1", L"2"}));
    probe.reset();
    EXPECT_EQ(probe.next(), L"1");
}

TEST(qelNumberCreator, ChecksANumberAgainstTheRange)
{
    EXPECT_EQ(creator(L"0", 10, L"", kNumeric).checkNumber(L"0123456789"), 1);
    EXPECT_EQ(creator(L"0", 10, L"", kNumeric).checkNumber(L":"), 0);
    EXPECT_EQ(creator(L"0", 10, L"", kNumeric).checkNumber(L"/"), 0);
    EXPECT_EQ(creator(L"0", 10, L"", kNumeric).checkNumber(L""), 1);
    EXPECT_EQ(creator(L"AX", 2, L"", kNumeric).checkNumber(L"AB"), 1) << "the first character decides";
    EXPECT_EQ(creator(L"0", 0, L"", kNumeric).checkNumber(L"0"), 0);
    EXPECT_EQ(creator(L"0", 0, L"", kNumeric).checkNumber(L""), 1);
    EXPECT_EQ(creator(L"0", -1, L"", kNumeric).checkNumber(L"/"), 0);
    EXPECT_EQ(creator(L"0", INT_MIN, L"", kNumeric).checkNumber(L"0"), 0);
    EXPECT_EQ(creator(L"A", INT_MAX, L"", kNumeric).checkNumber(L"A\xFFFF"), 1) << "the end does not fit an int";
    EXPECT_EQ(creator(L"A", INT_MAX, L"", kNumeric).checkNumber(L"@"), 0);
    EXPECT_EQ(creator(L"", 66, L"", kNumeric).checkNumber(L"A"), 1) << "no first symbol counts as 0";
    EXPECT_EQ(creator(L"", 65, L"", kNumeric).checkNumber(L"A"), 0);
    EXPECT_EQ(Probe().checkNumber(L"0"), 0);
    EXPECT_EQ(Probe().checkNumber(L""), 1);
}

TEST(qelNumberCreator, OverridingTheRangeWithAnotherTypeStartsOverFromItsDefault)
{
    Probe probe;
    StructNumberingDataRange given = range(L"A", 26, L"K9");
    given.rangeValue = 12;
    given.rangeName = L"name";
    given.rangeText = L"text";
    EXPECT_EQ(probe.overrideDataRange(given, kLetters), eCodeSet);
    EXPECT_EQ(probe.getNumberingType(), kLetters);
    EXPECT_EQ(probe.start(), L"K9") << "not checked";
    EXPECT_EQ(probe.current(), L"K9");
    EXPECT_EQ(probe.range().rangeValue, 12);
    EXPECT_EQ(text(probe.range().rangeName), L"name");
    EXPECT_EQ(text(probe.range().firstSymbol), L"A");
    EXPECT_EQ(probe.range().symbolCount, 26);
    EXPECT_EQ(text(probe.range().defaultStart), L"K9");
    EXPECT_EQ(text(probe.range().rangeText), L"text");
}

TEST(qelNumberCreator, OverridingTheRangeWithTheSameTypeReplacesItAndReportsThatNothingWasSet)
{
    Probe probe = creator(L"0", 10, L"8", kNumeric);
    probe.next();
    StructNumberingDataRange given = range(L"0", 16, L"2");
    given.rangeValue = 5;
    given.rangeName = L"name";
    given.rangeText = L"text";
    EXPECT_EQ(probe.overrideDataRange(given, kNumeric), eCodeNotSet);
    EXPECT_EQ(probe.start(), L"8");
    EXPECT_EQ(probe.range().rangeValue, 5);
    EXPECT_EQ(text(probe.range().rangeName), L"name");
    EXPECT_EQ(text(probe.range().defaultStart), L"2");
    EXPECT_EQ(text(probe.range().rangeText), L"text");
    EXPECT_EQ(numbers(probe, 3), (Texts{L"9", L":", L";"})) << "counts on in the new range";
}

TEST(qelNumberCreator, HandsOutTheStartFirst)
{
    Probe probe = creator(L"0", 10, L"8", kNumeric);
    EXPECT_EQ(numbers(probe, 4), (Texts{L"8", L"9", L"10", L"11"}));
}

TEST(qelNumberCreator, PutsPrefixAndSuffixAroundTheRunningCode)
{
    Probe probe = creator(L"0", 10, L"99", kNumeric);
    probe.setNumberingPrefix(L"P-");
    EXPECT_EQ(probe.next(), L"P-99");
    probe.setNumberingSufix(L"/x");
    EXPECT_EQ(probe.next(), L"P-100/x");
    probe.setNumberingPrefix(L"");
    EXPECT_EQ(probe.next(), L"101/x");
    EXPECT_EQ(probe.current(), L"102");

    const std::wstring longText(300, L'x');
    probe.setNumberingPrefix(longText.c_str());
    EXPECT_EQ(probe.next(), longText + L"102/x");
}

TEST(qelNumberCreator, NumberHandedOutIsNotChangedByLaterOnes)
{
    Probe probe = creator(L"0", 10, L"7", kNumeric);
    const qelString first = probe.getNextNumber();
    const qelString second = probe.getNextNumber();
    probe.next();
    EXPECT_EQ(text(first), L"7");
    EXPECT_EQ(text(second), L"8");
    EXPECT_EQ(probe.start(), L"7");
    EXPECT_EQ(probe.current(), L"10");
}

TEST(qelNumberCreator, NumericTypeGrowsByASymbolAboveItsZero)
{
    Probe digits = creator(L"0", 10, L"99", kNumeric);
    EXPECT_EQ(digits.next(), L"99");
    EXPECT_EQ(digits.current(), L"100");

    Probe letters = creator(L"A", 26, L"Z", kNumeric);
    EXPECT_EQ(numbers(letters, 2), (Texts{L"Z", L"BA"}));
}

TEST(qelNumberCreator, OtherTypesGrowByTheLowestSymbol)
{
    Probe letters = creator(L"A", 26, L"Z", kLetters);
    EXPECT_EQ(numbers(letters, 3), (Texts{L"Z", L"AA", L"AB"}));

    Probe digits = creator(L"0", 10, L"9", kLetters);
    EXPECT_EQ(numbers(digits, 3), (Texts{L"9", L"00", L"01"}));
}

TEST(qelNumberCreator, EmptyRunningCodeGivesPrefixAndSuffixAndGrows)
{
    Probe numeric = creator(L"0", 10, L"", kNumeric);
    numeric.setNumberingPrefix(L"P");
    numeric.setNumberingSufix(L"S");
    EXPECT_EQ(numeric.next(), L"PS");
    EXPECT_EQ(numeric.current(), L"1");
    EXPECT_EQ(numeric.next(), L"P1S");

    Probe letters = creator(L"A", 26, L"", kLetters);
    EXPECT_EQ(numbers(letters, 3), (Texts{L"", L"A", L"B"}));
}

TEST(qelNumberCreator, SymbolsOutsideTheRangeAreFoldedIntoIt)
{
    Probe above = creator(L"A", 3, L"AG", kLetters); // G is 6 above A: 7 modulo 3 is 1, with a carry
    EXPECT_EQ(numbers(above, 2), (Texts{L"AG", L"BB"}));

    Probe below = creator(L"A", 3, L"A>", kLetters); // > is 3 below A: -2 stays -2, without a carry
    EXPECT_EQ(numbers(below, 4), (Texts{L"A>", L"A?", L"A@", L"AA"}));

    Probe farBelow = creator(L"A", 3, L"A1", kLetters); // 1 is 16 below A: -15 is a whole multiple of 3
    EXPECT_EQ(numbers(farBelow, 2), (Texts{L"A1", L"AA"}));

    Probe remainder = creator(L"A", 3, L"A2", kLetters); // 2 is 15 below A: the remainder of -14 is -2
    EXPECT_EQ(numbers(remainder, 2), (Texts{L"A2", L"A?"}));
}

TEST(qelNumberCreator, RangeOfOneSymbolGrowsEveryTime)
{
    Probe probe = creator(L"I", 1, L"I", kLetters);
    EXPECT_EQ(numbers(probe, 4), (Texts{L"I", L"II", L"III", L"IIII"}));
    Probe numeric = creator(L"I", 1, L"I", kNumeric);
    EXPECT_EQ(numbers(numeric, 3), (Texts{L"I", L"JI", L"JII"}))
        << "the symbol above is none of the range, and is folded back by the next carry";
}

TEST(qelNumberCreator, NoSymbolsNeitherDivideNorLoop)
{
    // Without a range every symbol at or above the lowest but one moves on by one and carries.
    Probe none = creator(L"A", 0, L"AB", kLetters);
    EXPECT_EQ(numbers(none, 3), (Texts{L"AB", L"ABC", L"ABCD"}));

    Probe stops = creator(L"A", 0, L"A?", kLetters); // two below the lowest: -1 does not carry
    EXPECT_EQ(numbers(stops, 3), (Texts{L"A?", L"A@", L"ABA"}));

    for (int count : {-1, -5, INT_MIN})
    {
        Probe negative = creator(L"A", count, L"A", kLetters);
        EXPECT_EQ(numbers(negative, 3), (Texts{L"A", L"AB", L"ABC"})) << count;
    }
    Probe negativeStops = creator(L"A", -3, L"A<", kLetters); // five below: -4 does not reach -3
    EXPECT_EQ(numbers(negativeStops, 2), (Texts{L"A<", L"A="}));
}

TEST(qelNumberCreator, CreatorWithoutARangeHandsOutNothingAndStays)
{
    Probe fresh;
    EXPECT_EQ(numbers(fresh, 3), (Texts{L"", L"", L""})) << "the lowest symbol is NUL, which adds nothing to a text";
    Probe numeric(kNumeric, L"P");
    EXPECT_EQ(numbers(numeric, 3), (Texts{L"P", L"P\x01", L"P\x01\x02"}));
}

TEST(qelNumberCreator, SymbolThatBecomesNulEndsTheRunningCode)
{
    // Counted from NUL: Y (89) moves on to 90 modulo 3 = 0, the 2 to 3 modulo 3 = 0, X (88) to 89 modulo 3 = 2.
    Probe folded = creator(L"", 3, L"X\x02Y", kLetters);
    EXPECT_EQ(folded.next(), L"X\x02Y");
    EXPECT_EQ(folded.current(), L"\x02") << "the carry puts a NUL in front, which adds nothing";
}

TEST(qelNumberCreator, SymbolsWrapAt16Bits)
{
    Probe probe = creator(L"\xFFFE", 3, L"\xFFFF", kLetters); // the third symbol would be 0x10000
    EXPECT_EQ(probe.next(), L"\xFFFF");
    EXPECT_EQ(probe.current(), L"");
}

TEST(qelNumberCreator, SymbolThatWrapsToNulAtTheEndShortensTheRunningCode)
{
    Probe probe = creator(L"\xFFFF", 3, L"\xFFFF\xFFFE", kLetters); // 0xFFFF, NUL and 1
    probe.setNumberingPrefix(L"P");
    EXPECT_EQ(probe.next(), L"P\xFFFF\xFFFE");
    // From here on nobody shares the running code, which could be changed in place.
    EXPECT_EQ(probe.next(), L"P\xFFFF\xFFFF");
    EXPECT_EQ(probe.getNextNumber().length(), 2);
    EXPECT_EQ(probe.getNextNumber().length(), 1);
}

TEST(qelNumberCreatorWithoutMemory, LosesNoNumber)
{
    const std::wstring wide(100, L'9');
    for (const std::wstring& start : {std::wstring(L"8"), std::wstring(L"9"), std::wstring(L"99"), wide})
    {
        for (const wchar_t* prefix : {L"", L"P"})
        {
            Probe probe = creator(L"0", 10, start.c_str(), kNumeric);
            probe.setNumberingPrefix(prefix);
            std::wstring handedOut;
            const int failures = qelTest::failEveryAllocation([&] { handedOut = probe.next(); },
                                                              [&] { EXPECT_EQ(probe.current(), start); });
            EXPECT_GE(failures, 1);
            EXPECT_EQ(handedOut, prefix + start);
            EXPECT_EQ(probe.current(), start == L"8" ? L"9" : L"1" + std::wstring(start.size(), L'0'));
        }
    }
}

TEST(qelNumberCreator, NumbersAgreeWithArithmetic)
{
    Probe probe = creator(L"0", 10, L"0", kNumeric);
    for (int i = 0; i < 120000; ++i)
    {
        ASSERT_EQ(probe.next(), std::to_wstring(i));
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

TEST(qelNumberCreator, LettersAgreeWithArithmetic)
{
    Probe probe = creator(L"A", 26, L"", kLetters);
    for (int i = 0; i < 20000; ++i)
    {
        ASSERT_EQ(probe.next(), lettered(i));
    }
}

/// The next running code once more, on distances from the lowest symbol.
std::wstring oracleNext(const std::wstring& current, int lowest, int count, bool numeric)
{
    std::vector<int> distances;
    for (wchar_t c : current)
    {
        distances.push_back(c - lowest);
    }
    bool carries = true;
    for (size_t i = distances.size(); carries && i-- > 0;)
    {
        ++distances[i];
        carries = distances[i] >= count;
        while (count > 0 && distances[i] >= count)
        {
            distances[i] -= count;
        }
        while (count > 0 && distances[i] <= -count)
        {
            distances[i] += count;
        }
    }
    std::wstring next;
    for (int distance : distances)
    {
        next.push_back(static_cast<wchar_t>((lowest + distance) & 0xFFFF));
    }
    next = next.substr(0, next.find(L'\0'));
    if (carries)
    {
        const wchar_t leading = static_cast<wchar_t>((numeric ? lowest + 1 : lowest) & 0xFFFF);
        next = (leading == 0 ? std::wstring() : std::wstring(1, leading)) + next;
    }
    return next;
}

void compareWithOracle(const std::wstring& first, int count, const std::wstring& start, eNumberingType type, int steps)
{
    Probe probe = creator(first.c_str(), count, start.c_str(), type);
    const int lowest = first.empty() ? 0 : first.front();
    std::wstring expected = start;
    for (int i = 0; i < steps; ++i)
    {
        ASSERT_EQ(probe.next(), expected)
            << "first " << testing::PrintToString(first) << " count " << count << " start "
            << testing::PrintToString(start) << " type " << type << " step " << i;
        expected = oracleNext(expected, lowest, count, type == kNumeric);
    }
}

TEST(qelNumberCreatorExhaustive, SmallAlphabets)
{
    for (const wchar_t* first : {L"0", L"AB"})
    {
        std::wstring alphabet;
        for (int c = first[0] - 2; c <= first[0] + 5; ++c)
        {
            alphabet.push_back(static_cast<wchar_t>(c));
        }
        for (const std::wstring& start : allTexts(alphabet, 3))
        {
            for (int count = -3; count <= 4; ++count)
            {
                for (eNumberingType type : {kLetters, kNumeric})
                {
                    compareWithOracle(first, count, start, type, 14);
                    ASSERT_FALSE(HasFatalFailure());
                }
            }
        }
    }
}

TEST(qelNumberCreatorExhaustive, LongRuns)
{
    for (int count = 1; count <= 4; ++count)
    {
        for (const std::wstring& start : allTexts(L"ABCD", 2))
        {
            for (eNumberingType type : {kLetters, kNumeric})
            {
                compareWithOracle(L"A", count, start, type, 400);
                ASSERT_FALSE(HasFatalFailure());
            }
        }
    }
}

TEST(qelNumberCreatorExhaustive, EndsOfThe16BitCharacters)
{
    for (const wchar_t* first : {L"", L"\x01", L"\xFFFE", L"\xFFFF"})
    {
        for (const std::wstring& start : allTexts(L"\x01\x02\x03\xFFFE\xFFFF", 3))
        {
            for (int count : {INT_MIN, -2, -1, 0, 1, 2, 3, 65534, 65535, 65536, 65537, INT_MAX})
            {
                for (eNumberingType type : {kLetters, kNumeric})
                {
                    compareWithOracle(first, count, start, type, 5);
                    ASSERT_FALSE(HasFatalFailure());
                }
            }
        }
    }
}

void ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

TEST(qelNumberCreatorLimit, NumberUpToTheLimitOfATextAndFailureOfConcatenationBehindIt)
{
    const _invalid_parameter_handler before = _set_invalid_parameter_handler(ignoreInvalidParameter);

    Probe probe = creator(L"0", 10, L"5", kNumeric);
    const std::wstring prefix(kLimit - 3, L'p');
    probe.setNumberingPrefix(prefix.c_str());
    probe.setNumberingSufix(L"s");
    EXPECT_EQ(probe.next(), prefix + L"5s");
    probe.setNumberingSufix(L"ss");
    EXPECT_EQ(probe.next(), L"") << "prefix and code still fit, with the suffix they do not";
    probe.setNumberingPrefix((prefix + L"pp").c_str());
    EXPECT_EQ(probe.next(), L"ss") << "prefix and code fail; the suffix is put behind nothing";
    EXPECT_EQ(probe.current(), L"8") << "the running code moves on all the same";

    Probe grows = creator(L"0", 10, std::wstring(kLimit - 2, L'9').c_str(), kNumeric);
    grows.next();
    EXPECT_EQ(grows.current(), L"1" + std::wstring(kLimit - 2, L'0'));
    Probe tooLong = creator(L"0", 10, std::wstring(kLimit - 1, L'9').c_str(), kNumeric);
    EXPECT_EQ(tooLong.next().size(), kLimit - 1);
    EXPECT_EQ(tooLong.current(), L"");

    (void)_set_invalid_parameter_handler(before);
}
} // namespace
