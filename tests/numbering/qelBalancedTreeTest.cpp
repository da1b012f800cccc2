#include "qelBalancedTree.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
typedef qelBalancedTreeEntry Base;

static_assert(eLeftHeavy == 0 && eBalanced == 1 && eRightHeavy == 2 && sizeof(eWeight) == 4, "values of callers");
static_assert(Base::eNoError == 0 && Base::eAlreadyInTree == 1 && Base::eNullEntry == 2 && Base::eNotFound == 4 &&
                  sizeof(Base::eError) == 4,
              "values of callers");
static_assert(sizeof(qelBalancedTreeEntry) == 32 && sizeof(qelBalancedTree) == 16, "layouts of callers");
static_assert(std::is_abstract<Base>::value && std::has_virtual_destructor<Base>::value, "a base class");
static_assert(std::has_virtual_destructor<qelBalancedTree>::value, "callers derive from it");
static_assert(std::is_copy_assignable<qelBalancedTree>::value && std::is_copy_constructible<qelBalancedTree>::value,
              "callers copy it");

/// A record that counts what happens to it.
class Entry : public qelBalancedTreeEntry
{
public:
    explicit Entry(int key)
        : m_key(key)
        , m_alive(true)
    {
        ++s_live;
    }

    Entry(const Entry& other)
        : qelBalancedTreeEntry(other)
        , m_key(other.m_key)
        , m_alive(true)
    {
        ++s_live;
    }

    Entry& operator=(const Entry&) = default;

    ~Entry() override
    {
        EXPECT_TRUE(m_alive) << "destroyed twice: " << m_key;
        m_alive = false;
        --s_live;
        s_destroyed.push_back(m_key);
        m_key = INT_MIN;
    }

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const Entry& key = static_cast<const Entry&>(other);
        EXPECT_TRUE(m_alive && key.m_alive) << "compared after its end";
        ++s_compares;
        if (m_key == s_oddKey)
        {
            return s_oddResult;
        }
        if (m_key == s_throwingKey)
        {
            throw std::runtime_error("comparison failed");
        }
        return key.m_key < m_key ? -1 : key.m_key > m_key ? 1 : 0;
    }

    int m_key;
    bool m_alive;

    static int s_live;
    static int s_compares;
    static int s_oddKey;
    static int s_oddResult;
    static int s_throwingKey;
    static std::vector<int> s_destroyed;
};

const int kNone = INT_MAX;

int Entry::s_live = 0;
int Entry::s_compares = 0;
int Entry::s_oddKey = kNone;
int Entry::s_oddResult = 0;
int Entry::s_throwingKey = kNone;
std::vector<int> Entry::s_destroyed;

/// What a debugger sees of an entry and a tree: the fields in their stated order.
struct EntryImage
{
    const void* virtuals;
    eWeight weight;
    const Entry* left;
    const Entry* right;
};

struct TreeImage
{
    const void* virtuals;
    const Entry* root;
};

EntryImage look(const Entry* entry)
{
    EntryImage image;
    const qelBalancedTreeEntry* base = entry;
    std::memcpy(&image, reinterpret_cast<const char*>(base), sizeof(image));
    return image;
}

const Entry* rootOf(const qelBalancedTree& tree)
{
    TreeImage image;
    std::memcpy(&image, reinterpret_cast<const char*>(&tree), sizeof(image));
    return image.root;
}

/// "(left key:weight right)", an empty side as nothing; L, B and R are the weights.
std::string shape(const Entry* entry)
{
    if (entry == nullptr)
    {
        return "";
    }
    const EntryImage image = look(entry);
    std::string left = shape(image.left);
    std::string right = shape(image.right);
    return "(" + left + (left.empty() ? "" : " ") + std::to_string(entry->m_key) + "LBR"[image.weight] +
           (right.empty() ? "" : " ") + right + ")";
}

std::string shape(const qelBalancedTree& tree)
{
    return shape(rootOf(tree));
}

Base::eError add(qelBalancedTree& tree, int key)
{
    Entry* entry = new Entry(key);
    const Base::eError result = tree.insert(entry);
    if (result != Base::eNoError)
    {
        delete entry;
    }
    return result;
}

Base::eError take(qelBalancedTree& tree, int key)
{
    return tree.remove(Entry(key));
}

void addAll(qelBalancedTree& tree, const std::vector<int>& keys)
{
    for (int key : keys)
    {
        ASSERT_EQ(add(tree, key), Base::eNoError);
    }
}

std::vector<int> walked(const qelBalancedTree& tree)
{
    std::vector<int> keys;
    const int all = tree.walk(
        [](const qelBalancedTreeEntry& entry, void* context) {
            static_cast<std::vector<int>*>(context)->push_back(static_cast<const Entry&>(entry).m_key);
            return 1;
        },
        &keys);
    EXPECT_EQ(all, 1);
    return keys;
}

/// The tree's rules once more, written down step by step and recursively, on plain nodes.
class Model
{
public:
    struct Node
    {
        int key;
        eWeight weight = eBalanced;
        Node* left = nullptr;
        Node* right = nullptr;
    };

    Model() = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model() { drop(m_root); }

    Base::eError insert(int key)
    {
        bool grew = false;
        return insert(m_root, key, grew);
    }

    Base::eError remove(int key)
    {
        bool shrank = false;
        return remove(m_root, key, shrank);
    }

    const Node* root() const { return m_root; }

private:
    static void drop(Node* node)
    {
        if (node != nullptr)
        {
            drop(node->left);
            drop(node->right);
            delete node;
        }
    }

    static Base::eError insert(Node*& slot, int key, bool& grew)
    {
        if (slot == nullptr)
        {
            slot = new Node;
            slot->key = key;
            grew = true;
            return Base::eNoError;
        }
        if (key == slot->key)
        {
            grew = false;
            return Base::eAlreadyInTree;
        }
        const bool toLeft = key < slot->key;
        const Base::eError error = insert(toLeft ? slot->left : slot->right, key, grew);
        if (error == Base::eNoError && grew)
        {
            if (toLeft)
            {
                leftGrew(slot, grew);
            }
            else
            {
                rightGrew(slot, grew);
            }
        }
        return error;
    }

    static void leftGrew(Node*& slot, bool& grew)
    {
        Node* n = slot;
        if (n->weight == eRightHeavy)
        {
            n->weight = eBalanced;
            grew = false;
            return;
        }
        if (n->weight == eBalanced)
        {
            n->weight = eLeftHeavy;
            return;
        }
        grew = false;
        Node* l = n->left;
        if (l->weight == eLeftHeavy)
        {
            n->weight = eBalanced;
            n->left = l->right;
            l->right = n;
            slot = l;
            l->weight = eBalanced;
            return;
        }
        Node* x = l->right;
        if (x == nullptr)
        {
            return;
        }
        l->right = x->left;
        x->left = l;
        n->left = x;
        n->left = x->right;
        x->right = n;
        slot = x;
        spread(x);
        x->weight = eBalanced;
    }

    static void rightGrew(Node*& slot, bool& grew)
    {
        Node* n = slot;
        if (n->weight == eLeftHeavy)
        {
            n->weight = eBalanced;
            grew = false;
            return;
        }
        if (n->weight == eBalanced)
        {
            n->weight = eRightHeavy;
            return;
        }
        grew = false;
        Node* r = n->right;
        if (r->weight == eRightHeavy)
        {
            n->weight = eBalanced;
            n->right = r->left;
            r->left = n;
            slot = r;
            r->weight = eBalanced;
            return;
        }
        Node* x = r->left;
        if (x == nullptr)
        {
            return;
        }
        r->left = x->right;
        x->right = r;
        n->right = x;
        n->right = x->left;
        x->left = n;
        slot = x;
        spread(x);
        x->weight = eBalanced;
    }

    static void spread(Node* x)
    {
        if (x->left != nullptr)
        {
            x->left->weight = x->weight == eRightHeavy ? eLeftHeavy : eBalanced;
        }
        if (x->right != nullptr)
        {
            x->right->weight = x->weight == eLeftHeavy ? eRightHeavy : eBalanced;
        }
    }

    static Base::eError remove(Node*& slot, int key, bool& shrank)
    {
        Node* n = slot;
        if (n == nullptr)
        {
            shrank = false;
            return Base::eNotFound;
        }
        if (key < n->key)
        {
            const Base::eError error = remove(n->left, key, shrank);
            if (error == Base::eNoError && shrank)
            {
                leftShrank(slot, shrank);
            }
            return error;
        }
        if (key > n->key)
        {
            const Base::eError error = remove(n->right, key, shrank);
            if (error == Base::eNoError && shrank)
            {
                rightShrank(slot, shrank);
            }
            return error;
        }
        shrank = true;
        if (n->left == nullptr && n->right == nullptr)
        {
            slot = nullptr;
        }
        else if (n->right == nullptr)
        {
            slot = n->left;
            slot->weight = eBalanced;
        }
        else if (n->left == nullptr)
        {
            slot = n->right;
            slot->weight = eBalanced;
        }
        else
        {
            predecessor(n->left, slot, shrank);
            if (shrank)
            {
                leftShrank(slot, shrank);
            }
        }
        delete n;
        return Base::eNoError;
    }

    static void predecessor(Node*& slot, Node*& target, bool& shrank)
    {
        if (slot->right != nullptr)
        {
            predecessor(slot->right, target, shrank);
            if (shrank)
            {
                rightShrank(slot, shrank);
            }
            return;
        }
        Node* p = slot;
        Node* t = target;
        target = p;
        slot = p->left;
        p->right = t->right;
        p->left = t->left;
        shrank = true;
    }

    static void leftShrank(Node* n, bool& shrank)
    {
        if (n->weight == eLeftHeavy)
        {
            n->weight = eBalanced;
            shrank = true;
        }
        else if (n->weight == eBalanced)
        {
            n->weight = eRightHeavy;
            shrank = false;
        }
    }

    static void rightShrank(Node* n, bool& shrank)
    {
        if (n->weight == eRightHeavy)
        {
            n->weight = eBalanced;
            shrank = true;
        }
        else if (n->weight == eBalanced)
        {
            n->weight = eLeftHeavy;
            shrank = false;
        }
    }

    Node* m_root = nullptr;
};

/// Keys, weights and links are the same.
bool same(const Entry* entry, const Model::Node* node)
{
    if (entry == nullptr || node == nullptr)
    {
        return entry == nullptr && node == nullptr;
    }
    const EntryImage image = look(entry);
    return entry->m_key == node->key && image.weight == node->weight && same(image.left, node->left) &&
           same(image.right, node->right);
}

/// Appends the keys in order; a search tree holds exactly the expected ones, ascending.
void collect(const Entry* entry, std::vector<int>& keys)
{
    if (entry != nullptr)
    {
        const EntryImage image = look(entry);
        collect(image.left, keys);
        keys.push_back(entry->m_key);
        collect(image.right, keys);
    }
}

bool holds(const qelBalancedTree& tree, const std::set<int>& expected)
{
    std::vector<int> keys;
    collect(rootOf(tree), keys);
    return std::equal(keys.begin(), keys.end(), expected.begin(), expected.end());
}

/// Height of a subtree whose weights tell its true heights, or -1 when one of them does not.
int balancedHeight(const Entry* entry)
{
    if (entry == nullptr)
    {
        return 0;
    }
    const EntryImage image = look(entry);
    const int left = balancedHeight(image.left);
    const int right = balancedHeight(image.right);
    const int lean = image.weight == eLeftHeavy ? 1 : image.weight == eRightHeavy ? -1 : 0;
    return left < 0 || right < 0 || left - right != lean ? -1 : std::max(left, right) + 1;
}

class qelBalancedTreeTest : public testing::Test
{
protected:
    void SetUp() override
    {
        Entry::s_compares = 0;
        Entry::s_oddKey = kNone;
        Entry::s_throwingKey = kNone;
        Entry::s_destroyed.clear();
        m_liveBefore = Entry::s_live;
    }

    void TearDown() override { EXPECT_EQ(Entry::s_live, m_liveBefore) << "every entry is destroyed exactly once"; }

private:
    int m_liveBefore = 0;
};

TEST_F(qelBalancedTreeTest, FreshEntryIsBalancedWithoutSides)
{
    const Entry entry(5);
    EXPECT_EQ(look(&entry).weight, eBalanced);
    EXPECT_EQ(look(&entry).left, nullptr);
    EXPECT_EQ(look(&entry).right, nullptr);
}

TEST_F(qelBalancedTreeTest, FreshTreeIsEmpty)
{
    const qelBalancedTree tree;
    EXPECT_EQ(rootOf(tree), nullptr);
    EXPECT_EQ(tree.search(Entry(1)), nullptr);
}

TEST_F(qelBalancedTreeTest, FirstEntryBecomesTheRoot)
{
    qelBalancedTree tree;
    Entry* entry = new Entry(7);
    EXPECT_EQ(tree.insert(entry), Base::eNoError);
    EXPECT_EQ(rootOf(tree), entry);
    EXPECT_EQ(shape(tree), "(7B)");
}

TEST_F(qelBalancedTreeTest, RefusesNullEntry)
{
    qelBalancedTree tree;
    EXPECT_EQ(tree.insert(nullptr), Base::eNullEntry);
    EXPECT_EQ(rootOf(tree), nullptr);
}

TEST_F(qelBalancedTreeTest, SmallerGoesLeftAndGreaterGoesRight)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1});
    EXPECT_EQ(shape(tree), "((1B) 2L)");
    addAll(tree, {3});
    EXPECT_EQ(shape(tree), "((1B) 2B (3B))");
    addAll(tree, {4});
    EXPECT_EQ(shape(tree), "((1B) 2R (3R (4B)))");
}

TEST_F(qelBalancedTreeTest, SingleAndDoubleRotationsOfThree)
{
    for (const std::vector<int>& order : {std::vector<int>{1, 2, 3}, {3, 2, 1}, {3, 1, 2}, {1, 3, 2}})
    {
        qelBalancedTree tree;
        addAll(tree, order);
        EXPECT_EQ(shape(tree), "((1B) 2B (3B))");
    }
}

TEST_F(qelBalancedTreeTest, DoubleRotationSharesOutTheWeightOfTheNewTop)
{
    // Four grows on its left side just before it goes up: its old right neighbour becomes right-heavy.
    qelBalancedTree leftCase;
    addAll(leftCase, {6, 2, 7, 1, 4, 3});
    EXPECT_EQ(shape(leftCase), "(((1B) 2B (3B)) 4B (6R (7B)))");

    qelBalancedTree rightCase;
    addAll(rightCase, {6, 2, 7, 1, 4, 5});
    EXPECT_EQ(shape(rightCase), "(((1B) 2L) 4B ((5B) 6B (7B)))");

    qelBalancedTree mirrorLeft;
    addAll(mirrorLeft, {2, 1, 6, 4, 7, 3});
    EXPECT_EQ(shape(mirrorLeft), "(((1B) 2B (3B)) 4B (6R (7B)))");

    qelBalancedTree mirrorRight;
    addAll(mirrorRight, {2, 1, 6, 4, 7, 5});
    EXPECT_EQ(shape(mirrorRight), "(((1B) 2L) 4B ((5B) 6B (7B)))");
}

TEST_F(qelBalancedTreeTest, EqualEntryIsRefusedAndStaysWithTheCaller)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3, 4});
    const std::string before = shape(tree);
    for (int key = 1; key <= 4; ++key)
    {
        Entry* equal = new Entry(key);
        EXPECT_EQ(tree.insert(equal), Base::eAlreadyInTree);
        EXPECT_TRUE(equal->m_alive);
        delete equal;
    }
    EXPECT_EQ(shape(tree), before);
}

TEST_F(qelBalancedTreeTest, SearchReturnsTheEntryItself)
{
    qelBalancedTree tree;
    std::vector<const Entry*> entries;
    for (int key : {5, 2, 8, 1, 9})
    {
        Entry* entry = new Entry(key);
        entries.push_back(entry);
        ASSERT_EQ(tree.insert(entry), Base::eNoError);
    }
    for (const Entry* entry : entries)
    {
        EXPECT_EQ(tree.search(Entry(entry->m_key)), entry);
        EXPECT_EQ(tree.search(*entry), entry);
    }
    EXPECT_EQ(tree.search(Entry(0)), nullptr);
    EXPECT_EQ(tree.search(Entry(4)), nullptr);
    EXPECT_EQ(tree.search(Entry(10)), nullptr);
}

TEST_F(qelBalancedTreeTest, ComparesOnceForEachEntryOnTheWay)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});

    Entry::s_compares = 0;
    tree.search(Entry(5));
    EXPECT_EQ(Entry::s_compares, 3);

    Entry::s_compares = 0;
    add(tree, 8);
    EXPECT_EQ(Entry::s_compares, 3);

    Entry::s_compares = 0;
    add(tree, 9); // rotates
    EXPECT_EQ(Entry::s_compares, 4);

    Entry::s_compares = 0;
    take(tree, 4); // replaced by 3, which lies deeper
    EXPECT_EQ(Entry::s_compares, 1);
}

TEST_F(qelBalancedTreeTest, OtherComparisonResultPretendsToInsert)
{
    for (int odd : {2, -2, 100, INT_MIN, INT_MAX})
    {
        for (int oddKey : {2, 3})
        {
            qelBalancedTree tree;
            addAll(tree, {2, 1, 3, 4});
            const std::string before = shape(tree);
            Entry::s_oddKey = oddKey;
            Entry::s_oddResult = odd;

            Entry* entry = new Entry(5);
            EXPECT_EQ(tree.insert(entry), Base::eNoError);
            EXPECT_EQ(shape(tree), before);
            EXPECT_TRUE(entry->m_alive) << "the caller keeps it";
            delete entry;
            Entry::s_oddKey = kNone;
        }
    }
}

TEST_F(qelBalancedTreeTest, OtherComparisonResultEndsTheSearch)
{
    for (int odd : {2, -2, 100, INT_MIN, INT_MAX})
    {
        qelBalancedTree tree;
        addAll(tree, {4, 2, 6, 1, 3, 5, 7});
        Entry::s_oddKey = 6;
        Entry::s_oddResult = odd;
        for (int key : {5, 6, 7})
        {
            EXPECT_EQ(tree.search(Entry(key)), nullptr);
        }
        EXPECT_NE(tree.search(Entry(1)), nullptr);
        Entry::s_oddKey = kNone;
    }
}

TEST_F(qelBalancedTreeTest, OtherComparisonResultEndsTheRemoval)
{
    for (int odd : {2, -2, 100, INT_MIN, INT_MAX})
    {
        qelBalancedTree tree;
        addAll(tree, {4, 2, 6, 1, 3, 5, 7});
        const std::string before = shape(tree);
        Entry::s_oddKey = 6;
        Entry::s_oddResult = odd;
        for (int key : {5, 6, 7}) // on either side of the odd one, and itself
        {
            EXPECT_EQ(take(tree, key), Base::eNotFound);
        }
        EXPECT_EQ(shape(tree), before);
        Entry::s_oddKey = kNone;
    }
}

TEST_F(qelBalancedTreeTest, ThrowingComparisonLeavesTheTreeAsItWas)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3, 4});
    const std::string before = shape(tree);
    Entry::s_throwingKey = 4;
    const std::unique_ptr<Entry> entry(new Entry(5));
    EXPECT_THROW(tree.insert(entry.get()), std::runtime_error);
    EXPECT_THROW(tree.search(*entry), std::runtime_error);
    EXPECT_THROW(tree.remove(*entry), std::runtime_error);
    EXPECT_EQ(shape(tree), before);
}

TEST_F(qelBalancedTreeTest, RemovingAMissingKeyChangesNothing)
{
    qelBalancedTree tree;
    EXPECT_EQ(take(tree, 1), Base::eNotFound);
    addAll(tree, {2, 1, 3, 4});
    const std::string before = shape(tree);
    EXPECT_EQ(take(tree, 0), Base::eNotFound);
    EXPECT_EQ(take(tree, 5), Base::eNotFound);
    EXPECT_EQ(shape(tree), before);
}

TEST_F(qelBalancedTreeTest, RemovingTheOnlyEntryEmptiesTheTree)
{
    qelBalancedTree tree;
    addAll(tree, {1});
    Entry::s_destroyed.clear();
    EXPECT_EQ(take(tree, 1), Base::eNoError);
    EXPECT_EQ(rootOf(tree), nullptr);
    EXPECT_EQ(Entry::s_destroyed, (std::vector<int>{1, 1})) << "the entry, then the key of the call";
}

TEST_F(qelBalancedTreeTest, RemovalDestroysOnlyTheEntryItself)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    const Entry key(4);
    Entry::s_destroyed.clear();
    EXPECT_EQ(tree.remove(key), Base::eNoError);
    EXPECT_EQ(Entry::s_destroyed, std::vector<int>{4});
    EXPECT_EQ(walked(tree), (std::vector<int>{1, 2, 3, 5, 6, 7}));
}

TEST_F(qelBalancedTreeTest, RemovalNeverRotates)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    take(tree, 1);
    EXPECT_EQ(shape(tree), "((2R (3B)) 4B ((5B) 6B (7B)))");
    take(tree, 3);
    EXPECT_EQ(shape(tree), "((2B) 4R ((5B) 6B (7B)))");
    take(tree, 2);
    EXPECT_EQ(shape(tree), "(4R ((5B) 6B (7B)))") << "right-heavy by two levels, and still said to be by one";
}

TEST_F(qelBalancedTreeTest, ShrinkingTheLowerSideIsNotRecordedButReportedUpwards)
{
    // Six is right-heavy and loses its left side: it keeps its weight, and four still hears of a lost level.
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7, 8});
    EXPECT_EQ(shape(tree), "(((1B) 2B (3B)) 4R ((5B) 6R (7R (8B))))");
    take(tree, 5);
    EXPECT_EQ(shape(tree), "(((1B) 2B (3B)) 4B (6R (7R (8B))))");

    qelBalancedTree mirror;
    addAll(mirror, {5, 3, 7, 2, 4, 6, 8, 1});
    EXPECT_EQ(shape(mirror), "((((1B) 2L) 3L (4B)) 5L ((6B) 7B (8B)))");
    take(mirror, 4);
    EXPECT_EQ(shape(mirror), "((((1B) 2L) 3L) 5B ((6B) 7B (8B)))");
}

TEST_F(qelBalancedTreeTest, OnlyChildMovesUpAsBalancedWhateverItHolds)
{
    qelBalancedTree right;
    addAll(right, {2, 1, 3, 4});
    take(right, 1);
    EXPECT_EQ(shape(right), "(2R (3R (4B)))");
    take(right, 2);
    EXPECT_EQ(shape(right), "(3B (4B))");

    qelBalancedTree left;
    addAll(left, {3, 4, 2, 1});
    take(left, 4);
    EXPECT_EQ(shape(left), "(((1B) 2L) 3L)");
    take(left, 3);
    EXPECT_EQ(shape(left), "((1B) 2B)");
}

TEST_F(qelBalancedTreeTest, PredecessorKeepsItsOwnWeight)
{
    // Three takes the place of four, which was right-heavy, but stays as balanced as it was in its own place. The
    // level that two lost on its right side makes two left-heavy and goes no further.
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7, 8});
    take(tree, 4);
    EXPECT_EQ(shape(tree), "(((1B) 2L) 3B ((5B) 6R (7R (8B))))");
}

TEST_F(qelBalancedTreeTest, PredecessorIsAdjustedWhenTheLeftSideLostALevel)
{
    // One is the whole left side of two: the level is lost, and one, balanced as it was, becomes right-heavy.
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3});
    take(tree, 2);
    EXPECT_EQ(shape(tree), "(1R (3B))");

    // Two was left-heavy in its own place; the lost level makes it balanced although its right side is higher.
    qelBalancedTree heavy;
    addAll(heavy, {3, 2, 5, 1, 4, 6, 7});
    EXPECT_EQ(shape(heavy), "(((1B) 2L) 3R ((4B) 5R (6R (7B))))");
    take(heavy, 3);
    EXPECT_EQ(shape(heavy), "((1B) 2B ((4B) 5R (6R (7B))))");
}

TEST_F(qelBalancedTreeTest, PredecessorThatWasTheDirectLeftChildKeepsItsLeftSide)
{
    qelBalancedTree tree;
    addAll(tree, {3, 2, 4, 1});
    take(tree, 3);
    EXPECT_EQ(shape(tree), "((1B) 2B (4B))");
}

TEST_F(qelBalancedTreeTest, LeftSideOfADeepPredecessorMovesUpIntoItsPlace)
{
    qelBalancedTree tree;
    addAll(tree, {5, 2, 7, 1, 4, 6, 8, 3});
    EXPECT_EQ(shape(tree), "(((1B) 2R ((3B) 4L)) 5L ((6B) 7B (8B)))");
    take(tree, 5);
    EXPECT_EQ(shape(tree), "(((1B) 2B (3B)) 4B ((6B) 7B (8B)))");
}

TEST_F(qelBalancedTreeTest, NoRotationWhereRemovalsEmptiedTheHeavySide)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3, 4});
    for (int key : {1, 3, 4})
    {
        ASSERT_EQ(take(tree, key), Base::eNoError);
    }
    EXPECT_EQ(shape(tree), "(2L)") << "claims a left side that is not there";
    EXPECT_EQ(add(tree, 1), Base::eNoError);
    EXPECT_EQ(shape(tree), "((1B) 2L)");

    qelBalancedTree mirror;
    addAll(mirror, {3, 4, 2, 1});
    for (int key : {4, 2, 1})
    {
        ASSERT_EQ(take(mirror, key), Base::eNoError);
    }
    EXPECT_EQ(shape(mirror), "(3R)");
    EXPECT_EQ(add(mirror, 4), Base::eNoError);
    EXPECT_EQ(shape(mirror), "(3R (4B))");
}

TEST_F(qelBalancedTreeTest, KeyOfARemovalMayBeTheEntryItself)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    for (int key : {4, 1, 6, 7, 2, 5, 3}) // with two, no and one children
    {
        const qelBalancedTreeEntry* own = tree.search(Entry(key));
        ASSERT_NE(own, nullptr);
        EXPECT_EQ(tree.remove(*own), Base::eNoError);
        EXPECT_EQ(tree.search(Entry(key)), nullptr);
    }
    EXPECT_EQ(rootOf(tree), nullptr);
}

TEST_F(qelBalancedTreeTest, DestroysRightBeforeLeftAtEveryLevel)
{
    const std::vector<int> order = {4, 6, 7, 5, 2, 3, 1};
    {
        qelBalancedTree tree;
        addAll(tree, {4, 2, 6, 1, 3, 5, 7});
        Entry::s_destroyed.clear();
    }
    EXPECT_EQ(Entry::s_destroyed, order);

    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    Entry::s_destroyed.clear();
    tree.reset();
    EXPECT_EQ(Entry::s_destroyed, order);
}

/// The order of destruction by its definition: an entry, its right side, its left side.
void rightFirst(const Entry* entry, std::vector<int>& keys)
{
    if (entry != nullptr)
    {
        const EntryImage image = look(entry);
        keys.push_back(entry->m_key);
        rightFirst(image.right, keys);
        rightFirst(image.left, keys);
    }
}

TEST_F(qelBalancedTreeTest, DestroysRandomTreesInTheStatedOrder)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 2000; ++round)
    {
        qelBalancedTree tree;
        for (int i = 0; i < 40; ++i)
        {
            const int key = static_cast<int>(random() % 30);
            (void)(random() % 3 == 0 ? take(tree, key) : add(tree, key));
        }
        std::vector<int> expected;
        rightFirst(rootOf(tree), expected);
        Entry::s_destroyed.clear();
        tree.reset();
        ASSERT_EQ(Entry::s_destroyed, expected);
    }
}

TEST_F(qelBalancedTreeTest, ResetLeavesAUsableEmptyTree)
{
    qelBalancedTree tree;
    tree.reset();
    EXPECT_EQ(rootOf(tree), nullptr);
    addAll(tree, {1, 2, 3});
    tree.reset();
    EXPECT_EQ(rootOf(tree), nullptr);
    addAll(tree, {1});
    EXPECT_EQ(shape(tree), "(1B)");
}

TEST_F(qelBalancedTreeTest, CopyOfATreeSharesTheEntries)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3});
    const qelBalancedTree empty;

    qelBalancedTree copy(tree);
    EXPECT_EQ(rootOf(copy), rootOf(tree));
    copy = empty; // forgets the root without destroying it
    EXPECT_EQ(rootOf(copy), nullptr);
    copy = tree;
    EXPECT_EQ(rootOf(copy), rootOf(tree));
    copy = empty;
    EXPECT_EQ(walked(tree), (std::vector<int>{1, 2, 3}));
}

TEST_F(qelBalancedTreeTest, CopyOfAnEntrySharesWeightAndSides)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3, 4});
    const Entry fresh(0);

    Entry copy(*rootOf(tree));
    EXPECT_EQ(look(&copy).weight, eRightHeavy);
    EXPECT_EQ(look(&copy).left, look(rootOf(tree)).left);
    EXPECT_EQ(look(&copy).right, look(rootOf(tree)).right);
    copy = fresh; // or its end would destroy the sides of the tree's entry
    EXPECT_EQ(look(&copy).weight, eBalanced);
    EXPECT_EQ(look(&copy).left, nullptr);
    EXPECT_EQ(look(&copy).right, nullptr);
}

TEST_F(qelBalancedTreeTest, EntryDestroysItsSidesOnItsOwnToo)
{
    qelBalancedTree tree;
    addAll(tree, {2, 1, 3});
    Entry* root = const_cast<Entry*>(rootOf(tree));
    qelBalancedTree empty;
    tree = empty;
    Entry::s_destroyed.clear();
    delete root;
    EXPECT_EQ(Entry::s_destroyed, (std::vector<int>{2, 3, 1}));
}

TEST_F(qelBalancedTreeTest, WalkVisitsInAscendingOrderWithoutComparing)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    Entry::s_compares = 0;
    EXPECT_EQ(walked(tree), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Entry::s_compares, 0);
}

TEST_F(qelBalancedTreeTest, WalkEndsWhenTheVisitorSaysSo)
{
    qelBalancedTree tree;
    addAll(tree, {4, 2, 6, 1, 3, 5, 7});
    int visits = 0;
    const int all = tree.walk(
        [](const qelBalancedTreeEntry& entry, void* context) {
            ++*static_cast<int*>(context);
            return static_cast<const Entry&>(entry).m_key < 3 ? 1 : 0;
        },
        &visits);
    EXPECT_EQ(all, 0);
    EXPECT_EQ(visits, 3);
}

TEST_F(qelBalancedTreeTest, WalkOfAnEmptyTreeVisitsNothing)
{
    const qelBalancedTree tree;
    const auto fail = [](const qelBalancedTreeEntry&, void*) {
        ADD_FAILURE();
        return 1;
    };
    EXPECT_EQ(tree.walk(fail), 1);
}

/// A tree and its model side by side, compared after every step.
class Pair
{
public:
    bool insert(int key)
    {
        const Base::eError expected = m_model.insert(key);
        m_keys.insert(key);
        return add(m_tree, key) == expected && agree();
    }

    bool remove(int key)
    {
        const Base::eError expected = m_keys.erase(key) == 1 ? Base::eNoError : Base::eNotFound;
        return m_model.remove(key) == expected && take(m_tree, key) == expected && agree();
    }

    bool contains(int key) const { return m_keys.count(key) == 1; }
    const qelBalancedTree& tree() const { return m_tree; }

private:
    bool agree() const { return same(rootOf(m_tree), m_model.root()) && holds(m_tree, m_keys); }

    qelBalancedTree m_tree;
    Model m_model;
    std::set<int> m_keys;
};

std::vector<int> ascending(int count)
{
    std::vector<int> keys(static_cast<size_t>(count));
    std::iota(keys.begin(), keys.end(), 1);
    return keys;
}

TEST_F(qelBalancedTreeTest, EveryInsertionOrderOfUpToEightKeys)
{
    int orders = 0;
    for (int count = 1; count <= 8; ++count)
    {
        std::vector<int> keys = ascending(count);
        do
        {
            Pair pair;
            for (int key : keys)
            {
                ASSERT_TRUE(pair.insert(key));
                ASSERT_GT(balancedHeight(rootOf(pair.tree())), 0) << shape(pair.tree());
            }
            Entry::s_destroyed.clear();
            ++orders;
        } while (std::next_permutation(keys.begin(), keys.end()));
    }
    EXPECT_EQ(orders, 1 + 2 + 6 + 24 + 120 + 720 + 5040 + 40320);
}

TEST_F(qelBalancedTreeTest, EveryRemovalOrderOfUpToSixKeysAfterEveryInsertionOrder)
{
    int orders = 0;
    for (int count = 1; count <= 6; ++count)
    {
        std::vector<int> inserted = ascending(count);
        do
        {
            std::vector<int> removed = ascending(count);
            do
            {
                Pair pair;
                for (int key : inserted)
                {
                    ASSERT_TRUE(pair.insert(key));
                }
                for (int key : removed)
                {
                    ASSERT_TRUE(pair.remove(key));
                }
                ASSERT_EQ(rootOf(pair.tree()), nullptr);
                Entry::s_destroyed.clear();
                ++orders;
            } while (std::next_permutation(removed.begin(), removed.end()));
        } while (std::next_permutation(inserted.begin(), inserted.end()));
    }
    EXPECT_EQ(orders, 1 + 4 + 36 + 576 + 14400 + 518400);
}

TEST_F(qelBalancedTreeTest, MillionRandomOperations)
{
    std::mt19937 random(20240229);
    int operations = 0;
    while (operations < 1000000)
    {
        Pair pair;
        const unsigned keys = 1 + random() % 48;
        for (int step = 0; step < 5000; ++step, ++operations)
        {
            // Long runs in which the tree fills up, and others in which it empties.
            const unsigned inserts = step / 500 % 2 == 0 ? 70 : 35;
            const int key = static_cast<int>(random() % keys);
            const unsigned dice = random() % 100;
            if (dice < inserts)
            {
                ASSERT_TRUE(pair.insert(key));
            }
            else if (dice < 95)
            {
                ASSERT_TRUE(pair.remove(key));
            }
            else
            {
                const qelBalancedTreeEntry* found = pair.tree().search(Entry(key));
                ASSERT_EQ(found != nullptr, pair.contains(key));
            }
        }
        Entry::s_destroyed.clear();
    }
}

TEST_F(qelBalancedTreeTest, StaysWithinTheStatedHeightWhileNothingIsRemoved)
{
    std::mt19937 random(99);
    for (int order = 0; order < 3; ++order)
    {
        std::vector<int> keys = ascending(100000);
        if (order == 1)
        {
            std::reverse(keys.begin(), keys.end());
        }
        else if (order == 2)
        {
            std::shuffle(keys.begin(), keys.end(), random);
        }
        qelBalancedTree tree;
        addAll(tree, keys);
        const int height = balancedHeight(rootOf(tree));
        EXPECT_GT(height, 0);
        EXPECT_LE(height, 1.45 * std::log2(100002.0));
        tree.reset();
        Entry::s_destroyed.clear();
    }
}

/// The same few steps over and over, one removal among them, each time two keys higher. Every round adds a level to the
/// chain of entries that hangs from the root to the left (or right), since nothing rebalances after a removal.
struct ChainSteps
{
    bool toLeft;
    std::vector<std::pair<char, int>> steps; ///< '+' inserts, '-' removes
};

const ChainSteps kLeftChain = {true, {{'+', 5}, {'+', 1}, {'-', 3}}};
const ChainSteps kRightChain = {false, {{'+', 3}, {'+', 0}, {'-', -2}, {'+', -2}}};

/// Returns the keys that are in the tree afterwards.
std::set<int> growChain(qelBalancedTree& tree, const ChainSteps& chain, int rounds)
{
    std::set<int> keys;
    for (int round = 0; round < rounds; ++round)
    {
        for (const std::pair<char, int>& step : chain.steps)
        {
            const int key = step.second + 2 * round;
            if (step.first == '+')
            {
                (void)add(tree, key);
                keys.insert(key);
            }
            else
            {
                (void)take(tree, key);
                keys.erase(key);
            }
        }
    }
    return keys;
}

/// Entries from the root down along one side.
int chainLength(const qelBalancedTree& tree, bool toLeft)
{
    int length = 0;
    for (const Entry* entry = rootOf(tree); entry != nullptr; ++length)
    {
        entry = toLeft ? look(entry).left : look(entry).right;
    }
    return length;
}

TEST_F(qelBalancedTreeTest, RemovalsMayMakeTheTreeOneLevelDeeperEach)
{
    for (const ChainSteps& chain : {kLeftChain, kRightChain})
    {
        for (int rounds : {10, 63, 64, 65, 66, 100, 500})
        {
            qelBalancedTree tree;
            const std::set<int> keys = growChain(tree, chain, rounds);
            EXPECT_GE(chainLength(tree, chain.toLeft), rounds - 1);
            EXPECT_EQ(walked(tree), std::vector<int>(keys.begin(), keys.end()));
        }
    }
}

int levels(const Entry* entry)
{
    return entry == nullptr ? 0 : 1 + std::max(levels(look(entry).left), levels(look(entry).right));
}

TEST_F(qelBalancedTreeTest, ReplacingEntriesAtRandomDeepensTheTreeAsDocumented)
{
    // The numbers of docs/numbering.md, from a model of the tree's rules outside this program.
    const std::map<int, int> documented = {{0, 16}, {1, 21}, {5, 33}, {10, 58}, {20, 77}};
    std::mt19937 random(1);
    qelBalancedTree tree;
    std::vector<int> keys(10000);
    const auto addNewKey = [&](int& key) {
        do
        {
            key = static_cast<int>(random() >> 1);
        } while (add(tree, key) != Base::eNoError);
    };
    for (int& key : keys)
    {
        addNewKey(key);
    }
    for (int round = 0; round <= 20; ++round)
    {
        if (documented.count(round) == 1)
        {
            EXPECT_EQ(levels(rootOf(tree)), documented.at(round)) << "after replacing all " << round << " times";
        }
        for (size_t i = 0; i < keys.size(); ++i)
        {
            int& key = keys[random() % keys.size()];
            ASSERT_EQ(take(tree, key), Base::eNoError);
            addNewKey(key);
        }
        Entry::s_destroyed.clear();
    }
}

const int kDeep = 15000;

/// Every operation on a tree of 15,000 levels: a recursion of 70 bytes a level would need more than 1 MiB of stack.
DWORD WINAPI useDeepTrees(void*)
{
    for (const ChainSteps& chain : {kLeftChain, kRightChain})
    {
        qelBalancedTree tree;
        const std::set<int> keys = growChain(tree, chain, kDeep);
        EXPECT_GE(chainLength(tree, chain.toLeft), kDeep - 1);
        EXPECT_EQ(walked(tree), std::vector<int>(keys.begin(), keys.end()));

        const int farthest = chain.toLeft ? *keys.begin() : *keys.rbegin();
        EXPECT_NE(tree.search(Entry(farthest)), nullptr);
        EXPECT_EQ(take(tree, farthest), Base::eNoError);
        EXPECT_EQ(add(tree, farthest), Base::eNoError);
        EXPECT_EQ(take(tree, rootOf(tree)->m_key), Base::eNoError);

        Entry::s_destroyed.clear();
        tree.reset();
        EXPECT_EQ(Entry::s_destroyed.size(), keys.size() - 1);
    }
    return 0;
}

TEST_F(qelBalancedTreeTest, DeepTreeNeedsNoStackOfItsDepth)
{
    const HANDLE thread =
        CreateThread(nullptr, size_t{1024} * 1024, useDeepTrees, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
}
} // namespace
