#include "allocations/Operations.h"

#include "qelBalancedTree.h"
#include "qelIncrementalCounter.h"
#include "qelNumberCreator.h"

#include <optional>

using namespace qelTest;

namespace
{
StructIncrementalCounter digits()
{
    StructIncrementalCounter digits;
    digits.startValue = L"99";
    digits.firstCharacter = L"0";
    digits.range = 10;
    digits.maxCount = -1;
    return digits;
}

class Counter : public qelIncrementalCounter
{
public:
    int first() const { return initChar(); }
    int next(wchar_t c, const qelString& excluded, int& carry) const { return incrementAtPosition(c, excluded, carry); }
};

template <class Change> void counts(Operations& table, Names names, Change change)
{
    throwing(table, std::move(names), [=](Trial& trial) {
        qelIncrementalCounter counter;
        counter.setDataFrom(digits());
        trial([&] { change(counter); }, [&] { return wide(counter.getCounterString()); });
    });
}

void addCounter(Operations& table)
{
    static const StructIncrementalCounter source = digits();
    static const qelString code(L"1000000");
    static const qelString excluded(L"IO");
    counts(table, {"qelIncrementalCounter::increment()"}, [](qelIncrementalCounter& counter) { counter.increment(); });
    counts(table, {"qelIncrementalCounter::setCounterString(qelString const&)"},
           [](qelIncrementalCounter& counter) { counter.setCounterString(code); });
    counts(table, {"qelIncrementalCounter::reset()"}, [](qelIncrementalCounter& counter) { counter.reset(); });
    throwing(table, {"qelIncrementalCounter::setDataFrom(StructIncrementalCounter const&)"}, [](Trial& trial) {
        qelIncrementalCounter counter;
        trial([&] { counter.setDataFrom(source); }, [&] { return wide(counter.getCounterString()); });
    });
    throwing(table, {"qelIncrementalCounter::operator=(qelIncrementalCounter const&)"}, [](Trial& trial) {
        qelIncrementalCounter other;
        other.setDataFrom(source);
        qelIncrementalCounter counter;
        trial([&] { counter = other; }, [&] { return wide(counter.getCounterString()); });
    });
    throwing(table, {"qelIncrementalCounter::qelIncrementalCounter()"}, [](Trial& trial) {
        std::optional<qelIncrementalCounter> counter;
        trial([&] { counter.emplace(); }, [&] { return number(counter ? 1 : 0); });
    });
    withoutMemory(table,
                  {"qelIncrementalCounter::getCounterString() const", "qelIncrementalCounter::initChar() const",
                   "qelIncrementalCounter::incrementAtPosition(wchar_t, qelString, int&) const",
                   "qelIncrementalCounter::~qelIncrementalCounter()"},
                  [](Trial& trial) {
                      std::optional<Counter> counter(std::in_place);
                      counter->setDataFrom(source);
                      trial(
                          [&] {
                              int carry = 0;
                              trial.result = number(counter->first() + counter->next(L'1', excluded, carry)) +
                                             wide(counter->getCounterString());
                              counter.reset();
                          },
                          [] { return std::wstring(); });
                  });
}

StructNumberingDataRange range()
{
    StructNumberingDataRange range;
    range.firstSymbol = L"0";
    range.symbolCount = 10;
    range.defaultStart = L"99";
    return range;
}

class Creator : public qelNumberCreator
{
public:
    using qelNumberCreator::checkNumber;
    using qelNumberCreator::qelNumberCreator;
};

const eNumberingType kNumeric = static_cast<eNumberingType>(3);

void addCreator(Operations& table)
{
    static const StructNumberingDataRange source = range();
    static const qelString prefix(L"P");
    static const qelString start(L"500");
    static const qelString suffix(L"-S235");
    throwing(table, {"qelNumberCreator::getNextNumber()"}, [](Trial& trial) {
        Creator creator(kNumeric, prefix);
        creator.overrideDataRange(source, kNumeric);
        qelString handedOut(L"none yet");
        trial([&] { handedOut = creator.getNextNumber(); },
              [&] {
                  // The number that would come next.
                  Creator copy(creator);
                  return wide(handedOut) + L" then " + wide(copy.getNextNumber());
              });
    });
    withoutMemory(
        table,
        {"qelNumberCreator::qelNumberCreator()", "qelNumberCreator::qelNumberCreator(eNumberingType, qelString const&)",
         "qelNumberCreator::qelNumberCreator(qelNumberCreator const&)",
         "qelNumberCreator::operator=(qelNumberCreator const&)", "qelNumberCreator::~qelNumberCreator()",
         "qelNumberCreator::getNumberingType() const", "qelNumberCreator::getNumberingPrefix() const",
         "qelNumberCreator::getNumberingSufix() const", "qelNumberCreator::getNumberingStart() const",
         "qelNumberCreator::setNumberingType(eNumberingType)", "qelNumberCreator::setNumberingPrefix(qelString const&)",
         "qelNumberCreator::setNumberingSufix(qelString const&)",
         "qelNumberCreator::setNumberingStart(qelString const&)",
         "qelNumberCreator::overrideDataRange(StructNumberingDataRange const&, eNumberingType)",
         "qelNumberCreator::reset()", "qelNumberCreator::checkNumber(qelString const&) const"},
        [](Trial& trial) {
            trial(
                [&] {
                    Creator creator(kNumeric, prefix);
                    qelNumberCreator other;
                    const qelNumberCreator copy(creator);
                    other = copy;
                    creator.overrideDataRange(source, kNumeric);
                    creator.setNumberingType(static_cast<eNumberingType>(1));
                    creator.setNumberingPrefix(suffix);
                    creator.setNumberingSufix(suffix);
                    creator.setNumberingStart(start);
                    creator.reset();
                    trial.result = number(creator.getNumberingType() + creator.checkNumber(start)) +
                                   wide(creator.getNumberingPrefix()) + wide(creator.getNumberingSufix()) +
                                   wide(creator.getNumberingStart());
                },
                [] { return std::wstring(); });
        });
}

class Entry : public qelBalancedTreeEntry
{
public:
    explicit Entry(int key)
        : m_key(key)
    {
    }

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const int theirs = static_cast<const Entry&>(other).m_key;
        return theirs < m_key ? -1 : theirs > m_key ? 1 : 0;
    }

    int m_key;
};

int visit(const qelBalancedTreeEntry&, void* context)
{
    ++*static_cast<int*>(context);
    return 1;
}

void addTree(Operations& table)
{
    withoutMemory(table,
                  {"qelBalancedTree::qelBalancedTree()",
                   "qelBalancedTree::~qelBalancedTree()",
                   "qelBalancedTree::insert(qelBalancedTreeEntry*)",
                   "qelBalancedTree::remove(qelBalancedTreeEntry const&)",
                   "qelBalancedTree::search(qelBalancedTreeEntry const&) const",
                   "qelBalancedTree::reset()",
                   "qelBalancedTree::walk(int (*)(qelBalancedTreeEntry const&, void*), void*) const",
                   "qelBalancedTreeEntry::qelBalancedTreeEntry()",
                   "qelBalancedTreeEntry::~qelBalancedTreeEntry()",
                   "qelBalancedTreeEntry::checkAndCorrectBalanceStatus()",
                   "qelBalancedTreeEntry::checkLeftInsert(qelBalancedTreeEntry*&, int&)",
                   "qelBalancedTreeEntry::checkLeftRemove(qelBalancedTreeEntry*&, int&)",
                   "qelBalancedTreeEntry::checkRightInsert(qelBalancedTreeEntry*&, int&)",
                   "qelBalancedTreeEntry::checkRightRemove(qelBalancedTreeEntry*&, int&)",
                   "qelBalancedTreeEntry::inorderPredecessor(qelBalancedTreeEntry*&, qelBalancedTreeEntry*&, int&)",
                   "qelBalancedTreeEntry::insert(qelBalancedTreeEntry*&, qelBalancedTreeEntry*, int&)",
                   "qelBalancedTreeEntry::remove(qelBalancedTreeEntry*&, qelBalancedTreeEntry const&, int&)",
                   "qelBalancedTreeEntry::rotateLeft(qelBalancedTreeEntry*&)",
                   "qelBalancedTreeEntry::rotateRight(qelBalancedTreeEntry*&)",
                   "qelBalancedTreeEntry::search(qelBalancedTreeEntry const&) const",
                   "qelBalancedTreeEntry::setWeightStatusToChilds(eWeight, eWeight)"},
                  [](Trial& trial) {
                      std::vector<Entry*> entries;
                      for (int i = 0; i < 64; ++i)
                      {
                          entries.push_back(new Entry(i * 37 % 64));
                      }
                      int visited = 0;
                      trial(
                          [&] {
                              qelBalancedTree tree;
                              for (Entry* entry : entries)
                              {
                                  tree.insert(entry);
                              }
                              for (int i = 0; i < 20; ++i)
                              {
                                  tree.remove(Entry(i * 3));
                              }
                              tree.walk(&visit, &visited);
                              trial.result = number(visited + (tree.search(Entry(1)) != nullptr ? 1 : 0));
                              tree.reset();
                          },
                          [] { return std::wstring(); });
                  });
    // Through a tree that removals have turned into a chain of 200 levels.
    throwing(table, {"qelBalancedTree::walk(int (*)(qelBalancedTreeEntry const&, void*), void*) const"},
             [](Trial& trial) {
                 qelBalancedTree tree;
                 for (int key = 0; key < 400; key += 2)
                 {
                     tree.insert(new Entry(key + 5));
                     tree.insert(new Entry(key + 1));
                     tree.remove(Entry(key + 3));
                 }
                 int whole = 0;
                 trial(
                     [&] {
                         int visited = 0;
                         whole = tree.walk(&visit, &visited);
                     },
                     [&] { return number(whole); });
             });
}
} // namespace

void qelTest::addNumbering(Operations& table)
{
    addCounter(table);
    addCreator(table);
    addTree(table);
}
