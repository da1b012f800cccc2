#include "qelStringClassArray.h"

#include <search.h>
#include <stdlib.h>

namespace
{
/// What the search functions of the runtime found, as a position.
int report(const void* hit, const qelString* elements, long& index)
{
    if (hit == nullptr)
    {
        return 0;
    }
    index = static_cast<long>(static_cast<const qelString*>(hit) - elements);
    return 1;
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

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the array sees to it
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
    // Not guarded against an empty list, whose length callers know to become -1.
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
    return m_array->find(s, index, start) ? 1 : 0;
}

int qelStringClassArray::bsearch(const qelString& key, long& index, Comparator compare) const
{
    index = -1;
    if (length() < 1)
    {
        return 0;
    }
    const qelString* elements = &m_array->first();
    return report(::bsearch(&key, elements, static_cast<size_t>(length()), sizeof(qelString), compare), elements,
                  index);
}

int qelStringClassArray::lfind(const qelString& key, long& index, Comparator compare, long start) const
{
    index = -1;
    const long from = start < 0 ? 0 : start;
    if (from >= length())
    {
        return 0;
    }
    const qelString* elements = &m_array->first();
    auto count = static_cast<unsigned int>(length() - from);
    return report(::_lfind(&key, elements + from, &count, sizeof(qelString), compare), elements, index);
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
        // The runtime moves the elements as bytes, which a text survives: it keeps no pointer to itself.
        qsort(&(*m_array)[first], static_cast<size_t>(last - first) + 1, sizeof(qelString), compare);
    }
}

qelStringClassArray& qelStringClassArray::reverse()
{
    for (long i = 0, j = length() - 1; i < j; ++i, --j)
    {
        swap(i, j);
    }
    return *this;
}

qelStringClassArray& qelStringClassArray::swap(long i, long j)
{
    if (hasSlot(*m_array, i) && hasSlot(*m_array, j))
    {
        const qelString kept((*m_array)[i]);
        (*m_array)[i] = (*m_array)[j];
        (*m_array)[j] = kept;
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
