/**
 * @file
 * @brief Growable array template, and the policies that store and move its elements.
 */
#ifndef QEL_ARRAY_H
#define QEL_ARRAY_H

#include "qelExport.h"

#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

class qelString;

/**
 * @brief Where every array of the process gets its storage.
 * @ingroup text
 *
 * One allocator for all modules: what one of them allocates, another one may free.
 *
 * @par Example
 * @code
 * unsigned char* block = qelMemoryControllerController::allocateArray(16, sizeof(double)); // 128 bytes
 * qelMemoryControllerController::deallocateArray(block);
 * block == nullptr;                                                                        // == true
 * @endcode
 */
class QEL_API qelMemoryControllerController
{
public:
    /**
     * Allocates `count * elementSize` bytes of uninitialised storage. The caller owns the block and returns it with
     * deallocateArray(). A negative count or a product that does not fit fails as running out of memory does.
     */
    static unsigned char* allocateArray(const long& count, const unsigned long long& elementSize);

    /// Frees `block` and sets it to null; a null block is left alone.
    static void deallocateArray(unsigned char*& block);
};

/**
 * @brief Selects the library's own form of placement new.
 * @ingroup text
 *
 * Elements are made in storage that is there already, without a header of the C++ library.
 *
 * @par Example
 * @code
 * qelArrayMemoryController<qelString> memory;
 * qelString* text = memory.allocate(1);
 * new (static_cast<void*>(text), qelPlacement()) qelString(L"HEA 200");
 * text->length();                                                       // == 7
 * text->~qelString();
 * memory.deallocate(text);
 * @endcode
 *
 * @par Ownership
 * The storage stays the caller's, who destroys the object before it goes.
 *
 * @par Failure
 * What the constructor throws; the storage must suit the object in size and alignment.
 */
struct qelPlacement
{
};

/// The address it was given: an object is made where it points.
/// @relates qelPlacement
inline void* operator new(size_t, void* where, qelPlacement) noexcept
{
    return where;
}

/// Called when a constructor throws; there is nothing to free.
/// @relates qelPlacement
inline void operator delete(void*, void*, qelPlacement) noexcept {}

/**
 * @brief Storage of a qelArray, out of qelMemoryControllerController.
 * @ingroup text
 *
 * The default of the array's last parameter. A class with the same two members takes its place where elements are to
 * live elsewhere.
 *
 * @par Example
 * @code
 * int* slots = qelArrayMemoryController<int>::allocate(8);
 * qelArrayMemoryController<int>::deallocate(slots);
 * slots == nullptr;                                        // == true
 * @endcode
 *
 * @par Ownership
 * Storage belongs to the caller until it is given back; its elements are made and destroyed by the caller.
 */
template <class T> class qelArrayMemoryController
{
public:
    /// Raw storage for `count` elements; nothing is constructed.
    static T* allocate(long count)
    {
        return reinterpret_cast<T*>(qelMemoryControllerController::allocateArray(count, sizeof(T)));
    }

    /// Returns storage whose elements are already destroyed, and sets the pointer to null.
    static void deallocate(T*& storage)
    {
        if (storage != nullptr)
        {
            auto* block = reinterpret_cast<unsigned char*>(storage);
            qelMemoryControllerController::deallocateArray(block);
            storage = nullptr;
        }
    }
};

/**
 * @brief Element policy of a qelArray for objects; the default.
 * @ingroup text
 *
 * Every slot holds a constructed element (plain types start at zero), kept elements are assigned one by one, old ones
 * destroyed.
 *
 * @par Example
 * @code
 * qelArray<int> counts;     // qelArrayObjectCopyReallocator<int> is the default
 * counts.setLogicalLength(3);
 * counts[2];                // == 0
 * @endcode
 *
 * @par Cost
 * One constructor, assignment or destructor an element; texts that are kept move as bytes.
 *
 * @par Failure
 * What an element throws passes through. Slots that were made by then are not destroyed, and their storage is lost.
 */
template <class T> class qelArrayObjectCopyReallocator
{
public:
    /// Makes `count` elements in raw storage.
    static void construct(T* storage, long count)
    {
        for (long i = 0; i < count; ++i)
        {
            new (static_cast<void*>(storage + i), qelPlacement()) T();
        }
    }

    /// Assigns `count` elements, the first one first.
    static void copy(T* to, const T* from, long count)
    {
        for (long i = 0; i < count; ++i)
        {
            to[i] = from[i];
        }
    }

    /// Destroys `count` elements; the storage stays.
    static void destroy(T* storage, long count)
    {
        for (long i = 0; i < count; ++i)
        {
            storage[i].~T();
        }
    }
};

/**
 * @brief Element policy of a qelArray for plain values.
 * @ingroup text
 *
 * New slots are left as they come and kept elements are copied as bytes: for numbers and plain records in large lists.
 * Other types do not compile.
 *
 * @par Example
 * @code
 * qelArray<double, qelArrayMemCopyReallocator<double>> lengths(1000); // a thousand slots, not set to zero
 * lengths.append(6000.0);
 * lengths[0];                                                         // == 6000.0
 * @endcode
 *
 * @par Cost
 * One copy of memory; making and destroying elements costs nothing.
 */
template <class T> class qelArrayMemCopyReallocator
{
    static_assert(__is_trivially_copyable(T), "only plain values may be copied as bytes");

public:
    /// Leaves the slots as they are.
    static void construct(T*, long) {}

    /// Copies `count` elements; nothing for a count below 1.
    static void copy(T* to, const T* from, long count)
    {
        if (count > 0)
        {
            memcpy(to, from, static_cast<size_t>(count) * sizeof(T));
        }
    }

    /// Does nothing.
    static void destroy(T*, long) {}
};

/**
 * Whether kept elements of a policy move to other storage as bytes, in place of one constructor, assignment and
 * destructor each. Only for classes of the library whose objects may lie anywhere: those of hosts see every call.
 * @relates qelArray
 */
template <class Reallocator> inline constexpr bool qelArrayMovesBytes = false;

/// A text is two pointers, and nothing points at them.
/// @relates qelArray
template <> inline constexpr bool qelArrayMovesBytes<qelArrayObjectCopyReallocator<qelString>> = true;

/**
 * @brief Growable array.
 * @ingroup text
 *
 * Keeps three lengths apart: the *logical* length (elements in use), the *physical* length (slots that exist) and the
 * *grow* length (the step in which slots are added). Storage grows to the next whole multiple of the grow length and is
 * given back only when it shrinks by a quarter or more, so a list that is refilled again and again keeps its memory.
 *
 * @par Example
 * @code
 * qelArray<qelString> names;
 * names.append(L"HEA 200");
 * names.append(L"IPE 300");
 * names.length();            // == 2
 * names.physicalLength();    // == 8
 * names.setLogicalLength(0); // the eight slots stay
 * names.physicalLength();    // == 8
 * @endcode
 *
 * @par Ownership
 * The array owns its elements. Pointers and references to elements, begin() and end() among them, end with the next
 * call that changes the physical length, and with assignment. An argument that is the array itself, one of its elements
 * or directly part of one is treated as if it had been copied before the call.
 *
 * @par Cost
 * Access O(1); inserting, removing and searching O(n). Growth is linear, in steps of the grow length, never geometric:
 * appending n elements one by one to an unsized list moves about n*n / (2 * grow length). Give a large list its size at
 * once with setPhysicalLength().
 *
 * @par Failure
 * Positions are not checked and nothing reports an error; memory that cannot be had surfaces from the allocation.
 *
 * @tparam T                what is stored; the default policy constructs, assigns and destroys it
 * @tparam Reallocator      how elements are made, moved and destroyed
 * @tparam MemoryController where slots come from
 */
template <class T, class Reallocator = qelArrayObjectCopyReallocator<T>,
          class MemoryController = qelArrayMemoryController<T>>
class qelArray
{
public:
    /**
     * An empty array with `physicalLength` slots made at once (none for 0 or less) and the given grow length; a grow
     * length of 0 is replaced by 8.
     */
    explicit qelArray(long physicalLength = 0, long growLength = 8)
        : m_logicalLength(0)
        , m_physicalLength(0)
        , m_growLength(growLength == 0 ? 8 : growLength)
        , m_elements(nullptr)
    {
        setPhysicalLength(physicalLength);
    }

    /// As assignment to a new array: the physical length of the copy is the logical length of `other`.
    qelArray(const qelArray& other)
        : m_logicalLength(0)
        , m_physicalLength(0)
        , m_growLength(8)
        , m_elements(nullptr)
    {
        takeOver(other);
    }

    /// Destroys every element.
    ~qelArray() { freeStorage(); }

    /**
     * Frees the storage and takes over the elements, the logical and the grow length of `other` into storage of exactly
     * that many slots. Where memory for these lacks, the array is left empty. Assigning an array to itself changes
     * nothing. O(n).
     */
    qelArray& operator=(const qelArray& other)
    {
        if (owns(&other))
        {
            const qelArray copied(other);
            takeOver(copied);
        }
        else if (this != &other)
        {
            takeOver(other);
        }
        return *this;
    }

    /// Number of elements in use.
    long length() const { return m_logicalLength; }

    /// Number of elements in use; the same as length().
    long logicalLength() const { return m_logicalLength; }

    /// Number of slots that exist.
    long physicalLength() const { return m_physicalLength; }

    /// Step in which slots are added.
    long growLength() const { return m_growLength; }

    /// 1 when no element is in use, else 0.
    int isEmpty() const { return m_logicalLength == 0 ? 1 : 0; }

    /// The element at `i`; not checked.
    T& operator[](long i) { return m_elements[i]; }
    /// @overload
    const T& operator[](long i) const { return m_elements[i]; }

    /// The first element; the array must not be empty.
    T& first() { return m_elements[0]; }
    /// @overload
    const T& first() const { return m_elements[0]; }

    /// The last element in use; the array must not be empty.
    T& last() { return m_elements[m_logicalLength - 1]; }
    /// @overload
    const T& last() const { return m_elements[m_logicalLength - 1]; }

    /// From here to end() stand the elements in use, for range-based `for` and the algorithms of the C++ library.
    T* begin() { return m_elements; }
    /// @overload
    const T* begin() const { return m_elements; }

    /// Behind the last element in use; the same as begin() for a length below 1. A pointer taken earlier does not follow
    /// the logical length.
    T* end() { return m_elements + (m_logicalLength < 0 ? 0 : m_logicalLength); }
    /// @overload
    const T* end() const { return m_elements + (m_logicalLength < 0 ? 0 : m_logicalLength); }

    /**
     * Searches from `start` (a negative start counts as 0) for an element equal to `value`. Returns true and stores
     * its position; otherwise returns false and leaves `index` alone. O(n).
     */
    bool find(const T& value, long& index, long start = 0) const
    {
        for (long i = start < 0 ? 0 : start; i < m_logicalLength; ++i)
        {
            if (m_elements[i] == value)
            {
                index = i;
                return true;
            }
        }
        return false;
    }

    /**
     * Sets the number of elements in use, with more slots when they are needed. Storage is never given back here:
     * elements beyond the new length keep their values and show again when the length is raised.
     */
    void setLogicalLength(long n) { useElements(n); }

    /**
     * Sets the number of slots. Shrinking by less than a quarter, and a negative `n`, change nothing; 0 frees the
     * storage; otherwise the storage is replaced and the first `min(n, length())` elements are kept. O(n).
     */
    void setPhysicalLength(long n)
    {
        if (n < 0 || (n == 0 && m_elements == nullptr))
        {
            return;
        }
        if (n <= m_physicalLength && n > 0.75 * m_physicalLength)
        {
            return;
        }
        if (n == 0)
        {
            freeStorage();
            return;
        }
        reallocate(n);
    }

    /// Sets the step of growth. Any value is taken; growing with a step of 0 is a fatal division fault.
    void setGrowLength(long n) { m_growLength = n; }

    /**
     * Assigns the element at `i`. A position outside the elements in use makes the logical length `i + 1`, as
     * setLogicalLength() does: while the slots suffice, those in between show again what they last held; when the
     * storage grows, only the elements that were in use move into it and the slots in between are new. A negative
     * position stores nothing.
     */
    void setAt(long i, const T& value)
    {
        if (i >= 0 && i < m_logicalLength)
        {
            m_elements[i] = value;
        }
        else if (i >= m_physicalLength && mustBeCopied(value))
        {
            const T copied(value);
            extendTo(i, copied);
        }
        else
        {
            extendTo(i, value);
        }
    }

    /// Adds one element at the end. O(1) while slots are spare, O(n) when the storage grows.
    void append(const T& value)
    {
        // As unsigned numbers, negative lengths are no slots either.
        const auto at = static_cast<unsigned long>(m_logicalLength);
        if (at < static_cast<unsigned long>(m_physicalLength))
        {
            m_logicalLength = static_cast<long>(at + 1);
            m_elements[at] = value;
        }
        else
        {
            setAt(m_logicalLength, value);
        }
    }

    /// Adds all elements of `other` in order; `other` may be this array.
    void append(const qelArray& other)
    {
        if (other.m_logicalLength <= 0)
        {
            return;
        }
        if (owns(&other))
        {
            const qelArray copied(other);
            appendOutsider(copied);
        }
        else
        {
            appendOutsider(other);
        }
    }

    /**
     * Inserts before position `i` and moves later elements up. A position outside the array is not refused: the
     * array grows by one all the same, and the value is stored only where a slot exists. O(n).
     */
    void insertAt(long i, const T& value)
    {
        if (mustBeCopied(value))
        {
            const T copied(value);
            insertOutsider(i, copied);
        }
        else
        {
            insertOutsider(i, value);
        }
    }

    /**
     * Removes the element at `i` and moves later ones down; the slot that falls free keeps its last value. The length
     * shrinks by one for any `i`, an empty array's length to -1. O(n).
     */
    void removeAt(long i)
    {
        for (long to = i < 0 ? 0 : i; to < m_logicalLength - 1; ++to)
        {
            m_elements[to] = m_elements[to + 1];
        }
        setLogicalLength(m_logicalLength - 1);
    }

private:
    /// As setLogicalLength(). Where slots lack, adds them up to a whole multiple of the grow length.
    void useElements(long long n)
    {
        if (n > m_physicalLength)
        {
            const long long target = ((n - 1) / m_growLength + 1) * m_growLength;
            reallocate(target < n ? n : target); // a negative grow length rounds down
        }
        m_logicalLength = static_cast<long>(n);
    }

    void extendTo(long i, const T& value)
    {
        useElements(i + 1LL);
        if (i >= 0)
        {
            m_elements[i] = value;
        }
    }

    /// append() of elements that stay where they are while the storage grows; `other` may be this array.
    void appendOutsider(const qelArray& other)
    {
        const long old = m_logicalLength < 0 ? 0 : m_logicalLength;
        const long added = other.m_logicalLength;
        useElements(static_cast<long long>(old) + added);
        Reallocator::copy(m_elements + old, other.m_elements, added);
    }

    /// insertAt() for a value that stays where it is while elements move.
    void insertOutsider(long i, const T& value)
    {
        useElements(m_logicalLength + 1LL);
        const long lowest = i < 0 ? 0 : i;
        for (long to = m_logicalLength - 1; to > lowest; --to)
        {
            m_elements[to] = m_elements[to - 1];
        }
        if (i >= 0 && i < m_physicalLength)
        {
            m_elements[i] = value;
        }
    }

    /// operator=() for an array that does not go with this one's storage.
    void takeOver(const qelArray& other)
    {
        freeStorage();
        setPhysicalLength(other.m_logicalLength);
        m_logicalLength = other.m_logicalLength;
        m_growLength = other.m_growLength;
        Reallocator::copy(m_elements, other.m_elements, m_logicalLength);
    }

    /// Moves the elements in use into storage of `n` slots; more than a length counts are for the allocation to refuse.
    void reallocate(long long n)
    {
        const long slots = n > LONG_MAX ? -1 : static_cast<long>(n);
        const long kept = m_logicalLength < slots ? m_logicalLength : slots;
        T* elements = MemoryController::allocate(slots);
        if constexpr (qelArrayMovesBytes<Reallocator>)
        {
            const long moved = kept < 0 ? 0 : kept;
            if (moved > 0)
            {
                memcpy(static_cast<void*>(elements), static_cast<const void*>(m_elements),
                       static_cast<size_t>(moved) * sizeof(T));
            }
            Reallocator::construct(elements + moved, slots - moved);
            Reallocator::destroy(m_elements + moved, m_physicalLength - moved);
        }
        else
        {
            Reallocator::construct(elements, slots);
            Reallocator::copy(elements, m_elements, kept);
            Reallocator::destroy(m_elements, m_physicalLength);
        }
        MemoryController::deallocate(m_elements);
        m_elements = elements;
        m_physicalLength = slots;
        m_logicalLength = kept;
    }

    void freeStorage()
    {
        Reallocator::destroy(m_elements, m_physicalLength);
        MemoryController::deallocate(m_elements);
        m_logicalLength = 0;
        m_physicalLength = 0;
    }

    /// Whether an object lies in this array's storage, and would go away with it.
    bool owns(const void* object) const
    {
        const auto at = reinterpret_cast<uintptr_t>(object);
        const auto begin = reinterpret_cast<uintptr_t>(m_elements);
        return at >= begin && at < begin + static_cast<uintptr_t>(m_physicalLength) * sizeof(T);
    }

    /// Whether a value has to be copied before elements move. Plain ones always are: that is cheaper than to look.
    bool mustBeCopied(const T& value) const { return __is_trivially_copyable(T) || owns(&value); }

    long m_logicalLength;  ///< elements in use
    long m_physicalLength; ///< slots that exist
    long m_growLength;     ///< step of growth, never 0 when the storage grows
    T* m_elements;         ///< storage of m_physicalLength slots, or null
};

static_assert(sizeof(qelArray<void*>) == 24, "three lengths and a pointer");

#endif
