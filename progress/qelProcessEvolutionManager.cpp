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
        , m_outer(m_rounds)
        , m_at(first)
        , m_end(manager.m_displays.length())
    {
        m_rounds = this;
    }

    /// The same, to tell that a process ends.
    Round(const qelProcessEvolutionManager& manager, int endingKey, bool isCancel)
        : Round(manager)
    {
        m_endingKey = endingKey;
        m_isCancel = isCancel;
    }

    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;

    // Also when a display throws.
    ~Round() { m_rounds = m_outer; }

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

    void displayRemoved(long number)
    {
        m_at -= number < m_at ? 1 : 0;
        m_end -= number < m_end ? 1 : 0;
    }

    bool isOf(const qelProcessEvolutionManager& manager) const { return &m_manager == &manager; }
    bool tellsEndOf(int key) const { return m_endingKey == key; }
    bool tellsCancel() const { return m_isCancel; }

    Round* outer() const { return m_outer; }

private:
    const qelProcessEvolutionManager& m_manager;
    Round* m_outer;          ///< the one that this one interrupts, or null
    long m_at;               ///< number of the display whose turn it is
    long m_end;              ///< displays from here on have registered since
    int m_endingKey = -1;    ///< process whose end is told, or -1
    bool m_isCancel = false; ///< its end is told because of a cancel
};

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
    if (isCancelPending() && key != 0)
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
    if (key < 0 || (isCancelPending() && key != 0) || isTellingEndOf(key))
    {
        return 0;
    }

    tellEnd(key, false);
    if (isRegistered(key))
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
    if (!isRegistered(key))
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
    for (int key = 0; key < running && isRegistered(key) && round.current() != nullptr; ++key)
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
    for (Round* round = m_rounds; round != nullptr; round = round->outer())
    {
        if (round->isOf(*this))
        {
            round->displayRemoved(number);
        }
    }
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
    if (!canCancel() || isTellingCancel())
    {
        return;
    }

    const int running = getNumberOfActiveProcesses();
    for (int key = 0; key < running; ++key)
    {
        tellEnd(key, true);
    }
    // Unless a display has ended the main process meanwhile, and with it what was to be cancelled.
    if (canCancel())
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
    return isRegistered(key) ? m_processes[key] : ProcessInfo();
}

qelString qelProcessEvolutionManager::getProcessCurentAction(int key) const
{
    return isRegistered(key) ? m_processes[key].action : qelString();
}

int qelProcessEvolutionManager::getProcessCurentPercent(int key) const
{
    return isRegistered(key) ? m_processes[key].percent : 0;
}

int qelProcessEvolutionManager::getKeyForAction(const qelString& action) const
{
    long position = -1;
    m_actions.find(action, position);
    return static_cast<int>(position);
}

bool qelProcessEvolutionManager::isRegistered(int key) const
{
    return key >= 0 && key < m_processes.length();
}

bool qelProcessEvolutionManager::isCancelPending() const
{
    return m_cancelEnabled && m_isCanceled;
}

bool qelProcessEvolutionManager::canCancel() const
{
    return m_cancelEnabled && m_processes.isEmpty() == 0;
}

bool qelProcessEvolutionManager::isTellingEndOf(int key) const
{
    for (const Round* round = m_rounds; round != nullptr; round = round->outer())
    {
        if (round->isOf(*this) && round->tellsEndOf(key))
        {
            return true;
        }
    }
    return false;
}

bool qelProcessEvolutionManager::isTellingCancel() const
{
    for (const Round* round = m_rounds; round != nullptr; round = round->outer())
    {
        if (round->isOf(*this) && round->tellsCancel())
        {
            return true;
        }
    }
    return false;
}

void qelProcessEvolutionManager::tellEnd(int key, bool isCancel)
{
    Round round(*this, key, isCancel);
    while (ProgressDisplayProtocol* display = round.next())
    {
        display->removeProcess(key);
    }
}
