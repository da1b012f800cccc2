#include "Check.h"

#include "qelProcessEvolutionManager.h"
#include "qelProgressCtrl.h"

namespace
{
/// A display of the host's, called by the library.
class Display final : public ProgressDisplayProtocol
{
public:
    void setProgress(int key, int percent) override { add(L"set", key, percent, L""); }
    void addProcess(int key, qelString action, bool cancelAllowed) override
    {
        add(L"add", key, cancelAllowed ? 1 : 0, action);
    }
    void removeProcess(int key) override { add(L"remove", key, 0, L""); }

    const qelString& calls() const { return m_calls; }

private:
    void add(const wchar_t* what, int key, int value, const qelString& text)
    {
        m_calls += qelString().format(L"%s %d %d %s;", what, key, value, text.getStringW());
    }

    qelString m_calls;
};

/// An output window of the host's, called by the library.
class Window final : public qelProgressCtrlWindow
{
public:
    int activate(qelString title) override
    {
        setActivity(1);
        return setTitle(title);
    }

    int reset() override
    {
        setActivity(0);
        return 1;
    }

    int setPercentage(int percent, int) override
    {
        m_sum += percent;
        return 1;
    }

    int sum() const { return m_sum; }

private:
    int m_sum = 0;
};

void checkRegister()
{
    qelProcessEvolutionManager* const manager = qelProcessEvolutionManager::getProcessEvolutionManager();
    Display display;
    const int number = manager->registerDisplay(&display);
    manager->EnableCancel(true);
    const int key = manager->registerProcess(L"Numbering");
    const int sub = manager->registerProcess(L"Reading");
    manager->increaseProgress(key, 25);
    manager->increaseProgress(sub, 50);
    CHECK(key == 0 && sub == 1 && manager->getNumberOfActiveProcesses() == 2);
    CHECK(manager->getProcessInfo(1).action == L"Reading" && manager->getProcessCurentPercent(0) == 25);
    CHECK(manager->getKeyForAction(L"Reading") == 1 && manager->getProcessCurentAction(0) == L"Numbering");
    manager->cancelProcess();
    CHECK(manager->getIsCanceled());
    CHECK(manager->deRegisterProcess(key) == 1 && !manager->getIsCanceled());
    CHECK(manager->deRegisterDisplay(number) == 1);
    show("display", display.calls());
}

void checkControl()
{
    qelProgressCtrlWindow& standard = qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow();
    CHECK(standard.getOn() == 0 && qelProgressCtrl::activate(L"nobody") == 0);
    Window window;
    const int position = qelProgressCtrl::appendOutputWindow(&window);
    window.switchOn();
    CHECK(position >= 0 && qelProgressCtrl::appendOutputWindow(&window) == position);
    window.switchOn();
    CHECK(qelProgressCtrl::activate(L"Parts") != 0 && qelProgressCtrl::isActive() == 1);
    qelProgressCtrl::setPercentage(30);
    qelProgressCtrl::setPercentage(12, 1);
    qelString title;
    CHECK(qelProgressCtrl::getTitle(title) == 1 && title == L"Parts" && window.sum() == 42);
    qelProgressCtrl::reset();
    CHECK(qelProgressCtrl::isActive() == 0);
    window.switchOff();

    // The dialog itself, where there is a display to show it on.
    standard.switchOn();
    CHECK(qelProgressCtrl::activate(L"Dialog") == 1);
    qelProgressCtrl::setPercentage(40);
    int percent = 0;
    CHECK(qelProgressCtrl::getPercentage(percent) == 1 && percent == 40);
    qelProgressCtrl::reset();
    standard.switchOff();
}
} // namespace

void checkProgress()
{
    checkRegister();
    checkControl();
}
