// Guards against ending a process twice. Not part of the public interface.
#ifndef QEL_END_UNDER_WAY_H
#define QEL_END_UNDER_WAY_H

#include "qelProcessEvolutionManager.h"

/// Exists while displays are notified of the end of a process, so that a display that requests the same end again is
/// refused.
class qelProcessEvolutionManager::EndUnderWay
{
public:
    static const int kAll = -1; ///< used as the key of a cancel

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
    static EndUnderWay* m_innermost; ///< the latest one, or null

    const qelProcessEvolutionManager& m_manager;
    int m_key;
    EndUnderWay* m_outer; ///< the enclosing one, or null
};

#endif
