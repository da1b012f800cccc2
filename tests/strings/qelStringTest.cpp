#include "qelString.h"
#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include <string>

using qelTest::byCodePage;

namespace
{
// Made before main(): the library must be ready for the static initialisers of its host.
const qelString staticEmpty;
const qelString staticText(L"static");
const qelString staticNarrow("narrow");
const qelString staticConcatenation = staticText + staticNarrow;

const unsigned short* units(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

bool isShared(const qelString& a, const qelString& b)
{
    return representationOf(a) == representationOf(b);
}

bool isEmptyRepresentation(const qelString& text)
{
    return representationOf(text) == qelString::m_repEmpty;
}

/// What the ANSI code page makes of a byte.
wchar_t ansiUnit(char byte)
{
    wchar_t unit = 0;
    MultiByteToWideChar(CP_ACP, 0, &byte, 1, &unit, 1);
    return unit;
}

void fillScratch(const std::wstring& text)
{
    memcpy(qelString::qelStringTempBufferWide, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

TEST(qelStringLoad, ServesStaticInitialisersOfTheHost)
{
    EXPECT_TRUE(isEmptyRepresentation(staticEmpty));
    EXPECT_STREQ(staticText.getStringW(), L"static");
    EXPECT_STREQ(staticNarrow.getStringW(), L"narrow");
    EXPECT_STREQ(staticConcatenation.getStringW(), L"staticnarrow");
}

TEST(qelStringLoad, MakesScratchBuffersOfTheFullCapacity)
{
    ASSERT_NE(qelString::qelStringTempBufferWide, nullptr);
    ASSERT_NE(qelString::qelStringTempBuffer, nullptr);
    // Every unit can be written and read.
    for (size_t i = 0; i < 524288; ++i)
    {
        qelString::qelStringTempBufferWide[i] = static_cast<wchar_t>(i);
        qelString::qelStringTempBuffer[i] = static_cast<char>(i);
    }
    EXPECT_EQ(qelString::qelStringTempBufferWide[524287], 0xFFFF);
    EXPECT_EQ(qelString::qelStringTempBuffer[524287], '\xFF');
}

TEST(qelStringLoad, MakesAnEmptyRepresentationOfEmptyText)
{
    ASSERT_NE(qelString::m_repEmpty, nullptr);
    EXPECT_STREQ(qelString::m_repEmpty->*member(RepresentationData()), L"");
}

TEST(qelStringLoad, CapacityCanBeUsedAsAnObject)
{
    const int& capacity = qelString::kMaxLength;
    EXPECT_EQ(capacity, 524288);
}

TEST(qelStringConstruct, EveryEmptyFormSharesTheEmptyRepresentation)
{
    const wchar_t* noWide = nullptr;
    const unsigned short* noUnits = nullptr;
    const char* noNarrow = nullptr;
    const qelString forms[] = {qelString(),    qelString(noWide),     qelString(noUnits), qelString(noNarrow),
                               qelString(L""), qelString(units(L"")), qelString("")};
    for (const qelString& form : forms)
    {
        EXPECT_TRUE(isEmptyRepresentation(form));
        EXPECT_EQ(form.length(), 0);
        EXPECT_EQ(form.isEmpty(), 1);
        EXPECT_STREQ(form.getStringW(), L"");
        EXPECT_STREQ(form.getStringA(), "");
    }
}

TEST(qelStringConstruct, DefaultLeavesTheEmptyCountUnchanged)
{
    const int before = qelString::m_repEmpty->*member(RepresentationCount());
    const qelString text;
    EXPECT_EQ(shareCountOf(text), before);
    EXPECT_EQ(charCacheOf(text), nullptr);
}

TEST(qelStringConstruct, CopiesWideText)
{
    wchar_t source[] = L"HEA 200";
    const qelString text(source);
    source[0] = L'X';
    EXPECT_STREQ(text.getStringW(), L"HEA 200");
    EXPECT_EQ(text.length(), 7);
    EXPECT_EQ(text.isEmpty(), 0);
    EXPECT_EQ(shareCountOf(text), 1);
    EXPECT_EQ(charCacheOf(text), nullptr);
}

TEST(qelStringConstruct, CopiesUnitsAsWideText)
{
    const unsigned short source[] = {0x48, 0xD83D, 0xDE00, 0xFFFF, 0};
    const qelString text(source);
    EXPECT_EQ(text.length(), 4);
    EXPECT_EQ(std::wstring(text.getStringW()), std::wstring(L"\x48\xD83D\xDE00\xFFFF"));
    EXPECT_EQ(shareCountOf(text), 1);
}

TEST(qelStringConstruct, ConvertsNarrowTextFromTheAnsiCodePage)
{
    for (int value = 1; value < 256; ++value)
    {
        const char byte = static_cast<char>(value);
        if (IsDBCSLeadByte(static_cast<BYTE>(byte)))
        {
            continue;
        }
        // So far from the end that no character can reach beyond it.
        const char source[] = {'a', byte, 'x', 'y', 'z', 0};
        const wchar_t expected[] = {L'a', ansiUnit(byte), L'x', L'y', L'z', 0};
        EXPECT_STREQ(qelString(source).getStringW(), expected) << value;
    }
}

TEST(qelStringConstruct, EveryLengthAroundABlockOfUnitsIsKept)
{
    for (size_t length = 0; length < 70; ++length)
    {
        const std::wstring wide(length, L'w');
        const std::string narrow(length, 'w');
        EXPECT_EQ(wide, qelString(wide.c_str()).getStringW());
        EXPECT_EQ(wide, qelString(narrow.c_str()).getStringW());
        EXPECT_EQ(qelString(wide.c_str()).length(), static_cast<int>(length));
        EXPECT_EQ(narrow, qelString(wide.c_str()).getStringA());
    }
}

TEST(qelStringCopy, SharesTheRepresentationAndCounts)
{
    const qelString first(L"abc");
    {
        const qelString second(first);
        EXPECT_TRUE(isShared(first, second));
        EXPECT_EQ(shareCountOf(first), 2);
        EXPECT_EQ(charCacheOf(second), nullptr);
    }
    EXPECT_EQ(shareCountOf(first), 1);
}

TEST(qelStringCopy, CountsEmptyTextUpAndNeverDown)
{
    const qelString empty;
    const int before = shareCountOf(empty);
    {
        const qelString second(empty);
        qelString third;
        third = L"x";
        third = empty;
        EXPECT_EQ(shareCountOf(empty), before + 2);
    }
    EXPECT_EQ(shareCountOf(empty), before + 2);
    EXPECT_STREQ(empty.getStringW(), L"");
}

TEST(qelStringCopy, LeavesTheOriginalAloneWhenTheCopyChanges)
{
    const qelString first(L"abc");
    qelString second(first);
    second = L"other";
    qelString third(first);
    third.setAt(0, L'X');
    qelString fourth(first);
    fourth += L"def";
    qelString fifth(first);
    fifth >>= 1;
    qelString sixth(first);
    sixth.empty();
    EXPECT_STREQ(first.getStringW(), L"abc");
    EXPECT_EQ(shareCountOf(first), 1);
}

TEST(qelStringCopy, OutlivesTheOriginal)
{
    qelString* first = new qelString(L"abc");
    const qelString second(*first);
    delete first;
    EXPECT_STREQ(second.getStringW(), L"abc");
    EXPECT_EQ(shareCountOf(second), 1);
}

TEST(qelStringCopy, RepresentationItselfCanBeCopiedAndSurvivesTheCopy)
{
    {
        qelStringRepr copy(*qelString::m_repEmpty);
        copy = *qelString::m_repEmpty;
        EXPECT_EQ(copy.*member(RepresentationData()), qelString::m_repEmpty->*member(RepresentationData()));
    }
    EXPECT_STREQ(qelString().getStringW(), L"");
}

TEST(qelStringAssign, ReturnsThisObject)
{
    qelString text;
    EXPECT_EQ(&(text = qelString(L"a")), &text);
    EXPECT_EQ(&(text = L"a"), &text);
    EXPECT_EQ(&(text = units(L"a")), &text);
    EXPECT_EQ(&(text = "a"), &text);
    EXPECT_EQ(&text.empty(), &text);
    EXPECT_EQ(&text.setAt(0, L'a'), &text);
    EXPECT_EQ(&(text += L"b"), &text);
    EXPECT_EQ(&(text >>= 1), &text);
}

TEST(qelStringAssign, SharesAnotherString)
{
    const qelString source(L"source");
    const qelString keeper(L"old");
    qelString target(keeper);
    EXPECT_EQ(shareCountOf(keeper), 2);
    target = source;
    EXPECT_EQ(shareCountOf(keeper), 1);
    EXPECT_TRUE(isShared(target, source));
    EXPECT_EQ(shareCountOf(source), 2);
}

TEST(qelStringAssign, OfTheSameRepresentationChangesNothing)
{
    qelString first(L"abc");
    const qelString second(first);
    const char* narrow = first.getStringA();
    first = second;
    EXPECT_EQ(shareCountOf(first), 2);
    EXPECT_EQ(charCacheOf(first), narrow);
    const qelString& itself = first;
    first = itself;
    EXPECT_EQ(shareCountOf(first), 2);
    EXPECT_EQ(charCacheOf(first), narrow);
}

TEST(qelStringAssign, OfEmptyNarrowTextToEmptyTextChangesNothing)
{
    // As assigning any string that shares the same representation.
    qelString text;
    const char* narrow = text.getStringA();
    text = "";
    EXPECT_EQ(charCacheOf(text), narrow);
}

TEST(qelStringAssign, TakesACopyOfWideText)
{
    wchar_t source[] = L"one";
    qelString text(L"before");
    text = source;
    source[0] = L'X';
    EXPECT_STREQ(text.getStringW(), L"one");
    text = units(L"two");
    EXPECT_STREQ(text.getStringW(), L"two");
    EXPECT_EQ(shareCountOf(text), 1);
    EXPECT_EQ(&text, &(text = "three"));
    EXPECT_STREQ(text.getStringW(), L"three");
    EXPECT_EQ(shareCountOf(text), 1);
}

TEST(qelStringAssign, NullAndEmptyGiveTheEmptyRepresentation)
{
    const wchar_t* noWide = nullptr;
    const unsigned short* noUnits = nullptr;
    const char* noNarrow = nullptr;
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = noWide));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = noUnits));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = noNarrow));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = L""));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = units(L"")));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = ""));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x") = qelString()));
    EXPECT_TRUE(isEmptyRepresentation(qelString(L"x").empty()));
}

TEST(qelStringAssign, TakesTextOutOfItself)
{
    qelString text(L"abcdef");
    text = text.getStringW() + 2;
    EXPECT_STREQ(text.getStringW(), L"cdef");
    text = text.getStringW();
    EXPECT_STREQ(text.getStringW(), L"cdef");
    text = text.getStringWAsUnsignedShort() + 1;
    EXPECT_STREQ(text.getStringW(), L"def");
    text = text.getStringA() + 1;
    EXPECT_STREQ(text.getStringW(), L"ef");
    text = text.getStringA();
    EXPECT_STREQ(text.getStringW(), L"ef");
    text = text.getStringW() + 2;
    EXPECT_TRUE(isEmptyRepresentation(text));
}

TEST(qelStringAssign, TakesTextOutOfTheScratchBuffer)
{
    fillScratch(L"scratch");
    const char pad[] = "pad";
    memcpy(qelString::qelStringTempBuffer, pad, sizeof pad);
    qelString text(qelString::qelStringTempBufferWide);
    EXPECT_STREQ(text.getStringW(), L"scratch");
    text = qelString::qelStringTempBuffer;
    EXPECT_STREQ(text.getStringW(), L"pad");
}

TEST(qelStringAssign, SetFromUnsignedShortStringReturnsACopy)
{
    qelString text(L"old");
    const qelString result = text.setFromUnsignedShortString(units(L"new"));
    EXPECT_STREQ(text.getStringW(), L"new");
    EXPECT_TRUE(isShared(text, result));
    EXPECT_TRUE(isEmptyRepresentation(text.setFromUnsignedShortString(nullptr)));
    EXPECT_TRUE(isEmptyRepresentation(text));
}

TEST(qelStringAccess, BothWideFormsAreOnePointerIntoTheSharedText)
{
    const qelString text(L"abc");
    const qelString copy(text);
    EXPECT_EQ(text.getStringW(), copy.getStringW());
    EXPECT_EQ(static_cast<const void*>(text.getStringW()), text.getStringWAsUnsignedShort());
    EXPECT_EQ(text.getStringW(), representationOf(text)->*member(RepresentationData()));
}

TEST(qelStringAccess, ElementIsAReferenceIntoTheText)
{
    const qelString text(L"abc");
    EXPECT_EQ(text[0], L'a');
    EXPECT_EQ(text[2], L'c');
    EXPECT_EQ(text[3], 0);
    EXPECT_EQ(&text[1], text.getStringW() + 1);
}

TEST(qelStringNarrow, ConvertsToTheAnsiCodePage)
{
    for (int value = 1; value < 256; ++value)
    {
        const char source[] = {'a', static_cast<char>(value), 'z', 0};
        const wchar_t wide[] = {L'a', ansiUnit(source[1]), L'z', 0};
        char expected[16];
        WideCharToMultiByte(CP_ACP, 0, wide, -1, expected, 16, nullptr, nullptr);
        EXPECT_STREQ(qelString(wide).getStringA(), expected) << value;
    }
}

BOOL WINAPI tellNoCodePage(UINT, CPINFO*)
{
    return FALSE;
}

BOOL WINAPI tellAnotherDefault(UINT codePage, CPINFO* info)
{
    const BOOL result = GetCPInfo(codePage, info);
    info->DefaultChar[0] = '_';
    return result;
}

BOOL WINAPI tellADefaultOfTwoBytes(UINT codePage, CPINFO* info)
{
    const BOOL result = GetCPInfo(codePage, info);
    info->DefaultChar[1] = '?';
    return result;
}

TEST(qelStringNarrow, PutsQuestionMarksWhateverTheSystemTellsOfTheCodePage)
{
    for (BOOL(WINAPI * tell)(UINT, CPINFO*) : {&tellNoCodePage, &tellAnotherDefault, &tellADefaultOfTwoBytes})
    {
        const qelTest::ImportHook hook("GetCPInfo", tell);
        EXPECT_STREQ(qelString(L"a\x0B85z").getStringA(), byCodePage("a?z", "a?z", "a\xE0\xAE\x85z"));
    }
}

TEST(qelStringConstruct, TakesOneByteForEachUnitWhereTheSystemTellsNothingOfTheCodePage)
{
    const std::string longest(524288, 'x');
    const qelTest::ImportHook hook("GetCPInfo", &tellNoCodePage);
    EXPECT_EQ(qelString((longest + "y").c_str()).length(), 524288);
}

int WINAPI convertNothing(UINT, DWORD, const char*, int, wchar_t*, int)
{
    return 0;
}

TEST(qelStringConstruct, IsEmptyWhenTheSystemConvertsNothing)
{
    const qelTest::ImportHook hook("MultiByteToWideChar", &convertNothing);
    const qelString made("a\xFC");
    EXPECT_EQ(made.isEmpty(), 1);
    qelString assigned(L"old");
    assigned = "a\xFC";
    EXPECT_EQ(assigned.isEmpty(), 1);
    EXPECT_EQ(assigned.getStringW(), qelString().getStringW());
}

TEST(qelStringNarrow, PutsQuestionMarksForWhatTheCodePageLacks)
{
    // UTF-8 lacks nothing.
    EXPECT_STREQ(qelString(L"a\x0B85z").getStringA(), byCodePage("a?z", "a?z", "a\xE0\xAE\x85z"));
    EXPECT_STREQ(qelString(L"\x0B85").getStringA(), byCodePage("?", "?", "\xE0\xAE\x85"));
}

TEST(qelStringNarrow, IsTheSamePointerUntilTheStringChanges)
{
    qelString text(L"abc");
    EXPECT_EQ(charCacheOf(text), nullptr);
    const char* narrow = text.getStringA();
    EXPECT_EQ(charCacheOf(text), narrow);
    EXPECT_EQ(text.getStringA(), narrow);
}

TEST(qelStringNarrow, BelongsToOneObject)
{
    const qelString text(L"abc");
    const char* narrow = text.getStringA();
    const qelString copy(text);
    EXPECT_EQ(charCacheOf(copy), nullptr);
    EXPECT_NE(copy.getStringA(), narrow);
    EXPECT_STREQ(copy.getStringA(), "abc");
}

TEST(qelStringNarrow, IsDroppedByEveryChange)
{
    const qelString other(L"xyz");
    void (*const changes[])(qelString&, const qelString&) = {
        [](qelString& s, const qelString& o) { s = o; },
        [](qelString& s, const qelString&) { s = L"abc"; },
        [](qelString& s, const qelString&) { s = units(L"abc"); },
        [](qelString& s, const qelString&) { s = "abc"; },
        [](qelString& s, const qelString&) { s.empty(); },
        [](qelString& s, const qelString&) { s.setAt(0, L'a'); },
        [](qelString& s, const qelString&) { s.setAt(0, 'a'); },
        [](qelString& s, const qelString& o) { s += o; },
        [](qelString& s, const qelString&) { s >>= 1; },
    };
    for (const auto change : changes)
    {
        qelString text(L"abc");
        (void)text.getStringA();
        change(text, other);
        EXPECT_EQ(charCacheOf(text), nullptr);
        EXPECT_EQ(std::string(text.getStringA()).size(), static_cast<size_t>(text.length()));
    }
}

TEST(qelStringLength, EndsAtTheFirstZero)
{
    EXPECT_EQ(qelString(L"ab\0cd").length(), 2);
    EXPECT_EQ(qelString("ab\0cd").length(), 2);
    EXPECT_EQ(qelString(L"a").isEmpty(), 0);
}

TEST(qelStringLength, IsMeasuredOnEveryCall)
{
    // The reversing operation is the one that writes into a text; nothing remembers a length.
    const qelString text(L"abcdef");
    wchar_t* const units = representationOf(text)->*member(RepresentationData());
    units[3] = 0;
    EXPECT_EQ(text.length(), 3);
    units[3] = L'd'; // else what follows would not be wiped
}

TEST(qelStringLength, CountsUnitsThatOnlyLookLikeZeroInPart)
{
    const wchar_t source[] = {0x0100, 0x8000, 0x0001, 0x8001, 0xFF00, 0x00FF, 0x7FFF, 0x0080, 0x0100, 0};
    for (int start = 0; start < 10; ++start)
    {
        EXPECT_EQ(qelString(source + start).length(), 9 - start);
    }
}

TEST(qelStringSetAt, ReplacesOneUnit)
{
    qelString text(L"abc");
    text.setAt(1, 'x');
    EXPECT_STREQ(text.getStringW(), L"axc");
    text.setAt(2, L'\x20AC');
    EXPECT_STREQ(text.getStringW(), L"ax\x20AC");
    const unsigned short unit = 0xD83D;
    text.setAt(0, unit);
    EXPECT_STREQ(text.getStringW(), L"\xD83Dx\x20AC");
}

TEST(qelStringSetAt, ConvertsTheByteFromTheAnsiCodePage)
{
    qelString text(L"abc");
    text.setAt(0, '\xE4');
    EXPECT_EQ(text[0], ansiUnit('\xE4'));
    EXPECT_NE(text[0], 0);
    EXPECT_NE(text[0], 0xFFE4);
}

TEST(qelStringSetAt, OfZeroCutsTheText)
{
    qelString text(L"abc");
    text.setAt(1, L'\0');
    EXPECT_STREQ(text.getStringW(), L"a");
    text.setAt(0, '\0');
    EXPECT_TRUE(isEmptyRepresentation(text));
}

TEST(qelStringSetAt, AtTheEndRunsOnIntoTheScratchBuffer)
{
    fillScratch(L"0123456789");
    qelString text(L"abc");
    text.setAt(3, L'!');
    EXPECT_STREQ(text.getStringW(), L"abc!456789");
}

TEST(qelStringSetAt, BehindTheEndWritesIntoTheScratchBufferOnly)
{
    fillScratch(L"0123456789");
    qelString text(L"abc");
    text.setAt(5, L'!');
    EXPECT_STREQ(text.getStringW(), L"abc");
    EXPECT_EQ(qelString::qelStringTempBufferWide[5], L'!');
    EXPECT_EQ(qelString::qelStringTempBufferWide[4], L'4');
}

TEST(qelStringSetAt, OutsideTheScratchBufferChangesNothing)
{
    qelString text(L"abc");
    text.setAt(-1, L'!');
    text.setAt(524288, L'!');
    text.setAt(2147483647, L'!');
    text.setAt(-2147483647 - 1, 'x');
    EXPECT_STREQ(text.getStringW(), L"abc");
}

TEST(qelStringSetAt, TakesAUnitOfItsOwnText)
{
    qelString text(L"abc");
    text.setAt(0, text[2]);
    EXPECT_STREQ(text.getStringW(), L"cbc");
    fillScratch(L"q");
    text.setAt(1, qelString::qelStringTempBufferWide[0]);
    EXPECT_STREQ(text.getStringW(), L"cqc");
}

/// Reference: unit by unit as unsigned values up to the end of the right text.
int ordinal(const std::wstring& a, const std::wstring& b)
{
    for (size_t i = 0;; ++i)
    {
        const int left = i < a.size() ? a[i] : 0;
        const int right = i < b.size() ? b[i] : 0;
        if (left != right || right == 0)
        {
            return (left > right) - (left < right);
        }
    }
}

TEST(qelStringCompare, IsOrdinal)
{
    const std::wstring texts[] = {
        L"",
        L"a",
        L"B",
        L"A",
        L"ab",
        L"abc",
        L"abd",
        L"abcd",
        L"abce",
        L"abcde",
        L"abcdefgh",
        L"abcdefgX",
        L"abcdefghi",
        L"xbcdefgh",
        L"\x7FFF",
        L"\x8000",
        L"\xFFFF",
        L"abc\x8000",
        L"abc\x7FFF",
        L"abc\x0100",
        L"\x0100",
        L"\x0001",
        L"\xD83D\xDE00",
        L"abcdefghijklmnopqrstuvwxyz",
        L"abcdefghijklmnopqrstuvwxyZ",
        L"abcdefghijklmnopqrstuvwxy",
    };
    for (const std::wstring& a : texts)
    {
        for (const std::wstring& b : texts)
        {
            const qelString left(a.c_str());
            const qelString right(b.c_str());
            const int expected = ordinal(a, b);
            EXPECT_EQ(qelString::compare(left, right), expected);
            EXPECT_EQ(left == right, expected == 0);
            EXPECT_EQ(left != right, expected != 0);
            EXPECT_EQ(left < right, expected < 0);
            EXPECT_EQ(left > right, expected > 0);
        }
    }
}

TEST(qelStringCompare, LowerCaseComesAfterUpperCase)
{
    EXPECT_FALSE(qelString(L"a") < qelString(L"B"));
    EXPECT_TRUE(qelString(L"a") > qelString(L"B"));
    EXPECT_FALSE(qelString(L"a") == qelString(L"A"));
}

TEST(qelStringCompare, SharedTextIsEqual)
{
    const qelString text(L"abc");
    const qelString copy(text);
    EXPECT_TRUE(text == copy);
    EXPECT_FALSE(text != copy);
    EXPECT_FALSE(text < copy);
    EXPECT_FALSE(text > copy);
    EXPECT_TRUE(qelString() == qelString(L""));
}

TEST(qelStringConcatenate, JoinsBothTexts)
{
    const qelString a(L"abc");
    const qelString b(L"defgh");
    const qelString sum = a + b;
    EXPECT_STREQ(sum.getStringW(), L"abcdefgh");
    EXPECT_STREQ(a.getStringW(), L"abc");
    EXPECT_STREQ(b.getStringW(), L"defgh");
    EXPECT_EQ(shareCountOf(sum), 1);
    EXPECT_STREQ((a + L"w" + "n" + units(L"u")).getStringW(), L"abcwnu");
}

TEST(qelStringConcatenate, EveryPairOfShortLengths)
{
    for (size_t front = 0; front < 10; ++front)
    {
        for (size_t back = 0; back < 10; ++back)
        {
            const std::wstring a(front, L'a');
            const std::wstring b(back, L'b');
            EXPECT_EQ(a + b, (qelString(a.c_str()) + qelString(b.c_str())).getStringW());
        }
    }
}

TEST(qelStringConcatenate, WithEmptyTextBuildsATextOfItsOwn)
{
    const qelString text(L"abc");
    const qelString empty;
    EXPECT_FALSE(isShared(text + empty, text));
    EXPECT_FALSE(isShared(empty + text, text));
    EXPECT_STREQ((text + empty).getStringW(), L"abc");
    EXPECT_STREQ((empty + text).getStringW(), L"abc");
    EXPECT_TRUE(isEmptyRepresentation(empty + empty));
}

TEST(qelStringConcatenate, AppendsToThisStringAndToItself)
{
    qelString text(L"ab");
    const qelString copy(text);
    const qelString& result = (text += L"cd");
    EXPECT_EQ(&result, &text);
    EXPECT_STREQ(text.getStringW(), L"abcd");
    text += text;
    EXPECT_STREQ(text.getStringW(), L"abcdabcd");
    EXPECT_STREQ(copy.getStringW(), L"ab");
}

TEST(qelStringDropLeading, DropsTheFirstUnits)
{
    const qelString text(L"abcdef");
    EXPECT_STREQ((text >> 2).getStringW(), L"cdef");
    EXPECT_STREQ((text >> 5).getStringW(), L"f");
    EXPECT_STREQ(text.getStringW(), L"abcdef");
    qelString changed(text);
    changed >>= 4;
    EXPECT_STREQ(changed.getStringW(), L"ef");
    EXPECT_EQ(shareCountOf(changed), 1);
}

TEST(qelStringDropLeading, LessThanOneDropsNothing)
{
    qelString text(L"abcdef");
    EXPECT_TRUE(isShared(text >> 0, text));
    EXPECT_TRUE(isShared(text >> -1, text));
    const char* narrow = text.getStringA();
    text >>= 0;
    text >>= -2147483647 - 1;
    EXPECT_EQ(charCacheOf(text), narrow);
    EXPECT_STREQ(text.getStringW(), L"abcdef");
}

TEST(qelStringDropLeading, AsManyAsThereAreOrMoreLeavesEmptyText)
{
    const qelString text(L"abcdef");
    EXPECT_TRUE(isEmptyRepresentation(text >> 6));
    EXPECT_TRUE(isEmptyRepresentation(text >> 7));
    EXPECT_TRUE(isEmptyRepresentation(text >> 2147483647));
    EXPECT_TRUE(isEmptyRepresentation(qelString() >> 1));
}

TEST(qelStringRelease, SharedTextLivesUntilTheLastStringGoes)
{
    qelString a(L"abc");
    qelString b(a);
    qelString c;
    c = b;
    EXPECT_EQ(shareCountOf(a), 3);
    a = L"other";
    EXPECT_EQ(shareCountOf(b), 2);
    b = qelString();
    EXPECT_EQ(shareCountOf(c), 1);
    EXPECT_STREQ(c.getStringW(), L"abc");
}

TEST(qelStringLayout, RepresentationIsVirtualTableTextAndCount)
{
    const qelString text(L"abc");
    const qelString copy(text);
    const auto* raw = reinterpret_cast<const unsigned char*>(representationOf(text));
    EXPECT_EQ(*reinterpret_cast<const wchar_t* const*>(raw + 8), text.getStringW());
    EXPECT_EQ(*reinterpret_cast<const int*>(raw + 16), 2);
    const auto* fields = reinterpret_cast<void* const*>(&text);
    EXPECT_EQ(fields[0], representationOf(text));
    EXPECT_EQ(fields[1], nullptr);
    EXPECT_EQ(text.getStringA(), fields[1]);
}
} // namespace
