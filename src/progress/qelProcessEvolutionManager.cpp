#include "qelProcessEvolutionManager.h"

#include "progress/NotificationRound.h"

namespace
{
bool isRegistered(const qelArray<ProcessInfo>& processes, int key)
{
    return key >= 0 && key < processes.length();
}
} // namespace

qelProcessEvolutionManager::qelProcessEvolutionManager()
    : m_isCanceled(false)
    , m_cancelEnabled(false)
    , m_cancelAllowed(false)
{
}

qelProcessEvolutionManager::qelProcessEvolutionManager(const qelProcessEvolutionManager& other) = default;

qelProcessEvolutionManager::~qelProcessEvolutionManager() = default;

qelProcessEvolutionManager& qelProcessEvolutionManager::operator=(const qelProcessEvolutionManager& other) = default;

qelProcessEvolutionManager* qelProcessEvolutionManager::getProcessEvolutionManager()
{
    return m_pProcessEvolutionManager;
}

int qelProcessEvolutionManager::registerProcess(qelString action)
{
    const int key = getNumberOfActiveProcesses();
    if (m_cancelEnabled && m_isCanceled && key != 0)
    {
        return -1;
    }

    ProcessInfo info;
    info.key = key;
    info.action = action;
    m_processes.append(info);
    m_actions.append(action);

    const bool cancelAllowed = key == 0 && m_cancelAllowed;
    Round round(*this);
    while (ProgressDisplayProtocol* display = round.next())
    {
        display->addProcess(key, action, cancelAllowed);
    }
    return key;
}

int qelProcessEvolutionManager::deRegisterProcess(int key)
{
    if (key < 0 || (m_cancelEnabled && m_isCanceled && key != 0) || Round::isTellingEnd(*this, key))
    {
        return 0;
    }

    Round::tellEnd(*this, key, false);
    if (isRegistered(m_processes, key))
    {
        m_processes.removeAt(key);
        m_actions.removeAt(key);
    }
    if (key == 0)
    {
        m_isCanceled = false;
        m_cancelEnabled = false;
        m_cancelAllowed = false;
    }
    return 1;
}

void qelProcessEvolutionManager::increaseProgress(int key, int percent)
{
    if (!isRegistered(m_processes, key))
    {
        return;
    }
    m_processes[key].percent = percent;
    Round round(*this);
    while (ProgressDisplayProtocol* display = round.next())
    {
        display->setProgress(key, percent);
    }
}

int qelProcessEvolutionManager::registerDisplay(ProgressDisplayProtocol* display)
{
    const long number = m_displays.length();
    m_displays.append(display);

    // A round of one display, which may take itself out of the list at any time. Processes that register meanwhile
    // are told to it by their own registration.
    Round round(*this, number);
    const int running = getNumberOfActiveProcesses();
    for (int key = 0; key < running && isRegistered(m_processes, key) && round.current() != nullptr; ++key)
    {
        // A process is told under its position, whatever key it was given, as all later notifications are.
        const ProcessInfo info = m_processes[key];
        display->addProcess(key, info.action, false);
        if (round.current() != nullptr)
        {
            display->setProgress(key, info.percent);
        }
    }
    return static_cast<int>(number);
}

int qelProcessEvolutionManager::deRegisterDisplay(int number)
{
    if (number < 0 || number >= m_displays.length())
    {
        return 0;
    }
    m_displays.removeAt(number);
    Round::displayRemoved(*this, number);
    return 1;
}

int qelProcessEvolutionManager::EnableCancel(bool allow)
{
    if (m_processes.isEmpty())
    {
        m_cancelEnabled = true;
        m_cancelAllowed = allow;
    }
    return 0;
}

void qelProcessEvolutionManager::cancelProcess()
{
    if (!m_cancelEnabled || m_processes.isEmpty() || Round::isTellingCancel(*this))
    {
        return;
    }

    const int running = getNumberOfActiveProcesses();
    for (int key = 0; key < running; ++key)
    {
        Round::tellEnd(*this, key, true);
    }
    // Unless a display has ended the main process meanwhile, and with it what was to be cancelled.
    if (m_cancelEnabled && !m_processes.isEmpty())
    {
        m_isCanceled = true;
        // The action texts stay as they are: callers find dropped sub-processes by them.
        m_processes.setLogicalLength(1);
    }
}

bool qelProcessEvolutionManager::getIsCanceled() const
{
    return m_isCanceled;
}

int qelProcessEvolutionManager::getNumberOfActiveProcesses() const
{
    return static_cast<int>(m_processes.length());
}

ProcessInfo qelProcessEvolutionManager::getProcessInfo(int key) const
{
    return isRegistered(m_processes, key) ? m_processes[key] : ProcessInfo();
}

qelString qelProcessEvolutionManager::getProcessCurentAction(int key) const
{
    return isRegistered(m_processes, key) ? m_processes[key].action : qelString();
}

int qelProcessEvolutionManager::getProcessCurentPercent(int key) const
{
    return isRegistered(m_processes, key) ? m_processes[key].percent : 0;
}

int qelProcessEvolutionManager::getKeyForAction(const qelString& action) const
{
    long position = -1;
    m_actions.find(action, position);
    return static_cast<int>(position);
}
