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
 * @brief Allocator of every array in the process.
 * @ingroup text
 *
 * One allocator for all modules: a block from one of them may be freed by another.
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
     * Allocates `count * elementSize` bytes of uninitialised storage, to be freed with deallocateArray(). Throws
     * `std::bad_alloc` when out of memory, for a negative count and for a product that overflows.
     */
    static unsigned char* allocateArray(const long& count, const unsigned long long& elementSize);

    /// Frees `block` and sets it to null; a null block is left alone.
    static void deallocateArray(unsigned char*& block);
};

/**
 * @brief Tag that selects the library's own placement new.
 * @ingroup text
 *
 * Constructs objects in existing storage without a header of the C++ library.
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
 * The caller owns the storage, which must suit the object in size and alignment, and destroys the object before freeing
 * it.
 */
struct qelPlacement
{
};

/// Returns `where`: the object is constructed there.
/// @relates qelPlacement
// Not noexcept: compilers would test the result for null.
inline void* operator new(size_t, void* where, qelPlacement)
{
    return where;
}

/// Called when a constructor throws; there is nothing to free.
/// @relates qelPlacement
inline void operator delete(void*, void*, qelPlacement) noexcept {}

/**
 * @brief Storage policy of a qelArray, using qelMemoryControllerController.
 * @ingroup text
 *
 * The default. A class with the same two members replaces it where elements must live elsewhere.
 *
 * @par Example
 * @code
 * int* slots = qelArrayMemoryController<int>::allocate(8);
 * qelArrayMemoryController<int>::deallocate(slots);
 * slots == nullptr;                                        // == true
 * @endcode
 *
 * @par Ownership
 * The caller owns the storage until deallocate(), and constructs and destroys the elements.
 */
template <class T> class qelArrayMemoryController
{
public:
    /// Uninitialised storage for `count` elements.
    static T* allocate(long count)
    {
        return reinterpret_cast<T*>(qelMemoryControllerController::allocateArray(count, sizeof(T)));
    }

    /// Frees storage whose elements are already destroyed, and sets the pointer to null.
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
 * Every slot holds a constructed element (plain types start at zero). When storage moves, elements are assigned one by
 * one and the old ones destroyed.
 *
 * @par Example
 * @code
 * qelArray<int> counts;     // qelArrayObjectCopyReallocator<int> is the default
 * counts.setLogicalLength(3);
 * counts[2];                // == 0
 * @endcode
 *
 * @par Cost
 * One constructor, assignment or destructor call per element; qelString elements move as bytes.
 *
 * @par Failure
 * Exceptions of elements propagate. Elements constructed by then are not destroyed, and their storage leaks.
 */
template <class T> class qelArrayObjectCopyReallocator
{
public:
    /// Constructs `count` elements in uninitialised storage.
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
 * New slots are left uninitialised and elements are copied as bytes: for large lists of numbers or plain records. Only
 * trivially copyable types compile.
 *
 * @par Example
 * @code
 * qelArray<double, qelArrayMemCopyReallocator<double>> lengths(1000); // a thousand slots, not set to zero
 * lengths.append(6000.0);
 * lengths[0];                                                         // == 6000.0
 * @endcode
 *
 * @par Cost
 * One `memcpy`; constructing and destroying elements is free.
 */
template <class T> class qelArrayMemCopyReallocator
{
    static_assert(__is_trivially_copyable(T), "only plain values may be copied as bytes");

public:
    /// Does nothing: the slots stay uninitialised.
    static void construct(T*, long) {}

    /// Copies `count` elements; none for a count below 1.
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
 * Whether elements of a policy move to new storage as bytes, without calls of constructors, assignments and
 * destructors. Only for relocatable classes of the library; host classes see every call.
 * @relates qelArray
 */
template <class Reallocator> inline constexpr bool qelArrayMovesBytes = false;

/// A string is two pointers, and nothing points back at them.
/// @relates qelArray
template <> inline constexpr bool qelArrayMovesBytes<qelArrayObjectCopyReallocator<qelString>> = true;

/**
 * @brief Growable array.
 * @ingroup text
 *
 * Has three lengths: *logical* (elements in use), *physical* (slots that exist) and *grow* (slots added at a time).
 * Storage grows to the next multiple of the grow length, and is freed only by a request to shrink it by a quarter or
 * more, so a list that is refilled again and again keeps its memory.
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
 * Pointers and references to elements, begin() and end() included, are invalidated by the next call that changes the
 * physical length, and by assignment. An argument may be the array itself, one of its elements or directly part of one:
 * it is treated as a copy made before the call.
 *
 * @par Cost
 * Access is O(1); inserting, removing and searching are O(n). Growth is linear, not geometric: appending n elements one
 * by one moves about n*n / (2 * grow length) of them. Reserve space for a large list with setPhysicalLength().
 *
 * @par Failure
 * Positions are not checked. Throws `std::bad_alloc` when out of memory.
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
     * An empty array with `physicalLength` slots (none for 0 or less) and the given grow length; 0 is replaced by 8.
     */
    explicit qelArray(long physicalLength = 0, long growLength = 8)
        : m_logicalLength(0)
        , m_physicalLength(0)
        , m_growLength(growLength == 0 ? 8 : growLength)
        , m_elements(nullptr)
    {
        setPhysicalLength(physicalLength);
    }

    /// Like assignment to a new array: its physical length is the logical length of `other`.
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
     * Frees the storage, then copies the elements, logical and grow length of `other` into exactly as many slots. When
     * out of memory, the array is left empty. Self-assignment changes nothing. O(n).
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

    /// Same as length().
    long logicalLength() const { return m_logicalLength; }

    /// Number of slots that exist.
    long physicalLength() const { return m_physicalLength; }

    /// Number of slots added at a time.
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

    /// Iterates over the elements in use, for range-based `for` and standard algorithms.
    T* begin() { return m_elements; }
    /// @overload
    const T* begin() const { return m_elements; }

    /// One past the last element in use; same as begin() for a length below 1. Taken earlier, it does not follow the
    /// logical length.
    T* end() { return m_elements + (m_logicalLength < 0 ? 0 : m_logicalLength); }
    /// @overload
    const T* end() const { return m_elements + (m_logicalLength < 0 ? 0 : m_logicalLength); }

    /**
     * Searches from `start` (negative counts as 0) for an element equal to `value`. Returns true and its position, or
     * false and leaves `index` alone. O(n).
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
     * Sets the number of elements in use and adds slots where needed. Never frees storage: elements beyond the new
     * length keep their values and reappear when the length is raised.
     */
    void setLogicalLength(long n) { useElements(n); }

    /**
     * Sets the number of slots. Shrinking by less than a quarter, and a negative `n`, change nothing; 0 frees the
     * storage; otherwise the storage is replaced, keeping the first `min(n, length())` elements. O(n).
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

    /// Sets the number of slots added at a time. Not checked: growing by 0 is a fatal division by zero.
    void setGrowLength(long n) { m_growLength = n; }

    /**
     * Assigns the element at `i`. A position not in use makes the logical length `i + 1`, as setLogicalLength() does:
     * elements in between reappear with what their slots last held or, when the storage grows, are new. A negative
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
        // As unsigned numbers, negative lengths are out of range too.
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
     * Inserts before position `i` and moves later elements up. A position outside the array still lengthens it by one,
     * but stores the value only where a slot exists. O(n).
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
     * Removes the element at `i` and moves later ones down; the freed slot keeps its last value. The length shrinks by
     * one for any `i`, that of an empty array to -1. O(n).
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
    /// setLogicalLength(). Adds missing slots up to a multiple of the grow length.
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

    /// append() of elements that do not move while the storage grows; `other` may be this array.
    void appendOutsider(const qelArray& other)
    {
        const long old = m_logicalLength < 0 ? 0 : m_logicalLength;
        const long added = other.m_logicalLength;
        useElements(static_cast<long long>(old) + added);
        Reallocator::copy(m_elements + old, other.m_elements, added);
    }

    /// insertAt() of a value that does not move while elements do.
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

    /// operator=() for an array outside this one's storage.
    void takeOver(const qelArray& other)
    {
        freeStorage();
        setPhysicalLength(other.m_logicalLength);
        m_logicalLength = other.m_logicalLength;
        m_growLength = other.m_growLength;
        Reallocator::copy(m_elements, other.m_elements, m_logicalLength);
    }

    /// Moves the elements in use into storage of `n` slots. More than fit a `long` are passed on as -1, which the
    /// allocation refuses.
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

    /// Whether an object lies in this array's storage.
    bool owns(const void* object) const
    {
        const auto at = reinterpret_cast<uintptr_t>(object);
        const auto begin = reinterpret_cast<uintptr_t>(m_elements);
        return at >= begin && at < begin + static_cast<uintptr_t>(m_physicalLength) * sizeof(T);
    }

    /// Whether a value has to be copied before elements move. Plain ones always are: cheaper than checking.
    bool mustBeCopied(const T& value) const { return __is_trivially_copyable(T) || owns(&value); }

    long m_logicalLength;  ///< elements in use
    long m_physicalLength; ///< slots that exist
    long m_growLength;     ///< slots added at a time; must not be 0 when the storage grows
    T* m_elements;         ///< storage of m_physicalLength slots, or null
};

static_assert(sizeof(qelArray<void*>) == 24, "three lengths and a pointer");

#endif
