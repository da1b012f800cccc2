// The manager of processes and displays against plain lists: results, queries, and every notification in its order.
#include "qelProcessEvolutionManager.h"
#include "support/SeededRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using qelTest::SeededRun;
using Manager = qelProcessEvolutionManager;
using std::wstring;

const int kDisplays = 4;

/// What displays are told, each call as one line.
std::vector<wstring> told;

wstring progressLine(int display, int key, int percent)
{
    return std::to_wstring(display) + L": progress of " + std::to_wstring(key) + L" is " + std::to_wstring(percent);
}

wstring additionLine(int display, int key, const wstring& action, bool cancelAllowed)
{
    return std::to_wstring(display) + L": " + std::to_wstring(key) + L" is " + action +
           (cancelAllowed ? L", can be cancelled" : L"");
}

wstring removalLine(int display, int key)
{
    return std::to_wstring(display) + L": no more " + std::to_wstring(key);
}

class Display final : public ProgressDisplayProtocol
{
public:
    explicit Display(int number)
        : m_number(number)
    {
    }

    void setProgress(int key, int percent) override { told.push_back(progressLine(m_number, key, percent)); }

    void addProcess(int key, qelString action, bool cancelAllowed) override
    {
        told.push_back(additionLine(m_number, key, action.getStringW(), cancelAllowed));
    }

    void removeProcess(int key) override { told.push_back(removalLine(m_number, key)); }

private:
    int m_number;
};

struct Process
{
    int key;
    int percent;
    wstring action;
};

/// The stated steps. Displays are numbers.
class Model
{
public:
    std::vector<wstring> told;
    bool isCanceled = false;

    int registerProcess(const wstring& action)
    {
        const int key = count();
        if (m_cancelEnabled && isCanceled && key != 0)
        {
            return -1;
        }
        m_processes.push_back({key, 0, action});
        m_actions.push_back(action);
        tell([&](int display) { return additionLine(display, key, action, key == 0 && m_cancelAllowed); });
        return key;
    }

    int deRegisterProcess(int key)
    {
        if (key < 0 || (m_cancelEnabled && isCanceled && key != 0))
        {
            return 0;
        }
        tell([&](int display) { return removalLine(display, key); });
        if (key < count())
        {
            m_processes.erase(m_processes.begin() + key);
            m_actions.erase(m_actions.begin() + key);
        }
        if (key == 0)
        {
            isCanceled = m_cancelEnabled = m_cancelAllowed = false;
        }
        return 1;
    }

    int registerDisplay(int display)
    {
        m_displays.push_back(display);
        for (int key = 0; key < count(); ++key)
        {
            told.push_back(additionLine(display, key, process(key).action, false));
            told.push_back(progressLine(display, key, process(key).percent));
        }
        return displays() - 1;
    }

    int deRegisterDisplay(int number)
    {
        if (number < 0 || number >= displays())
        {
            return 0;
        }
        m_displays.erase(m_displays.begin() + number);
        return 1;
    }

    void increaseProgress(int key, int percent)
    {
        if (key >= 0 && key < count())
        {
            m_processes[static_cast<size_t>(key)].percent = percent;
            tell([&](int display) { return progressLine(display, key, percent); });
        }
    }

    void enableCancel(bool allow)
    {
        if (count() == 0)
        {
            m_cancelEnabled = true;
            m_cancelAllowed = allow;
        }
    }

    void cancelProcess()
    {
        if (m_cancelEnabled && count() > 0)
        {
            for (int key = 0; key < count(); ++key)
            {
                tell([&](int display) { return removalLine(display, key); });
            }
            isCanceled = true;
            m_processes.resize(1, {0, 0, L""});
        }
    }

    int keyForAction(const wstring& action) const
    {
        const auto at = std::find(m_actions.begin(), m_actions.end(), action);
        return at == m_actions.end() ? -1 : static_cast<int>(at - m_actions.begin());
    }

    int count() const { return static_cast<int>(m_processes.size()); }
    int displays() const { return static_cast<int>(m_displays.size()); }
    const Process& process(int key) const { return m_processes[static_cast<size_t>(key)]; }

private:
    template <class Line> void tell(const Line& line)
    {
        for (const int display : m_displays)
        {
            told.push_back(line(display));
        }
    }

    std::vector<Process> m_processes;
    std::vector<wstring> m_actions;
    std::vector<int> m_displays;
    bool m_cancelEnabled = false;
    bool m_cancelAllowed = false;
};

/// The manager beside its model, and one operation at a time on both.
class Progress
{
public:
    explicit Progress(SeededRun& run)
        : m_run(run)
        , m_manager(*Manager::getProcessEvolutionManager())
        , m_saved(*new Manager(m_manager)) // nobody may delete it
    {
    }

    void operate()
    {
        told.clear();
        m_model.told.clear();
        const int kind = m_run.below(100);
        if (kind < 22 && m_model.count() < 12)
        {
            const wstring action = m_run.pick(kActions);
            EXPECT_EQ(m_model.registerProcess(action), m_manager.registerProcess(action.c_str()));
        }
        else if (kind < 38)
        {
            const int key = m_run.oneIn(3) ? m_run.between(-1, 12) : m_model.count() - 1;
            EXPECT_EQ(m_model.deRegisterProcess(key), m_manager.deRegisterProcess(key));
        }
        else if (kind < 45 && m_model.displays() < 6)
        {
            const int display = m_run.below(kDisplays);
            EXPECT_EQ(m_model.registerDisplay(display), m_manager.registerDisplay(&m_displays[display]));
        }
        else if (kind < 50)
        {
            const int number = m_run.between(-1, 6);
            EXPECT_EQ(m_model.deRegisterDisplay(number), m_manager.deRegisterDisplay(number));
        }
        else if (kind < 58)
        {
            const bool allow = m_run.oneIn(2);
            EXPECT_EQ(0, m_manager.EnableCancel(allow));
            m_model.enableCancel(allow);
        }
        else if (kind < 62)
        {
            m_manager.cancelProcess();
            m_model.cancelProcess();
        }
        else if (kind < 64)
        {
            exchangeState();
        }
        else
        {
            const int key = m_run.between(-1, 12);
            const int percent = m_run.between(-5, 120);
            m_manager.increaseProgress(key, percent);
            m_model.increaseProgress(key, percent);
        }
    }

    void check() const
    {
        ASSERT_EQ(m_model.told, told);
        ASSERT_EQ(m_model.isCanceled, m_manager.getIsCanceled());
        ASSERT_EQ(m_model.count(), m_manager.getNumberOfActiveProcesses());
        for (int key = -1; key <= m_model.count(); ++key)
        {
            const bool isThere = key >= 0 && key < m_model.count();
            const Process expected = isThere ? m_model.process(key) : Process{0, 0, L""};
            const ProcessInfo info = m_manager.getProcessInfo(key);
            ASSERT_EQ(expected.key, info.key);
            ASSERT_EQ(expected.percent, info.percent);
            ASSERT_EQ(expected.action, info.action.getStringW());
            ASSERT_EQ(expected.percent, m_manager.getProcessCurentPercent(key));
            ASSERT_EQ(expected.action, m_manager.getProcessCurentAction(key).getStringW());
        }
        for (const wchar_t* const action : kActions)
        {
            ASSERT_EQ(m_model.keyForAction(action), m_manager.getKeyForAction(action));
        }
    }

    void leave()
    {
        m_manager.deRegisterProcess(0);
        while (m_manager.getNumberOfActiveProcesses() > 0)
        {
            m_manager.deRegisterProcess(0);
        }
        while (m_manager.deRegisterDisplay(0) == 1)
        {
        }
    }

private:
    /// Copies carry everything along and tell nobody.
    void exchangeState()
    {
        if (m_run.oneIn(2))
        {
            m_saved = m_manager;
            m_savedModel = m_model;
        }
        else
        {
            m_manager = m_saved;
            m_model = m_savedModel;
        }
        m_savedModel.told.clear();
        m_model.told.clear();
    }

    static constexpr const wchar_t* kActions[] = {L"Numbering", L"numbering", L"Writing", L"Reading", L""};

    SeededRun& m_run;
    Manager& m_manager;
    Manager& m_saved;
    Display m_displays[kDisplays] = {Display(0), Display(1), Display(2), Display(3)};
    Model m_model;
    Model m_savedModel;
};
} // namespace

TEST(qelProgressModel, AgreesWithPlainLists)
{
    SeededRun run;
    Progress progress(run);
    while (run.next())
    {
        progress.operate();
        progress.check();
    }
    progress.leave();
}
