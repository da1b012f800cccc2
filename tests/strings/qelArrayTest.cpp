#include "qelArray.h"
#include "qelString.h"
#include "support/ImportHook.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <new>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Doubles = qelArray<double, qelArrayMemCopyReallocator<double>, qelArrayMemoryController<double>>;

/// An element that knows where it lives: every use of one that is not alive, and every leak, is counted as an error.
class Tracked
{
public:
    Tracked(int value = 0)
        : m_value(value)
    {
        born();
    }

    Tracked(const Tracked& other)
        : m_value(other.value())
    {
        born();
    }

    Tracked& operator=(const Tracked& other)
    {
        check();
        m_value = other.value();
        ++assignments;
        return *this;
    }

    ~Tracked()
    {
        check();
        living.erase(this);
        m_value = -1;
    }

    bool operator==(const Tracked& other) const { return value() == other.value(); }

    int value() const
    {
        check();
        return m_value;
    }

    static void reset()
    {
        living.clear();
        errors = 0;
        assignments = 0;
        constructions = 0;
    }

    static std::set<const Tracked*> living;
    static int errors;
    static int assignments;
    static int constructions;

private:
    void born()
    {
        errors += living.insert(this).second ? 0 : 1;
        ++constructions;
    }

    void check() const { errors += living.count(this) == 1 ? 0 : 1; }

    int m_value;
};

std::set<const Tracked*> Tracked::living;
int Tracked::errors;
int Tracked::assignments;
int Tracked::constructions;

template <class Array> Array filled(std::initializer_list<int> values)
{
    Array array;
    for (const int value : values)
    {
        array.append(value);
    }
    return array;
}

template <class Array> std::vector<int> valuesOf(const Array& array)
{
    std::vector<int> values;
    for (long i = 0; i < array.length(); ++i)
    {
        values.push_back(static_cast<int>(array[i]));
    }
    return values;
}

std::vector<int> valuesOf(const qelArray<Tracked>& array)
{
    std::vector<int> values;
    for (long i = 0; i < array.length(); ++i)
    {
        values.push_back(array[i].value());
    }
    return values;
}

using Values = std::vector<int>;

/// The same for both element policies.
template <class Array> class qelArrayBothPolicies : public testing::Test
{
};

using BothPolicies = testing::Types<qelArray<int>, qelArray<int, qelArrayMemCopyReallocator<int>>>;
TYPED_TEST_SUITE(qelArrayBothPolicies, BothPolicies);

TYPED_TEST(qelArrayBothPolicies, NewArrayIsEmptyWithoutStorage)
{
    const TypeParam array;
    EXPECT_EQ(array.length(), 0);
    EXPECT_EQ(array.logicalLength(), 0);
    EXPECT_EQ(array.physicalLength(), 0);
    EXPECT_EQ(array.growLength(), 8);
    EXPECT_EQ(array.isEmpty(), 1);
}

TYPED_TEST(qelArrayBothPolicies, ConstructionTakesPhysicalAndGrowLength)
{
    const TypeParam array(5, 3);
    EXPECT_EQ(array.physicalLength(), 5);
    EXPECT_EQ(array.length(), 0);
    EXPECT_EQ(array.growLength(), 3);
    EXPECT_EQ(TypeParam(-4).physicalLength(), 0);
}

TYPED_TEST(qelArrayBothPolicies, ConstructionReplacesAGrowLengthOfZeroByEight)
{
    TypeParam array(0, 0);
    EXPECT_EQ(array.growLength(), 8);
    array.append(1);
    EXPECT_EQ(array.physicalLength(), 8);
}

TYPED_TEST(qelArrayBothPolicies, GrowsInWholeMultiplesOfTheGrowLength)
{
    TypeParam array;
    for (int i = 0; i < 100; ++i)
    {
        array.append(i);
        EXPECT_EQ(array.length(), i + 1);
        EXPECT_EQ(array.physicalLength(), (i / 8 + 1) * 8);
    }
    for (int i = 0; i < 100; ++i)
    {
        EXPECT_EQ(array[i], i);
    }
}

TYPED_TEST(qelArrayBothPolicies, GrowsToTheMultipleThatHoldsTheNeededLength)
{
    TypeParam array(0, 5);
    array.setLogicalLength(11);
    EXPECT_EQ(array.physicalLength(), 15);
    array.setLogicalLength(15);
    EXPECT_EQ(array.physicalLength(), 15);
    array.setLogicalLength(16);
    EXPECT_EQ(array.physicalLength(), 20);
    array.setGrowLength(7);
    array.setLogicalLength(21);
    EXPECT_EQ(array.physicalLength(), 21);
    array.setLogicalLength(22);
    EXPECT_EQ(array.physicalLength(), 28);
}

TYPED_TEST(qelArrayBothPolicies, GrowLengthCanBeSetAndCounts)
{
    TypeParam array;
    array.setGrowLength(1);
    EXPECT_EQ(array.growLength(), 1);
    array.append(1);
    array.append(2);
    EXPECT_EQ(array.physicalLength(), 2);
    array.setGrowLength(0);
    EXPECT_EQ(array.growLength(), 0);
    // No growth, no division.
    array.setAt(1, 3);
    array.setLogicalLength(1);
    EXPECT_EQ(valuesOf(array), Values({1}));
}

TYPED_TEST(qelArrayBothPolicies, NegativeGrowLengthMakesEnoughSlots)
{
    TypeParam array(0, -3);
    for (int i = 0; i < 10; ++i)
    {
        array.append(i);
        EXPECT_GE(array.physicalLength(), array.length());
    }
    EXPECT_EQ(array[9], 9);
}

TYPED_TEST(qelArrayBothPolicies, ShrinkingByLessThanAQuarterKeepsTheStorage)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    const int* storage = &array[0];
    array.setPhysicalLength(7);
    EXPECT_EQ(array.physicalLength(), 8);
    EXPECT_EQ(&array[0], storage);
    array.setPhysicalLength(8);
    EXPECT_EQ(&array[0], storage);
    array.setPhysicalLength(6);
    EXPECT_EQ(array.physicalLength(), 6);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
}

TYPED_TEST(qelArrayBothPolicies, ShrinkThresholdIsThreeQuartersExactly)
{
    for (long from = 1; from <= 40; ++from)
    {
        for (long to = 1; to < from; ++to)
        {
            TypeParam array(from);
            array.setPhysicalLength(to);
            EXPECT_EQ(array.physicalLength(), 4 * to > 3 * from ? from : to) << from << " to " << to;
        }
    }
}

TYPED_TEST(qelArrayBothPolicies, ShrinkingCutsTheLogicalLength)
{
    TypeParam array = filled<TypeParam>({1, 2, 3, 4, 5, 6});
    array.setPhysicalLength(2);
    EXPECT_EQ(array.length(), 2);
    EXPECT_EQ(array.physicalLength(), 2);
    EXPECT_EQ(valuesOf(array), Values({1, 2}));
}

TYPED_TEST(qelArrayBothPolicies, GrowingKeepsTheElementsInUse)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setPhysicalLength(100);
    EXPECT_EQ(array.physicalLength(), 100);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
}

TYPED_TEST(qelArrayBothPolicies, PhysicalLengthOfZeroFreesEverything)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setPhysicalLength(0);
    EXPECT_EQ(array.length(), 0);
    EXPECT_EQ(array.physicalLength(), 0);
    EXPECT_EQ(array.growLength(), 8);
    array.setPhysicalLength(0);
    array.append(4);
    EXPECT_EQ(valuesOf(array), Values({4}));
}

TYPED_TEST(qelArrayBothPolicies, NegativePhysicalLengthChangesNothing)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setPhysicalLength(-1);
    array.setPhysicalLength(LONG_MIN);
    EXPECT_EQ(array.physicalLength(), 8);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
}

TYPED_TEST(qelArrayBothPolicies, LoweringTheLogicalLengthKeepsTheValues)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setLogicalLength(0);
    EXPECT_EQ(array.isEmpty(), 1);
    EXPECT_EQ(array.physicalLength(), 8);
    array.setLogicalLength(3);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
    EXPECT_EQ(array.isEmpty(), 0);
}

TYPED_TEST(qelArrayBothPolicies, SetAtAssignsInsideAndExtendsOutside)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setAt(1, 9);
    EXPECT_EQ(valuesOf(array), Values({1, 9, 3}));
    array.setAt(3, 4);
    EXPECT_EQ(valuesOf(array), Values({1, 9, 3, 4}));
    array.setAt(20, 7);
    EXPECT_EQ(array.length(), 21);
    EXPECT_EQ(array.physicalLength(), 24);
    EXPECT_EQ(array[3], 4);
    EXPECT_EQ(array[20], 7);
}

TYPED_TEST(qelArrayBothPolicies, InsertMovesLaterElementsUp)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.insertAt(0, 10);
    array.insertAt(2, 20);
    array.insertAt(5, 30);
    EXPECT_EQ(valuesOf(array), Values({10, 1, 20, 2, 3, 30}));
    array.insertAt(1, 40);
    array.insertAt(1, 50);
    array.insertAt(1, 60);
    EXPECT_EQ(valuesOf(array), Values({10, 60, 50, 40, 1, 20, 2, 3, 30}));
    EXPECT_EQ(array.physicalLength(), 16);
}

TYPED_TEST(qelArrayBothPolicies, InsertOutsideTheArrayGrowsByOneAndStaysInItsStorage)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.insertAt(6, 60);
    EXPECT_EQ(array.length(), 4);
    array.setLogicalLength(7);
    EXPECT_EQ(array[6], 60);
    array.setLogicalLength(4);
    array.insertAt(1000000, 5);
    array.insertAt(-1, 5);
    EXPECT_EQ(array.length(), 6);
    EXPECT_EQ(array.physicalLength(), 8);
}

TYPED_TEST(qelArrayBothPolicies, RemoveMovesLaterElementsDown)
{
    TypeParam array = filled<TypeParam>({1, 2, 3, 4});
    array.removeAt(1);
    EXPECT_EQ(valuesOf(array), Values({1, 3, 4}));
    array.removeAt(2);
    EXPECT_EQ(valuesOf(array), Values({1, 3}));
    array.removeAt(0);
    array.removeAt(0);
    EXPECT_EQ(array.isEmpty(), 1);
    EXPECT_EQ(array.physicalLength(), 8);
}

TYPED_TEST(qelArrayBothPolicies, RemoveLeavesADuplicateInTheLastSlot)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.removeAt(0);
    array.setLogicalLength(3);
    EXPECT_EQ(valuesOf(array), Values({2, 3, 3}));
}

TYPED_TEST(qelArrayBothPolicies, RemoveOutsideTheArrayShrinksByOne)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.removeAt(7);
    EXPECT_EQ(valuesOf(array), Values({1, 2}));
    array.removeAt(-5);
    EXPECT_EQ(valuesOf(array), Values({2}));
}

TYPED_TEST(qelArrayBothPolicies, RemoveFromAnEmptyArrayDoesNotTouchForeignMemory)
{
    TypeParam array;
    array.removeAt(0);
    EXPECT_EQ(array.length(), -1);
    array.append(filled<TypeParam>({1, 2}));
    array.setLogicalLength(0);
    array.append(3);
    EXPECT_EQ(valuesOf(array), Values({3}));
}

TYPED_TEST(qelArrayBothPolicies, FindGivesTheFirstPositionFromTheStart)
{
    const TypeParam array = filled<TypeParam>({5, 6, 5, 7});
    long index = -7;
    EXPECT_TRUE(array.find(5, index));
    EXPECT_EQ(index, 0);
    EXPECT_TRUE(array.find(5, index, 1));
    EXPECT_EQ(index, 2);
    EXPECT_TRUE(array.find(7, index, 3));
    EXPECT_EQ(index, 3);
    EXPECT_TRUE(array.find(6, index, -10));
    EXPECT_EQ(index, 1);
}

TYPED_TEST(qelArrayBothPolicies, FailedFindLeavesTheIndexAlone)
{
    TypeParam array = filled<TypeParam>({5, 6, 7});
    long index = -7;
    EXPECT_FALSE(array.find(8, index));
    EXPECT_FALSE(array.find(5, index, 1));
    EXPECT_FALSE(array.find(7, index, 3));
    EXPECT_FALSE(array.find(7, index, LONG_MAX));
    array.setLogicalLength(2);
    EXPECT_FALSE(array.find(7, index));
    EXPECT_FALSE(TypeParam().find(0, index));
    EXPECT_EQ(index, -7);
}

TYPED_TEST(qelArrayBothPolicies, AppendsAnotherArray)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    const TypeParam other = filled<TypeParam>({4, 5, 6, 7, 8, 9});
    array.append(other);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(array.physicalLength(), 16);
    EXPECT_EQ(other.length(), 6);
    array.append(TypeParam());
    EXPECT_EQ(array.length(), 9);
}

TYPED_TEST(qelArrayBothPolicies, AppendsItself)
{
    TypeParam array = filled<TypeParam>({1, 2, 3, 4, 5});
    array.append(array);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3, 4, 5, 1, 2, 3, 4, 5}));
    TypeParam empty;
    empty.append(empty);
    EXPECT_EQ(empty.physicalLength(), 0);
}

TYPED_TEST(qelArrayBothPolicies, AppendAndInsertNeverShrinkSpareStorage)
{
    TypeParam array(1000);
    array.append(1);
    array.insertAt(0, 2);
    array.append(array);
    array.setAt(10, 3);
    EXPECT_EQ(array.physicalLength(), 1000);
}

TYPED_TEST(qelArrayBothPolicies, AssignmentTakesElementsAndGrowLengthIntoExactStorage)
{
    TypeParam source(50, 5);
    source.append(1);
    source.append(2);
    TypeParam target = filled<TypeParam>({9, 9, 9, 9});
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(valuesOf(target), Values({1, 2}));
    EXPECT_EQ(target.physicalLength(), 2);
    EXPECT_EQ(target.growLength(), 5);
    target[0] = 7;
    EXPECT_EQ(source[0], 1);
    target = TypeParam(4, 3);
    EXPECT_EQ(target.length(), 0);
    EXPECT_EQ(target.physicalLength(), 0);
    EXPECT_EQ(target.growLength(), 3);
}

TYPED_TEST(qelArrayBothPolicies, AssignmentToItselfChangesNothing)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    const int* storage = &array[0];
    const TypeParam& itself = array;
    array = itself;
    EXPECT_EQ(&array[0], storage);
    EXPECT_EQ(array.physicalLength(), 8);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
}

TYPED_TEST(qelArrayBothPolicies, CopyConstructionIsAssignment)
{
    TypeParam source(50, 5);
    source.append(1);
    const TypeParam copy(source);
    EXPECT_EQ(valuesOf(copy), Values({1}));
    EXPECT_EQ(copy.physicalLength(), 1);
    EXPECT_EQ(copy.growLength(), 5);
}

TYPED_TEST(qelArrayBothPolicies, GivesDirectAccess)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    const TypeParam& constant = array;
    EXPECT_EQ(&array.first(), &array[0]);
    EXPECT_EQ(&array.last(), &array[2]);
    EXPECT_EQ(&constant.first(), &array[0]);
    EXPECT_EQ(&constant.last(), &constant[2]);
    array.last() = 9;
    array.first() = 8;
    EXPECT_EQ(valuesOf(array), Values({8, 2, 9}));
}

TYPED_TEST(qelArrayBothPolicies, ArgumentsOutOfTheArrayItselfCountAsCopied)
{
    TypeParam array = filled<TypeParam>({1, 2, 3, 4, 5, 6, 7, 8});
    array.append(array[0]);
    EXPECT_EQ(array.last(), 1);
    array.insertAt(0, array[1]);
    EXPECT_EQ(array.first(), 2);
    array.insertAt(0, array[9]);
    EXPECT_EQ(array.first(), 1);
    array.setAt(40, array[4]);
    EXPECT_EQ(array.last(), 3);
    array.setLogicalLength(2);
    array.append(array[1]);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 2}));
}

TYPED_TEST(qelArrayBothPolicies, LengthsThatCannotBeAreRefusedByTheAllocation)
{
    TypeParam array = filled<TypeParam>({1, 2});
    EXPECT_THROW(array.setAt(LONG_MAX, 1), std::bad_alloc);
    EXPECT_EQ(valuesOf(array), Values({1, 2}));
}

TEST(qelArrayObjects, SetAtBehindTheEndMakesNewElementsInBetween)
{
    qelArray<qelString> texts;
    texts.setAt(5, L"x");
    EXPECT_EQ(texts.length(), 6);
    for (long i = 0; i < 5; ++i)
    {
        EXPECT_EQ(texts[i].isEmpty(), 1);
    }
    EXPECT_STREQ(texts[5].getStringW(), L"x");

    qelArray<int> numbers;
    numbers.setAt(5, 1);
    EXPECT_EQ(valuesOf(numbers), Values({0, 0, 0, 0, 0, 1}));
}

TEST(qelArrayObjects, SetAtBehindTheStorageKeepsOnlyTheElementsInUse)
{
    qelArray<int> array = filled<qelArray<int>>({1, 2, 3, 4});
    array.setLogicalLength(2);
    array.setAt(9, 5);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 0, 0, 0, 0, 0, 0, 0, 5}));
}

TYPED_TEST(qelArrayBothPolicies, SetAtBehindTheEndShowsWhatSpareSlotsHeldWhileTheStorageSuffices)
{
    // As raising the logical length does.
    TypeParam array = filled<TypeParam>({1, 2, 3, 4});
    array.setLogicalLength(1);
    array.setAt(3, 9);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3, 9}));
    EXPECT_EQ(array.physicalLength(), 8);
}

TYPED_TEST(qelArrayBothPolicies, SetAtOfANegativePositionSetsTheLengthAndStoresNothing)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    array.setAt(-1, 9);
    EXPECT_EQ(array.length(), 0);
    EXPECT_EQ(array.physicalLength(), 8);
    array.setLogicalLength(3);
    EXPECT_EQ(valuesOf(array), Values({1, 2, 3}));
    TypeParam empty;
    empty.setAt(-5, 9);
    EXPECT_EQ(empty.length(), -4);
    EXPECT_EQ(empty.physicalLength(), 0);
    empty.append(array);
    EXPECT_EQ(valuesOf(empty), Values({1, 2, 3}));
}

TEST(qelArrayObjects, PlainElementsStartAtZero)
{
    for (int round = 0; round < 3; ++round)
    {
        qelArray<void*> pointers(64);
        pointers.setLogicalLength(64);
        for (long i = 0; i < 64; ++i)
        {
            EXPECT_EQ(pointers[i], nullptr);
            pointers[i] = &pointers;
        }
    }
}

TEST(qelArrayObjects, ReallocationSharesTexts)
{
    qelArray<qelString> texts;
    texts.append(L"shared");
    const wchar_t* text = texts[0].getStringW();
    texts.setPhysicalLength(100);
    EXPECT_EQ(texts[0].getStringW(), text);
    long index = -1;
    EXPECT_TRUE(texts.find(L"shared", index));
    EXPECT_FALSE(texts.find(L"SHARED", index));
    EXPECT_EQ(index, 0);
}

TEST(qelArrayObjects, EverySlotIsAnObjectAndEveryObjectIsDestroyedOnce)
{
    Tracked::reset();
    {
        qelArray<Tracked> array;
        EXPECT_EQ(Tracked::living.size(), 0U);
        array.append(Tracked(1));
        EXPECT_EQ(Tracked::living.size(), 8U);
        array.setLogicalLength(0);
        EXPECT_EQ(Tracked::living.size(), 8U);
        array.setPhysicalLength(20);
        EXPECT_EQ(Tracked::living.size(), 20U);
        {
            const qelArray<Tracked> copy(array);
            EXPECT_EQ(Tracked::living.size(), 20U);
        }
        array.setPhysicalLength(0);
        EXPECT_EQ(Tracked::living.size(), 0U);
        array.setPhysicalLength(3);
    }
    EXPECT_EQ(Tracked::living.size(), 0U);
    EXPECT_EQ(Tracked::errors, 0);
}

TEST(qelArrayObjects, ReallocationConstructsEverySlotAndAssignsTheKeptElements)
{
    qelArray<Tracked> array;
    for (int i = 0; i < 5; ++i)
    {
        array.append(Tracked(i));
    }
    Tracked::constructions = 0;
    Tracked::assignments = 0;
    array.setPhysicalLength(16);
    EXPECT_EQ(Tracked::constructions, 16);
    EXPECT_EQ(Tracked::assignments, 5);
}

TEST(qelArrayObjects, RandomOperationsMatchAModel)
{
    Tracked::reset();
    std::mt19937 random(20201);
    const auto below = [&random](size_t limit) { return static_cast<int>(random() % limit); };
    {
        qelArray<Tracked> array;
        std::vector<int> model;
        for (int step = 0; step < 20000; ++step)
        {
            const int value = below(1000);
            const int size = static_cast<int>(model.size());
            const bool any = size > 0;
            switch (below(12))
            {
            case 0:
            case 1:
                array.append(Tracked(value));
                model.push_back(value);
                break;
            case 2:
            {
                const int at = below(model.size() + 1);
                array.insertAt(at, Tracked(value));
                model.insert(model.begin() + at, value);
                break;
            }
            case 3:
            case 4:
                if (any)
                {
                    const int at = below(model.size());
                    array.removeAt(at);
                    model.erase(model.begin() + at);
                }
                break;
            case 5:
                if (any)
                {
                    const int at = below(model.size());
                    array.setAt(at, Tracked(value));
                    model[static_cast<size_t>(at)] = value;
                }
                break;
            case 6:
                if (any)
                {
                    const int from = below(model.size());
                    const int at = below(model.size() + 1);
                    const int moved = model[static_cast<size_t>(from)];
                    array.insertAt(at, array[from]);
                    model.insert(model.begin() + at, moved);
                }
                break;
            case 7:
                if (any)
                {
                    array.append(array[below(model.size())].value() < 500 ? array.first() : array.last());
                    model.push_back(array.last().value());
                }
                break;
            case 8:
                if (size < 60)
                {
                    array.append(array);
                    model.insert(model.end(), model.begin(), model.begin() + size);
                    model.resize(2 * static_cast<size_t>(size));
                }
                break;
            case 9:
            {
                const int length = below(model.size() + 1);
                array.setLogicalLength(length);
                model.resize(static_cast<size_t>(length));
                break;
            }
            case 10:
            {
                const int length = below(2 * model.size() + 1);
                const long physical = array.physicalLength();
                array.setPhysicalLength(length);
                const bool replaced = length > physical || 4 * length <= 3 * physical;
                EXPECT_EQ(array.physicalLength(), replaced ? length : physical);
                if (array.physicalLength() < size)
                {
                    model.resize(static_cast<size_t>(array.physicalLength()));
                }
                break;
            }
            default:
            {
                qelArray<Tracked> copy(array);
                copy.append(Tracked(value));
                array = copy;
                model.push_back(value);
                break;
            }
            }
            ASSERT_EQ(valuesOf(array), model) << "step " << step;
            ASSERT_EQ(Tracked::living.size(), static_cast<size_t>(array.physicalLength())) << "step " << step;
            ASSERT_EQ(Tracked::errors, 0) << "step " << step;
        }
    }
    EXPECT_TRUE(Tracked::living.empty());
    EXPECT_EQ(Tracked::errors, 0);
}

/// A tree: an array that lies inside an element of another array.
struct Node
{
    Node(int number = 0)
        : value(number)
    {
    }

    Tracked value;
    qelArray<Node> children;
};

TEST(qelArrayObjects, AnArrayInsideAnElementMayBeTheArgument)
{
    Tracked::reset();
    {
        Node root;
        root.children.append(Node(1));
        root.children[0].children.append(Node(2));
        root.children[0].children.append(Node(3));
        root.children.setGrowLength(1);
        root.children.setPhysicalLength(1);
        root.children.append(root.children[0].children);
        ASSERT_EQ(root.children.length(), 3);
        EXPECT_EQ(root.children[2].value.value(), 3);
        root.children = root.children[0].children;
        ASSERT_EQ(root.children.length(), 2);
        EXPECT_EQ(root.children[0].value.value(), 2);
        EXPECT_EQ(root.children[1].value.value(), 3);
    }
    EXPECT_EQ(Tracked::living.size(), 0U);
    EXPECT_EQ(Tracked::errors, 0);
}

/// What happened to elements and storage, in order.
std::vector<std::string> events;

/// An element that writes down what it goes through.
class Witness
{
public:
    Witness(int value = 0)
        : m_value(value)
    {
        events.push_back("construct");
    }

    Witness(const Witness& other)
        : m_value(other.m_value)
    {
        events.push_back("copy " + std::to_string(m_value));
    }

    Witness& operator=(const Witness& other)
    {
        m_value = other.m_value;
        events.push_back("assign " + std::to_string(m_value));
        return *this;
    }

    ~Witness() { events.push_back("destroy " + std::to_string(m_value)); }

    int value() const { return m_value; }

private:
    int m_value;
};

/// Storage that is written down, too, and counted.
template <class T> class WitnessedStorage
{
public:
    static T* allocate(long count)
    {
        events.push_back("allocate " + std::to_string(count));
        mostBlocks = std::max(mostBlocks, ++blocks);
        return static_cast<T*>(malloc(static_cast<size_t>(count) * sizeof(T)));
    }

    static void deallocate(T*& storage)
    {
        if (storage != nullptr)
        {
            events.push_back("free");
            --blocks;
            free(storage);
            storage = nullptr;
        }
    }

    static int blocks;
    static int mostBlocks;
};

template <class T> int WitnessedStorage<T>::blocks = 0;
template <class T> int WitnessedStorage<T>::mostBlocks = 0;

using Witnesses = qelArray<Witness, qelArrayObjectCopyReallocator<Witness>, WitnessedStorage<Witness>>;
using Events = std::vector<std::string>;

TEST(qelArrayOrder, AssignmentFreesTheOldElementsBeforeItMakesTheNewOnes)
{
    Witnesses source;
    source.setGrowLength(3);
    source.append(1);
    source.append(2);
    {
        Witnesses target(0, 1);
        target.append(7);
        target.append(8);
        events.clear();
        WitnessedStorage<Witness>::mostBlocks = 0;
        target = source;
        EXPECT_EQ(events, Events({"destroy 7", "destroy 8", "free", "allocate 2", "construct", "construct", "assign 1",
                                  "assign 2"}));
        EXPECT_EQ(WitnessedStorage<Witness>::mostBlocks, 2) << "the source's and one of the target's";
        EXPECT_EQ(target.growLength(), 3);
        events.clear();
        target = Witnesses();
        EXPECT_EQ(events, Events({"destroy 1", "destroy 2", "free"}));
    }
    EXPECT_EQ(WitnessedStorage<Witness>::blocks, 1);
}

TEST(qelArrayOrder, CopyConstructionMakesOneBlock)
{
    Witnesses source(0, 1);
    source.append(1);
    source.append(2);
    events.clear();
    {
        const Witnesses copy(source);
        EXPECT_EQ(events, Events({"allocate 2", "construct", "construct", "assign 1", "assign 2"}));
        events.clear();
    }
    EXPECT_EQ(events, Events({"destroy 1", "destroy 2", "free"}));
}

TEST(qelArrayOrder, ReallocationAssignsToNewElementsBeforeItDestroysTheOldOnes)
{
    Witnesses array(2, 1);
    array.append(1);
    events.clear();
    array.setPhysicalLength(3);
    EXPECT_EQ(events, Events({"allocate 3", "construct", "construct", "construct", "assign 1", "destroy 1", "destroy 0",
                              "free"}));
    const Witness seven(7);
    array.setLogicalLength(3);
    events.clear();
    array.append(seven);
    EXPECT_EQ(events, Events({"allocate 4", "construct", "construct", "construct", "construct", "assign 1", "assign 0",
                              "assign 0", "destroy 1", "destroy 0", "destroy 0", "free", "assign 7"}));
}

TEST(qelArrayOrder, AnElementOfTheArrayIsCopiedOnlyWhereItWouldGo)
{
    Witnesses array(3, 1);
    array.append(1);
    array.append(2);
    events.clear();
    array.append(array[0]);
    EXPECT_EQ(events, Events({"assign 1"}));
    events.clear();
    array.append(array[1]);
    EXPECT_EQ(events,
              Events({"copy 2", "allocate 4", "construct", "construct", "construct", "construct", "assign 1",
                      "assign 2", "assign 1", "destroy 1", "destroy 2", "destroy 1", "free", "assign 2", "destroy 2"}));
}

/// A policy of a host's own, for a type that the library's policy moves as bytes.
class CountingPolicy
{
public:
    static void construct(qelString* storage, long count)
    {
        constructed += count;
        qelArrayObjectCopyReallocator<qelString>::construct(storage, count);
    }

    static void copy(qelString* to, const qelString* from, long count)
    {
        copied += count;
        qelArrayObjectCopyReallocator<qelString>::copy(to, from, count);
    }

    static void destroy(qelString* storage, long count)
    {
        destroyed += count;
        qelArrayObjectCopyReallocator<qelString>::destroy(storage, count);
    }

    static long constructed;
    static long copied;
    static long destroyed;
};

long CountingPolicy::constructed;
long CountingPolicy::copied;
long CountingPolicy::destroyed;

TEST(qelArrayOrder, APolicyOfAHostSeesEveryElement)
{
    qelArray<qelString, CountingPolicy> array(3);
    array.append(L"a");
    array.append(L"b");
    CountingPolicy::constructed = 0;
    CountingPolicy::copied = 0;
    CountingPolicy::destroyed = 0;
    array.setPhysicalLength(10);
    EXPECT_EQ(CountingPolicy::constructed, 10);
    EXPECT_EQ(CountingPolicy::copied, 2);
    EXPECT_EQ(CountingPolicy::destroyed, 3);
    EXPECT_STREQ(array[1].getStringW(), L"b");
}

TEST(qelArrayTexts, MoveAsTheyAreWhenTheStorageIsReplaced)
{
    const qelString shared(L"HEA 200");
    const int before = shareCountOf(shared);
    {
        qelArray<qelString> array;
        array.append(shared);
        array.append(L"IPE 300");
        const char* narrow = array[1].getStringA();
        array.setPhysicalLength(100);
        EXPECT_EQ(shareCountOf(shared), before + 1);
        EXPECT_EQ(array[0].getStringW(), shared.getStringW());
        EXPECT_EQ(charCacheOf(array[1]), narrow) << "not dropped, and made anew when it is next asked for";
        EXPECT_STREQ(narrow, "IPE 300");
        array.setLogicalLength(100);
        EXPECT_TRUE(std::all_of(array.begin() + 2, array.end(), [](const qelString& text) { return text.isEmpty(); }));
    }
    EXPECT_EQ(shareCountOf(shared), before);
}

TEST(qelArrayTexts, AreGivenUpWhenTheStorageShrinks)
{
    const qelString shared(L"HEA 200");
    const int before = shareCountOf(shared);
    qelArray<qelString> array;
    for (int i = 0; i < 8; ++i)
    {
        array.append(shared);
    }
    array.setLogicalLength(6);
    EXPECT_EQ(shareCountOf(shared), before + 8) << "spare slots hold theirs";
    array.setPhysicalLength(3);
    EXPECT_EQ(shareCountOf(shared), before + 3);
    array.removeAt(0);
    array.setLogicalLength(-1);
    array.setPhysicalLength(10);
    EXPECT_EQ(array.length(), -1);
    EXPECT_EQ(shareCountOf(shared), before) << "none was in use";
    array.setLogicalLength(10);
    EXPECT_EQ(array[0].isEmpty(), 1);
}

TYPED_TEST(qelArrayBothPolicies, RangeForVisitsTheElementsInUse)
{
    TypeParam array = filled<TypeParam>({1, 2, 3, 4});
    array.setLogicalLength(3);
    for (int& element : array)
    {
        element *= 10;
    }
    Values seen;
    const TypeParam& constant = array;
    for (const int& element : constant)
    {
        seen.push_back(element);
    }
    EXPECT_EQ(seen, Values({10, 20, 30}));
    array.setLogicalLength(4);
    EXPECT_EQ(array[3], 4) << "a spare slot is not visited";
}

TYPED_TEST(qelArrayBothPolicies, BeginAndEndSpanTheElements)
{
    TypeParam array = filled<TypeParam>({1, 2, 3});
    const TypeParam& constant = array;
    EXPECT_EQ(array.begin(), &array[0]);
    EXPECT_EQ(array.end(), &array[2] + 1);
    EXPECT_EQ(constant.begin(), &array[0]);
    EXPECT_EQ(constant.end(), array.end());
    EXPECT_EQ(std::distance(std::begin(array), std::end(array)), 3);
    static_assert(std::is_same<decltype(constant.begin()), const int*>::value, "const arrays are not written to");
}

TYPED_TEST(qelArrayBothPolicies, AnArrayWithoutElementsIsAnEmptyRange)
{
    const TypeParam none;
    EXPECT_EQ(none.begin(), none.end());
    TypeParam spare(5);
    EXPECT_EQ(spare.begin(), spare.end());
    spare.removeAt(0);
    ASSERT_EQ(spare.length(), -1);
    EXPECT_EQ(spare.begin(), spare.end()) << "a length below 0 is no range that runs backwards";
}

TYPED_TEST(qelArrayBothPolicies, ServesTheAlgorithmsOfTheStandardLibrary)
{
    TypeParam array = filled<TypeParam>({5, 3, 9, 1, 7});
    const TypeParam& constant = array;
    EXPECT_EQ(std::accumulate(constant.begin(), constant.end(), 0), 25);
    EXPECT_EQ(std::find(constant.begin(), constant.end(), 9) - constant.begin(), 2);
    EXPECT_EQ(std::find(constant.begin(), constant.end(), 8), constant.end());
    std::sort(array.begin(), array.end());
    EXPECT_EQ(valuesOf(array), Values({1, 3, 5, 7, 9}));
    std::sort(array.begin(), array.end(), std::greater<int>());
    EXPECT_EQ(valuesOf(array), Values({9, 7, 5, 3, 1}));
    EXPECT_EQ(std::vector<int>(constant.begin(), constant.end()), Values({9, 7, 5, 3, 1}));
}

TEST(qelArrayTexts, AreSortedByTheStandardLibrary)
{
    qelArray<qelString> array;
    for (const wchar_t* text : {L"IPE 300", L"HEB 100", L"HEA 200"})
    {
        array.append(text);
    }
    std::sort(array.begin(), array.end());
    EXPECT_STREQ(array[0].getStringW(), L"HEA 200");
    EXPECT_STREQ(array[1].getStringW(), L"HEB 100");
    EXPECT_STREQ(array[2].getStringW(), L"IPE 300");
    EXPECT_EQ(std::find(array.begin(), array.end(), qelString(L"HEB 100")), &array[1]);
}

TEST(qelArrayPlainValues, AreMovedAsBytes)
{
    Doubles array;
    for (int i = 0; i < 20; ++i)
    {
        array.append(i + 0.5);
    }
    array.setPhysicalLength(12);
    EXPECT_EQ(array.length(), 12);
    for (long i = 0; i < 12; ++i)
    {
        EXPECT_EQ(array[i], static_cast<double>(i) + 0.5);
    }
}

/// A trivially copyable type whose default construction and assignment would be seen.
struct Plain
{
    Plain() = default;
    int value;
};

TEST(qelArrayPlainValues, AreNotConstructed)
{
    static_assert(std::is_trivially_copyable<Plain>::value, "moved as bytes");
    qelArray<Plain, qelArrayMemCopyReallocator<Plain>> array;
    array.setPhysicalLength(4);
    array.setLogicalLength(4);
    for (long i = 0; i < 4; ++i)
    {
        array[i].value = static_cast<int>(i);
    }
    array.setLogicalLength(1);
    array.setLogicalLength(4);
    EXPECT_EQ(array[3].value, 3);
}

size_t allocatedBytes;
size_t freedBlocks;
bool nextAllocationFails;

void* watchedMalloc(size_t bytes)
{
    if (nextAllocationFails)
    {
        // Only this one: throwing takes memory, too.
        nextAllocationFails = false;
        return nullptr;
    }
    allocatedBytes += bytes;
    return malloc(bytes);
}

void watchedFree(void* block)
{
    freedBlocks += block != nullptr ? 1U : 0U;
    free(block);
}

class qelArrayStorage : public testing::Test
{
protected:
    qelArrayStorage()
        : m_malloc("malloc", &watchedMalloc)
        , m_free("free", &watchedFree)
    {
        allocatedBytes = 0;
        freedBlocks = 0;
        nextAllocationFails = false;
    }

private:
    qelTest::ImportHook m_malloc;
    qelTest::ImportHook m_free;
};

TEST_F(qelArrayStorage, ComesFromTheControllerInWholeElements)
{
    {
        Doubles array;
        EXPECT_EQ(allocatedBytes, 0U);
        array.append(1.0);
        EXPECT_EQ(allocatedBytes, 8 * sizeof(double));
        array.setLogicalLength(9);
        EXPECT_EQ(allocatedBytes, 24 * sizeof(double));
        EXPECT_EQ(freedBlocks, 1U);
        array.setLogicalLength(0);
        array.setLogicalLength(16);
        EXPECT_EQ(freedBlocks, 1U);
    }
    EXPECT_EQ(freedBlocks, 2U);
}

TEST_F(qelArrayStorage, WithoutMemoryTheArrayStaysAsItWas)
{
    void (*const operations[])(qelArray<int>&, const qelArray<int>&) = {
        [](qelArray<int>& array, const qelArray<int>& other) { array.append(other); },
        [](qelArray<int>& array, const qelArray<int>&) { array.append(9); },
        [](qelArray<int>& array, const qelArray<int>&) { array.append(array[0]); },
        [](qelArray<int>& array, const qelArray<int>&) { array.insertAt(0, 9); },
        [](qelArray<int>& array, const qelArray<int>&) { array.setAt(100, 9); },
        [](qelArray<int>& array, const qelArray<int>&) { array.setPhysicalLength(1); },
    };
    qelArray<int> other(0, 5);
    other.append(7);
    other.append(8);
    for (const auto operation : operations)
    {
        qelArray<int> array = filled<qelArray<int>>({1, 2, 3, 4, 5, 6, 7, 8});
        nextAllocationFails = true;
        EXPECT_THROW(operation(array, other), std::bad_alloc);
        EXPECT_EQ(valuesOf(array), Values({1, 2, 3, 4, 5, 6, 7, 8}));
        EXPECT_EQ(array.physicalLength(), 8);
        EXPECT_EQ(array.growLength(), 8);
    }
}

TEST_F(qelArrayStorage, AssignmentWithoutMemoryLeavesAnEmptyArray)
{
    qelArray<int> array = filled<qelArray<int>>({1, 2, 3});
    qelArray<int> other(0, 5);
    other.append(7);
    nextAllocationFails = true;
    EXPECT_THROW(array = other, std::bad_alloc);
    EXPECT_EQ(array.length(), 0);
    EXPECT_EQ(array.physicalLength(), 0);
    EXPECT_EQ(array.growLength(), 8);
    array = other;
    EXPECT_EQ(valuesOf(array), Values({7}));
}

TEST_F(qelArrayStorage, ControllerAllocatesCountTimesSize)
{
    const long count = 3;
    const unsigned long long size = 7;
    unsigned char* block = qelMemoryControllerController::allocateArray(count, size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(allocatedBytes, 21U);
    for (int i = 0; i < 21; ++i)
    {
        block[i] = static_cast<unsigned char>(i);
    }
    qelMemoryControllerController::deallocateArray(block);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(freedBlocks, 1U);
}

TEST_F(qelArrayStorage, ControllerHasABlockForNoElementsOfWhateverSize)
{
    const long none = 0;
    for (const unsigned long long size : {1ULL, 8ULL, ULLONG_MAX})
    {
        unsigned char* block = qelMemoryControllerController::allocateArray(none, size);
        EXPECT_NE(block, nullptr) << size;
        qelMemoryControllerController::deallocateArray(block);
    }
    EXPECT_EQ(freedBlocks, 3U);
}

TEST_F(qelArrayStorage, ControllerLeavesANullBlockAlone)
{
    unsigned char* block = nullptr;
    qelMemoryControllerController::deallocateArray(block);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(freedBlocks, 0U);
}

TEST_F(qelArrayStorage, ControllerRefusesSizesThatCannotBe)
{
    const unsigned long long size = 1;
    const unsigned long long wraps = 0x4000000000000001ULL;
    const unsigned long long half = 0x2000000000000000ULL;
    const long negative = -1;
    const long four = 4;
    EXPECT_THROW(qelMemoryControllerController::allocateArray(negative, size), std::bad_alloc);
    EXPECT_THROW(qelMemoryControllerController::allocateArray(four, wraps), std::bad_alloc);
    EXPECT_THROW(qelMemoryControllerController::allocateArray(four, half), std::bad_alloc);
}

TEST(qelArrayLayout, IsThreeLengthsAndTheStorage)
{
    qelArray<int> array(0, 5);
    array.append(1);
    array.append(2);
    const auto* raw = reinterpret_cast<const unsigned char*>(&array);
    EXPECT_EQ(*reinterpret_cast<const int*>(raw), 2);
    EXPECT_EQ(*reinterpret_cast<const int*>(raw + 4), 5);
    EXPECT_EQ(*reinterpret_cast<const int*>(raw + 8), 5);
    EXPECT_EQ(*reinterpret_cast<int* const*>(raw + 16), &array[0]);
    EXPECT_EQ(sizeof array, 24U);
}

TEST(qelArrayGrowth, WithAGrowLengthOfZeroIsAFatalFault)
{
    EXPECT_DEATH(
        {
            qelArray<int> array;
            array.setGrowLength(0);
            array.append(1);
            exit(0);
        },
        "");
}
} // namespace
