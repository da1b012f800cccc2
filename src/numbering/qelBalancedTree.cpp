// The search tree. Nothing here recurses: removals may leave a tree as deep as it has entries. An insertion or removal
// instead leaves in each entry on its way the side on which it went on, and goes that way again to correct weights.

#include "qelBalancedTree.h"

#include "qelArray.h"

namespace
{
/// Entries that wait for the left side of their subtree to be walked. Those of a balanced tree need no heap.
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
} // namespace

/// The way that an insertion or removal has gone, as the entries on it remember it.
class qelBalancedTreeEntry::Descent
{
public:
    using Check = void(qelBalancedTreeEntry*& slot, int& flag);

    /// The slot on the side that compare() named with -1 or 1; the entry remembers the side.
    static qelBalancedTreeEntry*& turn(qelBalancedTreeEntry& entry, int side)
    {
        entry.m_side = side;
        return followed(entry);
    }

    /**
     * Runs `left` or `right` on each entry from the one in `top` down to the slot `end`, by the side on which the
     * descent went on. The entries below `top` come first and leave the flag at 1: all of them are balanced after an
     * insertion and heavy after a removal, and such entries pass a change of height on. Only at `top` may the change
     * end and may links change.
     */
    static void check(qelBalancedTreeEntry*& top, qelBalancedTreeEntry* const* end, Check& left, Check& right,
                      int& flag)
    {
        if (&top == end)
        {
            return;
        }
        for (qelBalancedTreeEntry** at = &followed(*top); at != end; at = &followed(**at))
        {
            ((*at)->m_side < 0 ? left : right)(*at, flag);
        }
        (top->m_side < 0 ? left : right)(top, flag);
    }

private:
    static qelBalancedTreeEntry*& followed(qelBalancedTreeEntry& entry)
    {
        return entry.m_side < 0 ? entry.m_left : entry.m_right;
    }
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
    // Each round destroys one entry without its links, so that its own destructor has nothing more to do.
    qelBalancedTreeEntry* next = this;
    while (next != nullptr)
    {
        qelBalancedTreeEntry* entry = next;
        next = entry->m_right != nullptr ? entry->m_right : entry->m_left;
        if (entry->m_right != nullptr && entry->m_left != nullptr)
        {
            // The left subtree comes last: hang it below the entry of the right one whose left side ends it.
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
        entry = side < 0 ? left : right;
    }
    return nullptr;
}

qelBalancedTreeEntry::eError qelBalancedTreeEntry::insert(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry* entry,
                                                          int& flag)
{
    qelBalancedTreeEntry** at = &slot;
    qelBalancedTreeEntry** top = at; // the growth of a side goes up through balanced entries and ends at any other
    while (*at != nullptr)
    {
        const int side = (*at)->compare(*entry);
        if (side == 0)
        {
            flag = 0;
            return eAlreadyInTree;
        }
        if (side != -1 && side != 1)
        {
            // Deliberate: the result of an insertion, though nothing is inserted.
            return eNoError;
        }
        if ((*at)->m_weight != eBalanced)
        {
            top = at;
        }
        at = &Descent::turn(**at, side);
    }
    *at = entry;
    flag = 1;
    Descent::check(*top, at, checkLeftInsert, checkRightInsert, flag);
    return eNoError;
}

qelBalancedTreeEntry::eError qelBalancedTreeEntry::remove(qelBalancedTreeEntry*& slot, const qelBalancedTreeEntry& key,
                                                          int& flag)
{
    qelBalancedTreeEntry** at = &slot;
    qelBalancedTreeEntry** top = at; // the loss of a level goes up through heavy entries and ends at a balanced one
    while (*at != nullptr)
    {
        const int side = (*at)->compare(key);
        if (side == 0)
        {
            break;
        }
        if (side != -1 && side != 1)
        {
            return eNotFound;
        }
        if ((*at)->m_weight == eBalanced)
        {
            top = at;
        }
        at = &Descent::turn(**at, side);
    }

    qelBalancedTreeEntry* found = *at;
    if (found == nullptr)
    {
        flag = 0;
        return eNotFound;
    }
    flag = 1;
    if (found->m_left != nullptr && found->m_right != nullptr)
    {
        const eError error = inorderPredecessor(found->m_left, *at, flag);
        if (error != eNoError)
        {
            return error;
        }
        if (flag != 0)
        {
            checkLeftRemove(*at, flag);
        }
    }
    else
    {
        *at = found->m_left != nullptr ? found->m_left : found->m_right;
        if (*at != nullptr)
        {
            (*at)->m_weight = eBalanced;
        }
    }
    if (flag != 0)
    {
        Descent::check(*top, at, checkLeftRemove, checkRightRemove, flag);
    }

    // Last of all, since `key` may be this entry.
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
    qelBalancedTreeEntry** at = &slot;
    qelBalancedTreeEntry** top = at;
    while ((*at)->m_right != nullptr)
    {
        if ((*at)->m_weight == eBalanced)
        {
            top = at;
        }
        at = &Descent::turn(**at, 1);
    }

    // The predecessor keeps its own weight by design. Its left side moves up before it takes over the links, so that
    // one that was the direct left side of the replaced entry keeps its own left side.
    qelBalancedTreeEntry* replaced = target;
    qelBalancedTreeEntry* predecessor = *at;
    target = predecessor;
    *at = predecessor->m_left;
    predecessor->m_right = replaced->m_right;
    predecessor->m_left = replaced->m_left;
    flag = 1;
    Descent::check(*top, at, checkLeftRemove, checkRightRemove, flag);
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
        // else removals had emptied the side called heavy: there is nothing to rotate, and the weight stays
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

// Neither of the two below rotates, by design: a side that is already the lower one gets lower still, unrecorded.
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
