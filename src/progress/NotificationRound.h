// Notifications under way. Not part of the public interface.
#ifndef QEL_NOTIFICATION_ROUND_H
#define QEL_NOTIFICATION_ROUND_H

#include "qelProcessEvolutionManager.h"

/**
 * Goes through the displays that are registered when it begins. The manager finds it while it runs, to keep it in step
 * when a display is taken out of the list.
 */
class qelProcessEvolutionManager::Round
{
public:
    /// Through the displays from number `first` on.
    explicit Round(const qelProcessEvolutionManager& manager, long first = 0)
        : m_manager(manager)
        , m_outer(m_innermost)
        , m_at(first)
        , m_end(manager.m_displays.length())
    {
        m_innermost = this;
    }

    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;

    // Also when a display throws.
    ~Round() { m_innermost = m_outer; }

    /// The display whose turn it is; null at the end.
    ProgressDisplayProtocol* current()
    {
        const qelArray<ProgressDisplayProtocol*>& displays = m_manager.m_displays;
        // The length as well: a whole list can be replaced by assignment.
        const long end = m_end < displays.length() ? m_end : displays.length();
        while (m_at < end && displays[m_at] == nullptr)
        {
            ++m_at;
        }
        return m_at < end ? displays[m_at] : nullptr;
    }

    /// The same, and moves on.
    ProgressDisplayProtocol* next()
    {
        ProgressDisplayProtocol* display = current();
        ++m_at;
        return display;
    }

    /// One round, through all displays, that tells that a process ends.
    static void tellEnd(const qelProcessEvolutionManager& manager, int key, bool isCancel)
    {
        Round round(manager);
        round.m_endingKey = key;
        round.m_isCancel = isCancel;
        while (ProgressDisplayProtocol* display = round.next())
        {
            display->removeProcess(key);
        }
    }

    /// Whether a round under way tells that the process ends.
    static bool isTellingEnd(const qelProcessEvolutionManager& manager, int key)
    {
        for (const Round* round = m_innermost; round != nullptr; round = round->m_outer)
        {
            if (&round->m_manager == &manager && round->m_endingKey == key)
            {
                return true;
            }
        }
        return false;
    }

    /// Whether a round under way tells the ends that a cancel brings.
    static bool isTellingCancel(const qelProcessEvolutionManager& manager)
    {
        for (const Round* round = m_innermost; round != nullptr; round = round->m_outer)
        {
            if (&round->m_manager == &manager && round->m_isCancel)
            {
                return true;
            }
        }
        return false;
    }

    /// To be called when a display is out of the list.
    static void displayRemoved(const qelProcessEvolutionManager& manager, long number)
    {
        for (Round* round = m_innermost; round != nullptr; round = round->m_outer)
        {
            if (&round->m_manager == &manager)
            {
                round->m_at -= number < round->m_at ? 1 : 0;
                round->m_end -= number < round->m_end ? 1 : 0;
            }
        }
    }

private:
    static Round* m_innermost; ///< of the rounds under way; null when there is none

    const qelProcessEvolutionManager& m_manager;
    Round* m_outer;          ///< the one that this one interrupts, or null
    long m_at;               ///< number of the display whose turn it is
    long m_end;              ///< displays from here on have registered since
    int m_endingKey = -1;    ///< process whose end is told, or -1
    bool m_isCancel = false; ///< its end is told because of a cancel
};

#endif
