/**
 * @file
 * @brief Search tree over records of the caller's own class.
 */
#ifndef QEL_BALANCED_TREE_H
#define QEL_BALANCED_TREE_H

#include "qelExport.h"

/**
 * @brief What an entry takes its two subtrees for.
 * @ingroup numbering
 *
 * After removals it need not be so any more.
 */
enum eWeight : int
{
    eLeftHeavy = 0,  ///< the left one is a level higher
    eBalanced = 1,   ///< both have the same height
    eRightHeavy = 2, ///< the right one is a level higher
};

/**
 * @brief Base class of the records in a qelBalancedTree.
 * @ingroup numbering
 *
 * A record derives from this class and says how it compares; the tree links records through the links that they carry.
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
 * An entry that was inserted belongs to the tree; see qelBalancedTree. A copy of an entry that is in a tree shares its
 * subtrees: destroying both is not supported.
 *
 * @par Threads
 * One at a time for all entries of a tree.
 */
class QEL_API qelBalancedTreeEntry
{
public:
    /// What became of a call.
    enum eError : int
    {
        eNoError = 0,       ///< done
        eAlreadyInTree = 1, ///< an equal entry is in the tree; nothing was inserted
        eNullEntry = 2,     ///< there was no entry to insert
        eNotFound = 4,      ///< no equal entry to remove, or a comparison that gave none of its three values
    };

    /// An entry outside any tree.
    qelBalancedTreeEntry();

    /// Copies weight and links as they are. An entry that is to be inserted must not be the copy of one in a tree.
    qelBalancedTreeEntry(const qelBalancedTreeEntry&) = default;

    /// Takes over weight and links as they are. Not for an entry in a tree, whose own links are lost.
    qelBalancedTreeEntry& operator=(const qelBalancedTreeEntry&) = default;

    /// Destroys the right subtree, then the left one, each entry before its own subtrees.
    virtual ~qelBalancedTreeEntry();

    /**
     * Where `other` belongs: -1 before this entry, 0 when both are equal, 1 behind it. The tree takes no other value:
     * insert() then returns `eNoError` *without inserting*, search() null and remove() `eNotFound`.
     */
    virtual int compare(const qelBalancedTreeEntry& other) const = 0;

private:
    friend class qelBalancedTree;
    class Descent;

    // A slot is the link that holds a subtree: the root of the tree or a side of an entry. The flag is set to 1 when
    // the subtree in the slot changed its height, to 0 when it did not.

    const qelBalancedTreeEntry* search(const qelBalancedTreeEntry& key) const;
    static eError insert(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry* entry, int& flag);
    static eError remove(qelBalancedTreeEntry*& slot, const qelBalancedTreeEntry& key, int& flag);

    /// Puts the rightmost entry of `slot` in the place of the one in `target`, to whose left side `slot` belongs.
    static eError inorderPredecessor(qelBalancedTreeEntry*& slot, qelBalancedTreeEntry*& target, int& flag);

    /// One side of the entry in the slot grew, or shrank, by a level.
    static void checkLeftInsert(qelBalancedTreeEntry*& slot, int& flag);
    static void checkRightInsert(qelBalancedTreeEntry*& slot, int& flag);
    static void checkLeftRemove(qelBalancedTreeEntry*& slot, int& flag);
    static void checkRightRemove(qelBalancedTreeEntry*& slot, int& flag);

    static void rotateLeft(qelBalancedTreeEntry*& slot);
    static void rotateRight(qelBalancedTreeEntry*& slot);

    /// Gives the sides of this entry, the new top of a double rotation, the weights that follow from its own.
    void checkAndCorrectBalanceStatus();
    void setWeightStatusToChilds(eWeight left, eWeight right);

    eWeight m_weight;              ///< balance of the two sides
    int m_side;                    ///< where the latest descent went on; of no meaning between calls
    qelBalancedTreeEntry* m_left;  ///< entries before this one, or null
    qelBalancedTreeEntry* m_right; ///< entries behind this one, or null
};

static_assert(sizeof(qelBalancedTreeEntry) == 32, "virtual table, weight and side, two links");

/**
 * @brief Search tree over records of the caller's own class.
 * @ingroup numbering
 *
 * Keeps records in order and finds them again. Insertion keeps the tree balanced (AVL); removal does not, by design.
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
 * An entry that was inserted belongs to the tree, is destroyed by it through its virtual destructor, and so must come
 * from `new`. A refused entry stays with the caller. A copy of a tree shares the entries of the first one: destroying
 * both is not supported.
 *
 * @par Cost
 * Inserting allocates nothing. While nothing is removed, n entries are at most 1.45 * log2(n + 2) levels deep, and
 * search() and insert() compare once a level. remove() never rebalances: replacing every entry at random five times
 * about doubles the levels, and there are sequences in which each removal brings another one, down to a chain of all
 * entries. @ref page_docs_numbering "docs/numbering.md" has numbers, and a way to rebuild a tree. No operation
 * recurses, however deep removals have left the tree; destroying a whole tree takes two nested destructors.
 *
 * @par Failure
 * The values of qelBalancedTreeEntry::eError. Nothing throws except what a comparison throws, which leaves the tree as
 * it was, and walk() of a very deep tree when memory runs out.
 */
class QEL_API qelBalancedTree
{
public:
    /// Called by walk() for one entry; returns 0 to end the walk.
    using Visitor = int(const qelBalancedTreeEntry& entry, void* context);

    /// An empty tree.
    qelBalancedTree();

    /// Copies the link to the root only: both trees then hold the same entries.
    qelBalancedTree(const qelBalancedTree&) = default;

    /// As the copy. What this tree held is not destroyed.
    qelBalancedTree& operator=(const qelBalancedTree&) = default;

    /// Destroys every entry.
    virtual ~qelBalancedTree();

    /// Destroys every entry; the tree is then empty. O(n).
    void reset();

    /// The entry equal to `key`, or null. It still belongs to the tree.
    const qelBalancedTreeEntry* search(const qelBalancedTreeEntry& key) const;

    /**
     * Calls `visit(entry, context)` for every entry in ascending order until it returns 0. Returns 1 when all were
     * visited, else 0. The visitor must not change the tree. O(n), without comparisons.
     */
    int walk(Visitor* visit, void* context = nullptr) const;

    /**
     * Takes over `entry`, which must be as its default constructor left it. Returns `eAlreadyInTree` or `eNullEntry`
     * when it was refused. It is not taken over either when a comparison gave a value other than -1, 0 and 1, although
     * the result is `eNoError` then.
     */
    qelBalancedTreeEntry::eError insert(qelBalancedTreeEntry* entry);

    /**
     * Destroys the entry equal to `key`, which may be that very entry. Returns `eNotFound` when there is none, or when
     * a comparison gave a value other than -1, 0 and 1. Never rebalances.
     */
    qelBalancedTreeEntry::eError remove(const qelBalancedTreeEntry& key);

private:
    qelBalancedTreeEntry* m_root; ///< null when the tree is empty
};

static_assert(sizeof(qelBalancedTree) == 16, "virtual table and root");

#endif
