// A tree against a plain one that is worked by the stated steps, recursively: results, links, weights, and the order in
// which entries are destroyed.
#include "qelBalancedTree.h"
#include "support/PrivateMembers.h"
#include "support/SeededRun.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <set>
#include <utility>
#include <vector>

struct EntryWeight
{
    using type = eWeight qelBalancedTreeEntry::*;
    friend type member(EntryWeight);
};

struct EntryLeft
{
    using type = qelBalancedTreeEntry* qelBalancedTreeEntry::*;
    friend type member(EntryLeft);
};

struct EntryRight
{
    using type = qelBalancedTreeEntry* qelBalancedTreeEntry::*;
    friend type member(EntryRight);
};

struct TreeRoot
{
    using type = qelBalancedTreeEntry* qelBalancedTree::*;
    friend type member(TreeRoot);
};

template struct PrivateMember<EntryWeight, &qelBalancedTreeEntry::m_weight>;
template struct PrivateMember<EntryLeft, &qelBalancedTreeEntry::m_left>;
template struct PrivateMember<EntryRight, &qelBalancedTreeEntry::m_right>;
template struct PrivateMember<TreeRoot, &qelBalancedTree::m_root>;

namespace
{
using Base = qelBalancedTreeEntry;
using qelTest::SeededRun;

const int kKeys = 120;
/// A key that no entry can be compared with.
const int kOdd = INT_MAX;

std::vector<int> destroyed;
int liveEntries = 0;

class Entry final : public Base
{
public:
    explicit Entry(int key)
        : m_key(key)
    {
        ++liveEntries;
    }

    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    ~Entry() override
    {
        --liveEntries;
        destroyed.push_back(m_key);
    }

    int compare(const Base& other) const override
    {
        const int theirs = static_cast<const Entry&>(other).m_key;
        return theirs == kOdd ? 2 : (theirs > m_key) - (theirs < m_key);
    }

    int key() const { return m_key; }

private:
    int m_key;
};

struct Node;
using Link = std::unique_ptr<Node>;

struct Node
{
    explicit Node(int theKey)
        : key(theKey)
    {
    }

    int key;
    eWeight weight = eBalanced;
    Link left;
    Link right;
};

Link Node::* const kSides[] = {&Node::left, &Node::right};
const eWeight kHeavy[] = {eLeftHeavy, eRightHeavy};

/// The stated steps, for one side and, mirrored, for the other.
class Model
{
public:
    Base::eError insert(int key)
    {
        bool hasGrown = false;
        return insert(m_root, key, hasGrown);
    }

    Base::eError remove(int key)
    {
        bool hasShrunk = false;
        return remove(m_root, key, hasShrunk);
    }

    const Link& root() const { return m_root; }
    void reset() { m_root.reset(); }

private:
    static Base::eError insert(Link& slot, int key, bool& hasGrown)
    {
        if (slot == nullptr)
        {
            slot = std::make_unique<Node>(key);
            hasGrown = true;
            return Base::eNoError;
        }
        if (key == kOdd)
        {
            return Base::eNoError;
        }
        if (key == slot->key)
        {
            hasGrown = false;
            return Base::eAlreadyInTree;
        }
        const int side = key < slot->key ? 0 : 1;
        const Base::eError result = insert((*slot).*kSides[side], key, hasGrown);
        if (result == Base::eNoError && hasGrown)
        {
            correctAfterInsert(slot, side, hasGrown);
        }
        return result;
    }

    static void correctAfterInsert(Link& slot, int side, bool& hasGrown)
    {
        if (slot->weight == eBalanced)
        {
            slot->weight = kHeavy[side];
            return;
        }
        hasGrown = false;
        if (slot->weight != kHeavy[side])
        {
            slot->weight = eBalanced;
            return;
        }
        Link& child = (*slot).*kSides[side];
        if (child->weight == kHeavy[side])
        {
            slot->weight = eBalanced;
            rotate(slot, side);
            slot->weight = eBalanced;
        }
        else if ((*child).*kSides[1 - side] != nullptr) // else removals have emptied the heavy side
        {
            rotate(child, 1 - side);
            rotate(slot, side);
            correctChildren(*slot);
            slot->weight = eBalanced;
        }
    }

    /// The child on that side moves up, its parent down to the other side.
    static void rotate(Link& slot, int side)
    {
        Link top = std::move((*slot).*kSides[side]);
        (*slot).*kSides[side] = std::move((*top).*kSides[1 - side]);
        (*top).*kSides[1 - side] = std::move(slot);
        slot = std::move(top);
    }

    static void correctChildren(Node& top)
    {
        const eWeight left = top.weight == eRightHeavy ? eLeftHeavy : eBalanced;
        const eWeight right = top.weight == eLeftHeavy ? eRightHeavy : eBalanced;
        if (top.left != nullptr)
        {
            top.left->weight = left;
        }
        if (top.right != nullptr)
        {
            top.right->weight = right;
        }
    }

    static Base::eError remove(Link& slot, int key, bool& hasShrunk)
    {
        if (slot == nullptr || key == kOdd)
        {
            hasShrunk = false;
            return Base::eNotFound;
        }
        if (key != slot->key)
        {
            const int side = key < slot->key ? 0 : 1;
            const Base::eError result = remove((*slot).*kSides[side], key, hasShrunk);
            if (result == Base::eNoError && hasShrunk)
            {
                correctAfterRemove(*slot, side, hasShrunk);
            }
            return result;
        }
        hasShrunk = true;
        if (slot->left != nullptr && slot->right != nullptr)
        {
            replaceByPredecessor(slot, hasShrunk);
            return Base::eNoError;
        }
        Link child = std::move(slot->left != nullptr ? slot->left : slot->right);
        if (child != nullptr)
        {
            child->weight = eBalanced;
        }
        slot = std::move(child);
        return Base::eNoError;
    }

    /// The predecessor brings its own weight along.
    static void replaceByPredecessor(Link& slot, bool& hasShrunk)
    {
        Link predecessor = takeRightmost(slot->left, hasShrunk);
        predecessor->left = std::move(slot->left);
        predecessor->right = std::move(slot->right);
        slot = std::move(predecessor);
        if (hasShrunk)
        {
            correctAfterRemove(*slot, 0, hasShrunk);
        }
    }

    static Link takeRightmost(Link& slot, bool& hasShrunk)
    {
        if (slot->right != nullptr)
        {
            Link taken = takeRightmost(slot->right, hasShrunk);
            if (hasShrunk)
            {
                correctAfterRemove(*slot, 1, hasShrunk);
            }
            return taken;
        }
        Link taken = std::move(slot);
        slot = std::move(taken->left);
        hasShrunk = true;
        return taken;
    }

    static void correctAfterRemove(Node& node, int side, bool& hasShrunk)
    {
        if (node.weight == kHeavy[side])
        {
            node.weight = eBalanced;
            hasShrunk = true;
        }
        else if (node.weight == eBalanced)
        {
            node.weight = kHeavy[1 - side];
            hasShrunk = false;
        }
    }

    Link m_root;
};

void expectSame(const Link& expected, const Base* entry)
{
    ASSERT_EQ(expected != nullptr, entry != nullptr);
    if (expected != nullptr)
    {
        ASSERT_EQ(expected->key, static_cast<const Entry*>(entry)->key());
        ASSERT_EQ(expected->weight, entry->*member(EntryWeight())) << "of " << expected->key;
        expectSame(expected->left, entry->*member(EntryLeft()));
        expectSame(expected->right, entry->*member(EntryRight()));
    }
}

/// Each entry before its subtrees, the right one first.
void listDestruction(const Link& slot, std::vector<int>& keys)
{
    if (slot != nullptr)
    {
        keys.push_back(slot->key);
        listDestruction(slot->right, keys);
        listDestruction(slot->left, keys);
    }
}

int addKey(const Base& entry, void* keys)
{
    static_cast<std::vector<int>*>(keys)->push_back(static_cast<const Entry&>(entry).key());
    return 1;
}

/// The tree beside its model and a plain set of keys, and one operation at a time on all.
class Trees
{
public:
    explicit Trees(SeededRun& run)
        : m_run(run)
    {
    }

    void operate()
    {
        destroyed.clear();
        const int kind = m_run.below(1000);
        if (kind == 0)
        {
            reset();
        }
        else if (kind < 4)
        {
            walk();
        }
        else if (kind < 10)
        {
            insertNull();
        }
        else if (kind < 300)
        {
            search();
        }
        else
        {
            // Now more are inserted, now more removed.
            const bool isGrowing = m_run.step() / 500 % 2 == 0;
            (kind < 530) == isGrowing ? remove() : insert();
        }
    }

    void check()
    {
        expectSame(m_model.root(), m_tree.*member(TreeRoot()));
        ASSERT_EQ(m_keys.size(), static_cast<size_t>(liveEntries));
    }

private:
    int key() { return m_run.oneIn(100) ? kOdd : m_run.below(kKeys); }

    void insert()
    {
        const int added = key();
        if (added == kOdd && m_keys.empty())
        {
            return; // it would be the root
        }
        auto* entry = new Entry(added);
        const Base::eError result = m_tree.insert(entry);
        EXPECT_EQ(m_model.insert(added), result);
        if (added == kOdd || m_keys.count(added) != 0)
        {
            EXPECT_EQ(added == kOdd ? Base::eNoError : Base::eAlreadyInTree, result);
            delete entry;
        }
        else
        {
            EXPECT_EQ(Base::eNoError, result);
            m_keys.insert(added);
        }
    }

    void remove()
    {
        const int removed = key();
        const bool isThere = m_keys.erase(removed) != 0;
        Base::eError result;
        {
            const Entry wanted(removed);
            result = m_tree.remove(wanted);
            EXPECT_EQ(isThere ? std::vector<int>{removed} : std::vector<int>(), destroyed);
        }
        EXPECT_EQ(isThere ? Base::eNoError : Base::eNotFound, result);
        EXPECT_EQ(m_model.remove(removed), result);
    }

    void search()
    {
        const Entry wanted(key());
        const Base* found = m_tree.search(wanted);
        ASSERT_EQ(m_keys.count(wanted.key()) != 0, found != nullptr);
        EXPECT_TRUE(found == nullptr || static_cast<const Entry*>(found)->key() == wanted.key());
    }

    void walk()
    {
        std::vector<int> keys;
        EXPECT_EQ(1, m_tree.walk(&addKey, &keys));
        EXPECT_EQ(std::vector<int>(m_keys.begin(), m_keys.end()), keys);
    }

    void insertNull() { EXPECT_EQ(Base::eNullEntry, m_tree.insert(nullptr)); }

    void reset()
    {
        std::vector<int> expected;
        listDestruction(m_model.root(), expected);
        m_tree.reset();
        EXPECT_EQ(expected, destroyed);
        m_model.reset();
        m_keys.clear();
    }

    SeededRun& m_run;
    qelBalancedTree m_tree;
    Model m_model;
    std::set<int> m_keys;
};
} // namespace

TEST(qelBalancedTreeModel, AgreesWithTheStatedStepsDoneRecursively)
{
    SeededRun run;
    Trees trees(run);
    while (run.next())
    {
        trees.operate();
        trees.check();
    }
}
