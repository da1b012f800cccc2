#include "Check.h"

#include "qelBalancedTree.h"
#include "qelIncrementalCounter.h"
#include "qelNumberCreator.h"

namespace
{
int living = 0;

/// A record of the host's, whose virtual functions the library calls.
class Profile : public qelBalancedTreeEntry
{
public:
    explicit Profile(int height)
        : m_height(height)
    {
        ++living;
    }

    ~Profile() override { --living; }

    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const int theirs = static_cast<const Profile&>(other).m_height;
        return theirs < m_height ? -1 : theirs > m_height ? 1 : 0;
    }

    int height() const { return m_height; }

private:
    int m_height;
};

int countUp(const qelBalancedTreeEntry& entry, void* context)
{
    int* const last = static_cast<int*>(context);
    const int height = static_cast<const Profile&>(entry).height();
    CHECK(height > *last);
    *last = height;
    return 1;
}

void checkTree()
{
    {
        qelBalancedTree tree;
        for (int i = 0; i < 100; ++i)
        {
            CHECK(tree.insert(new Profile(i * 37 % 100)) == qelBalancedTreeEntry::eNoError);
        }
        Profile* const twin = new Profile(5);
        CHECK(tree.insert(twin) == qelBalancedTreeEntry::eAlreadyInTree);
        delete twin;
        CHECK(tree.insert(nullptr) == qelBalancedTreeEntry::eNullEntry);
        const qelBalancedTreeEntry* const found = tree.search(Profile(42));
        CHECK(found != nullptr && dynamic_cast<const Profile*>(found) != nullptr);
        CHECK(tree.remove(Profile(42)) == qelBalancedTreeEntry::eNoError && tree.search(Profile(42)) == nullptr);
        CHECK(tree.remove(Profile(42)) == qelBalancedTreeEntry::eNotFound);
        CHECK(living == 99);
        int last = -1;
        (void)tree.walk(countUp, &last);
        show("last in the tree", qelString::integerToString(last));
    }
    CHECK(living == 0);
}

void checkCounter()
{
    StructIncrementalCounter letters;
    letters.startValue = L"H";
    letters.firstCharacter = L"A";
    letters.range = 26;
    letters.excludedCharacters = L"IO";
    letters.maxCount = -1;
    qelIncrementalCounter counter;
    counter.setDataFrom(letters);
    CHECK(counter.increment() == qelIncrementalCounter::eIncremented && counter.getCounterString() == L"J");
    for (int i = 0; i < 20; ++i)
    {
        counter.increment();
    }
    show("code", counter.getCounterString());
    counter.reset();
    CHECK(counter.getCounterString() == L"H");
    qelIncrementalCounter copy(counter);
    copy.setCounterString(L"B");
    copy.increment();
    CHECK(copy.getCounterString() == L"C" && counter.getCounterString() == L"H");
}

void checkCreator()
{
    StructNumberingDataRange digits;
    digits.firstSymbol = L"0";
    digits.symbolCount = 10;
    digits.defaultStart = L"98";
    qelNumberCreator parts;
    CHECK(parts.setNumberingPrefix(L"P") == eCodeSet && parts.setNumberingPrefix(L"P") == eCodeNotSet);
    CHECK(parts.overrideDataRange(digits, static_cast<eNumberingType>(3)) == eCodeSet);
    CHECK(parts.getNextNumber() == L"P98" && parts.getNextNumber() == L"P99" && parts.getNextNumber() == L"P100");
    qelNumberCreator copy(parts);
    CHECK(copy.getNumberingPrefix() == L"P");
}
} // namespace

void checkNumbering()
{
    checkTree();
    checkCounter();
    checkCreator();
}
