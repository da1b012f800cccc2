// The static operations and the list of output windows behind them.

#include "ScreenDialogs.h"
#include "qelProgressCtrl.h"
#include "support/FailingAllocation.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace qelTest;

namespace
{
static_assert(std::is_copy_constructible<qelProgressCtrlWindowController>::value &&
                  std::is_copy_assignable<qelProgressCtrlWindowController>::value,
              "as every class of the library");
static_assert(!std::is_polymorphic<qelProgressCtrlWindowController>::value, "no virtual table");

qelProgressCtrlWindowController& controller()
{
    return *qelProgressCtrl::m_ProgressCtrlWindowController;
}

// Before main(): the list is there for the static initialisers of a host.
const long lengthAsLoaded = controller().windows().length();
const long slotsAsLoaded = controller().windows().physicalLength();
const bool startsWithDefault = controller().windows().first() == &controller().defaultWindow();
const int onAsLoaded = controller().defaultWindow().getOn();
const int activityAsLoaded = controller().defaultWindow().getActivity();

/// Writes down its calls and answers them with one number.
class Recorder : public qelProgressCtrlWindow
{
public:
    explicit Recorder(int answer, std::vector<std::string>* calls = nullptr, std::string name = "")
        : m_answer(answer)
        , m_calls(calls)
        , m_name(std::move(name))
    {
    }

    int activate(qelString title) override
    {
        note("activate " + std::string(title.getStringA()));
        // The copy is this window's own.
        title.empty();
        return m_answer;
    }

    int reset() override
    {
        note("reset");
        return m_answer;
    }

    int setPercentage(int percent, int force) override
    {
        note("percent " + std::to_string(percent) + " " + std::to_string(force));
        if (onPercentage)
        {
            onPercentage();
        }
        return m_answer;
    }

    int setTitle(const qelString& title) override
    {
        note("title " + std::string(title.getStringA()));
        return m_answer;
    }

    std::function<void()> onPercentage;

private:
    void note(const std::string& what)
    {
        if (m_calls != nullptr)
        {
            m_calls->push_back(m_name + ": " + what);
        }
    }

    const int m_answer;
    std::vector<std::string>* const m_calls;
    const std::string m_name;
};

class qelProgressControl : public testing::Test
{
protected:
    qelProgressControl() { restore(); }
    ~qelProgressControl() override
    {
        restore();
        EXPECT_TRUE(dialogsOf(GetCurrentThreadId()).empty());
    }

    void restore()
    {
        controller().windows().setLogicalLength(1);
        controller().windows()[0] = &controller().defaultWindow();
        builtIn.setTitle(L"");
        builtIn.setActivity(1);
        builtIn.reset();
        builtIn.switchOff();
    }

    std::vector<std::string> takeCalls()
    {
        std::vector<std::string> result;
        result.swap(calls);
        return result;
    }

    qelProgressCtrlWindow& builtIn = controller().defaultWindow();
    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

TEST_F(qelProgressControl, IsLoadedWithTheBuiltInWindowSwitchedOff)
{
    EXPECT_EQ(lengthAsLoaded, 1);
    EXPECT_EQ(slotsAsLoaded, 8);
    EXPECT_TRUE(startsWithDefault);
    EXPECT_EQ(onAsLoaded, 0);
    EXPECT_EQ(activityAsLoaded, 0);
    EXPECT_EQ(controller().windows().growLength(), 8);
}

TEST_F(qelProgressControl, HoldsTheListInFrontOfTheBuiltInWindow)
{
    const char* const start = reinterpret_cast<const char*>(&controller());
    EXPECT_EQ(reinterpret_cast<const char*>(&controller().windows()) - start, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&builtIn) - start, 24);
}

TEST_F(qelProgressControl, ANewListHoldsItsOwnBuiltInWindowSwitchedOff)
{
    qelProgressCtrlWindowController own;
    ASSERT_EQ(own.windows().length(), 1);
    EXPECT_EQ(own.windows()[0], &own.defaultWindow());
    EXPECT_NE(&own.defaultWindow(), &builtIn);
    EXPECT_EQ(own.defaultWindow().getOn(), 0);
}

TEST_F(qelProgressControl, ACopyOfTheListHasTheSameWindowsAndItsOwnBuiltInOne)
{
    qelProgressCtrlWindowController list;
    Recorder added(1);
    list.append(&added);
    list.windows().append(nullptr);
    list.windows().append(&builtIn); // a window of the host like any other here
    list.windows().append(&list.defaultWindow());
    list.defaultWindow().switchOn();
    list.defaultWindow().setTitle(L"Copied");
    added.switchOn();

    qelProgressCtrlWindowController assigned;
    Recorder gone(1);
    assigned.append(&gone);
    assigned = list;
    qelProgressCtrlWindowController copied(list);
    for (qelProgressCtrlWindowController* copy : {&copied, &assigned})
    {
        ASSERT_EQ(copy->windows().length(), 5);
        EXPECT_EQ(copy->windows()[0], &copy->defaultWindow());
        EXPECT_EQ(copy->windows()[1], &added);
        EXPECT_EQ(copy->windows()[2], nullptr);
        EXPECT_EQ(copy->windows()[3], &builtIn);
        EXPECT_EQ(copy->windows()[4], &copy->defaultWindow());
        EXPECT_EQ(copy->windows().growLength(), 8);
        EXPECT_EQ(copy->defaultWindow().getOn(), 1);
        qelString title;
        copy->defaultWindow().getTitle(title);
        EXPECT_STREQ(title.getStringW(), L"Copied");
    }

    // Independent from now on.
    EXPECT_EQ(copied.append(&gone), 5);
    EXPECT_EQ(list.windows().length(), 5);
    EXPECT_EQ(copied.defaultWindow().getOn(), 0);
    EXPECT_EQ(list.defaultWindow().getOn(), 1);
}

TEST_F(qelProgressControl, AListAssignedToItselfStaysAsItIs)
{
    qelProgressCtrlWindowController list;
    Recorder added(1);
    list.append(&added);
    const qelProgressCtrlWindowController& same = list;
    list = same;
    ASSERT_EQ(list.windows().length(), 2);
    EXPECT_EQ(list.windows()[0], &list.defaultWindow());
    EXPECT_EQ(list.windows()[1], &added);
}

TEST_F(qelProgressControl, AListStaysAsItIsWhenAnotherOneCannotBeTakenOver)
{
    qelProgressCtrlWindowController list;
    qelProgressCtrlWindowController other;
    Recorder added(1);
    other.append(&added);
    other.windows().setLogicalLength(20); // more than a list has room for at first
    other.defaultWindow().setTitle(L"Other");
    const int failures = qelTest::failEveryAllocation([&] { list = other; },
                                                      [&] {
                                                          EXPECT_EQ(list.windows().length(), 1);
                                                          qelString title;
                                                          list.defaultWindow().getTitle(title);
                                                          EXPECT_EQ(title.isEmpty(), 1);
                                                      });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(list.windows().length(), 20);
}

TEST_F(qelProgressControl, DoesNothingWhenNoWindowIsSwitchedOn)
{
    qelString title = L"before";
    int percent = 55;
    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 0);
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Title"), 0);
    EXPECT_EQ(qelProgressCtrl::setPercentage(50), 0);
    EXPECT_EQ(qelProgressCtrl::reset(), 0);
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 0);
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_STREQ(title.getStringW(), L"before");
    EXPECT_EQ(percent, 55);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
}

TEST_F(qelProgressControl, DoesNothingWithAnEmptyList)
{
    controller().windows().setLogicalLength(0);
    qelString title = L"before";
    int percent = 55;
    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 0);
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Title"), 0);
    EXPECT_EQ(qelProgressCtrl::setPercentage(50), 0);
    EXPECT_EQ(qelProgressCtrl::reset(), 0);
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 0);
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(1), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_STREQ(title.getStringW(), L"before");
    EXPECT_EQ(percent, 55);
}

TEST_F(qelProgressControl, RunsTheBuiltInDialogThroughItsWholeLife)
{
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::activate(L"Numbering"), 1);
    const HWND dialog = onlyDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(titleOf(dialog), L"Numbering");
    EXPECT_EQ(qelProgressCtrl::isActive(), 1);
    EXPECT_EQ(qelProgressCtrl::setPercentage(42), 1);
    EXPECT_EQ(percentTextOf(dialog), L"42%");
    EXPECT_EQ(qelProgressCtrl::setPercentage(40), 0);
    EXPECT_EQ(qelProgressCtrl::setPercentage(40, 1), 1);
    EXPECT_EQ(percentTextOf(dialog), L"40%");
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Writing"), 1);
    EXPECT_EQ(titleOf(dialog), L"Writing");
    qelString title;
    int percent = 0;
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 1);
    EXPECT_STREQ(title.getStringW(), L"Writing");
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 1);
    EXPECT_EQ(percent, 40);
    EXPECT_EQ(qelProgressCtrl::reset(), 1);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    // Reset counts what answered, and that needs no dialog.
    EXPECT_EQ(qelProgressCtrl::reset(), 1);
}

HWND WINAPI createNothing(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM)
{
    return nullptr;
}

TEST_F(qelProgressControl, CountsAWindowWithoutItsDialogAsFailed)
{
    const ImportHook hook("CreateDialogParamW", createNothing);
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Title"), 0);
}

TEST_F(qelProgressControl, CountsTheWindowsThatAnswer)
{
    Recorder yes(1, &calls, "yes");
    Recorder no(0, &calls, "no");
    Recorder other(-7, &calls, "other");
    Recorder off(1, &calls, "off");
    for (Recorder* window : {&yes, &no, &off, &other})
    {
        qelProgressCtrl::appendOutputWindow(window);
    }
    yes.switchOn();
    no.switchOn();
    other.switchOn();

    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 2);
    EXPECT_EQ(takeCalls(), (Calls{"yes: activate Title", "no: activate Title", "other: activate Title"}));
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Next"), 2);
    EXPECT_EQ(takeCalls(), (Calls{"yes: title Next", "no: title Next", "other: title Next"}));
    EXPECT_EQ(qelProgressCtrl::setPercentage(42), 2);
    EXPECT_EQ(takeCalls(), (Calls{"yes: percent 42 0", "no: percent 42 0", "other: percent 42 0"}));
    EXPECT_EQ(qelProgressCtrl::setPercentage(-300, 5), 2);
    EXPECT_EQ(takeCalls(), (Calls{"yes: percent -300 5", "no: percent -300 5", "other: percent -300 5"}));
    EXPECT_EQ(qelProgressCtrl::reset(), 2);
    EXPECT_EQ(takeCalls(), (Calls{"yes: reset", "no: reset", "other: reset"}));
}

TEST_F(qelProgressControl, AsksTheFirstWindowThatIsSwitchedOn)
{
    qelProgressCtrlWindow first;
    qelProgressCtrlWindow second;
    qelProgressCtrl::appendOutputWindow(&first);
    qelProgressCtrl::appendOutputWindow(&second);
    first.setTitle(L"First");
    first.setPercentage(11);
    second.setTitle(L"Second");
    second.setPercentage(22);
    second.switchOn();

    qelString title;
    int percent = 0;
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 1);
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 1);
    EXPECT_STREQ(title.getStringW(), L"Second");
    EXPECT_EQ(percent, 22);
    first.switchOn();
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 1);
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 1);
    EXPECT_STREQ(title.getStringW(), L"First");
    EXPECT_EQ(percent, 11);
}

TEST_F(qelProgressControl, PassesOverNullEntries)
{
    Recorder window(1, &calls, "window");
    qelProgressCtrl::appendOutputWindow(&window);
    window.switchOn();
    window.setActivity(1);
    controller().windows()[0] = nullptr;

    qelString title = L"before";
    int percent = 55;
    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 1);
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Title"), 1);
    EXPECT_EQ(qelProgressCtrl::setPercentage(5), 1);
    EXPECT_EQ(qelProgressCtrl::reset(), 1);
    EXPECT_EQ(qelProgressCtrl::getTitle(title), 1);
    EXPECT_EQ(qelProgressCtrl::getPercentage(percent), 1);
    EXPECT_EQ(qelProgressCtrl::isActive(), 1);
    EXPECT_EQ(calls.size(), 4U);

    // Nothing else is made active in the place of a null first entry.
    window.setActivity(0);
    EXPECT_EQ(qelProgressCtrl::isActive(1), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(nullptr), -1);
    EXPECT_EQ(window.getOn(), 0);
    qelProgressCtrlWindow next;
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&next), 2);
}

TEST_F(qelProgressControl, CountsActiveWindowsThatAreSwitchedOn)
{
    qelProgressCtrlWindow first;
    qelProgressCtrlWindow second;
    qelProgressCtrl::appendOutputWindow(&first);
    qelProgressCtrl::appendOutputWindow(&second);
    first.setActivity(1);
    second.setActivity(1);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    second.switchOn();
    EXPECT_EQ(qelProgressCtrl::isActive(), 1);
    first.switchOn();
    EXPECT_EQ(qelProgressCtrl::isActive(), 2);
    EXPECT_EQ(qelProgressCtrl::isActive(1), 2);
    EXPECT_EQ(builtIn.getOn(), 0);
    // 1 is the only number that means active.
    first.setActivity(2);
    EXPECT_EQ(qelProgressCtrl::isActive(), 1);
}

TEST_F(qelProgressControl, MakesTheFirstWindowActiveForTheNextQuestion)
{
    EXPECT_EQ(qelProgressCtrl::isActive(1), 0);
    EXPECT_EQ(builtIn.getOn(), 1);
    EXPECT_EQ(builtIn.getActivity(), 1);
    EXPECT_EQ(qelProgressCtrl::isActive(0), 1);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);

    // There is no dialog, and nobody minds.
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Title"), 1);
    EXPECT_EQ(qelProgressCtrl::setPercentage(10), 1);
    EXPECT_EQ(qelProgressCtrl::reset(), 1);
    EXPECT_EQ(qelProgressCtrl::isActive(0), 0);
    EXPECT_EQ(builtIn.getOn(), 1);
}

TEST_F(qelProgressControl, MakesNothingActiveUnlessAsked)
{
    EXPECT_EQ(qelProgressCtrl::isActive(0), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_EQ(builtIn.getOn(), 0);
    EXPECT_EQ(builtIn.getActivity(), 0);
}

TEST_F(qelProgressControl, AppendsAWindowAndSwitchesAllOthersOff)
{
    qelProgressCtrlWindow first;
    qelProgressCtrlWindow second;
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&first), 1);
    EXPECT_EQ(builtIn.getOn(), 0);
    EXPECT_EQ(first.getOn(), 0);

    // A new window keeps its own switch.
    first.switchOn();
    builtIn.switchOn();
    second.switchOn();
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&second), 2);
    EXPECT_EQ(builtIn.getOn(), 0);
    EXPECT_EQ(first.getOn(), 0);
    EXPECT_EQ(second.getOn(), 1);
    EXPECT_EQ(controller().windows().length(), 3);
}

TEST_F(qelProgressControl, LeavesAWindowItHasAlreadyWhereItIsAndOff)
{
    qelProgressCtrlWindow first;
    qelProgressCtrlWindow second;
    qelProgressCtrl::appendOutputWindow(&first);
    qelProgressCtrl::appendOutputWindow(&second);
    for (qelProgressCtrlWindow* window : {&builtIn, &first, &second})
    {
        window->switchOn();
    }
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&first), 1);
    EXPECT_EQ(controller().windows().length(), 3);
    for (const qelProgressCtrlWindow* window : {&builtIn, &first, &second})
    {
        EXPECT_EQ(window->getOn(), 0);
    }
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&builtIn), 0);
}

TEST_F(qelProgressControl, RefusesNullButSwitchesAllOff)
{
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(nullptr), -1);
    EXPECT_EQ(controller().windows().length(), 1);
    EXPECT_EQ(builtIn.getOn(), 0);
}

TEST_F(qelProgressControl, SwitchesTheBuiltInWindowOffForANewOneThoughItIsNoLongerInTheList)
{
    qelProgressCtrlWindow next;
    controller().windows()[0] = nullptr;
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(nullptr), -1);
    EXPECT_EQ(builtIn.getOn(), 1);
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&next), 1);
    EXPECT_EQ(builtIn.getOn(), 0);
    builtIn.switchOn();
    EXPECT_EQ(qelProgressCtrl::appendOutputWindow(&next), 1);
    EXPECT_EQ(builtIn.getOn(), 1);
}

TEST_F(qelProgressControl, GrowsByEight)
{
    std::vector<std::unique_ptr<qelProgressCtrlWindow>> more;
    for (int i = 1; i <= 20; ++i)
    {
        more.push_back(std::make_unique<qelProgressCtrlWindow>());
        EXPECT_EQ(qelProgressCtrl::appendOutputWindow(more.back().get()), i);
        EXPECT_EQ(controller().windows()[i], more.back().get());
    }
    EXPECT_EQ(controller().windows().physicalLength(), 24);
}

TEST_F(qelProgressControl, TwoWindowsOfTheListShareOneDialog)
{
    qelProgressCtrlWindow second;
    qelProgressCtrl::appendOutputWindow(&second);
    builtIn.switchOn();
    second.switchOn();
    EXPECT_EQ(qelProgressCtrl::activate(L"Title"), 2);
    ASSERT_NE(onlyDialog(), nullptr);
    EXPECT_EQ(qelProgressCtrl::isActive(), 2);
    EXPECT_EQ(qelProgressCtrl::setPercentage(10), 2);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"10%");
    EXPECT_EQ(qelProgressCtrl::reset(), 2);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
}

TEST_F(qelProgressControl, LeavesTheDialogWhenItsWindowIsSwitchedOff)
{
    builtIn.switchOn();
    qelProgressCtrl::activate(L"Title");
    builtIn.switchOff();
    EXPECT_EQ(qelProgressCtrl::reset(), 0);
    EXPECT_EQ(qelProgressCtrl::isActive(), 0);
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressControl, SurvivesAWindowThatAppendsOthersFromInsideACall)
{
    Recorder window(1, &calls, "window");
    std::vector<std::unique_ptr<Recorder>> more;
    qelProgressCtrl::appendOutputWindow(&window);
    window.switchOn();
    window.onPercentage = [&] {
        for (int i = 0; i < 10; ++i)
        {
            more.push_back(std::make_unique<Recorder>(1, &calls, std::to_string(i)));
            qelProgressCtrl::appendOutputWindow(more.back().get());
        }
        more[9]->switchOn();
    };
    EXPECT_EQ(qelProgressCtrl::setPercentage(5), 2);
    EXPECT_EQ(calls, (Calls{"window: percent 5 0", "9: percent 5 0"}));
}

TEST_F(qelProgressControl, StaysHarmlessAfterTheUserHasEndedTheDialog)
{
    builtIn.switchOn();
    qelProgressCtrl::activate(L"Title");
    PostMessageW(onlyDialog(), WM_COMMAND, IDCANCEL, 0);
    pumpMessages();
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
    EXPECT_EQ(qelProgressCtrl::isActive(), 1);
    EXPECT_EQ(qelProgressCtrl::setPercentage(50), 1);
    EXPECT_EQ(qelProgressCtrl::setTitle(L"Other"), 1);
    EXPECT_EQ(qelProgressCtrl::reset(), 1);
    EXPECT_EQ(qelProgressCtrl::activate(L"Again"), 1);
    EXPECT_NE(onlyDialog(), nullptr);
}
} // namespace
