#include "qelStringClassArray.h"
#include "strings/TextSupport.h"
#include "support/FailingAllocation.h"
#include "support/ImportHook.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <new>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

using qelTest::isShared;
using qelTest::plain;

namespace
{
typedef std::vector<std::wstring> Texts;

Texts texts(const qelStringClassArray& list)
{
    Texts result;
    for (long i = 0; i < list.length(); ++i)
    {
        result.push_back(plain(list[i]));
    }
    return result;
}

/// Fills a list with storage of exactly that size, so that the next addition moves it.
void fill(qelStringClassArray& list, const Texts& values)
{
    list.setPhysicalLength(static_cast<long>(values.size()));
    for (const std::wstring& value : values)
    {
        list.append(value.c_str());
    }
}

int calls = 0;

int counting(const void* a, const void* b)
{
    ++calls;
    return qelString::strCompare(a, b);
}

int natural(const void* a, const void* b)
{
    return qelString::compareWithNumbers(*static_cast<const qelString*>(a), *static_cast<const qelString*>(b));
}

int descending(const void* a, const void* b)
{
    return qelString::strCompare(b, a);
}

int byFirstUnit(const void* a, const void* b)
{
    return (*static_cast<const qelString*>(a))[0] - (*static_cast<const qelString*>(b))[0];
}

std::vector<std::pair<std::wstring, std::wstring>> compared;

int recording(const void* a, const void* b)
{
    compared.emplace_back(plain(*static_cast<const qelString*>(a)), plain(*static_cast<const qelString*>(b)));
    return byFirstUnit(a, b);
}

void* refuse(size_t)
{
    return nullptr;
}

const qelString* keySeen = nullptr;
bool keyCameFirst = true;

int watchingKey(const void* a, const void* b)
{
    keyCameFirst = keyCameFirst && a == keySeen;
    return qelString::strCompare(a, b);
}

class qelStringList : public testing::Test
{
protected:
    qelStringList() { calls = 0; }

    qelStringClassArray m_list;
};

typedef qelStringList qelStringListLife;
typedef qelStringList qelStringListAccess;
typedef qelStringList qelStringListAdding;
typedef qelStringList qelStringListRemoving;
typedef qelStringList qelStringListSearch;
typedef qelStringList qelStringListOrder;
typedef qelStringList qelStringListLengths;
TEST(qelStringClassArrayMemory, RunningOutWhileOneIsMadeThrowsAndKeepsNothing)
{
    const qelStringClassArray source = [] {
        qelStringClassArray list;
        list.append(L"a");
        list.append(L"b");
        return list;
    }();
    const auto nothing = [] {};
    EXPECT_GT(qelTest::failEveryAllocation([] { qelStringClassArray list(10, 4); }, nothing), 1);
    EXPECT_GT(qelTest::failEveryAllocation([&] { const qelStringClassArray list(source); }, nothing), 1);
    EXPECT_EQ(texts(source), (Texts{L"a", L"b"}));
}

TEST(qelStringClassArrayGrowth, ByANegativeLengthIsByAsMuchAsIsNeeded)
{
    qelStringClassArray list;
    list.setGrowLength(-8);
    for (int i = 0; i < 20; ++i)
    {
        EXPECT_EQ(list.append(std::wstring(1, static_cast<wchar_t>(L'a' + i)).c_str()), i);
        EXPECT_GE(list.physicalLength(), i + 1);
    }
    EXPECT_EQ(plain(list[0]), L"a");
    EXPECT_EQ(plain(list[19]), L"t");
}

TEST(qelStringListGrowth, RefusesALengthThatCannotBe)
{
    qelStringClassArray list;
    list.append(L"kept");
    EXPECT_THROW(list.setLogicalLength(LONG_MAX), std::bad_alloc);
    ASSERT_EQ(list.length(), 1);
    EXPECT_STREQ(list[0].getStringW(), L"kept");
}
} // namespace

// ------------------------------------------------------------------------------------------------------------- life

TEST_F(qelStringListLife, DefaultListIsEmptyWithoutSlotsAndGrowsByEight)
{
    EXPECT_EQ(0, m_list.length());
    EXPECT_EQ(0, m_list.logicalLength());
    EXPECT_EQ(0, m_list.physicalLength());
    EXPECT_EQ(8, m_list.growLength());
    EXPECT_EQ(1, m_list.isEmpty());
}

TEST_F(qelStringListLife, MakesThePhysicalLengthAtOnceWithEmptyTexts)
{
    qelStringClassArray list(5, 3);
    EXPECT_EQ(0, list.length());
    EXPECT_EQ(1, list.isEmpty());
    EXPECT_EQ(5, list.physicalLength());
    EXPECT_EQ(3, list.growLength());
    list.setLogicalLength(5);
    EXPECT_EQ((Texts(5)), texts(list));
    EXPECT_EQ(5, list.physicalLength());
}

TEST_F(qelStringListLife, ReplacesAGrowLengthOfZeroByEight)
{
    EXPECT_EQ(8, qelStringClassArray(0, 0).growLength());
    EXPECT_EQ(8, qelStringClassArray(4, 0).growLength());
}

TEST_F(qelStringListLife, MakesNoSlotsForANegativePhysicalLength)
{
    const qelStringClassArray list(-3, 2);
    EXPECT_EQ(0, list.physicalLength());
    EXPECT_EQ(0, list.length());
}

TEST_F(qelStringListLife, CopyTakesTextsLengthAndGrowLengthOfItsSource)
{
    qelStringClassArray source(10, 5);
    source.append(L"a");
    source.append(L"b");
    const qelStringClassArray copy(source);
    EXPECT_EQ((Texts{L"a", L"b"}), texts(copy));
    EXPECT_EQ(5, copy.growLength()) << "not 1";
    EXPECT_EQ(2, copy.physicalLength());
    EXPECT_TRUE(isShared(source[0], copy[0]));
}

TEST_F(qelStringListLife, CopyOfAnEmptyListHasNoSlots)
{
    const qelStringClassArray source(10, 5);
    const qelStringClassArray copy(source);
    EXPECT_EQ(0, copy.length());
    EXPECT_EQ(0, copy.physicalLength());
    EXPECT_EQ(5, copy.growLength());
}

TEST_F(qelStringListLife, CopiesAreIndependent)
{
    m_list.append(L"a");
    qelStringClassArray copy(m_list);
    copy.setAt(0, L"x");
    copy.append(L"y");
    m_list.append(L"b");
    EXPECT_EQ((Texts{L"a", L"b"}), texts(m_list));
    EXPECT_EQ((Texts{L"x", L"y"}), texts(copy));
}

TEST_F(qelStringListLife, AssignmentReplacesEverything)
{
    qelStringClassArray target(20, 7);
    target.append(L"old");
    fill(m_list, {L"a", L"b", L"c"});
    m_list.setGrowLength(4);
    EXPECT_EQ(&target, &(target = m_list));
    EXPECT_EQ((Texts{L"a", L"b", L"c"}), texts(target));
    EXPECT_EQ(3, target.physicalLength());
    EXPECT_EQ(4, target.growLength());
    target.setAt(0, L"x");
    EXPECT_EQ(L"a", plain(m_list[0]));
}

TEST_F(qelStringListLife, AssignmentToItselfChangesNothing)
{
    qelStringClassArray list(20, 7);
    list.append(L"a");
    const qelStringClassArray& same = list;
    EXPECT_EQ(&list, &(list = same));
    EXPECT_EQ((Texts{L"a"}), texts(list));
    EXPECT_EQ(20, list.physicalLength());
    EXPECT_EQ(7, list.growLength());
}

TEST_F(qelStringListLife, DestructionAndAssignmentReleaseTheTexts)
{
    const qelString text(L"a");
    const int before = shareCountOf(text);
    {
        qelStringClassArray list;
        list.append(text);
        list.append(text);
        EXPECT_EQ(before + 2, shareCountOf(text));
        list = m_list;
        EXPECT_EQ(before, shareCountOf(text));
        list.append(text);
        const qelStringClassArray copy(list);
        EXPECT_EQ(before + 2, shareCountOf(text));
    }
    EXPECT_EQ(before, shareCountOf(text));
}

TEST_F(qelStringListLife, IsOnePointer)
{
    EXPECT_EQ(sizeof(void*), sizeof(qelStringClassArray));
}

// ------------------------------------------------------------------------------------------------------------ access

TEST_F(qelStringListAccess, IndexGivesTheElementItself)
{
    fill(m_list, {L"a", L"b"});
    m_list[1] = L"x";
    EXPECT_EQ((Texts{L"a", L"x"}), texts(m_list));
    const qelStringClassArray& constant = m_list;
    EXPECT_EQ(&m_list[0], &constant[0]);
    EXPECT_EQ(&m_list[0] + 1, &constant[1]);
}

TEST_F(qelStringListAccess, IndexReachesSpareSlots)
{
    m_list.append(L"a");
    m_list[7] = L"spare";
    EXPECT_EQ(1, m_list.length());
    m_list.setLogicalLength(8);
    EXPECT_EQ(L"spare", plain(m_list.last()));
}

TEST_F(qelStringListAccess, AtGivesACopy)
{
    fill(m_list, {L"a", L"b"});
    qelString copy = m_list.at(1);
    EXPECT_TRUE(isShared(copy, m_list[1]));
    copy = L"x";
    EXPECT_EQ(L"b", plain(m_list.at(1)));
}

TEST_F(qelStringListAccess, AtOutsideTheSlotsGivesTheEmptyText)
{
    EXPECT_EQ(1, m_list.at(0).isEmpty());
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(1, m_list.at(2).isEmpty());
    EXPECT_EQ(1, m_list.at(-1).isEmpty());
}

TEST_F(qelStringListAccess, FirstAndLastGiveTheOuterElementsInUse)
{
    fill(m_list, {L"a", L"b", L"c"});
    m_list.removeLast();
    const qelStringClassArray& constant = m_list;
    EXPECT_EQ(&m_list[0], &m_list.first());
    EXPECT_EQ(&m_list[1], &m_list.last());
    EXPECT_EQ(&m_list[0], &constant.first());
    EXPECT_EQ(&m_list[1], &constant.last());
    m_list.first() = L"x";
    m_list.last() = L"y";
    EXPECT_EQ((Texts{L"x", L"y"}), texts(m_list));
}

TEST_F(qelStringListAccess, RangeForVisitsTheTextsInUse)
{
    fill(m_list, {L"a", L"b", L"spare"});
    m_list.removeLast();
    for (qelString& text : m_list)
    {
        text += L"!";
    }
    const qelStringClassArray& constant = m_list;
    Texts seen;
    for (const qelString& text : constant)
    {
        seen.push_back(plain(text));
    }
    EXPECT_EQ((Texts{L"a!", L"b!"}), seen);
    m_list.setLogicalLength(3);
    EXPECT_EQ(L"spare", plain(m_list.last()));
}

TEST_F(qelStringListAccess, BeginAndEndSpanTheTexts)
{
    fill(m_list, {L"a", L"b", L"c"});
    const qelStringClassArray& constant = m_list;
    EXPECT_EQ(&m_list[0], m_list.begin());
    EXPECT_EQ(&m_list[2] + 1, m_list.end());
    EXPECT_EQ(&m_list[0], constant.begin());
    EXPECT_EQ(constant.end(), m_list.end());
    EXPECT_EQ(3, std::distance(std::begin(constant), std::end(constant)));
}

TEST_F(qelStringListAccess, AListWithoutTextsIsAnEmptyRange)
{
    const qelStringClassArray& constant = m_list;
    EXPECT_EQ(constant.begin(), constant.end());
    qelStringClassArray spare(4);
    EXPECT_EQ(spare.begin(), spare.end());
    spare.removeLast();
    ASSERT_EQ(-1, spare.length());
    EXPECT_EQ(spare.begin(), spare.end());
}

TEST_F(qelStringListAccess, ServesTheAlgorithmsOfTheStandardLibrary)
{
    fill(m_list, {L"ccc", L"a", L"bb"});
    std::sort(m_list.begin(), m_list.end());
    EXPECT_EQ((Texts{L"a", L"bb", L"ccc"}), texts(m_list));
    const qelStringClassArray& constant = m_list;
    EXPECT_EQ(&m_list[1], std::find(constant.begin(), constant.end(), qelString(L"bb")));
    EXPECT_EQ(constant.end(), std::find(constant.begin(), constant.end(), qelString(L"d")));
    EXPECT_EQ(6, std::accumulate(constant.begin(), constant.end(), 0,
                                 [](int sum, const qelString& text) { return sum + text.length(); }));
}

TEST_F(qelStringListAccess, SetAtAssignsAndReturnsTheList)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(&m_list, &m_list.setAt(0, L"x"));
    EXPECT_EQ((Texts{L"x", L"b"}), texts(m_list));
    EXPECT_EQ(2, m_list.physicalLength());
}

TEST_F(qelStringListAccess, SetAtBehindTheEndExtendsTheList)
{
    m_list.setAt(5, L"x");
    EXPECT_EQ((Texts{L"", L"", L"", L"", L"", L"x"}), texts(m_list));
    EXPECT_EQ(8, m_list.physicalLength());
    m_list.setAt(6, L"y");
    EXPECT_EQ(7, m_list.length());
}

TEST_F(qelStringListAccess, SetAtTakesAnElementOfTheListThatMoves)
{
    fill(m_list, {L"a", L"b"});
    m_list.setAt(4, m_list[1]);
    EXPECT_EQ((Texts{L"a", L"b", L"", L"", L"b"}), texts(m_list));
}

TEST_F(qelStringListAccess, SetAllAssignsEveryElementInUse)
{
    fill(m_list, {L"a", L"b", L"spare"});
    m_list.removeLast();
    const qelString value(L"x");
    EXPECT_EQ(&m_list, &m_list.setAll(value));
    EXPECT_EQ((Texts{L"x", L"x"}), texts(m_list));
    EXPECT_TRUE(isShared(value, m_list[0]));
    m_list.setLogicalLength(3);
    EXPECT_EQ(L"spare", plain(m_list[2])) << "not in use, so left alone";
}

TEST_F(qelStringListAccess, SetAllTakesAnElementOfTheListAndLeavesAnEmptyOneAlone)
{
    m_list.setAll(L"x");
    EXPECT_EQ(0, m_list.length());
    fill(m_list, {L"a", L"b", L"c"});
    m_list.setAll(m_list[1]);
    EXPECT_EQ((Texts{L"b", L"b", L"b"}), texts(m_list));
}

// ------------------------------------------------------------------------------------------------------------ adding

TEST_F(qelStringListAdding, AppendReturnsThePosition)
{
    EXPECT_EQ(0, m_list.append(L"a"));
    EXPECT_EQ(8, m_list.physicalLength());
    EXPECT_EQ(1, m_list.append(L"b"));
    EXPECT_EQ(8, m_list.physicalLength());
    EXPECT_EQ((Texts{L"a", L"b"}), texts(m_list));
}

TEST_F(qelStringListAdding, AppendGrowsInWholeMultiplesOfTheGrowLength)
{
    for (long i = 0; i < 9; ++i)
    {
        EXPECT_EQ(i, m_list.append(L"a"));
    }
    EXPECT_EQ(16, m_list.physicalLength());
    qelStringClassArray byThree(4, 3);
    for (long i = 0; i < 5; ++i)
    {
        byThree.append(L"a");
    }
    EXPECT_EQ(6, byThree.physicalLength());
}

TEST_F(qelStringListAdding, AppendSharesTheText)
{
    const qelString value(L"a");
    m_list.append(value);
    EXPECT_TRUE(isShared(value, m_list[0]));
}

TEST_F(qelStringListAdding, AppendTakesAnElementOfTheListThatMoves)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(2, m_list.append(m_list[0]));
    EXPECT_EQ((Texts{L"a", L"b", L"a"}), texts(m_list));
}

TEST_F(qelStringListAdding, AppendsAnotherListInOrder)
{
    fill(m_list, {L"a", L"b"});
    qelStringClassArray other;
    fill(other, {L"c", L"d"});
    EXPECT_EQ(&m_list, &m_list.append(other));
    EXPECT_EQ((Texts{L"a", L"b", L"c", L"d"}), texts(m_list));
    EXPECT_EQ((Texts{L"c", L"d"}), texts(other));
    EXPECT_EQ(8, m_list.physicalLength());
    EXPECT_TRUE(isShared(other[0], m_list[2]));
}

TEST_F(qelStringListAdding, AppendingAnEmptyListChangesNothing)
{
    fill(m_list, {L"a"});
    m_list.append(qelStringClassArray(5, 2));
    EXPECT_EQ((Texts{L"a"}), texts(m_list));
    EXPECT_EQ(1, m_list.physicalLength());
}

TEST_F(qelStringListAdding, AppendsItself)
{
    fill(m_list, {L"a", L"b"});
    m_list.append(m_list);
    EXPECT_EQ((Texts{L"a", L"b", L"a", L"b"}), texts(m_list));
}

TEST_F(qelStringListAdding, InsertMovesLaterElementsUp)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(&m_list, &m_list.insertAt(1, L"x"));
    EXPECT_EQ((Texts{L"a", L"x", L"b"}), texts(m_list));
    EXPECT_EQ(8, m_list.physicalLength());
    m_list.insertAt(0, L"first");
    m_list.insertAt(4, L"last");
    EXPECT_EQ((Texts{L"first", L"a", L"x", L"b", L"last"}), texts(m_list));
}

TEST_F(qelStringListAdding, InsertTakesAnElementOfTheList)
{
    fill(m_list, {L"a", L"b", L"c"});
    m_list.insertAt(0, m_list[2]);
    EXPECT_EQ((Texts{L"c", L"a", L"b", L"c"}), texts(m_list)) << "while the storage moves";
    m_list.insertAt(1, m_list[3]);
    EXPECT_EQ((Texts{L"c", L"c", L"a", L"b", L"c"}), texts(m_list)) << "while only elements move";
}

TEST_F(qelStringListAdding, InsertOutsideTheListGrowsItByOneAndStaysInItsStorage)
{
    fill(m_list, {L"a"});
    m_list.insertAt(100, L"x");
    EXPECT_EQ((Texts{L"a", L""}), texts(m_list));
    m_list.insertAt(-1, L"x");
    EXPECT_EQ(3, m_list.length());
}

// ---------------------------------------------------------------------------------------------------------- removing

TEST_F(qelStringListRemoving, RemoveAtMovesLaterElementsDown)
{
    fill(m_list, {L"a", L"b", L"c"});
    EXPECT_EQ(&m_list, &m_list.removeAt(1));
    EXPECT_EQ((Texts{L"a", L"c"}), texts(m_list));
    EXPECT_EQ(3, m_list.physicalLength());
    m_list.setLogicalLength(3);
    EXPECT_EQ(L"c", plain(m_list[2])) << "the last slot keeps a duplicate";
}

TEST_F(qelStringListRemoving, RemoveTakesTheFirstEqualElementFromTheStart)
{
    fill(m_list, {L"a", L"b", L"a", L"b"});
    EXPECT_EQ(1, m_list.remove(L"b", 2));
    EXPECT_EQ((Texts{L"a", L"b", L"a"}), texts(m_list));
    EXPECT_EQ(1, m_list.remove(L"a"));
    EXPECT_EQ((Texts{L"b", L"a"}), texts(m_list));
    EXPECT_EQ(1, m_list.remove(L"a", 1));
    EXPECT_EQ((Texts{L"b"}), texts(m_list));
}

TEST_F(qelStringListRemoving, RemoveOfAnAbsentTextReturnsZeroAndChangesNothing)
{
    EXPECT_EQ(0, m_list.remove(L"a"));
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(0, m_list.remove(L"c"));
    EXPECT_EQ(0, m_list.remove(L"A")) << "equality is ordinal";
    EXPECT_EQ(0, m_list.remove(L"a", 1));
    EXPECT_EQ(0, m_list.remove(L"a", 2));
    EXPECT_EQ(0, m_list.remove(L"a", 100));
    EXPECT_EQ((Texts{L"a", L"b"}), texts(m_list));
}

TEST_F(qelStringListRemoving, RemoveTakesAnElementOfTheList)
{
    fill(m_list, {L"a", L"b", L"a"});
    EXPECT_EQ(1, m_list.remove(m_list[2]));
    EXPECT_EQ((Texts{L"b", L"a"}), texts(m_list));
}

TEST_F(qelStringListRemoving, RemoveFirstDropsTheElementAtZero)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(&m_list, &m_list.removeFirst());
    EXPECT_EQ((Texts{L"b"}), texts(m_list));
    m_list.removeFirst();
    EXPECT_EQ(0, m_list.length());
}

TEST_F(qelStringListRemoving, RemoveLastKeepsTheTextInItsSlot)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(&m_list, &m_list.removeLast());
    EXPECT_EQ((Texts{L"a"}), texts(m_list));
    EXPECT_EQ(2, m_list.physicalLength());
    m_list.setLogicalLength(2);
    EXPECT_EQ((Texts{L"a", L"b"}), texts(m_list));
}

TEST_F(qelStringListRemoving, RemoveLastOnAnEmptyListMakesItsLengthMinusOneAndNotEmpty)
{
    m_list.removeLast();
    EXPECT_EQ(-1, m_list.length());
    EXPECT_EQ(-1, m_list.logicalLength());
    EXPECT_EQ(0, m_list.isEmpty());
    EXPECT_EQ(0, m_list.physicalLength());
    m_list.removeLast();
    EXPECT_EQ(-2, m_list.length());
}

TEST_F(qelStringListRemoving, RemovingFromAnEmptyListDoesTheSame)
{
    m_list.removeFirst();
    EXPECT_EQ(-1, m_list.length());
    qelStringClassArray other;
    other.removeAt(5);
    EXPECT_EQ(-1, other.length());
}

TEST_F(qelStringListRemoving, AListOfLengthMinusOneStaysHarmless)
{
    qelStringClassArray list(4, 4);
    list.removeLast();
    long index = 7;
    EXPECT_EQ(0, list.contains(L""));
    EXPECT_EQ(0, list.find(L"", index));
    EXPECT_EQ(7, index);
    EXPECT_EQ(0, list.bsearch(L"", index, counting));
    EXPECT_EQ(-1, index);
    EXPECT_EQ(0, list.lfind(L"", index, counting));
    EXPECT_EQ(-1, index);
    list.sort(counting);
    list.sort(0, 3, counting);
    EXPECT_EQ(0, calls);
    list.reverse();
    list.setAll(L"x");
    const qelStringClassArray copy(list);
    EXPECT_EQ(-1, copy.length());
    EXPECT_EQ(-1, list.append(L"lost")) << "the element before the first cannot be stored";
    EXPECT_EQ(0, list.length());
    EXPECT_EQ(0, list.append(L"kept"));
    EXPECT_EQ((Texts{L"kept"}), texts(list));
}

// ------------------------------------------------------------------------------------------------------------ search

TEST_F(qelStringListSearch, ContainsLooksFromTheStart)
{
    fill(m_list, {L"a", L"b"});
    EXPECT_EQ(1, m_list.contains(L"a"));
    EXPECT_EQ(1, m_list.contains(L"b", 1));
    EXPECT_EQ(0, m_list.contains(L"a", 1));
    EXPECT_EQ(0, m_list.contains(L"b", 2));
    EXPECT_EQ(0, m_list.contains(L"b", 2000000000));
    EXPECT_EQ(0, m_list.contains(L"B"));
    EXPECT_EQ(1, m_list.contains(L"a", -1));
    EXPECT_EQ(0, qelStringClassArray().contains(L""));
}

TEST_F(qelStringListSearch, DoesNotLookIntoSpareSlots)
{
    fill(m_list, {L"a", L"b"});
    m_list.removeLast();
    long index = 7;
    EXPECT_EQ(0, m_list.contains(L"b"));
    EXPECT_EQ(0, m_list.remove(L"b"));
    EXPECT_EQ(0, m_list.lfind(L"b", index, qelString::strCompare));
    EXPECT_EQ(0, m_list.bsearch(L"b", index, qelString::strCompare));
}

TEST_F(qelStringListSearch, FindStoresTheFirstPositionFromTheStart)
{
    fill(m_list, {L"a", L"b", L"a"});
    long index = -5;
    EXPECT_EQ(1, m_list.find(L"a", index));
    EXPECT_EQ(0, index);
    EXPECT_EQ(1, m_list.find(L"a", index, 1));
    EXPECT_EQ(2, index);
    EXPECT_EQ(1, m_list.find(L"a", index, 2));
    EXPECT_EQ(2, index);
}

TEST_F(qelStringListSearch, FailedFindLeavesTheIndexAlone)
{
    fill(m_list, {L"a"});
    long index = -5;
    EXPECT_EQ(0, m_list.find(L"b", index));
    EXPECT_EQ(-5, index);
    EXPECT_EQ(0, m_list.find(L"a", index, 1));
    EXPECT_EQ(-5, index);
}

TEST_F(qelStringListSearch, FindComparesWholeTextsOfEveryLength)
{
    // Lengths around those of the chunks in which texts are compared.
    for (size_t length = 0; length <= 34; ++length)
    {
        const std::wstring text(length, L'x');
        for (size_t at = 0; at <= length; ++at)
        {
            std::wstring longer = text;
            longer.insert(at, 1, L'y');
            std::wstring other = text;
            std::wstring shorter = text.substr(0, at);
            Texts values{longer, text + L'x'};
            if (at < length)
            {
                other[at] = L'y';
                values.push_back(other);
                values.push_back(shorter);
            }
            qelStringClassArray list;
            fill(list, values);
            long index = -5;
            ASSERT_EQ(0, list.find(text.c_str(), index)) << length << " at " << at;
            ASSERT_EQ(0, list.lfind(text.c_str(), index, qelString::strCompare)) << length << " at " << at;
            list.append(text.c_str());
            ASSERT_EQ(1, list.find(text.c_str(), index)) << length << " at " << at;
            ASSERT_EQ(list.length() - 1, index);
            ASSERT_EQ(1, list.lfind(text.c_str(), index, qelString::strCompare)) << length << " at " << at;
            ASSERT_EQ(list.length() - 1, index);
        }
    }
}

TEST_F(qelStringListSearch, LinearSearchComparesFromTheStartUntilTheFirstHit)
{
    fill(m_list, {L"a1", L"b1", L"c1", L"b2"});
    compared.clear();
    long index = -5;
    EXPECT_EQ(1, m_list.lfind(L"bx", index, recording, 1));
    EXPECT_EQ(1, index);
    EXPECT_EQ(1, m_list.lfind(L"bx", index, recording, 2));
    EXPECT_EQ(3, index);
    EXPECT_EQ((std::vector<std::pair<std::wstring, std::wstring>>{{L"bx", L"b1"}, {L"bx", L"c1"}, {L"bx", L"b2"}}),
              compared);
}

TEST_F(qelStringListSearch, BinarySearchGivesTheHitOfTheRuntimeAmongEqualTexts)
{
    for (long count = 1; count <= 20; ++count)
    {
        qelStringClassArray list;
        list.setLogicalLength(count);
        list.setAll(L"same");
        const qelString key(L"same");
        const void* hit = ::bsearch(&key, &list[0], static_cast<size_t>(count), sizeof(qelString), counting);
        long index = -5;
        EXPECT_EQ(1, list.bsearch(key, index, qelString::strCompare));
        EXPECT_EQ(static_cast<const qelString*>(hit) - &list[0], index) << count;
    }
}

TEST_F(qelStringListSearch, BinarySearchFindsEveryElementOfASortedList)
{
    Texts values;
    for (wchar_t c = L'a'; c <= L'z'; ++c)
    {
        values.push_back(std::wstring(2, c));
    }
    fill(m_list, values);
    for (long i = 0; i < 26; ++i)
    {
        long index = -5;
        EXPECT_EQ(1, m_list.bsearch(values[static_cast<size_t>(i)].c_str(), index, qelString::strCompare));
        EXPECT_EQ(i, index);
    }
}

TEST_F(qelStringListSearch, FailedBinarySearchSetsTheIndexToMinusOne)
{
    long index = 7;
    EXPECT_EQ(0, m_list.bsearch(L"a", index, counting));
    EXPECT_EQ(-1, index);
    EXPECT_EQ(0, calls) << "an empty list has nothing to compare";
    fill(m_list, {L"b", L"d"});
    for (const wchar_t* key : {L"a", L"c", L"e"})
    {
        index = 7;
        EXPECT_EQ(0, m_list.bsearch(key, index, counting));
        EXPECT_EQ(-1, index);
    }
}

TEST_F(qelStringListSearch, BinarySearchTakesTheKeyAsFirstArgumentOfTheComparator)
{
    fill(m_list, {L"a", L"b", L"c", L"d"});
    const qelString key(L"d");
    keySeen = &key;
    keyCameFirst = true;
    long index = -5;
    EXPECT_EQ(1, m_list.bsearch(key, index, watchingKey));
    EXPECT_TRUE(keyCameFirst);
    EXPECT_EQ(1, m_list.lfind(key, index, watchingKey));
    EXPECT_TRUE(keyCameFirst);
}

TEST_F(qelStringListSearch, BinarySearchTakesLogarithmicallyManyComparisons)
{
    m_list.setPhysicalLength(1024);
    for (int i = 0; i < 1024; ++i)
    {
        wchar_t text[8];
        swprintf_s(text, 8, L"%04d", i);
        m_list.append(text);
    }
    long index = -5;
    EXPECT_EQ(1, m_list.bsearch(L"0777", index, counting));
    EXPECT_EQ(777, index);
    EXPECT_LE(calls, 11);
}

TEST_F(qelStringListSearch, BinarySearchWorksWithTheOrderOfTheComparator)
{
    fill(m_list, {L"ipe 300", L"HEA 200", L"hea 100"});
    m_list.sort(qelString::strCompareNoCase);
    EXPECT_EQ((Texts{L"hea 100", L"HEA 200", L"ipe 300"}), texts(m_list));
    long index = -5;
    EXPECT_EQ(1, m_list.bsearch(L"IPE 300", index, qelString::strCompareNoCase));
    EXPECT_EQ(2, index);
}

TEST_F(qelStringListSearch, BinarySearchWorksWithNaturalOrder)
{
    fill(m_list, {L"P10", L"P9", L"P100", L"P1", L"P20"});
    m_list.sort(natural);
    EXPECT_EQ((Texts{L"P1", L"P9", L"P10", L"P20", L"P100"}), texts(m_list));
    long index = -5;
    EXPECT_EQ(1, m_list.bsearch(L"P20", index, natural));
    EXPECT_EQ(3, index);
    EXPECT_EQ(1, m_list.bsearch(L"P020", index, natural)) << "numbers are compared by value";
    EXPECT_EQ(3, index);
    EXPECT_EQ(0, m_list.bsearch(L"P11", index, natural));
    EXPECT_EQ(-1, index);
    EXPECT_EQ(0, m_list.bsearch(L"P100", index, qelString::strCompare)) << "another order finds nothing";
}

TEST_F(qelStringListSearch, KeyMayBeAnElementOfTheList)
{
    fill(m_list, {L"a", L"b", L"c"});
    long index = -5;
    EXPECT_EQ(1, m_list.bsearch(m_list[2], index, qelString::strCompare));
    EXPECT_EQ(2, index);
    EXPECT_EQ(1, m_list.lfind(m_list[1], index, qelString::strCompare));
    EXPECT_EQ(1, index);
}

TEST_F(qelStringListSearch, LinearSearchGivesTheAbsolutePositionFromTheStart)
{
    fill(m_list, {L"b", L"A", L"b", L"a"});
    long index = -5;
    EXPECT_EQ(1, m_list.lfind(L"b", index, qelString::strCompare));
    EXPECT_EQ(0, index);
    EXPECT_EQ(1, m_list.lfind(L"b", index, qelString::strCompare, 1));
    EXPECT_EQ(2, index);
    EXPECT_EQ(1, m_list.lfind(L"b", index, qelString::strCompare, 2));
    EXPECT_EQ(2, index);
    EXPECT_EQ(1, m_list.lfind(L"a", index, qelString::strCompareNoCase, 0));
    EXPECT_EQ(1, index);
    EXPECT_EQ(1, m_list.lfind(L"a", index, qelString::strCompare, -3)) << "a negative start counts as 0";
    EXPECT_EQ(3, index);
}

TEST_F(qelStringListSearch, FailedLinearSearchSetsTheIndexToMinusOne)
{
    fill(m_list, {L"a", L"b"});
    long index = 7;
    EXPECT_EQ(0, m_list.lfind(L"c", index, qelString::strCompare));
    EXPECT_EQ(-1, index);
    index = 7;
    EXPECT_EQ(0, m_list.lfind(L"a", index, qelString::strCompare, 1));
    EXPECT_EQ(-1, index);
    index = 7;
    EXPECT_EQ(0, m_list.lfind(L"b", index, counting, 2)) << "the start equals the length";
    EXPECT_EQ(-1, index);
    index = 7;
    EXPECT_EQ(0, m_list.lfind(L"b", index, counting, 2000000000));
    EXPECT_EQ(-1, index);
    index = 7;
    EXPECT_EQ(0, qelStringClassArray().lfind(L"", index, counting));
    EXPECT_EQ(-1, index);
    EXPECT_EQ(0, calls);
}

// ------------------------------------------------------------------------------------------------------------- order

TEST_F(qelStringListOrder, SortsByTheComparator)
{
    fill(m_list, {L"b", L"B", L"a", L"C", L""});
    m_list.sort(qelString::strCompare);
    EXPECT_EQ((Texts{L"", L"B", L"C", L"a", L"b"}), texts(m_list));
    m_list.sort(descending);
    EXPECT_EQ((Texts{L"b", L"a", L"C", L"B", L""}), texts(m_list));
}

TEST_F(qelStringListOrder, SortsOnlyElementsInUse)
{
    fill(m_list, {L"c", L"b", L"a"});
    m_list.removeLast();
    m_list.sort(qelString::strCompare);
    m_list.setLogicalLength(3);
    EXPECT_EQ((Texts{L"b", L"c", L"a"}), texts(m_list));
}

TEST_F(qelStringListOrder, SortOfAnEmptyListNeverCallsTheComparator)
{
    qelStringClassArray list(4, 4);
    list.sort(counting);
    list.sort(0, 3, counting);
    list.sort(-1, 100, counting);
    EXPECT_EQ(0, calls);
    EXPECT_EQ(0, list.length());
}

TEST_F(qelStringListOrder, SortsARangeWithBothEndsIncluded)
{
    fill(m_list, {L"e", L"d", L"c", L"b", L"a"});
    m_list.sort(1, 3, qelString::strCompare);
    EXPECT_EQ((Texts{L"e", L"b", L"c", L"d", L"a"}), texts(m_list));
    m_list.sort(0, 4, qelString::strCompare);
    EXPECT_EQ((Texts{L"a", L"b", L"c", L"d", L"e"}), texts(m_list));
}

TEST_F(qelStringListOrder, ARangeOfOneElementAndAReversedOneChangeNothing)
{
    fill(m_list, {L"c", L"b", L"a"});
    m_list.sort(1, 1, counting);
    m_list.sort(2, 0, counting);
    EXPECT_EQ((Texts{L"c", L"b", L"a"}), texts(m_list));
    EXPECT_EQ(0, calls);
}

TEST_F(qelStringListOrder, ARangeMayReachIntoSpareSlots)
{
    fill(m_list, {L"c", L"b", L"a"});
    m_list.setLogicalLength(1);
    m_list.sort(0, 2, qelString::strCompare);
    EXPECT_EQ((Texts{L"a"}), texts(m_list));
    m_list.setLogicalLength(3);
    EXPECT_EQ((Texts{L"a", L"b", L"c"}), texts(m_list));
}

TEST_F(qelStringListOrder, ARangeBeyondTheSlotsStaysInside)
{
    fill(m_list, {L"c", L"b", L"a"});
    m_list.sort(-100, 2000000000, qelString::strCompare);
    EXPECT_EQ((Texts{L"a", L"b", L"c"}), texts(m_list));
    m_list.sort(3, 7, counting);
    EXPECT_EQ(0, calls);
}

TEST_F(qelStringListOrder, SortGivesTheSameAsAModel)
{
    qelTest::RandomText random(7);
    for (int round = 0; round < 200; ++round)
    {
        Texts model;
        qelStringClassArray list;
        for (int i = random.number(0, 40); i > 0; --i)
        {
            model.push_back(random.text<wchar_t>(L"ab\x00E4\xFFFE", 3));
            list.append(model.back().c_str());
        }
        std::sort(model.begin(), model.end());
        list.sort(qelString::strCompare);
        ASSERT_EQ(model, texts(list));
    }
}

TEST_F(qelStringListOrder, SortWithTheOwnComparatorsGivesTheSameAsAModelAtEveryLength)
{
    const auto lower = [](std::wstring text) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c; });
        return text;
    };
    qelTest::RandomText random(20);
    for (int count = 0; count <= 150; ++count)
    {
        Texts model;
        for (int i = 0; i < count; ++i)
        {
            model.push_back(random.text<wchar_t>(L"abAB", 4));
        }
        qelStringClassArray list;
        fill(list, model);
        qelStringClassArray folded(list);
        list.sort(qelString::strCompare);
        std::sort(model.begin(), model.end());
        ASSERT_EQ(model, texts(list)) << count;

        folded.sort(qelString::strCompareNoCase);
        Texts result = texts(folded);
        const auto isBehind = [&lower](const std::wstring& a, const std::wstring& b) { return lower(a) > lower(b); };
        ASSERT_EQ(result.end(), std::adjacent_find(result.begin(), result.end(), isBehind)) << count;
        std::sort(result.begin(), result.end());
        ASSERT_EQ(model, result) << count;
    }
}

TEST_F(qelStringListOrder, SortKeepsEveryTextAndItsCount)
{
    const qelString shared(L"b");
    const int before = shareCountOf(shared);
    for (int i = 0; i < 50; ++i)
    {
        m_list.append(shared);
        m_list.append(L"a");
    }
    m_list.sort(qelString::strCompare);
    EXPECT_EQ(before + 50, shareCountOf(shared));
    EXPECT_EQ(L"a", plain(m_list[49]));
    EXPECT_TRUE(isShared(shared, m_list[50]));
    m_list = qelStringClassArray();
    EXPECT_EQ(before, shareCountOf(shared));
}

TEST_F(qelStringListOrder, SortNeedsNoMemory)
{
    Texts model;
    for (int i = 0; i < 100; ++i)
    {
        model.push_back(std::to_wstring(i * 37 % 100 + 100));
    }
    fill(m_list, model);
    {
        const qelTest::ImportHook noMemory("malloc", &refuse);
        m_list.sort(qelString::strCompare);
    }
    std::sort(model.begin(), model.end());
    EXPECT_EQ(model, texts(m_list));
}

TEST_F(qelStringListOrder, ACallersComparatorSeesTheComparisonsOfTheRuntime)
{
    qelTest::RandomText random(3);
    Texts values;
    for (int i = 0; i < 60; ++i)
    {
        values.push_back(random.text<wchar_t>(L"abcdef", 3) + L"x");
    }
    fill(m_list, values);
    qelStringClassArray other(m_list);
    compared.clear();
    m_list.sort(recording);
    const auto seen = compared;
    compared.clear();
    qsort(&other[0], 60, sizeof(qelString), recording);
    EXPECT_EQ(compared, seen);
    EXPECT_EQ(texts(other), texts(m_list)) << "equal texts lie as the runtime leaves them";
}

TEST_F(qelStringListOrder, SwapAndReverseMoveTheNarrowFormsAlong)
{
    fill(m_list, {L"a", L"b", L"c"});
    const char* narrow = m_list[0].getStringA();
    m_list.swap(0, 1);
    EXPECT_EQ(narrow, charCacheOf(m_list[1]));
    EXPECT_EQ(nullptr, charCacheOf(m_list[0]));
    m_list.swap(1, 2);
    m_list.reverse();
    EXPECT_EQ(narrow, charCacheOf(m_list[0]));
    EXPECT_STREQ("a", m_list[0].getStringA());
    m_list.swap(0, 0);
    EXPECT_STREQ("a", m_list[0].getStringA());
}

TEST_F(qelStringListOrder, SortKeepsAllOfEqualElements)
{
    fill(m_list, {L"b1", L"a1", L"b2", L"a2"});
    m_list.sort(byFirstUnit);
    Texts result = texts(m_list);
    EXPECT_EQ(L'a', result[0][0]);
    EXPECT_EQ(L'a', result[1][0]);
    std::sort(result.begin(), result.end());
    EXPECT_EQ((Texts{L"a1", L"a2", L"b1", L"b2"}), result);
}

TEST_F(qelStringListOrder, SortMovesTheNarrowFormsAlong)
{
    fill(m_list, {L"b", L"a"});
    EXPECT_STREQ("b", m_list[0].getStringA());
    m_list.sort(qelString::strCompare);
    EXPECT_STREQ("a", m_list[0].getStringA());
    EXPECT_STREQ("b", m_list[1].getStringA());
}

TEST_F(qelStringListOrder, ReverseTurnsTheElementsInUseAround)
{
    EXPECT_EQ(0, m_list.reverse().length());
    fill(m_list, {L"a", L"b", L"c", L"spare"});
    m_list.removeLast();
    EXPECT_EQ(&m_list, &m_list.reverse());
    EXPECT_EQ((Texts{L"c", L"b", L"a"}), texts(m_list));
    m_list.setLogicalLength(4);
    m_list.reverse();
    EXPECT_EQ((Texts{L"spare", L"a", L"b", L"c"}), texts(m_list));
    qelStringClassArray one;
    fill(one, {L"x"});
    EXPECT_EQ((Texts{L"x"}), texts(one.reverse()));
}

TEST_F(qelStringListOrder, SwapExchangesTwoElements)
{
    fill(m_list, {L"a", L"b", L"c"});
    EXPECT_EQ(&m_list, &m_list.swap(0, 2));
    EXPECT_EQ((Texts{L"c", L"b", L"a"}), texts(m_list));
    m_list.swap(1, 1);
    EXPECT_EQ((Texts{L"c", L"b", L"a"}), texts(m_list));
}

TEST_F(qelStringListOrder, SwapReachesSpareSlotsButNothingBeyond)
{
    fill(m_list, {L"a", L"b"});
    m_list.setLogicalLength(1);
    m_list.swap(0, 1);
    EXPECT_EQ((Texts{L"b"}), texts(m_list));
    m_list.swap(0, 2);
    m_list.swap(-1, 0);
    EXPECT_EQ((Texts{L"b"}), texts(m_list));
}

// ----------------------------------------------------------------------------------------------------------- lengths

TEST_F(qelStringListLengths, LogicalLengthHidesAndShowsElements)
{
    fill(m_list, {L"a", L"b", L"c"});
    m_list.setLogicalLength(0);
    EXPECT_EQ(1, m_list.isEmpty());
    EXPECT_EQ(3, m_list.physicalLength());
    m_list.setLogicalLength(3);
    EXPECT_EQ((Texts{L"a", L"b", L"c"}), texts(m_list));
    EXPECT_EQ(0, m_list.isEmpty());
    m_list.setLogicalLength(4);
    EXPECT_EQ((Texts{L"a", L"b", L"c", L""}), texts(m_list));
    EXPECT_EQ(8, m_list.physicalLength());
}

TEST_F(qelStringListLengths, PhysicalLengthShrinksByAQuarterOrMoreOnly)
{
    m_list.append(L"a");
    m_list.setPhysicalLength(7);
    EXPECT_EQ(8, m_list.physicalLength());
    m_list.setPhysicalLength(6);
    EXPECT_EQ(6, m_list.physicalLength());
    m_list.setPhysicalLength(-1);
    EXPECT_EQ(6, m_list.physicalLength());
    m_list.setPhysicalLength(20);
    EXPECT_EQ(20, m_list.physicalLength());
    EXPECT_EQ((Texts{L"a"}), texts(m_list));
    m_list.setPhysicalLength(0);
    EXPECT_EQ(0, m_list.physicalLength());
    EXPECT_EQ(0, m_list.length());
}

TEST_F(qelStringListLengths, GrowLengthTakesAnyValue)
{
    for (long value : {3L, 0L, -2L, 1000000L})
    {
        m_list.setGrowLength(value);
        EXPECT_EQ(value, m_list.growLength());
    }
    m_list.setGrowLength(3);
    m_list.setLogicalLength(4);
    EXPECT_EQ(6, m_list.physicalLength());
}

TEST_F(qelStringListLengths, AGrowLengthOfZeroIsHarmlessWhileSlotsAreSpare)
{
    qelStringClassArray list(2, 8);
    list.setGrowLength(0);
    EXPECT_EQ(0, list.append(L"a"));
    EXPECT_EQ(1, list.append(L"b"));
    EXPECT_EQ((Texts{L"a", L"b"}), texts(list));
}

TEST(qelStringListGrowthDeathTest, WithAGrowLengthOfZeroIsAFatalFault)
{
    EXPECT_DEATH(
        {
            qelStringClassArray list;
            list.setGrowLength(0);
            list.append(L"a");
        },
        "");
}
