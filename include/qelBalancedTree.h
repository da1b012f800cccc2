/**
 * @file
 * @brief Balanced (AVL) search tree of the caller's own records.
 */
#ifndef QEL_BALANCED_TREE_H
#define QEL_BALANCED_TREE_H

#include "qelExport.h"

/**
 * @brief An entry's record of its balance.
 * @ingroup numbering
 *
 * After removals it may no longer be true.
 */
enum eWeight : int
{
    eLeftHeavy = 0,  ///< the left subtree is a level higher
    eBalanced = 1,   ///< both have the same height
    eRightHeavy = 2, ///< the right subtree is a level higher
};

/**
 * @brief Base class of the records in a qelBalancedTree.
 * @ingroup numbering
 *
 * A record derives from this class and says how it compares. It carries its own links, so the tree allocates nothing.
 *
 * @par Example
 * @code
 * class Section : public qelBalancedTreeEntry
 * {
 * public:
 *     explicit Section(int height) : m_height(height) {}
 *     int compare(const qelBalancedTreeEntry& other) const override
 *     {
 *         const int theirs = static_cast<const Section&>(other).m_height;
 *         return theirs < m_height ? -1 : theirs > m_height ? 1 : 0;
 *     }
 *     int m_height;
 * };
 *
 * Section(300).compare(Section(200)); // == -1, the other one comes before
 * @endcode
 *
 * @par Ownership
 * The tree owns inserted entries; see qelBalancedTree. A copy of an entry in a tree shares its subtrees: do not destroy
 * both.
 */
class QEL_API qelBalancedTreeEntry
{
public:
    /// Result of a call.
    enum eError : int
    {
        eNoError = 0,       ///< done
        eAlreadyInTree = 1, ///< an equal entry is already there; nothing was inserted
        eNullEntry = 2,     ///< there was no entry to insert
        eNotFound = 4,      ///< no equal entry to remove, or a comparison returned an invalid value
    };

    /// An entry outside any tree.
    qelBalancedTreeEntry();

    /// Copies the links too: never insert a copy of an entry that is in a tree.
    qelBalancedTreeEntry(const qelBalancedTreeEntry&) = default;

    /// Copies the links too: never assign to an entry that is in a tree, which would lose its own.
    qelBalancedTreeEntry& operator=(const qelBalancedTreeEntry&) = default;

    /// Destroys the right subtree, then the left one, each entry before its own subtrees.
    virtual ~qelBalancedTreeEntry();

    /**
     * Where `other` belongs: -1 before this entry, 0 equal, 1 after it. Any other value is invalid: insert() then
     * returns `eNoError` *without inserting*, search() null and remove() `eNotFound`.
     */
    virtual int compare(const qelBalancedTreeEntry& other) const = 0;

private:
    friend class qelBalancedTree;
    class Descent;

    // A slot is the link to a subtree: the root of the tree or a side of an entry. The flag is set to 1 when the height
    // of the subtree changed, else to 0.

    const qelBalancedTreeEntry* search(const qelBalancedTreeEntry& key) const;
    static eError insert(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry* entry, int& flag);
    static eError remove(qelBalancedTreeEntry*& slot, const qelBalancedTreeEntry& key, int& flag);

    /// Replaces the entry in `target` with the rightmost one of `slot`, which lies on its left side.
    static eError inorderPredecessor(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry*& target, int& flag);

    /// Called when one side of the entry in the slot has grown, or shrunk, by a level.
    static void checkLeftInsert(qelBalancedTreeEntry*& slot, int& flag);
    static void checkRightInsert(qelBalancedTreeEntry*& slot, int& flag);
    static void checkLeftRemove(qelBalancedTreeEntry*& slot, int& flag);
    static void checkRightRemove(qelBalancedTreeEntry*& slot, int& flag);

    static void rotateLeft(qelBalancedTreeEntry*& slot);
    static void rotateRight(qelBalancedTreeEntry*& slot);

    /// Sets the weights of both sides after a double rotation, from the weight of this entry, the new top.
    void checkAndCorrectBalanceStatus();
    void setWeightStatusToChilds(eWeight left, eWeight right);

    eWeight m_weight;              ///< see eWeight
    int m_side;                    ///< which way the latest descent went; meaningless between calls
    qelBalancedTreeEntry* m_left;  ///< entries before this one; may be null
    qelBalancedTreeEntry* m_right; ///< entries after this one; may be null
};

static_assert(sizeof(qelBalancedTreeEntry) == 32, "virtual table, weight and side, two links");

/**
 * @brief Balanced (AVL) search tree of the caller's own records.
 * @ingroup numbering
 *
 * Keeps records in order and finds them by key. Insertion rebalances the tree; removal deliberately does not.
 *
 * @par Example
 * @code
 * class Profile : public qelBalancedTreeEntry
 * {
 * public:
 *     explicit Profile(int height) : m_height(height) {}
 *     int compare(const qelBalancedTreeEntry& other) const override
 *     {
 *         const int theirs = static_cast<const Profile&>(other).m_height;
 *         return theirs < m_height ? -1 : theirs > m_height ? 1 : 0;
 *     }
 *     int m_height;
 * };
 *
 * qelBalancedTree profiles;
 * profiles.insert(new Profile(300));                         // == qelBalancedTreeEntry::eNoError
 * Profile* again = new Profile(300);
 * if (profiles.insert(again) != qelBalancedTreeEntry::eNoError)
 * {
 *     delete again;                                          // refused: still ours
 * }
 * profiles.search(Profile(300)) != nullptr;                  // == true
 * profiles.remove(Profile(200));                             // == qelBalancedTreeEntry::eNotFound
 * @endcode
 *
 * @par Ownership
 * The tree owns inserted entries and deletes them, so they must come from `new`. A refused entry stays with the caller.
 * A copy of a tree shares its entries: do not destroy both.
 *
 * @par Cost
 * search() and insert() compare once per level and allocate nothing. While nothing is removed, n entries are at most
 * 1.45 * log2(n + 2) levels deep. remove() never rebalances: replacing every entry at random five times about doubles
 * the levels, and in the worst case removals turn the tree into a chain. @ref page_docs_numbering "docs/numbering.md"
 * has numbers, and a way to rebuild a tree. No operation recurses, however deep the tree.
 *
 * @par Failure
 * Reported as qelBalancedTreeEntry::eError. What a comparison throws propagates and leaves the tree unchanged; walk()
 * of a very deep tree throws `std::bad_alloc` when out of memory.
 */
class QEL_API qelBalancedTree
{
public:
    /// Called by walk() for one entry; returns 0 to end the walk.
    using Visitor = int(const qelBalancedTreeEntry& entry, void* context);

    /// An empty tree.
    qelBalancedTree();

    /// Shallow: both trees then hold the same entries.
    qelBalancedTree(const qelBalancedTree&) = default;

    /// Shallow, like the copy; the entries that this tree held are not destroyed.
    qelBalancedTree& operator=(const qelBalancedTree&) = default;

    /// Destroys every entry.
    virtual ~qelBalancedTree();

    /// Destroys every entry; the tree is then empty. O(n).
    void reset();

    /// The entry equal to `key`, still owned by the tree, or null.
    const qelBalancedTreeEntry* search(const qelBalancedTreeEntry& key) const;

    /**
     * Calls `visit(entry, context)` for every entry in ascending order until that returns 0. Returns 1 when all were
     * visited, else 0. The visitor must not change the tree. O(n).
     */
    int walk(Visitor* visit, void* context = nullptr) const;

    /**
     * Inserts `entry`, whose links must be as the default constructor left them, and takes ownership. Refuses it with
     * `eAlreadyInTree` or `eNullEntry`. When a comparison returns a value other than -1, 0 and 1, the result is
     * `eNoError` but nothing is inserted.
     */
    qelBalancedTreeEntry::eError insert(qelBalancedTreeEntry* entry);

    /**
     * Destroys the entry equal to `key`, which may be that very entry. Returns `eNotFound` when there is none, or when
     * a comparison returns a value other than -1, 0 and 1.
     */
    qelBalancedTreeEntry::eError remove(const qelBalancedTreeEntry& key);

private:
    qelBalancedTreeEntry* m_root; ///< null when the tree is empty
};

static_assert(sizeof(qelBalancedTree) == 16, "virtual table and root");

#endif
