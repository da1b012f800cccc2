// The stated rules of growing arrays, on a plain list of slots.
#ifndef QEL_TEST_SLOT_MODEL_H
#define QEL_TEST_SLOT_MODEL_H

#include <algorithm>
#include <optional>
#include <vector>

namespace qelTest
{
/// `newSlotsAreDefined` says whether a new slot holds a default value, or just anything.
template <class Value, bool newSlotsAreDefined> class SlotModel
{
public:
    SlotModel(long physical, long growLength)
        : logical(0)
        , grow(growLength)
        , m_slots(static_cast<size_t>(physical), newSlot())
    {
    }

    long physical() const { return static_cast<long>(m_slots.size()); }
    bool isKnown(long i) const { return slot(i).has_value(); }
    const Value& at(long i) const { return *slot(i); }
    Value& at(long i) { return *m_slots[static_cast<size_t>(i)]; }

    void setPhysical(long n)
    {
        if (n < 0 || (n <= physical() && 4 * n > 3 * physical()) || (n == 0 && physical() == 0))
        {
            return;
        }
        replaceStorage(n);
        logical = n == 0 ? 0 : logical;
    }

    void setLogical(long n)
    {
        need(n);
        logical = n;
    }

    void setAt(long i, const Value& value)
    {
        if (i < 0 || i >= logical)
        {
            setLogical(i + 1);
        }
        if (i >= 0)
        {
            m_slots[static_cast<size_t>(i)] = value;
        }
    }

    void insertAt(long i, const Value& value)
    {
        setLogical(logical + 1);
        for (long to = logical - 1; to > std::max(i, 0L); --to)
        {
            m_slots[static_cast<size_t>(to)] = slot(to - 1);
        }
        if (i >= 0 && i < physical())
        {
            m_slots[static_cast<size_t>(i)] = value;
        }
    }

    void removeAt(long i)
    {
        for (long to = i; to + 1 < logical; ++to)
        {
            m_slots[static_cast<size_t>(to)] = slot(to + 1);
        }
        setLogical(logical - 1);
    }

    void append(const SlotModel& other)
    {
        if (other.logical <= 0)
        {
            return;
        }
        const long old = std::max(logical, 0L);
        setLogical(old + other.logical);
        for (long i = 0; i < other.logical; ++i)
        {
            m_slots[static_cast<size_t>(old + i)] = other.slot(i);
        }
    }

    void assign(const SlotModel& other)
    {
        logical = 0;
        m_slots.clear();
        setPhysical(other.logical);
        logical = other.logical;
        grow = other.grow;
        for (long i = 0; i < other.logical; ++i)
        {
            m_slots[static_cast<size_t>(i)] = other.slot(i);
        }
    }

    /// -1 when there is none.
    long find(const Value& value, long start) const
    {
        for (long i = std::max(start, 0L); i < logical; ++i)
        {
            if (slot(i) == value)
            {
                return i;
            }
        }
        return -1;
    }

    long logical;
    long grow;

private:
    using Slot = std::optional<Value>;

    static Slot newSlot() { return newSlotsAreDefined ? Slot(Value()) : Slot(); }
    const Slot& slot(long i) const { return m_slots[static_cast<size_t>(i)]; }

    /// Slots for `n` elements, up to a whole multiple of the grow length.
    void need(long n)
    {
        if (n > physical())
        {
            long slots = grow;
            while (slots < n)
            {
                slots += grow;
            }
            replaceStorage(slots);
        }
    }

    /// Elements in use move; everything else is new.
    void replaceStorage(long n)
    {
        logical = std::min(logical, n);
        m_slots.resize(static_cast<size_t>(std::max(logical, 0L)));
        m_slots.resize(static_cast<size_t>(n), newSlot());
    }

    std::vector<Slot> m_slots;
};
} // namespace qelTest

#endif
