// The search tree. Nothing here recurses, since removals may leave a tree as deep as it has entries. Instead, an
// insertion or removal notes in each entry which side it descended to, and follows these notes again to correct
// weights.

#include "qelBalancedTree.h"

#include "qelArray.h"

#include <stdint.h>

namespace
{
/// Stack of entries whose left side is being walked. For a balanced tree it needs no heap.
class Waiting
{
public:
    Waiting()
        : m_nearCount(0)
    {
    }

    void push(const qelBalancedTreeEntry* entry)
    {
        if (m_nearCount < kNear)
        {
            m_near[m_nearCount++] = entry;
            return;
        }
        if (m_far.length() == m_far.physicalLength())
        {
            m_far.setPhysicalLength(m_far.length() == 0 ? kNear : m_far.length() * 2);
        }
        m_far.append(entry);
    }

    const qelBalancedTreeEntry* pop()
    {
        if (!m_far.isEmpty())
        {
            const qelBalancedTreeEntry* entry = m_far.last();
            m_far.setLogicalLength(m_far.length() - 1);
            return entry;
        }
        return m_nearCount > 0 ? m_near[--m_nearCount] : nullptr;
    }

private:
    static const int kNear = 64;

    const qelBalancedTreeEntry* m_near[kNear];
    int m_nearCount;
    qelArray<const qelBalancedTreeEntry*, qelArrayMemCopyReallocator<const qelBalancedTreeEntry*>> m_far;
};

/// `left` for -1, `right` for 1. Without a jump: a search turns at random, and each wrong guess of the processor would
/// take longer than the rest of the level.
const qelBalancedTreeEntry* chosen(int side, const qelBalancedTreeEntry* left, const qelBalancedTreeEntry* right)
{
    const uintptr_t isLeft = 0 - static_cast<uintptr_t>(side < 0); // all bits or none
    const auto other = reinterpret_cast<uintptr_t>(right);
    return reinterpret_cast<const qelBalancedTreeEntry*>(((reinterpret_cast<uintptr_t>(left) ^ other) & isLeft) ^
                                                         other);
}
} // namespace

/// The path of an insertion or removal, as noted in its entries.
class qelBalancedTreeEntry::Descent
{
public:
    /// A change of height at the end of the path passes up until an entry stops it: growth stops at an entry that is
    /// not balanced, shrinking at one that is.
    enum Change
    {
        eGrowth,
        eShrinking,
    };

    Descent(qelBalancedTreeEntry*& slot, Change change)
        : m_begin(&slot)
        , m_entry(slot)
        , m_above(nullptr)
        , m_aboveTop(nullptr)
        , m_stopsAtBalanced(change == eShrinking)
    {
    }

    /// The entry that the path has come to, null at the end of the tree.
    qelBalancedTreeEntry* entry() const { return m_entry; }

    /// Its slot.
    qelBalancedTreeEntry*& slot() const { return slotBelow(m_above); }

    /// Goes on to the side that compare() chose with -1 or 1.
    void turn(int side)
    {
        if ((m_entry->m_weight == eBalanced) == m_stopsAtBalanced)
        {
            m_aboveTop = m_above;
        }
        m_above = m_entry;
        m_above->m_side = side;
        m_entry = side < 0 ? m_above->m_left : m_above->m_right;
    }

    /// Goes on to an equal entry and returns 0, or to the end where `key` belongs and returns 1, or to an entry whose
    /// compare() returns an invalid value, and returns that.
    int find(const qelBalancedTreeEntry& key)
    {
        while (m_entry != nullptr)
        {
            const int side = m_entry->compare(key);
            if (side != -1 && side != 1)
            {
                return side;
            }
            turn(side);
        }
        return 1;
    }

    /// Corrects the weights of the path after the subtree in slot() has grown by a level.
    void grow(int& flag) const
    {
        if (m_above == m_aboveTop)
        {
            return;
        }
        qelBalancedTreeEntry*& top = slotBelow(m_aboveTop);
        for (qelBalancedTreeEntry* at = top; at != m_above;)
        {
            at = followed(*at);
            at->m_weight = heavyOnPath(*at);
        }
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): only an empty path has no top, and returned above
        if (top->m_side < 0)
        {
            checkLeftInsert(top, flag);
        }
        else
        {
            checkRightInsert(top, flag);
        }
    }

    /// The same after it has shrunk.
    void shrink(int& flag) const
    {
        if (m_above == m_aboveTop)
        {
            return;
        }
        qelBalancedTreeEntry*& top = slotBelow(m_aboveTop);
        for (qelBalancedTreeEntry* at = top; at != m_above;)
        {
            at = followed(*at);
            if (at->m_weight == heavyOnPath(*at))
            {
                at->m_weight = eBalanced;
            }
        }
        if (top->m_side < 0)
        {
            checkLeftRemove(top, flag);
        }
        else
        {
            checkRightRemove(top, flag);
        }
    }

private:
    static qelBalancedTreeEntry*& followed(qelBalancedTreeEntry& entry)
    {
        return entry.m_side < 0 ? entry.m_left : entry.m_right;
    }

    static eWeight heavyOnPath(const qelBalancedTreeEntry& entry)
    {
        return entry.m_side < 0 ? eLeftHeavy : eRightHeavy;
    }

    qelBalancedTreeEntry*& slotBelow(qelBalancedTreeEntry* entry) const
    {
        return entry == nullptr ? *m_begin : followed(*entry);
    }

    qelBalancedTreeEntry** m_begin;
    qelBalancedTreeEntry* m_entry;
    qelBalancedTreeEntry* m_above;    ///< null at the beginning
    qelBalancedTreeEntry* m_aboveTop; ///< above the last entry that stops the change, or the beginning: likewise null
    bool m_stopsAtBalanced;
};

qelBalancedTreeEntry::qelBalancedTreeEntry()
    : m_weight(eBalanced)
    , m_side(0)
    , m_left(nullptr)
    , m_right(nullptr)
{
}

qelBalancedTreeEntry::~qelBalancedTreeEntry()
{
    // Each round destroys one entry after clearing its links, so that its destructor does not recurse.
    qelBalancedTreeEntry* next = this;
    while (next != nullptr)
    {
        qelBalancedTreeEntry* entry = next;
        next = entry->m_right != nullptr ? entry->m_right : entry->m_left;
        if (entry->m_right != nullptr && entry->m_left != nullptr)
        {
            // The left subtree comes last: attach it below the leftmost entry of the right one.
            qelBalancedTreeEntry* last = entry->m_right;
            while (last->m_left != nullptr)
            {
                last = last->m_left;
            }
            last->m_left = entry->m_left;
        }
        entry->m_left = nullptr;
        entry->m_right = nullptr;
        if (entry != this)
        {
            delete entry;
        }
    }
}

const qelBalancedTreeEntry* qelBalancedTreeEntry::search(const qelBalancedTreeEntry& key) const
{
    const qelBalancedTreeEntry* entry = this;
    while (entry != nullptr)
    {
        const int side = entry->compare(key);
        if (side == 0)
        {
            return entry;
        }
        if (side != -1 && side != 1)
        {
            return nullptr;
        }
        const qelBalancedTreeEntry* const left = entry->m_left;
        const qelBalancedTreeEntry* const right = entry->m_right;
        entry = chosen(side, left, right);
    }
    return nullptr;
}

qelBalancedTreeEntry::eError qelBalancedTreeEntry::insert(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry* entry,
                                                          int& flag)
{
    Descent descent(slot, Descent::eGrowth);
    const int side = descent.find(*entry);
    if (side == 0)
    {
        flag = 0;
        return eAlreadyInTree;
    }
    if (descent.entry() != nullptr)
    {
        // Deliberate: returns success without inserting.
        return eNoError;
    }
    descent.slot() = entry;
    flag = 1;
    descent.grow(flag);
    return eNoError;
}

qelBalancedTreeEntry::eError qelBalancedTreeEntry::remove(qelBalancedTreeEntry*& slot, const qelBalancedTreeEntry& key,
                                                          int& flag)
{
    Descent descent(slot, Descent::eShrinking);
    const int side = descent.find(key);
    qelBalancedTreeEntry* found = descent.entry();
    if (found == nullptr)
    {
        flag = 0;
        return eNotFound;
    }
    if (side != 0)
    {
        return eNotFound;
    }

    flag = 1;
    qelBalancedTreeEntry*& link = descent.slot();
    if (found->m_left != nullptr && found->m_right != nullptr)
    {
        const eError error = inorderPredecessor(found->m_left, link, flag);
        if (error != eNoError)
        {
            return error;
        }
        if (flag != 0)
        {
            checkLeftRemove(link, flag);
        }
    }
    else
    {
        link = found->m_left != nullptr ? found->m_left : found->m_right;
        if (link != nullptr)
        {
            link->m_weight = eBalanced;
        }
    }
    if (flag != 0)
    {
        descent.shrink(flag);
    }

    // Last, since `key` may be this entry.
    found->m_left = nullptr;
    found->m_right = nullptr;
    delete found;
    return eNoError;
}

qelBalancedTreeEntry::eError qelBalancedTreeEntry::inorderPredecessor(qelBalancedTreeEntry*& slot,
                                                                      qelBalancedTreeEntry*& target, int& flag)
{
    if (slot == nullptr)
    {
        return eNullEntry;
    }
    Descent descent(slot, Descent::eShrinking);
    while (descent.entry()->m_right != nullptr)
    {
        descent.turn(1);
    }

    // The predecessor deliberately keeps its own weight. Its left side moves up before it takes over the links, so that
    // a predecessor that is the direct left child keeps its own left side.
    qelBalancedTreeEntry* replaced = target;
    qelBalancedTreeEntry* predecessor = descent.entry();
    target = predecessor;
    descent.slot() = predecessor->m_left;
    predecessor->m_right = replaced->m_right;
    predecessor->m_left = replaced->m_left;
    flag = 1;
    descent.shrink(flag);
    return eNoError;
}

void qelBalancedTreeEntry::checkLeftInsert(qelBalancedTreeEntry*& slot, int& flag)
{
    qelBalancedTreeEntry* entry = slot;
    switch (entry->m_weight)
    {
    case eRightHeavy:
        entry->m_weight = eBalanced;
        flag = 0;
        break;
    case eBalanced:
        entry->m_weight = eLeftHeavy;
        break;
    case eLeftHeavy:
        flag = 0;
        if (entry->m_left->m_weight == eLeftHeavy)
        {
            entry->m_weight = eBalanced;
            rotateRight(slot);
            slot->m_weight = eBalanced;
        }
        else if (entry->m_left->m_right != nullptr)
        {
            rotateLeft(entry->m_left);
            rotateRight(slot);
            slot->checkAndCorrectBalanceStatus();
            slot->m_weight = eBalanced;
        }
        // else removals have emptied the heavy side: nothing to rotate, and the weight stays
        break;
    }
}

void qelBalancedTreeEntry::checkRightInsert(qelBalancedTreeEntry*& slot, int& flag)
{
    qelBalancedTreeEntry* entry = slot;
    switch (entry->m_weight)
    {
    case eLeftHeavy:
        entry->m_weight = eBalanced;
        flag = 0;
        break;
    case eBalanced:
        entry->m_weight = eRightHeavy;
        break;
    case eRightHeavy:
        flag = 0;
        if (entry->m_right->m_weight == eRightHeavy)
        {
            entry->m_weight = eBalanced;
            rotateLeft(slot);
            slot->m_weight = eBalanced;
        }
        else if (entry->m_right->m_left != nullptr)
        {
            rotateRight(entry->m_right);
            rotateLeft(slot);
            slot->checkAndCorrectBalanceStatus();
            slot->m_weight = eBalanced;
        }
        // else as in checkLeftInsert()
        break;
    }
}

// Deliberately, neither of the two below rotates: when the lower side shrinks further, the weight stays.
void qelBalancedTreeEntry::checkLeftRemove(qelBalancedTreeEntry*& slot, int& flag)
{
    if (slot->m_weight == eLeftHeavy)
    {
        slot->m_weight = eBalanced;
        flag = 1;
    }
    else if (slot->m_weight == eBalanced)
    {
        slot->m_weight = eRightHeavy;
        flag = 0;
    }
}

void qelBalancedTreeEntry::checkRightRemove(qelBalancedTreeEntry*& slot, int& flag)
{
    if (slot->m_weight == eRightHeavy)
    {
        slot->m_weight = eBalanced;
        flag = 1;
    }
    else if (slot->m_weight == eBalanced)
    {
        slot->m_weight = eLeftHeavy;
        flag = 0;
    }
}

void qelBalancedTreeEntry::rotateLeft(qelBalancedTreeEntry*& slot)
{
    qelBalancedTreeEntry* entry = slot;
    slot = entry->m_right;
    entry->m_right = slot->m_left;
    slot->m_left = entry;
}

void qelBalancedTreeEntry::rotateRight(qelBalancedTreeEntry*& slot)
{
    qelBalancedTreeEntry* entry = slot;
    slot = entry->m_left;
    entry->m_left = slot->m_right;
    slot->m_right = entry;
}

void qelBalancedTreeEntry::checkAndCorrectBalanceStatus()
{
    switch (m_weight)
    {
    case eLeftHeavy:
        setWeightStatusToChilds(eBalanced, eRightHeavy);
        break;
    case eBalanced:
        setWeightStatusToChilds(eBalanced, eBalanced);
        break;
    case eRightHeavy:
        setWeightStatusToChilds(eLeftHeavy, eBalanced);
        break;
    }
}

void qelBalancedTreeEntry::setWeightStatusToChilds(eWeight left, eWeight right)
{
    if (m_left != nullptr)
    {
        m_left->m_weight = left;
    }
    if (m_right != nullptr)
    {
        m_right->m_weight = right;
    }
}

qelBalancedTree::qelBalancedTree()
    : m_root(nullptr)
{
}

qelBalancedTree::~qelBalancedTree()
{
    reset();
}

void qelBalancedTree::reset()
{
    qelBalancedTreeEntry* root = m_root;
    m_root = nullptr;
    delete root;
}

const qelBalancedTreeEntry* qelBalancedTree::search(const qelBalancedTreeEntry& key) const
{
    return m_root == nullptr ? nullptr : m_root->search(key);
}

int qelBalancedTree::walk(Visitor* visit, void* context) const
{
    Waiting waiting;
    const qelBalancedTreeEntry* next = m_root;
    for (;;)
    {
        for (; next != nullptr; next = next->m_left)
        {
            waiting.push(next);
        }
        const qelBalancedTreeEntry* entry = waiting.pop();
        if (entry == nullptr)
        {
            return 1;
        }
        if (visit(*entry, context) == 0)
        {
            return 0;
        }
        next = entry->m_right;
    }
}

qelBalancedTreeEntry::eError qelBalancedTree::insert(qelBalancedTreeEntry* entry)
{
    if (entry == nullptr)
    {
        return qelBalancedTreeEntry::eNullEntry;
    }
    int flag = 0;
    return qelBalancedTreeEntry::insert(m_root, entry, flag);
}

qelBalancedTreeEntry::eError qelBalancedTree::remove(const qelBalancedTreeEntry& key)
{
    int flag = 0;
    return qelBalancedTreeEntry::remove(m_root, key, flag);
}
