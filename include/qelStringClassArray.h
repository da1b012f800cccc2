/**
 * @file
 * @brief List of strings with searching and sorting.
 */
#ifndef QEL_STRING_CLASS_ARRAY_H
#define QEL_STRING_CLASS_ARRAY_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief List of strings with searching and sorting.
 * @ingroup text
 *
 * A `qelArray<qelString>` behind one pointer, so that its layout is fixed and it can be passed between modules.
 * Lengths, growth and storage follow the rules of qelArray.
 *
 * @par Example
 * @code
 * qelStringClassArray names;
 * names.append(L"IPE 300");
 * names.append(L"HEA 200");
 * names.sort(qelString::strCompareNoCase);
 * names[0];                                                        // == L"HEA 200"
 *
 * long at = -1;
 * names.bsearch(L"ipe 300", at, qelString::strCompareNoCase);      // == 1
 * at;                                                              // == 1
 * @endcode
 *
 * @par Ownership
 * References and pointers to elements, begin() and end() included, are invalidated by the next call that changes the
 * physical length, and by assignment.
 *
 * @par Cost
 * Appending is O(1) while slots are spare; inserting, removing and linear searches are O(n); sorting takes O(n log n)
 * comparisons on average, bsearch() O(log n). With the comparators of qelString, sort() temporarily uses memory for as
 * many strings again, where available.
 *
 * @par Failure
 * Positions count from 0 and are not checked where a reference is returned. Searches return 0 for "not found".
 */
class QEL_API qelStringClassArray
{
public:
    /// `qsort` comparator: gets two pointers to `qelString` and returns a negative, zero or positive number, like
    /// qelString::strCompare() and qelString::strCompareNoCase().
    using Comparator = int (*)(const void*, const void*);

    /// @name Construction and assignment
    /// @{

    /// An empty list with `physical` slots and the given grow length; 0 is replaced by 8.
    explicit qelStringClassArray(long physical = 0, long grow = 8);

    /// A separate list with the strings, length and grow length of `other`.
    qelStringClassArray(const qelStringClassArray& other);

    /// Destroys every string.
    ~qelStringClassArray();

    /// Copies the strings, length and grow length of `other`.
    qelStringClassArray& operator=(const qelStringClassArray& other);
    /// @}

    /// @name Access
    /// @{

    /// The string at `i`; not checked.
    qelString& operator[](long i);

    /// @overload
    const qelString& operator[](long i) const;

    /// A copy of the string at `i`; empty where no slot exists.
    qelString at(long i) const;

    /// The first string; the list must not be empty.
    qelString& first();

    /// @overload
    const qelString& first() const;

    /// The last string; the list must not be empty.
    qelString& last();

    /// @overload
    const qelString& last() const;

    /// Iterates over the strings in use, for range-based `for` and standard algorithms.
    qelString* begin() { return m_array->begin(); }

    /// @overload
    const qelString* begin() const { return m_array->begin(); }

    /// One past the last string in use; same as begin() for a length below 1.
    qelString* end() { return m_array->end(); }

    /// @overload
    const qelString* end() const { return m_array->end(); }

    /// Assigns the string at `i`; a position at or past the end makes the length `i + 1`.
    qelStringClassArray& setAt(long i, const qelString& s);

    /// Assigns `s` to every string in use.
    qelStringClassArray& setAll(const qelString& s);
    /// @}

    /// @name Adding and removing
    /// @{

    /// Adds a string at the end and returns its position.
    long append(const qelString& s);

    /// Adds all strings of `other`, which may be this list, in order.
    qelStringClassArray& append(const qelStringClassArray& other);

    /// Inserts before position `i`; later strings move up.
    qelStringClassArray& insertAt(long i, const qelString& s);

    /// Removes the string at `i`; later strings move down.
    qelStringClassArray& removeAt(long i);

    /// Removes the first string equal to `s` at or after `start`. 1 when there was one, else 0.
    int remove(const qelString& s, long start = 0);

    /// removeAt() with position 0.
    qelStringClassArray& removeFirst();

    /// Shortens the list by one. Not checked: an empty list gets the length -1 and no longer counts as empty.
    qelStringClassArray& removeLast();
    /// @}

    /// @name Searching
    /// @{

    /// 1 when a string at or after `start` equals `s`, else 0.
    int contains(const qelString& s, long start = 0) const;

    /// Like contains(); also stores the position of the first one. `index` is left alone when there is none.
    int find(const qelString& s, long& index, long start = 0) const;

    /// Binary search in a list sorted with the same comparator. 1 and the position, or 0 and -1.
    int bsearch(const qelString& key, long& index, Comparator compare) const;

    /// Linear search from `start` with a comparator. 1 and the position, or 0 and -1.
    int lfind(const qelString& key, long& index, Comparator compare, long start = 0) const;
    /// @}

    /// @name Order
    /// @{

    /// Sorts all strings in use; not stable.
    void sort(Comparator compare);

    /**
     * Sorts the strings from `from` to `to`, both included. The range may reach past the length into spare slots, and
     * is clamped to the slots that exist.
     */
    void sort(long from, long to, Comparator compare);

    /// Reverses the order of the strings.
    qelStringClassArray& reverse();

    /// Swaps two strings; does nothing when either slot does not exist.
    qelStringClassArray& swap(long i, long j);
    /// @}

    /// @name Lengths
    /// As in qelArray.
    /// @{

    /// Number of strings in use.
    long length() const;

    /// Same as length().
    long logicalLength() const;

    /// 1 when no string is in use, else 0.
    int isEmpty() const;

    /// Sets the number of strings in use; slots beyond it keep their strings.
    void setLogicalLength(long n);

    /// Number of slots that exist.
    long physicalLength() const;

    /// Sets the number of slots, by the rules of qelArray. O(n).
    void setPhysicalLength(long n);

    /// Number of slots added at a time.
    long growLength() const;

    /// Not checked; growing by 0 ends in a division by zero, which is fatal.
    void setGrowLength(long n);
    /// @}

private:
    qelArray<qelString>* m_array; ///< owned, never null
};

static_assert(sizeof(qelStringClassArray) == 8, "one pointer");

#endif
