// Arrays of each kind of element against a plain list of slots: elements, slots that are not in use, and all lengths.
#include "models/SlotModel.h"
#include "qelArray.h"
#include "qelString.h"
#include "support/SeededRun.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using qelTest::SeededRun;
using qelTest::SlotModel;

/// How the model names an element, and how the array's is made from that.
struct Strings
{
    using Array = qelArray<qelString>;
    using Value = std::wstring;
    static Value random(SeededRun& run) { return qelTest::randomText(run, L"ab", 3); }
    static qelString make(const Value& value) { return value.c_str(); }
    static Value nameOf(const qelString& element) { return element.getStringW(); }
    static constexpr bool newSlotsAreDefined = true;
};

struct Units
{
    using Array = qelArray<wchar_t>;
    using Value = wchar_t;
    static Value random(SeededRun& run) { return static_cast<wchar_t>(run.between(L'a', L'f')); }
    static wchar_t make(Value value) { return value; }
    static Value nameOf(wchar_t element) { return element; }
    static constexpr bool newSlotsAreDefined = true;
};

struct Numbers
{
    using Array = qelArray<double, qelArrayMemCopyReallocator<double>>;
    using Value = double;
    static Value random(SeededRun& run) { return run.below(8) / 2.0; }
    static double make(Value value) { return value; }
    static Value nameOf(double element) { return element; }
    static constexpr bool newSlotsAreDefined = false;
};

/// Two arrays beside their models, and one operation at a time on both.
template <class Kind> class Arrays
{
public:
    explicit Arrays(SeededRun& run)
        : m_run(run)
        , m_arrays{typename Kind::Array(), typename Kind::Array(5, 3)}
        , m_models{Slots(0, 8), Slots(5, 3)}
    {
    }

    void operate()
    {
        using Operation = void (Arrays::*)();
        static const Operation operations[] = {
            &Arrays::append,      &Arrays::append,    &Arrays::append,      &Arrays::setAt,    &Arrays::setAt,
            &Arrays::insertAt,    &Arrays::insertAt,  &Arrays::removeAt,    &Arrays::removeAt, &Arrays::setLogical,
            &Arrays::setPhysical, &Arrays::setGrow,   &Arrays::appendArray, &Arrays::assign,   &Arrays::copy,
            &Arrays::find,        &Arrays::repeatOwn,
        };
        m_at = m_run.below(2);
        (this->*m_run.pick(operations))();
    }

    void check() const
    {
        for (int i = 0; i < 2; ++i)
        {
            checkOne(m_arrays[i], m_models[i]);
        }
    }

private:
    using Array = typename Kind::Array;
    using Value = typename Kind::Value;
    using Slots = SlotModel<Value, Kind::newSlotsAreDefined>;

    Array& array() { return m_arrays[m_at]; }
    Slots& model() { return m_models[m_at]; }

    static void checkOne(const Array& array, const Slots& model)
    {
        ASSERT_EQ(model.logical, array.length());
        ASSERT_EQ(model.logical, array.logicalLength());
        ASSERT_EQ(model.physical(), array.physicalLength());
        ASSERT_EQ(model.grow, array.growLength());
        ASSERT_EQ(model.logical == 0 ? 1 : 0, array.isEmpty());
        for (long i = 0; i < model.physical(); ++i)
        {
            if (model.isKnown(i))
            {
                ASSERT_EQ(model.at(i), Kind::nameOf(array[i])) << "slot " << i;
            }
        }
        ASSERT_EQ(model.logical < 0 ? 0 : model.logical, array.end() - array.begin());
        if (model.logical > 0)
        {
            ASSERT_EQ(&array[0], &array.first());
            ASSERT_EQ(&array[model.logical - 1], &array.last());
            ASSERT_EQ(array.begin(), &array.first());
        }
    }

    Value value() { return Kind::random(m_run); }
    long position() { return m_run.between(0, static_cast<int>(model().logical < 0 ? 0 : model().logical)); }

    void append()
    {
        const Value added = value();
        array().append(Kind::make(added));
        model().setAt(model().logical, added);
    }

    void setAt()
    {
        const long i = m_run.oneIn(4) ? m_run.between(-1, 40) : position();
        const Value set = value();
        array().setAt(i, Kind::make(set));
        model().setAt(i, set);
    }

    void insertAt()
    {
        const long i = m_run.oneIn(20) ? m_run.between(-1, 45) : position();
        const Value inserted = value();
        array().insertAt(i, Kind::make(inserted));
        model().insertAt(i, inserted);
    }

    void removeAt()
    {
        const long i = position();
        array().removeAt(i);
        model().removeAt(i);
    }

    void setLogical()
    {
        const long n = m_run.oneIn(2) ? m_run.between(-1, 40) : m_run.between(0, 8);
        array().setLogicalLength(n);
        model().setLogical(n);
    }

    void setPhysical()
    {
        const long n = m_run.oneIn(2) ? m_run.between(-1, 60)
                                      : m_run.between(static_cast<int>(model().physical()) / 2,
                                                      static_cast<int>(model().physical()));
        array().setPhysicalLength(n);
        model().setPhysical(n);
    }

    void setGrow()
    {
        const long n = m_run.between(1, 9);
        array().setGrowLength(n);
        model().grow = n;
    }

    void appendArray()
    {
        const int from = m_run.below(2);
        if (m_models[from].logical + model().logical > 60)
        {
            array().setLogicalLength(2);
            model().setLogical(2);
        }
        array().append(m_arrays[from]);
        model().append(Slots(m_models[from]));
    }

    void assign()
    {
        const int from = m_run.below(2);
        array() = m_arrays[from];
        if (from != m_at)
        {
            model().assign(m_models[from]);
        }
    }

    void copy()
    {
        const Array copied(array());
        Slots expected(0, 8);
        expected.assign(model());
        checkOne(copied, expected);
    }

    void find()
    {
        const Value wanted = value();
        const long start = m_run.between(-1, 10);
        for (long i = 0; i < model().logical; ++i)
        {
            if (!model().isKnown(i))
            {
                return; // it may hold that value
            }
        }
        long at = -7;
        const long expected = model().find(wanted, start);
        EXPECT_EQ(expected >= 0, array().find(Kind::make(wanted), at, start));
        EXPECT_EQ(expected >= 0 ? expected : -7, at);
    }

    /// An element of the array itself as the value, while the storage may grow.
    void repeatOwn()
    {
        if (model().logical < 1)
        {
            return;
        }
        const long own = m_run.between(0, static_cast<int>(model().logical) - 1);
        if (!model().isKnown(own))
        {
            return;
        }
        const Value expected = model().at(own);
        const long i = position();
        switch (m_run.below(3))
        {
        case 0:
            array().append(array()[own]);
            model().setAt(model().logical, expected);
            break;
        case 1:
            array().insertAt(i, array()[own]);
            model().insertAt(i, expected);
            break;
        default:
            array().setAt(i, array()[own]);
            model().setAt(i, expected);
        }
    }

    SeededRun& m_run;
    Array m_arrays[2];
    Slots m_models[2];
    int m_at = 0;
};

template <class Kind> void compareWithModel()
{
    SeededRun run;
    Arrays<Kind> arrays(run);
    while (run.next())
    {
        arrays.operate();
        arrays.check();
    }
}
} // namespace

TEST(qelArrayModel, OfStringsAgreesWithAPlainList)
{
    compareWithModel<Strings>();
}

TEST(qelArrayModel, OfUnitsAgreesWithAPlainList)
{
    compareWithModel<Units>();
}

TEST(qelArrayModel, OfBytewiseMovedNumbersAgreesWithAPlainList)
{
    compareWithModel<Numbers>();
}
