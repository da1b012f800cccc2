/**
 * @file
 * @brief List of texts that crosses module borders.
 */
#ifndef QEL_STRING_CLASS_ARRAY_H
#define QEL_STRING_CLASS_ARRAY_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief List of texts that crosses module borders.
 * @ingroup text
 *
 * Keeps a `qelArray<qelString>` behind one pointer, so its layout never changes for callers, and adds searching and
 * sorting. Lengths, growth and storage follow the rules of qelArray.
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
 * The list owns its texts and shares none of its storage with another list. References and pointers to elements, begin()
 * and end() among them, end with the next call that changes the physical length, and with assignment.
 *
 * @par Cost
 * Adding at the end O(1) while slots are spare; inserting, removing and linear searches O(n); sorting O(n log n)
 * comparisons on average, bsearch() O(log n). With the comparators of qelString, sort() takes memory for as many texts
 * again while it lasts, where that is to be had.
 *
 * @par Failure
 * Nothing reports an error; searches return 0 for "not found". Positions count from 0 and are not checked where a
 * reference is returned.
 */
class QEL_API qelStringClassArray
{
public:
    /// Order of two elements, given as pointers to `qelString`: a negative, zero or positive number, as from
    /// qelString::strCompare() and qelString::strCompareNoCase().
    using Comparator = int (*)(const void*, const void*);

    /// @name Life
    /// @{

    /// An empty list with `physical` slots made at once and the given step of growth; a step of 0 is replaced by 8.
    explicit qelStringClassArray(long physical = 0, long grow = 8);

    /// A list of its own with the texts, the length and the step of growth of `other`.
    qelStringClassArray(const qelStringClassArray& other);

    /// Releases every text.
    ~qelStringClassArray();

    /// Takes over the texts, the length and the step of growth of `other`.
    qelStringClassArray& operator=(const qelStringClassArray& other);
    /// @}

    /// @name Access
    /// @{

    /// The text at `i`; not checked.
    qelString& operator[](long i);

    /// @overload
    const qelString& operator[](long i) const;

    /// A copy of the text at `i`; the empty text where no slot exists.
    qelString at(long i) const;

    /// The first text; the list must not be empty.
    qelString& first();

    /// @overload
    const qelString& first() const;

    /// The last text; the list must not be empty.
    qelString& last();

    /// @overload
    const qelString& last() const;

    /// From here to end() stand the texts in use, for range-based `for` and the algorithms of the C++ library.
    qelString* begin() { return m_array->begin(); }

    /// @overload
    const qelString* begin() const { return m_array->begin(); }

    /// Behind the last text in use; the same as begin() for a length below 1.
    qelString* end() { return m_array->end(); }

    /// @overload
    const qelString* end() const { return m_array->end(); }

    /// Assigns the text at `i`; a position at or beyond the length makes the length `i + 1`.
    qelStringClassArray& setAt(long i, const qelString& s);

    /// Assigns `s` to every text in use.
    qelStringClassArray& setAll(const qelString& s);
    /// @}

    /// @name Adding and removing
    /// @{

    /// Adds a text at the end and returns its position.
    long append(const qelString& s);

    /// Adds all texts of `other`, which may be this list, in order.
    qelStringClassArray& append(const qelStringClassArray& other);

    /// Inserts before position `i`; later texts move up.
    qelStringClassArray& insertAt(long i, const qelString& s);

    /// Removes the text at `i`; later texts move down.
    qelStringClassArray& removeAt(long i);

    /// Removes the first text equal to `s` at or after `start`. 1 when there was one, else 0.
    int remove(const qelString& s, long start = 0);

    /// As removeAt() with position 0.
    qelStringClassArray& removeFirst();

    /// Shortens the list by one. Not guarded: an empty list then has the length -1 and does not count as empty.
    qelStringClassArray& removeLast();
    /// @}

    /// @name Searching
    /// @{

    /// 1 when a text at or after `start` equals `s`, else 0.
    int contains(const qelString& s, long start = 0) const;

    /// As contains(); also stores the position of the first one. `index` is left alone when there is none.
    int find(const qelString& s, long& index, long start = 0) const;

    /// Binary search in a list sorted with the same comparator. 1 and the position, or 0 and -1.
    int bsearch(const qelString& key, long& index, Comparator compare) const;

    /// Linear search from `start` with a comparator. 1 and the position, or 0 and -1.
    int lfind(const qelString& key, long& index, Comparator compare, long start = 0) const;
    /// @}

    /// @name Order
    /// @{

    /// Sorts all texts in use; equal ones may change places.
    void sort(Comparator compare);

    /**
     * Sorts the texts from `from` to `to`, both included. The range is not held against the length, so that it may
     * reach into spare slots; where it leaves the slots, it is cut to them.
     */
    void sort(long from, long to, Comparator compare);

    /// Puts the texts into the opposite order.
    qelStringClassArray& reverse();

    /// Exchanges two texts; nothing happens where one of the slots does not exist.
    qelStringClassArray& swap(long i, long j);
    /// @}

    /// @name Lengths
    /// As those of qelArray.
    /// @{

    /// Number of texts in use.
    long length() const;

    /// The same as length().
    long logicalLength() const;

    /// 1 when no text is in use, else 0.
    int isEmpty() const;

    /// Sets the number of texts in use; slots beyond it keep their texts.
    void setLogicalLength(long n);

    /// Number of slots that exist.
    long physicalLength() const;

    /// Sets the number of slots, and with it how many texts can stay. O(n).
    void setPhysicalLength(long n);

    /// Step in which slots are added.
    long growLength() const;

    /// Takes any value; growing with a step of 0 is a fatal division fault.
    void setGrowLength(long n);
    /// @}

private:
    qelArray<qelString>* m_array; ///< owned, never null
};

static_assert(sizeof(qelStringClassArray) == 8, "one pointer");

#endif
