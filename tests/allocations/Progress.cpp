#include "allocations/Operations.h"

#include "qelProcessEvolutionManager.h"
#include "qelProgressCtrl.h"

#include <windows.h>

#include <optional>

using namespace qelTest;

namespace
{
class Display final : public ProgressDisplayProtocol
{
public:
    void setProgress(int, int) override {}
    void addProcess(int, qelString, bool) override {}
    void removeProcess(int) override {}
};

qelProcessEvolutionManager& manager()
{
    return *qelProcessEvolutionManager::getProcessEvolutionManager();
}

std::wstring processes(const qelProcessEvolutionManager& seen)
{
    std::wstring all = number(seen.getIsCanceled() ? 1 : 0) + L":";
    for (int key = 0; key < seen.getNumberOfActiveProcesses(); ++key)
    {
        all += L"[" + wide(seen.getProcessCurentAction(key)) + L" " + number(seen.getProcessCurentPercent(key)) + L"]";
    }
    return all;
}

const qelString& action()
{
    static const qelString action(L"Numbering");
    return action;
}

/// Only the class itself may destroy an object; the library exports how.
void destroy(qelProcessEvolutionManager& copy)
{
#if defined(_MSC_VER)
    const char* const kDestructor = "??1qelProcessEvolutionManager@@EEAA@XZ";
#else
    const char* const kDestructor = "_ZN26qelProcessEvolutionManagerD1Ev";
#endif
    const auto destructor = reinterpret_cast<void (*)(void*)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"VarnelQELRoots.dll"), kDestructor)));
    destructor(&copy);
}

/// Eight processes run and two displays listen. At the end nothing does.
template <class Change> void changesProcesses(Operations& table, const char* name, Change change)
{
    throwing(table, {name}, [=](Trial& trial) {
        Display displays[3];
        manager().EnableCancel(true);
        for (int i = 0; i < 8; ++i)
        {
            manager().registerProcess(action());
        }
        for (Display& display : {std::ref(displays[0]), std::ref(displays[1])})
        {
            manager().registerDisplay(&display);
        }
        trial([&] { change(displays[2]); }, [] { return processes(manager()); });
        while (manager().getNumberOfActiveProcesses() > 0)
        {
            manager().deRegisterProcess(manager().getNumberOfActiveProcesses() - 1);
        }
        while (manager().deRegisterDisplay(0) != 0)
        {
        }
    });
}

void addManager(Operations& table)
{
    using Manager = qelProcessEvolutionManager;
    changesProcesses(table, "qelProcessEvolutionManager::registerProcess(qelString)",
                     [](Display&) { manager().registerProcess(action()); });
    changesProcesses(table, "qelProcessEvolutionManager::deRegisterProcess(int)",
                     [](Display&) { manager().deRegisterProcess(3); });
    changesProcesses(table, "qelProcessEvolutionManager::increaseProgress(int, int)",
                     [](Display&) { manager().increaseProgress(3, 50); });
    changesProcesses(table, "qelProcessEvolutionManager::registerDisplay(ProgressDisplayProtocol*)",
                     [](Display& display) { manager().registerDisplay(&display); });
    changesProcesses(table, "qelProcessEvolutionManager::cancelProcess()", [](Display&) { manager().cancelProcess(); });
    throwing(table,
             {"qelProcessEvolutionManager::qelProcessEvolutionManager(qelProcessEvolutionManager const&)",
              "qelProcessEvolutionManager::~qelProcessEvolutionManager()"},
             [](Trial& trial) {
                 manager().registerProcess(action());
                 alignas(Manager) unsigned char storage[sizeof(Manager)];
                 Manager* copy = nullptr;
                 trial([&] { copy = new (storage) Manager(manager()); },
                       [&] { return copy == nullptr ? L"none" : processes(*copy); });
                 manager().deRegisterProcess(0);
                 destroy(*copy);
             });
    throwing(table, {"qelProcessEvolutionManager::operator=(qelProcessEvolutionManager const&)"}, [](Trial& trial) {
        alignas(Manager) unsigned char storage[sizeof(Manager)];
        auto* const other = new (storage) Manager(manager());
        for (int i = 0; i < 9; ++i)
        {
            manager().registerProcess(action());
        }
        trial([&] { *other = manager(); }, [&] { return processes(*other); });
        while (manager().getNumberOfActiveProcesses() > 0)
        {
            manager().deRegisterProcess(manager().getNumberOfActiveProcesses() - 1);
        }
        destroy(*other);
    });
    withoutMemory(
        table,
        {"qelProcessEvolutionManager::getProcessEvolutionManager()", "qelProcessEvolutionManager::EnableCancel(bool)",
         "qelProcessEvolutionManager::deRegisterDisplay(int)", "qelProcessEvolutionManager::getIsCanceled() const",
         "qelProcessEvolutionManager::getKeyForAction(qelString const&) const",
         "qelProcessEvolutionManager::getNumberOfActiveProcesses() const",
         "qelProcessEvolutionManager::getProcessCurentAction(int) const",
         "qelProcessEvolutionManager::getProcessCurentPercent(int) const",
         "qelProcessEvolutionManager::getProcessInfo(int) const"},
        [](Trial& trial) {
            Display display;
            manager().registerDisplay(&display);
            trial(
                [&] {
                    manager().EnableCancel(false);
                    trial.result = number(manager().getIsCanceled() + manager().getKeyForAction(action()) +
                                          manager().getNumberOfActiveProcesses() +
                                          manager().getProcessCurentPercent(0) + manager().getProcessInfo(0).key) +
                                   wide(manager().getProcessCurentAction(0));
                    manager().deRegisterDisplay(0);
                },
                [] { return std::wstring(); });
        });
}

const qelString& title()
{
    static const qelString title(L"Writing the list of parts");
    return title;
}

void addWindow(Operations& table)
{
    withoutMemory(
        table,
        {"qelProgressCtrlWindow::qelProgressCtrlWindow()",
         "qelProgressCtrlWindow::qelProgressCtrlWindow(qelProgressCtrlWindow const&)",
         "qelProgressCtrlWindow::operator=(qelProgressCtrlWindow const&)",
         "qelProgressCtrlWindow::~qelProgressCtrlWindow()", "qelProgressCtrlWindow::activate(qelString)",
         "qelProgressCtrlWindow::reset()", "qelProgressCtrlWindow::setPercentage(int, int)",
         "qelProgressCtrlWindow::setTitle(qelString const&)", "qelProgressCtrlWindow::getTitle(qelString&) const",
         "qelProgressCtrlWindow::getPercentage(int&) const", "qelProgressCtrlWindow::isActive() const",
         "qelProgressCtrlWindow::getActivity() const", "qelProgressCtrlWindow::getOn() const",
         "qelProgressCtrlWindow::setActivity(int)", "qelProgressCtrlWindow::switchOn()",
         "qelProgressCtrlWindow::switchOff()"},
        [](Trial& trial) {
            trial(
                [&] {
                    qelProgressCtrlWindow window;
                    window.switchOn();
                    window.activate(title());
                    window.setPercentage(42);
                    window.setTitle(action());
                    int percent = 0;
                    qelString shown;
                    window.getTitle(shown);
                    window.getPercentage(percent);
                    qelProgressCtrlWindow copy(window);
                    copy = window;
                    copy.setActivity(0);
                    copy.switchOff();
                    trial.result = number(percent + window.isActive() + window.getActivity() + window.getOn());
                    window.reset();
                },
                [] { return std::wstring(); });
        });
}

void addControl(Operations& table)
{
    using Controller = qelProgressCtrlWindowController;
    const auto add = [&](const char* name, bool directly) {
        throwing(table, {name}, [directly](Trial& trial) {
            qelProgressCtrlWindow window;
            qelProgressCtrlWindow others[16];
            Controller own;
            for (long i = own.windows().length(); i < own.windows().physicalLength() && i < 16; ++i)
            {
                own.append(&others[i]);
            }
            Controller* const before = qelProgressCtrl::m_ProgressCtrlWindowController;
            qelProgressCtrl::m_ProgressCtrlWindowController = &own;
            trial([&] { directly ? own.append(&window) : qelProgressCtrl::appendOutputWindow(&window); },
                  [&] { return number(own.windows().length()); });
            qelProgressCtrl::m_ProgressCtrlWindowController = before;
        });
    };
    add("qelProgressCtrlWindowController::append(qelProgressCtrlWindow*)", true);
    add("qelProgressCtrl::appendOutputWindow(qelProgressCtrlWindow*)", false);
    throwing(table, {"qelProgressCtrlWindowController::qelProgressCtrlWindowController()"}, [](Trial& trial) {
        std::optional<Controller> made;
        trial([&] { made.emplace(); }, [&] { return number(made ? made->windows().length() : -1); });
    });
    throwing(table,
             {"qelProgressCtrlWindowController::qelProgressCtrlWindowController(qelProgressCtrlWindowController "
              "const&)"},
             [](Trial& trial) {
                 const Controller other;
                 std::optional<Controller> made;
                 trial([&] { made.emplace(other); }, [&] { return number(made ? made->windows().length() : -1); });
             });
    throwing(table, {"qelProgressCtrlWindowController::operator=(qelProgressCtrlWindowController const&)"},
             [](Trial& trial) {
                 Controller other;
                 qelProgressCtrlWindow windows[20];
                 for (qelProgressCtrlWindow& window : windows)
                 {
                     other.append(&window);
                 }
                 Controller made;
                 trial([&] { made = other; }, [&] { return number(made.windows().length()); });
             });
    withoutMemory(table,
                  {"qelProgressCtrlWindowController::windows()", "qelProgressCtrlWindowController::defaultWindow()",
                   "qelProgressCtrl::activate(qelString)", "qelProgressCtrl::reset()",
                   "qelProgressCtrl::setTitle(qelString const&)", "qelProgressCtrl::setPercentage(int, int)",
                   "qelProgressCtrl::getTitle(qelString&)", "qelProgressCtrl::getPercentage(int&)",
                   "qelProgressCtrl::isActive(int)"},
                  [](Trial& trial) {
                      Controller& list = *qelProgressCtrl::m_ProgressCtrlWindowController;
                      trial(
                          [&] {
                              list.defaultWindow().switchOn();
                              qelProgressCtrl::activate(title());
                              qelProgressCtrl::setTitle(action());
                              qelProgressCtrl::setPercentage(50);
                              qelString shown;
                              int percent = 0;
                              qelProgressCtrl::getTitle(shown);
                              qelProgressCtrl::getPercentage(percent);
                              trial.result = number(list.windows().length() + qelProgressCtrl::isActive() + percent);
                              qelProgressCtrl::reset();
                              list.defaultWindow().switchOff();
                          },
                          [] { return std::wstring(); });
                  });
}
} // namespace

void qelTest::addProgress(Operations& table)
{
    // Made here, not inside of an operation.
    (void)action();
    (void)title();
    addManager(table);
    addWindow(table);
    addControl(table);
}
