#include "qelStringClassArray.h"

#include "strings/StringAccess.h"
#include "strings/Units.h"

#include <stdlib.h>

namespace
{
using Comparator = qelStringClassArray::Comparator;

/// Moves strings as bytes, which is safe because nothing points at them.
void move(void* to, const void* from, size_t count = 1)
{
    memmove(to, from, count * sizeof(qelString));
}

void exchange(qelString& a, qelString& b)
{
    unsigned char kept[sizeof(qelString)];
    move(kept, &a);
    move(&a, &b);
    move(&b, kept);
}

/// Length of the runs that are sorted by insertion before they are merged.
const size_t kRun = 8;

void sortRun(qelString* first, const qelString* end, Comparator compare)
{
    for (qelString* next = first + 1; next < end; ++next)
    {
        qelString* to = next;
        while (to > first && compare(to - 1, next) > 0)
        {
            --to;
        }
        unsigned char kept[sizeof(qelString)];
        move(kept, next);
        move(to + 1, to, static_cast<size_t>(next - to));
        move(to, kept);
    }
}

/// Merges the sorted runs from `left` to `middle` and from there to `end`.
void mergeRuns(const qelString* left, const qelString* middle, const qelString* end, qelString* to, Comparator compare)
{
    const qelString* right = middle;
    while (left < middle && right < end)
    {
        move(to++, compare(left, right) > 0 ? right++ : left++);
    }
    move(to, left, static_cast<size_t>(middle - left));
    move(to + (middle - left), right, static_cast<size_t>(end - right));
}

/// Merge sort; `room` is for as many strings again.
void mergeSort(qelString* texts, qelString* room, size_t count, Comparator compare)
{
    const auto runEnd = [count](size_t first, size_t run) { return count - first < run ? count : first + run; };
    for (size_t first = 0; first < count; first += kRun)
    {
        sortRun(texts + first, texts + runEnd(first, kRun), compare);
    }
    qelString* from = texts;
    qelString* to = room;
    for (size_t run = kRun; run < count; run *= 2)
    {
        for (size_t first = 0; first < count; first += 2 * run)
        {
            const size_t middle = runEnd(first, run);
            mergeRuns(from + first, from + middle, from + runEnd(middle, run), to + first, compare);
        }
        qelString* merged = to;
        to = from;
        from = merged;
    }
    if (from != texts)
    {
        move(texts, from, count);
    }
}

void sortTexts(qelString* texts, size_t count, Comparator compare)
{
    // A caller's comparator can observe which strings are compared, and so gets the runtime's sort. With the library's
    // own, merge sort needs fewer comparisons.
    const bool isOwn = compare == qelString::strCompare || compare == qelString::strCompareNoCase;
    void* room = isOwn ? malloc(count * sizeof(qelString)) : nullptr;
    if (room == nullptr)
    {
        qsort(texts, count, sizeof(qelString), compare);
        return;
    }
    mergeSort(texts, static_cast<qelString*>(room), count, compare);
    free(room);
}

/// Position of the first string from `start` on that equals the key, or -1.
long findEqual(const qelArray<qelString>& texts, const qelString& key, long start)
{
    const wchar_t* const wanted = qelStringAccess::textOf(key);
    for (long i = start < 0 ? 0 : start; i < texts.length(); ++i)
    {
        const wchar_t* const text = qelStringAccess::textOf(texts[i]);
        if (*text != *wanted)
        {
            continue; // most strings need no more than this
        }
        const size_t at = qelUnits::firstDifference(text, wanted);
        if (text[at] == wanted[at])
        {
            return i;
        }
    }
    return -1;
}

/// The same by a comparator.
long findFirst(const qelArray<qelString>& texts, const qelString& key, Comparator compare, long start)
{
    for (long i = start < 0 ? 0 : start; i < texts.length(); ++i)
    {
        if (compare(&key, &texts[i]) == 0)
        {
            return i;
        }
    }
    return -1;
}

bool hasSlot(const qelArray<qelString>& elements, long i)
{
    return i >= 0 && i < elements.physicalLength();
}
} // namespace

qelStringClassArray::qelStringClassArray(long physical, long grow)
    : m_array(new qelArray<qelString>(physical, grow))
{
}

qelStringClassArray::qelStringClassArray(const qelStringClassArray& other)
    : m_array(new qelArray<qelString>(*other.m_array))
{
}

qelStringClassArray::~qelStringClassArray()
{
    delete m_array;
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the array handles it
qelStringClassArray& qelStringClassArray::operator=(const qelStringClassArray& other)
{
    *m_array = *other.m_array;
    return *this;
}

qelString& qelStringClassArray::operator[](long i)
{
    return (*m_array)[i];
}

const qelString& qelStringClassArray::operator[](long i) const
{
    return (*m_array)[i];
}

qelString qelStringClassArray::at(long i) const
{
    return hasSlot(*m_array, i) ? (*m_array)[i] : qelString();
}

qelString& qelStringClassArray::first()
{
    return m_array->first();
}

const qelString& qelStringClassArray::first() const
{
    return m_array->first();
}

qelString& qelStringClassArray::last()
{
    return m_array->last();
}

const qelString& qelStringClassArray::last() const
{
    return m_array->last();
}

qelStringClassArray& qelStringClassArray::setAt(long i, const qelString& s)
{
    m_array->setAt(i, s);
    return *this;
}

qelStringClassArray& qelStringClassArray::setAll(const qelString& s)
{
    for (long i = length() - 1; i >= 0; --i)
    {
        (*m_array)[i] = s;
    }
    return *this;
}

long qelStringClassArray::append(const qelString& s)
{
    m_array->append(s);
    return length() - 1;
}

qelStringClassArray& qelStringClassArray::append(const qelStringClassArray& other)
{
    m_array->append(*other.m_array);
    return *this;
}

qelStringClassArray& qelStringClassArray::insertAt(long i, const qelString& s)
{
    m_array->insertAt(i, s);
    return *this;
}

qelStringClassArray& qelStringClassArray::removeAt(long i)
{
    m_array->removeAt(i);
    return *this;
}

int qelStringClassArray::remove(const qelString& s, long start)
{
    long index = -1;
    if (find(s, index, start) == 0)
    {
        return 0;
    }
    removeAt(index);
    return 1;
}

qelStringClassArray& qelStringClassArray::removeFirst()
{
    return removeAt(0);
}

qelStringClassArray& qelStringClassArray::removeLast()
{
    // Deliberately not checked: the length of an empty list becomes -1.
    m_array->setLogicalLength(length() - 1);
    return *this;
}

int qelStringClassArray::contains(const qelString& s, long start) const
{
    long index = -1;
    return find(s, index, start);
}

int qelStringClassArray::find(const qelString& s, long& index, long start) const
{
    const long at = findEqual(*m_array, s, start);
    index = at < 0 ? index : at;
    return at < 0 ? 0 : 1;
}

int qelStringClassArray::bsearch(const qelString& key, long& index, Comparator compare) const
{
    index = -1;
    if (length() < 1)
    {
        return 0;
    }
    const void* hit = ::bsearch(&key, begin(), static_cast<size_t>(length()), sizeof(qelString), compare);
    if (hit == nullptr)
    {
        return 0;
    }
    index = static_cast<long>(static_cast<const qelString*>(hit) - begin());
    return 1;
}

int qelStringClassArray::lfind(const qelString& key, long& index, Comparator compare, long start) const
{
    index =
        compare == qelString::strCompare ? findEqual(*m_array, key, start) : findFirst(*m_array, key, compare, start);
    return index < 0 ? 0 : 1;
}

void qelStringClassArray::sort(Comparator compare)
{
    sort(0, length() - 1, compare);
}

void qelStringClassArray::sort(long from, long to, Comparator compare)
{
    const long first = from < 0 ? 0 : from;
    const long last = to < physicalLength() ? to : physicalLength() - 1;
    if (length() > 0 && first < last)
    {
        sortTexts(begin() + first, static_cast<size_t>(last - first) + 1, compare);
    }
}

qelStringClassArray& qelStringClassArray::reverse()
{
    for (long i = 0, j = length() - 1; i < j; ++i, --j)
    {
        exchange((*m_array)[i], (*m_array)[j]);
    }
    return *this;
}

qelStringClassArray& qelStringClassArray::swap(long i, long j)
{
    if (hasSlot(*m_array, i) && hasSlot(*m_array, j))
    {
        exchange((*m_array)[i], (*m_array)[j]);
    }
    return *this;
}

long qelStringClassArray::length() const
{
    return m_array->length();
}

long qelStringClassArray::logicalLength() const
{
    return m_array->logicalLength();
}

int qelStringClassArray::isEmpty() const
{
    return m_array->isEmpty();
}

void qelStringClassArray::setLogicalLength(long n)
{
    m_array->setLogicalLength(n);
}

long qelStringClassArray::physicalLength() const
{
    return m_array->physicalLength();
}

void qelStringClassArray::setPhysicalLength(long n)
{
    m_array->setPhysicalLength(n);
}

long qelStringClassArray::growLength() const
{
    return m_array->growLength();
}

void qelStringClassArray::setGrowLength(long n)
{
    m_array->setGrowLength(n);
}
