#include "qelPerfMonitor.h"

#include "qelDebugInterfaces.h"

#include <time.h>

static_assert(CLOCKS_PER_SEC == 1000, "ticks are milliseconds");

namespace
{
/// Correct across the wrap of the clock.
int difference(int start, int end)
{
    return static_cast<int>(static_cast<unsigned>(end) - static_cast<unsigned>(start));
}
} // namespace

qelPerfMonitor::qelPerfMonitor(const qelString& fileName)
    : m_log(fileName)
    , m_startTicks(0)
    , m_endTicks(0)
{
}

void qelPerfMonitor::start(const qelString& label)
{
    m_startTicks = static_cast<int>(clock());
    qelString text;
    m_log.appendWithSave(text.format(L"Start = %s : %d", label.getStringW(), m_startTicks));
}

void qelPerfMonitor::end(const qelString& label)
{
    m_endTicks = static_cast<int>(clock());
    qelString text;
    m_log.appendWithSave(text.format(L"End = %s : %d -> %d (Diff = %d)", label.getStringW(), m_startTicks, m_endTicks,
                                     difference(m_startTicks, m_endTicks)));
}

void qelPerfMonitor::endWithMessageBox(const qelString& label)
{
    end(label);
    qelString text;
    qelWinMessage::messageBox(text.format(L"%s : %d -> %d (Diff = %d)", label.getStringW(), m_startTicks, m_endTicks,
                                          difference(m_startTicks, m_endTicks)));
}
