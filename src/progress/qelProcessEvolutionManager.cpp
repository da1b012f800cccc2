#include "qelProcessEvolutionManager.h"

#include "progress/EndUnderWay.h"

#include <string.h>

namespace
{
using Displays = qelArray<ProgressDisplayProtocol*>;

bool isRegistered(const qelArray<ProcessInfo>& processes, int key)
{
    return key >= 0 && key < processes.length();
}

bool isRegistered(const Displays& displays, ProgressDisplayProtocol* display)
{
    long number = -1;
    return displays.find(display, number);
}

/// A copy of the list of displays, for one notification. Made before anything changes, because it allocates.
class Round
{
public:
    explicit Round(const Displays& registered)
        : m_registered(&registered)
        , m_displays(registered)
    {
    }

    /// Calls `tell` for each display that is still registered when its turn comes.
    template <class Tell> void go(Tell tell) const
    {
        for (long i = 0; i < m_displays.length(); ++i)
        {
            if (m_displays[i] != nullptr && isRegistered(*m_registered, m_displays[i]))
            {
                tell(*m_displays[i]);
            }
        }
    }

private:
    const Displays* m_registered;
    Displays m_displays;
};

void tellEnd(const Displays& displays, int key)
{
    Round(displays).go([key](ProgressDisplayProtocol& display) { display.removeProcess(key); });
}

/// Swaps two lists as bytes, which is safe because neither points into itself.
template <class List> void exchange(List& a, List& b)
{
    unsigned char bytes[sizeof(List)];
    memcpy(bytes, static_cast<const void*>(&a), sizeof(List));
    memcpy(static_cast<void*>(&a), static_cast<const void*>(&b), sizeof(List));
    memcpy(static_cast<void*>(&b), bytes, sizeof(List));
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

qelProcessEvolutionManager& qelProcessEvolutionManager::operator=(const qelProcessEvolutionManager& other)
{
    if (this != &other)
    {
        // Complete before anything changes: memory may run out.
        qelProcessEvolutionManager copy(other);
        exchange(m_processes, copy.m_processes);
        exchange(m_displays, copy.m_displays);
        exchange(m_actions, copy.m_actions);
        m_isCanceled = copy.m_isCanceled;
        m_cancelEnabled = copy.m_cancelEnabled;
        m_cancelAllowed = copy.m_cancelAllowed;
    }
    return *this;
}

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

    const Round round(m_displays);
    ProcessInfo info;
    info.key = key;
    info.action = action;
    // The slot first: both lists get their entry, or neither.
    m_processes.setLogicalLength(key + 1);
    m_processes.setLogicalLength(key);
    m_actions.append(action);
    m_processes.append(info);

    const bool cancelAllowed = key == 0 && m_cancelAllowed;
    round.go([&](ProgressDisplayProtocol& display) { display.addProcess(key, action, cancelAllowed); });
    return key;
}

int qelProcessEvolutionManager::deRegisterProcess(int key)
{
    if (key < 0 || (m_cancelEnabled && m_isCanceled && key != 0) || EndUnderWay::exists(*this, key))
    {
        return 0;
    }

    const EndUnderWay end(*this, key);
    tellEnd(m_displays, key);
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
    const Round round(m_displays);
    m_processes[key].percent = percent;
    round.go([=](ProgressDisplayProtocol& display) { display.setProgress(key, percent); });
}

int qelProcessEvolutionManager::registerDisplay(ProgressDisplayProtocol* display)
{
    const long number = m_displays.length();
    m_displays.append(display);

    // The display may deregister itself at any time. It is notified of processes that register meanwhile by their own
    // registration.
    const int running = display == nullptr ? 0 : getNumberOfActiveProcesses();
    for (int key = 0; key < running && isRegistered(m_processes, key) && isRegistered(m_displays, display); ++key)
    {
        // The key is the position now, whatever it was at registration, as in all later notifications.
        const ProcessInfo info = m_processes[key];
        display->addProcess(key, info.action, false);
        if (isRegistered(m_displays, display))
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
    if (!m_cancelEnabled || m_processes.isEmpty() || EndUnderWay::exists(*this, EndUnderWay::kAll))
    {
        return;
    }

    const EndUnderWay cancel(*this, EndUnderWay::kAll);
    const int running = getNumberOfActiveProcesses();
    for (int key = 0; key < running; ++key)
    {
        const EndUnderWay end(*this, key);
        tellEnd(m_displays, key);
    }
    // Unless a display has ended the main process meanwhile.
    if (m_cancelEnabled && !m_processes.isEmpty())
    {
        m_isCanceled = true;
        // The action texts stay. Deliberate.
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
