// Memory for text on its way into a string. Not part of the public interface.
#ifndef QEL_WORK_BUFFER_H
#define QEL_WORK_BUFFER_H

#include "qelArray.h"
#include "strings/Text.h"

/// A block of units and a terminator, scrubbed and freed at the end of its scope.
template <typename Unit> class qelWorkBuffer
{
public:
    /// Room for `capacity` units before the terminator.
    explicit qelWorkBuffer(size_t capacity)
        : m_units(static_cast<Unit*>(::operator new((capacity + 1) * sizeof(Unit))))
        , m_capacity(capacity)
        , m_used(0)
    {
    }

    ~qelWorkBuffer()
    {
        qelText::scrub(m_units, m_used * sizeof(Unit));
        ::operator delete(m_units);
    }

    qelWorkBuffer(const qelWorkBuffer&) = delete;
    qelWorkBuffer& operator=(const qelWorkBuffer&) = delete;

    Unit* units() { return m_units; }

    size_t capacity() const { return m_capacity; }

    /// Ends the text after `used` units, at most the capacity, and returns it.
    const Unit* end(size_t used)
    {
        m_used = used;
        m_units[used] = 0;
        return m_units;
    }

private:
    Unit* m_units;
    size_t m_capacity;
    size_t m_used;
};

#endif
