// A list of strings against a plain list of slots.
#include "models/SlotModel.h"
#include "qelStringClassArray.h"
#include "support/SeededRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using qelTest::SeededRun;
using std::wstring;
using Slots = qelTest::SlotModel<wstring, true>;

/// Two lists beside their models, and one operation at a time on both.
class Lists
{
public:
    explicit Lists(SeededRun& run)
        : m_run(run)
        , m_lists{qelStringClassArray(), qelStringClassArray(5, 3)}
        , m_models{Slots(0, 8), Slots(5, 3)}
    {
    }

    void operate()
    {
        using Operation = void (Lists::*)();
        static const Operation operations[] = {
            &Lists::append,     &Lists::append,      &Lists::append,     &Lists::setAt,      &Lists::setAll,
            &Lists::appendList, &Lists::insertAt,    &Lists::insertAt,   &Lists::removeAt,   &Lists::removeText,
            &Lists::removeText, &Lists::removeEnd,   &Lists::search,     &Lists::search,     &Lists::searchSorted,
            &Lists::sort,       &Lists::sortRange,   &Lists::sortNoCase, &Lists::reverse,    &Lists::swap,
            &Lists::setLogical, &Lists::setPhysical, &Lists::setGrow,    &Lists::assignList, &Lists::copyList,
        };
        m_at = m_run.below(2);
        (this->*m_run.pick(operations))();
    }

    void check() const
    {
        for (int i = 0; i < 2; ++i)
        {
            checkOne(m_lists[i], m_models[i]);
        }
    }

private:
    qelStringClassArray& list() { return m_lists[m_at]; }
    Slots& model() { return m_models[m_at]; }

    static void checkOne(const qelStringClassArray& list, const Slots& model)
    {
        ASSERT_EQ(model.logical, list.length());
        ASSERT_EQ(model.logical, list.logicalLength());
        ASSERT_EQ(model.physical(), list.physicalLength());
        ASSERT_EQ(model.grow, list.growLength());
        ASSERT_EQ(model.logical == 0 ? 1 : 0, list.isEmpty());
        for (long i = 0; i < model.physical(); ++i)
        {
            ASSERT_EQ(model.at(i), list[i].getStringW()) << "slot " << i;
        }
        ASSERT_TRUE(list.at(model.physical()).isEmpty());
        if (model.logical > 0)
        {
            ASSERT_EQ(&list[0], &list.first());
            ASSERT_EQ(&list[model.logical - 1], &list.last());
            ASSERT_EQ(model.at(0), list.at(0).getStringW());
        }
    }

    wstring text() { return qelTest::randomText(m_run, L"aAbB1", 2); }
    int length() { return static_cast<int>(std::max(model().logical, 0L)); }
    long position() { return m_run.between(0, length()); }

    /// The texts from one position to another, the last one not among them.
    std::vector<wstring> texts(long from, long to) const
    {
        std::vector<wstring> result;
        for (long i = from; i < to; ++i)
        {
            result.push_back(m_models[m_at].at(i));
        }
        return result;
    }

    void put(long at, const std::vector<wstring>& texts)
    {
        for (const wstring& text : texts)
        {
            model().at(at++) = text;
        }
    }

    void append()
    {
        const wstring added = text();
        const long at = list().append(added.c_str());
        model().setAt(model().logical, added);
        EXPECT_EQ(model().logical - 1, at);
    }

    void setAt()
    {
        const long i = m_run.oneIn(4) ? m_run.between(-1, 40) : position();
        const wstring set = text();
        EXPECT_EQ(&list(), &list().setAt(i, set.c_str()));
        model().setAt(i, set);
    }

    void setAll()
    {
        if (m_run.oneIn(10))
        {
            const wstring set = text();
            EXPECT_EQ(&list(), &list().setAll(set.c_str()));
            put(0, std::vector<wstring>(static_cast<size_t>(length()), set));
        }
    }

    void appendList()
    {
        const int from = m_run.below(2);
        if (m_models[from].logical + model().logical > 60)
        {
            list().setLogicalLength(2);
            model().setLogical(2);
        }
        EXPECT_EQ(&list(), &list().append(m_lists[from]));
        model().append(Slots(m_models[from]));
    }

    void insertAt()
    {
        const long i = m_run.oneIn(20) ? m_run.between(-1, 45) : position();
        const wstring inserted = text();
        EXPECT_EQ(&list(), &list().insertAt(i, inserted.c_str()));
        model().insertAt(i, inserted);
    }

    void removeAt()
    {
        const long i = m_run.oneIn(3) ? 0 : position();
        if (i == 0 && m_run.oneIn(2))
        {
            list().removeFirst();
        }
        else
        {
            EXPECT_EQ(&list(), &list().removeAt(i));
        }
        model().removeAt(i);
    }

    void removeText()
    {
        const wstring removed = text();
        const long start = m_run.between(-1, 4);
        const long at = model().find(removed, start);
        EXPECT_EQ(at >= 0 ? 1 : 0, list().remove(removed.c_str(), start));
        if (at >= 0)
        {
            model().removeAt(at);
        }
    }

    void removeEnd()
    {
        EXPECT_EQ(&list(), &list().removeLast());
        model().setLogical(model().logical - 1);
    }

    void search()
    {
        const wstring wanted = text();
        const long start = m_run.between(-1, 10);
        const long at = model().find(wanted, start);
        long index = -7;
        EXPECT_EQ(at >= 0 ? 1 : 0, list().contains(wanted.c_str(), start));
        EXPECT_EQ(at >= 0 ? 1 : 0, list().find(wanted.c_str(), index, start));
        EXPECT_EQ(at >= 0 ? at : -7, index);
        EXPECT_EQ(at >= 0 ? 1 : 0, list().lfind(wanted.c_str(), index, &qelString::strCompare, start));
        EXPECT_EQ(at, index);
    }

    void searchSorted()
    {
        sort();
        const wstring wanted = text();
        long index = -7;
        const int isFound = list().bsearch(wanted.c_str(), index, &qelString::strCompare);
        EXPECT_EQ(model().find(wanted, 0) >= 0 ? 1 : 0, isFound);
        if (isFound == 1)
        {
            ASSERT_TRUE(index >= 0 && index < model().logical) << index;
            EXPECT_EQ(wanted, list()[index].getStringW());
        }
        else
        {
            EXPECT_EQ(-1, index);
        }
    }

    void sort()
    {
        list().sort(&qelString::strCompare);
        std::vector<wstring> sorted = texts(0, length());
        std::sort(sorted.begin(), sorted.end());
        put(0, sorted);
    }

    /// Both ends included; spare slots may be among them, slots that do not exist are left out.
    void sortRange()
    {
        const long from = m_run.between(0, 10);
        const long to = m_run.between(0, 45);
        list().sort(from, to, &qelString::strCompare);
        const long end = std::min(to + 1, model().physical());
        if (model().logical >= 1 && from < end)
        {
            std::vector<wstring> sorted = texts(from, end);
            std::sort(sorted.begin(), sorted.end());
            put(from, sorted);
        }
    }

    /// Not stable: which of two equal strings comes first is open, so the model takes over what came out.
    void sortNoCase()
    {
        list().sort(&qelString::strCompareNoCase);
        std::vector<wstring> before = texts(0, length());
        std::vector<wstring> after;
        for (long i = 0; i < length(); ++i)
        {
            after.emplace_back(list()[i].getStringW());
        }
        const auto isLess = [](const wstring& a, const wstring& b) { return _wcsicmp(a.c_str(), b.c_str()) < 0; };
        EXPECT_TRUE(std::is_sorted(after.begin(), after.end(), isLess));
        put(0, after);
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        EXPECT_EQ(before, after);
    }

    void reverse()
    {
        EXPECT_EQ(&list(), &list().reverse());
        std::vector<wstring> reversed = texts(0, length());
        std::reverse(reversed.begin(), reversed.end());
        put(0, reversed);
    }

    void swap()
    {
        const long i = m_run.between(-1, 40);
        const long j = position();
        EXPECT_EQ(&list(), &list().swap(i, j));
        if (i >= 0 && i < model().physical() && j < model().physical())
        {
            std::swap(model().at(i), model().at(j));
        }
    }

    void setLogical()
    {
        const long n = m_run.oneIn(2) ? m_run.between(-1, 40) : m_run.between(0, 8);
        list().setLogicalLength(n);
        model().setLogical(n);
    }

    void setPhysical()
    {
        const long n = m_run.oneIn(2) ? m_run.between(-1, 60) : static_cast<int>(model().physical()) * 3 / 4;
        list().setPhysicalLength(n);
        model().setPhysical(n);
    }

    void setGrow()
    {
        model().grow = m_run.between(1, 9);
        list().setGrowLength(model().grow);
    }

    void assignList()
    {
        const int from = m_run.below(2);
        EXPECT_EQ(&list(), &(list() = m_lists[from]));
        if (from != m_at)
        {
            model().assign(m_models[from]);
        }
    }

    void copyList()
    {
        const qelStringClassArray copied(list());
        Slots expected(0, 8);
        expected.assign(model());
        checkOne(copied, expected);
    }

    SeededRun& m_run;
    qelStringClassArray m_lists[2];
    Slots m_models[2];
    int m_at = 0;
};
} // namespace

TEST(qelStringListModel, AgreesWithAPlainList)
{
    SeededRun run;
    Lists lists(run);
    while (run.next())
    {
        lists.operate();
        lists.check();
    }
}
