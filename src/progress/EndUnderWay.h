// Ends that the displays are being told of. Not part of the public interface.
#ifndef QEL_END_UNDER_WAY_H
#define QEL_END_UNDER_WAY_H

#include "qelProcessEvolutionManager.h"

/// While it lives, the process ends: a display that is told so and asks for that end again would bring it about twice.
class qelProcessEvolutionManager::EndUnderWay
{
public:
    static const int kAll = -1; ///< in the place of a key: a cancel

    EndUnderWay(const qelProcessEvolutionManager& manager, int key)
        : m_manager(manager)
        , m_key(key)
        , m_outer(m_innermost)
    {
        m_innermost = this;
    }

    EndUnderWay(const EndUnderWay&) = delete;
    EndUnderWay& operator=(const EndUnderWay&) = delete;

    // Also when a display throws.
    ~EndUnderWay() { m_innermost = m_outer; }

    static bool exists(const qelProcessEvolutionManager& manager, int key)
    {
        const EndUnderWay* end = m_innermost;
        while (end != nullptr && (&end->m_manager != &manager || end->m_key != key))
        {
            end = end->m_outer;
        }
        return end != nullptr;
    }

private:
    static EndUnderWay* m_innermost; ///< the one that began last; null when there is none

    const qelProcessEvolutionManager& m_manager;
    int m_key;
    EndUnderWay* m_outer; ///< the one that this one interrupts, or null
};

#endif
