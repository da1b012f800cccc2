#include "qelProgressCtrl.h"

namespace
{
qelArray<qelProgressCtrlWindow*>& windows()
{
    return qelProgressCtrl::m_ProgressCtrlWindowController->windows();
}

bool takesPart(const qelProgressCtrlWindow* window)
{
    return window != nullptr && window->getOn() != 0;
}

/// How many windows that are switched on return non-zero.
template <class Call> int countAnswers(Call call)
{
    int answers = 0;
    // A window may change the list from inside the call.
    for (long i = 0; i < windows().length(); ++i)
    {
        qelProgressCtrlWindow* window = windows()[i];
        if (takesPart(window) && call(*window) != 0)
        {
            ++answers;
        }
    }
    return answers;
}

/// The first window that is switched on, or null.
const qelProgressCtrlWindow* firstWindow()
{
    for (long i = 0; i < windows().length(); ++i)
    {
        if (takesPart(windows()[i]))
        {
            return windows()[i];
        }
    }
    return nullptr;
}
} // namespace

qelProgressCtrlWindowController::qelProgressCtrlWindowController()
{
    append(&m_defaultWindow);
}

qelProgressCtrlWindowController::qelProgressCtrlWindowController(const qelProgressCtrlWindowController& other)
{
    *this = other;
}

qelProgressCtrlWindowController& qelProgressCtrlWindowController::operator=(
    const qelProgressCtrlWindowController& other)
{
    // Allocations first.
    m_windows.setLogicalLength(other.m_windows.length());
    m_defaultWindow = other.m_defaultWindow;
    for (long i = 0; i < m_windows.length(); ++i)
    {
        qelProgressCtrlWindow* window = other.m_windows[i];
        // The other's built-in window is replaced by this one's.
        m_windows[i] = window == &other.m_defaultWindow ? &m_defaultWindow : window;
    }
    return *this;
}

int qelProgressCtrlWindowController::append(qelProgressCtrlWindow* window)
{
    for (long i = 0; i < m_windows.length(); ++i)
    {
        if (m_windows[i] != nullptr)
        {
            m_windows[i]->switchOff();
        }
    }
    if (window == nullptr)
    {
        return -1;
    }

    long position = -1;
    if (!m_windows.find(window, position))
    {
        position = m_windows.length();
        m_windows.append(window);
        m_defaultWindow.switchOff();
    }
    return static_cast<int>(position);
}

qelArray<qelProgressCtrlWindow*>& qelProgressCtrlWindowController::windows()
{
    return m_windows;
}

qelProgressCtrlWindow& qelProgressCtrlWindowController::defaultWindow()
{
    return m_defaultWindow;
}

int qelProgressCtrl::activate(qelString title)
{
    return countAnswers([&title](qelProgressCtrlWindow& window) { return window.activate(title); });
}

int qelProgressCtrl::reset()
{
    return countAnswers([](qelProgressCtrlWindow& window) { return window.reset(); });
}

int qelProgressCtrl::setTitle(const qelString& title)
{
    return countAnswers([&title](qelProgressCtrlWindow& window) { return window.setTitle(title); });
}

int qelProgressCtrl::setPercentage(int percent, int force)
{
    return countAnswers([=](qelProgressCtrlWindow& window) { return window.setPercentage(percent, force); });
}

int qelProgressCtrl::getTitle(qelString& title)
{
    const qelProgressCtrlWindow* window = firstWindow();
    if (window == nullptr)
    {
        return 0;
    }
    window->getTitle(title);
    return 1;
}

int qelProgressCtrl::getPercentage(int& percent)
{
    const qelProgressCtrlWindow* window = firstWindow();
    if (window == nullptr)
    {
        return 0;
    }
    window->getPercentage(percent);
    return 1;
}

int qelProgressCtrl::isActive(int fallback)
{
    const int active = countAnswers([](qelProgressCtrlWindow& window) { return window.isActive() == 1 ? 1 : 0; });
    if (active == 0 && fallback != 0 && !windows().isEmpty() && windows().first() != nullptr)
    {
        // Counts from the next call on. Deliberate.
        windows().first()->switchOn();
        windows().first()->setActivity(1);
    }
    return active;
}

int qelProgressCtrl::appendOutputWindow(qelProgressCtrlWindow* window)
{
    return m_ProgressCtrlWindowController->append(window);
}
