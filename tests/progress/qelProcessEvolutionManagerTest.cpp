// The register of processes and displays. Each test starts from the state that the library is loaded with.

#include "qelProcessEvolutionManager.h"
#include "support/FailingAllocation.h"
#include "support/PrivateMembers.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
using Manager = qelProcessEvolutionManager;
using Told = std::vector<std::string>;

template <class T, class U> constexpr bool isSame = std::is_same<T, U>::value;

static_assert(isSame<decltype(ProcessInfo::key), int> && isSame<decltype(ProcessInfo::percent), int> &&
                  isSame<decltype(ProcessInfo::action), qelString>,
              "a plain record");
static_assert(std::is_polymorphic<Manager>::value && !std::is_destructible<Manager>::value &&
                  !std::is_default_constructible<Manager>::value,
              "made and destroyed by itself only");
static_assert(std::is_copy_assignable<Manager>::value, "all its state can be taken over");
static_assert(std::is_abstract<ProgressDisplayProtocol>::value && sizeof(ProgressDisplayProtocol) == sizeof(void*),
              "an interface without data");
static_assert(isSame<decltype(&ProgressDisplayProtocol::setProgress), void (ProgressDisplayProtocol::*)(int, int)> &&
                  isSame<decltype(&ProgressDisplayProtocol::addProcess),
                         void (ProgressDisplayProtocol::*)(int, qelString, bool)> &&
                  isSame<decltype(&ProgressDisplayProtocol::removeProcess), void (ProgressDisplayProtocol::*)(int)>,
              "what displays implement");
} // namespace

struct ManagerProcesses
{
    using type = qelArray<ProcessInfo> Manager::*;
    friend type member(ManagerProcesses);
};

struct ManagerActions
{
    using type = qelStringClassArray Manager::*;
    friend type member(ManagerActions);
};

struct ManagerDisplays
{
    using type = qelArray<ProgressDisplayProtocol*> Manager::*;
    friend type member(ManagerDisplays);
};

struct ManagerIsCanceled
{
    using type = bool Manager::*;
    friend type member(ManagerIsCanceled);
};

struct ManagerCancelEnabled
{
    using type = bool Manager::*;
    friend type member(ManagerCancelEnabled);
};

struct ManagerCancelAllowed
{
    using type = bool Manager::*;
    friend type member(ManagerCancelAllowed);
};

template struct PrivateMember<ManagerProcesses, &Manager::m_processes>;
template struct PrivateMember<ManagerActions, &Manager::m_actions>;
template struct PrivateMember<ManagerDisplays, &Manager::m_displays>;
template struct PrivateMember<ManagerIsCanceled, &Manager::m_isCanceled>;
template struct PrivateMember<ManagerCancelEnabled, &Manager::m_cancelEnabled>;
template struct PrivateMember<ManagerCancelAllowed, &Manager::m_cancelAllowed>;

namespace
{
// Before main(): the register is there for the static initialisers of a host.
const Manager* const asLoaded = new Manager(*Manager::getProcessEvolutionManager());

std::string narrow(const qelString& text)
{
    return text.getStringA();
}

std::string described(const ProcessInfo& info)
{
    return std::to_string(info.key) + " " + narrow(info.action) + " " + std::to_string(info.percent);
}

// Processes; action texts; which of the flags enabled, allowed and canceled are set; number of displays.
std::string described(const Manager& manager)
{
    std::string text;
    for (int i = 0; i < manager.getNumberOfActiveProcesses(); ++i)
    {
        text += (i == 0 ? "" : ", ") + described(manager.getProcessInfo(i));
    }
    text += ";";
    const qelStringClassArray& actions = manager.*member(ManagerActions());
    for (long i = 0; i < actions.length(); ++i)
    {
        text += " " + narrow(actions[i]);
    }
    text += "; ";
    text += manager.*member(ManagerCancelEnabled()) ? "E" : "-";
    text += manager.*member(ManagerCancelAllowed()) ? "A" : "-";
    text += manager.*member(ManagerIsCanceled()) ? "C" : "-";
    return text + "; " + std::to_string((manager.*member(ManagerDisplays())).length());
}

/// Writes down what it is told, and can answer with calls of its own.
class Display final : public ProgressDisplayProtocol
{
public:
    Display(std::string name, Told& told)
        : m_name(std::move(name))
        , m_told(told)
    {
    }

    void setProgress(int key, int percent) override
    {
        note("progress " + std::to_string(key) + " " + std::to_string(percent));
        answer(onProgress, key);
    }

    void addProcess(int key, qelString action, bool cancelAllowed) override
    {
        note("add " + std::to_string(key) + " " + narrow(action) + (cancelAllowed ? " cancel" : ""));
        answer(onAdd, key);
    }

    void removeProcess(int key) override
    {
        note("remove " + std::to_string(key));
        answer(onRemove, key);
    }

    using Answer = std::function<void(int)>;
    Answer onProgress;
    Answer onAdd;
    Answer onRemove;

private:
    void note(const std::string& what) { m_told.push_back(m_name.empty() ? what : m_name + ": " + what); }

    // Copied: the answer may destroy the display.
    static void answer(Answer how, int key)
    {
        if (how)
        {
            how(key);
        }
    }

    const std::string m_name;
    Told& m_told;
};

class qelProcessEvolution : public testing::Test
{
protected:
    qelProcessEvolution() { manager = *asLoaded; }
    ~qelProcessEvolution() override { manager = *asLoaded; }

    Told takeTold()
    {
        Told result;
        result.swap(told);
        return result;
    }

    Manager& manager = *Manager::getProcessEvolutionManager();
    Told told;
    Display a{"a", told};
    Display b{"b", told};
    Display c{"c", told};
};

// ---- The register itself

TEST_F(qelProcessEvolution, IsOneForTheProcessAndEmptyWhenLoaded)
{
    EXPECT_EQ(Manager::getProcessEvolutionManager(), &manager);
    EXPECT_EQ(described(*asLoaded), ";; ---; 0");
    EXPECT_EQ(asLoaded->getNumberOfActiveProcesses(), 0);
    EXPECT_FALSE(asLoaded->getIsCanceled());
    EXPECT_EQ((asLoaded->*member(ManagerProcesses())).growLength(), 8);
    EXPECT_EQ((asLoaded->*member(ManagerDisplays())).growLength(), 8);
}

TEST_F(qelProcessEvolution, HoldsItsFieldsInTheStatedOrder)
{
    const auto offset = [this](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&manager);
    };
    EXPECT_EQ(offset(&(manager.*member(ManagerProcesses()))), 8);
    EXPECT_EQ(offset(&(manager.*member(ManagerDisplays()))), 32);
    EXPECT_EQ(offset(&(manager.*member(ManagerActions()))), 56);
    EXPECT_EQ(offset(&(manager.*member(ManagerIsCanceled()))), 64);
    EXPECT_EQ(offset(&(manager.*member(ManagerCancelEnabled()))), 65);
    EXPECT_EQ(offset(&(manager.*member(ManagerCancelAllowed()))), 66);
}

TEST_F(qelProcessEvolution, CallsDisplaysBySlotsInTheStatedOrder)
{
    Display display("", told);
    ProgressDisplayProtocol* const object = &display;
    void** const slots = *reinterpret_cast<void***>(object);
    reinterpret_cast<void (*)(void*, int, int)>(slots[0])(object, 3, 42);
    reinterpret_cast<void (*)(void*, int, qelString, bool)>(slots[1])(object, 4, L"Cutting", true);
    reinterpret_cast<void (*)(void*, int)>(slots[2])(object, 5);
    EXPECT_EQ(told, (Told{"progress 3 42", "add 4 Cutting cancel", "remove 5"}));
}

TEST_F(qelProcessEvolution, CopiesAllListsAndFlags)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.cancelProcess();

    Manager* const copy = new Manager(manager);
    EXPECT_EQ(described(*copy), "0 Main 0; Main Sub; EAC; 1");
    copy->increaseProgress(0, 7);
    EXPECT_EQ(copy->getProcessCurentPercent(0), 7);
    EXPECT_EQ(manager.getProcessCurentPercent(0), 0);

    takeTold();
    Manager* const assigned = new Manager(*asLoaded);
    *assigned = *copy;
    EXPECT_EQ(described(*assigned), "0 Main 7; Main Sub; EAC; 1");
    *copy = *asLoaded;
    EXPECT_EQ(described(*copy), ";; ---; 0");
    EXPECT_EQ(described(*assigned), "0 Main 7; Main Sub; EAC; 1");
    EXPECT_EQ(told, Told());
}

TEST_F(qelProcessEvolution, KeepsItsStateWhenAssignedToItself)
{
    manager.registerProcess(L"Main");
    const Manager& same = manager;
    manager = same;
    EXPECT_EQ(described(manager), "0 Main 0; Main; ---; 0");
}

// ---- Processes

TEST_F(qelProcessEvolution, GivesKeysFromZero)
{
    EXPECT_EQ(manager.registerProcess(L"Main"), 0);
    EXPECT_EQ(manager.registerProcess(L"Sub"), 1);
    EXPECT_EQ(manager.registerProcess(L""), 2);
    EXPECT_EQ(manager.getNumberOfActiveProcesses(), 3);
    EXPECT_EQ(described(manager), "0 Main 0, 1 Sub 0, 2  0; Main Sub ; ---; 0");
}

TEST_F(qelProcessEvolution, KeepsTheKeyInTheRecordWhenProcessesMoveDown)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    manager.increaseProgress(1, 11);
    manager.increaseProgress(2, 22);
    EXPECT_EQ(manager.deRegisterProcess(0), 1);

    EXPECT_EQ(manager.getNumberOfActiveProcesses(), 2);
    EXPECT_EQ(described(manager.getProcessInfo(0)), "1 First 11");
    EXPECT_EQ(described(manager.getProcessInfo(1)), "2 Second 22");
    EXPECT_EQ(narrow(manager.getProcessCurentAction(0)), "First");
    EXPECT_EQ(manager.getProcessCurentPercent(1), 22);
    EXPECT_EQ(manager.getKeyForAction(L"Second"), 1);
    // The next one gets the number of processes, which is in use as an old key.
    EXPECT_EQ(manager.registerProcess(L"Third"), 2);
}

TEST_F(qelProcessEvolution, RemovesProcessesFromTheMiddleAndTheEnd)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    EXPECT_EQ(manager.deRegisterProcess(1), 1);
    EXPECT_EQ(described(manager), "0 Main 0, 2 Second 0; Main Second; ---; 0");
    EXPECT_EQ(manager.deRegisterProcess(1), 1);
    EXPECT_EQ(described(manager), "0 Main 0; Main; ---; 0");
}

TEST_F(qelProcessEvolution, StoresAnyPercentageAndReplacesTheLastOne)
{
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    takeTold();
    for (int percent : {30, 20, -5, 1000})
    {
        manager.increaseProgress(0, percent);
        EXPECT_EQ(manager.getProcessCurentPercent(0), percent);
    }
    manager.increaseProgress(0, 1000);
    EXPECT_EQ(told, (Told{"a: progress 0 30", "a: progress 0 20", "a: progress 0 -5", "a: progress 0 1000",
                          "a: progress 0 1000"}));
}

TEST_F(qelProcessEvolution, FindsTheFirstOfEqualActionsWithRegardToCase)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"sub");
    manager.registerProcess(L"Sub");
    manager.registerProcess(L"Sub");
    EXPECT_EQ(manager.getKeyForAction(L"Sub"), 2);
    EXPECT_EQ(manager.getKeyForAction(L"sub"), 1);
    EXPECT_EQ(manager.getKeyForAction(L"SUB"), -1);
    EXPECT_EQ(manager.getKeyForAction(L"Su"), -1);
    EXPECT_EQ(manager.getKeyForAction(L""), -1);
}

TEST_F(qelProcessEvolution, HandsOutCopies)
{
    manager.registerProcess(L"Main");
    ProcessInfo info = manager.getProcessInfo(0);
    info.percent = 99;
    info.action = L"Other";
    EXPECT_EQ(described(manager), "0 Main 0; Main; ---; 0");
}

TEST_F(qelProcessEvolution, HoldsManyProcessesAndDisplays)
{
    std::vector<std::unique_ptr<Display>> displays;
    for (int i = 0; i < 50; ++i)
    {
        displays.push_back(std::make_unique<Display>(std::to_string(i), told));
        EXPECT_EQ(manager.registerDisplay(displays.back().get()), i);
    }
    for (int i = 0; i < 50; ++i)
    {
        EXPECT_EQ(manager.registerProcess(std::to_string(i).c_str()), i);
    }
    takeTold();
    manager.increaseProgress(49, 1);
    ASSERT_EQ(told.size(), 50U);
    for (size_t i = 0; i < 50; ++i)
    {
        EXPECT_EQ(told[i], std::to_string(i) + ": progress 49 1");
    }
    EXPECT_EQ(manager.getKeyForAction(L"49"), 49);
}

// ---- Displays

TEST_F(qelProcessEvolution, TellsALateDisplayTheRunningProcesses)
{
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.increaseProgress(0, 10);
    manager.increaseProgress(1, 20);
    manager.registerDisplay(&a);
    // Deliberately never with the leave to cancel, not even for a main process that has it.
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: progress 0 10", "a: add 1 Sub", "a: progress 1 20"}));
}

TEST_F(qelProcessEvolution, TellsALateDisplayPositionsAndNotTheKeysOfRecords)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    manager.deRegisterProcess(1);
    manager.registerDisplay(&a);
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: progress 0 0", "a: add 1 Second", "a: progress 1 0"}));
}

TEST_F(qelProcessEvolution, TellsOnlyTheNewDisplayWhatRunsAlready)
{
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    takeTold();
    EXPECT_EQ(manager.registerDisplay(&b), 1);
    EXPECT_EQ(told, (Told{"b: add 0 Main", "b: progress 0 0"}));
}

TEST_F(qelProcessEvolution, TellsDisplaysInTheirOrder)
{
    manager.registerDisplay(&b);
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.increaseProgress(1, 5);
    EXPECT_EQ(takeTold(), (Told{"b: add 0 Main cancel", "a: add 0 Main cancel", "b: add 1 Sub", "a: add 1 Sub",
                                "b: progress 1 5", "a: progress 1 5"}));
    manager.deRegisterProcess(1);
    EXPECT_EQ(takeTold(), (Told{"b: remove 1", "a: remove 1"}));
    // Process by process, not display by display.
    manager.registerProcess(L"Sub");
    takeTold();
    manager.cancelProcess();
    EXPECT_EQ(takeTold(), (Told{"b: remove 0", "a: remove 0", "b: remove 1", "a: remove 1"}));
}

TEST_F(qelProcessEvolution, TellsOfTheLeaveToCancelOnlyAsItWasGiven)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(false);
    manager.registerProcess(L"Main");
    EXPECT_EQ(told, Told{"a: add 0 Main"});
    // Deliberately possible all the same.
    manager.cancelProcess();
    EXPECT_TRUE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, MovesLaterDisplaysDownWhenOneGoes)
{
    EXPECT_EQ(manager.registerDisplay(&a), 0);
    EXPECT_EQ(manager.registerDisplay(&b), 1);
    EXPECT_EQ(manager.registerDisplay(&c), 2);
    EXPECT_EQ(manager.deRegisterDisplay(1), 1);
    EXPECT_EQ(manager.deRegisterDisplay(2), 0);
    manager.registerProcess(L"Main");
    EXPECT_EQ(takeTold(), (Told{"a: add 0 Main", "c: add 0 Main"}));
    EXPECT_EQ(manager.deRegisterDisplay(1), 1);
    EXPECT_EQ(manager.registerDisplay(&b), 1);
    EXPECT_EQ(takeTold(), (Told{"b: add 0 Main", "b: progress 0 0"}));
}

TEST_F(qelProcessEvolution, RefusesDisplayNumbersThatAreNotThere)
{
    manager.registerDisplay(&a);
    EXPECT_EQ(manager.deRegisterDisplay(-1), 0);
    EXPECT_EQ(manager.deRegisterDisplay(-2147483647 - 1), 0);
    EXPECT_EQ(manager.deRegisterDisplay(1), 0);
    EXPECT_EQ(manager.deRegisterDisplay(2147483647), 0);
    EXPECT_EQ(manager.deRegisterDisplay(0), 1);
    EXPECT_EQ(manager.deRegisterDisplay(0), 0);
}

TEST_F(qelProcessEvolution, TellsADisplayThatIsRegisteredTwiceTwice)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: add 0 Main"}));
}

TEST_F(qelProcessEvolution, NumbersANullDisplayButNeverCallsIt)
{
    manager.registerProcess(L"Main");
    EXPECT_EQ(manager.registerDisplay(nullptr), 0);
    EXPECT_EQ(manager.registerDisplay(&a), 1);
    takeTold();
    manager.increaseProgress(0, 1);
    EXPECT_EQ(told, Told{"a: progress 0 1"});
    EXPECT_EQ(manager.deRegisterDisplay(0), 1);
    manager.increaseProgress(0, 2);
    EXPECT_EQ(told.back(), "a: progress 0 2");
}

// ---- The cycle

TEST_F(qelProcessEvolution, RunsAWholeCycleAndIsReadyForTheNext)
{
    manager.registerDisplay(&a);
    EXPECT_EQ(manager.EnableCancel(true), 0);
    EXPECT_EQ(manager.registerProcess(L"Main"), 0);
    EXPECT_EQ(manager.registerProcess(L"Sub"), 1);
    manager.increaseProgress(1, 50);
    EXPECT_FALSE(manager.getIsCanceled());
    manager.cancelProcess();
    EXPECT_TRUE(manager.getIsCanceled());
    EXPECT_EQ(manager.registerProcess(L"Late"), -1);
    EXPECT_EQ(manager.deRegisterProcess(1), 0);
    EXPECT_EQ(manager.deRegisterProcess(0), 1);
    EXPECT_EQ(told, (Told{"a: add 0 Main cancel", "a: add 1 Sub", "a: progress 1 50", "a: remove 0", "a: remove 1",
                          "a: remove 0"}));
    EXPECT_FALSE(manager.getIsCanceled());

    // Cancelling has to be enabled anew.
    takeTold();
    EXPECT_EQ(manager.registerProcess(L"Next"), 0);
    EXPECT_EQ(told, Told{"a: add 0 Next"});
    manager.cancelProcess();
    EXPECT_FALSE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, ForgetsTheCancelWhenKeyZeroGoesThoughProcessesRemain)
{
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.deRegisterProcess(0);
    EXPECT_EQ(described(manager), "1 Sub 0; Sub; ---; 0");
    EXPECT_EQ(manager.EnableCancel(true), 0);
    EXPECT_EQ(described(manager), "1 Sub 0; Sub; ---; 0");
}

TEST_F(qelProcessEvolution, KeepsTheTextsOfCancelledSubProcesses)
{
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    manager.cancelProcess();
    EXPECT_EQ(manager.getNumberOfActiveProcesses(), 1);
    // Deliberate: only the list of processes is cut.
    EXPECT_EQ(manager.getKeyForAction(L"Second"), 2);
    EXPECT_EQ(narrow(manager.getProcessCurentAction(2)), "");

    // They stay in front of later ones and move down as the processes do.
    manager.deRegisterProcess(0);
    EXPECT_EQ(described(manager), "; First Second; ---; 0");
    EXPECT_EQ(manager.registerProcess(L"Next"), 0);
    EXPECT_EQ(manager.getKeyForAction(L"Next"), 2);
    EXPECT_EQ(narrow(manager.getProcessCurentAction(0)), "Next");
    manager.deRegisterProcess(0);
    EXPECT_EQ(described(manager), "; Second Next; ---; 0");
}

// ---- Every operation in every state

/// What an operation comes to in one state.
struct Outcome
{
    const char* result;
    Told told;
    const char* after; ///< the register afterwards; null when it is as before
};

struct State
{
    const char* name;
    const char* described;
    std::function<void(Manager&)> enter;
};

struct Operation
{
    const char* name;
    std::function<std::string(Manager&)> run;
    std::vector<Outcome> outcomes; ///< one a state
};

std::string text(bool value)
{
    return value ? "true" : "false";
}

void start(Manager& manager)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.increaseProgress(0, 10);
    manager.increaseProgress(1, 20);
}

TEST_F(qelProcessEvolution, DoesInEveryStateWhatTheTableSays)
{
    Told lateTold;
    Display late("late", lateTold);
    const std::string nothing = "0  0"; // key, empty action, percent
    const char* const noInfo = nothing.c_str();
    const Outcome same0 = {"0", {}, nullptr};
    const Outcome same1 = {"1", {}, nullptr};
    const Outcome none = {"-1", {}, nullptr};
    const Outcome quiet = {"", {}, nullptr};
    const Outcome empty = {"", {}, nullptr};
    const Outcome isFalse = {"false", {}, nullptr};

    const std::vector<State> states = {
        {"idle", ";; ---; 1", [](Manager&) {}},
        {"idle, cancel enabled", ";; EA-; 1", [](Manager& m) { m.EnableCancel(true); }},
        {"running", "0 Main 10, 1 Sub 20; Main Sub; ---; 1", [](Manager& m) { start(m); }},
        {"running, cancel enabled", "0 Main 10, 1 Sub 20; Main Sub; EA-; 1",
         [](Manager& m) {
             m.EnableCancel(true);
             start(m);
         }},
        {"cancelled", "0 Main 10; Main Sub; EAC; 1",
         [](Manager& m) {
             m.EnableCancel(true);
             start(m);
             m.cancelProcess();
         }},
    };

    const std::vector<Operation> operations = {
        {"registerProcess",
         [](Manager& m) { return std::to_string(m.registerProcess(L"New")); },
         {{"0", {"add 0 New"}, "0 New 0; New; ---; 1"},
          {"0", {"add 0 New cancel"}, "0 New 0; New; EA-; 1"},
          {"2", {"add 2 New"}, "0 Main 10, 1 Sub 20, 2 New 0; Main Sub New; ---; 1"},
          {"2", {"add 2 New"}, "0 Main 10, 1 Sub 20, 2 New 0; Main Sub New; EA-; 1"},
          none}},
        {"deRegisterProcess(-1)",
         [](Manager& m) { return std::to_string(m.deRegisterProcess(-1)); },
         {same0, same0, same0, same0, same0}},
        {"deRegisterProcess(0)",
         [](Manager& m) { return std::to_string(m.deRegisterProcess(0)); },
         {{"1", {"remove 0"}, nullptr},
          {"1", {"remove 0"}, ";; ---; 1"},
          {"1", {"remove 0"}, "1 Sub 20; Sub; ---; 1"},
          {"1", {"remove 0"}, "1 Sub 20; Sub; ---; 1"},
          {"1", {"remove 0"}, "; Sub; ---; 1"}}},
        {"deRegisterProcess(1)",
         [](Manager& m) { return std::to_string(m.deRegisterProcess(1)); },
         {{"1", {"remove 1"}, nullptr},
          {"1", {"remove 1"}, nullptr},
          {"1", {"remove 1"}, "0 Main 10; Main; ---; 1"},
          {"1", {"remove 1"}, "0 Main 10; Main; EA-; 1"},
          same0}},
        {"deRegisterProcess(2)",
         [](Manager& m) { return std::to_string(m.deRegisterProcess(2)); },
         {{"1", {"remove 2"}, nullptr},
          {"1", {"remove 2"}, nullptr},
          {"1", {"remove 2"}, nullptr},
          {"1", {"remove 2"}, nullptr},
          same0}},
        {"registerDisplay",
         [&late](Manager& m) { return std::to_string(m.registerDisplay(&late)); },
         {{"1", {}, ";; ---; 2"},
          {"1", {}, ";; EA-; 2"},
          {"1",
           {"late: add 0 Main", "late: progress 0 10", "late: add 1 Sub", "late: progress 1 20"},
           "0 Main 10, 1 Sub 20; Main Sub; ---; 2"},
          {"1",
           {"late: add 0 Main", "late: progress 0 10", "late: add 1 Sub", "late: progress 1 20"},
           "0 Main 10, 1 Sub 20; Main Sub; EA-; 2"},
          {"1", {"late: add 0 Main", "late: progress 0 10"}, "0 Main 10; Main Sub; EAC; 2"}}},
        {"deRegisterDisplay(-1)",
         [](Manager& m) { return std::to_string(m.deRegisterDisplay(-1)); },
         {same0, same0, same0, same0, same0}},
        {"deRegisterDisplay(0)",
         [](Manager& m) { return std::to_string(m.deRegisterDisplay(0)); },
         {{"1", {}, ";; ---; 0"},
          {"1", {}, ";; EA-; 0"},
          {"1", {}, "0 Main 10, 1 Sub 20; Main Sub; ---; 0"},
          {"1", {}, "0 Main 10, 1 Sub 20; Main Sub; EA-; 0"},
          {"1", {}, "0 Main 10; Main Sub; EAC; 0"}}},
        {"deRegisterDisplay(1)",
         [](Manager& m) { return std::to_string(m.deRegisterDisplay(1)); },
         {same0, same0, same0, same0, same0}},
        {"increaseProgress(-1, 33)",
         [](Manager& m) { return m.increaseProgress(-1, 33), std::string(); },
         {quiet, quiet, quiet, quiet, quiet}},
        {"increaseProgress(0, 33)",
         [](Manager& m) { return m.increaseProgress(0, 33), std::string(); },
         {quiet,
          quiet,
          {"", {"progress 0 33"}, "0 Main 33, 1 Sub 20; Main Sub; ---; 1"},
          {"", {"progress 0 33"}, "0 Main 33, 1 Sub 20; Main Sub; EA-; 1"},
          {"", {"progress 0 33"}, "0 Main 33; Main Sub; EAC; 1"}}},
        {"increaseProgress(1, 33)",
         [](Manager& m) { return m.increaseProgress(1, 33), std::string(); },
         {quiet,
          quiet,
          {"", {"progress 1 33"}, "0 Main 10, 1 Sub 33; Main Sub; ---; 1"},
          {"", {"progress 1 33"}, "0 Main 10, 1 Sub 33; Main Sub; EA-; 1"},
          quiet}},
        {"increaseProgress(2, 33)",
         [](Manager& m) { return m.increaseProgress(2, 33), std::string(); },
         {quiet, quiet, quiet, quiet, quiet}},
        {"cancelProcess",
         [](Manager& m) { return m.cancelProcess(), std::string(); },
         {quiet,
          quiet,
          quiet,
          {"", {"remove 0", "remove 1"}, "0 Main 10; Main Sub; EAC; 1"},
          {"", {"remove 0"}, nullptr}}},
        {"getIsCanceled",
         [](Manager& m) { return text(m.getIsCanceled()); },
         {isFalse, isFalse, isFalse, isFalse, {"true", {}, nullptr}}},
        {"EnableCancel(true)",
         [](Manager& m) { return std::to_string(m.EnableCancel(true)); },
         {{"0", {}, ";; EA-; 1"}, same0, same0, same0, same0}},
        {"EnableCancel(false)",
         [](Manager& m) { return std::to_string(m.EnableCancel(false)); },
         {{"0", {}, ";; E--; 1"}, {"0", {}, ";; E--; 1"}, same0, same0, same0}},
        {"getNumberOfActiveProcesses",
         [](Manager& m) { return std::to_string(m.getNumberOfActiveProcesses()); },
         {same0, same0, {"2", {}, nullptr}, {"2", {}, nullptr}, same1}},
        {"getProcessInfo(-1)",
         [](Manager& m) { return described(m.getProcessInfo(-1)); },
         {{noInfo, {}, nullptr},
          {noInfo, {}, nullptr},
          {noInfo, {}, nullptr},
          {noInfo, {}, nullptr},
          {noInfo, {}, nullptr}}},
        {"getProcessInfo(0)",
         [](Manager& m) { return described(m.getProcessInfo(0)); },
         {{noInfo, {}, nullptr},
          {noInfo, {}, nullptr},
          {"0 Main 10", {}, nullptr},
          {"0 Main 10", {}, nullptr},
          {"0 Main 10", {}, nullptr}}},
        {"getProcessInfo(1)",
         [](Manager& m) { return described(m.getProcessInfo(1)); },
         {{noInfo, {}, nullptr},
          {noInfo, {}, nullptr},
          {"1 Sub 20", {}, nullptr},
          {"1 Sub 20", {}, nullptr},
          {noInfo, {}, nullptr}}},
        {"getProcessCurentAction(-1)",
         [](Manager& m) { return narrow(m.getProcessCurentAction(-1)); },
         {empty, empty, empty, empty, empty}},
        {"getProcessCurentAction(0)",
         [](Manager& m) { return narrow(m.getProcessCurentAction(0)); },
         {empty, empty, {"Main", {}, nullptr}, {"Main", {}, nullptr}, {"Main", {}, nullptr}}},
        {"getProcessCurentAction(1)",
         [](Manager& m) { return narrow(m.getProcessCurentAction(1)); },
         {empty, empty, {"Sub", {}, nullptr}, {"Sub", {}, nullptr}, empty}},
        {"getProcessCurentPercent(-1)",
         [](Manager& m) { return std::to_string(m.getProcessCurentPercent(-1)); },
         {same0, same0, same0, same0, same0}},
        {"getProcessCurentPercent(0)",
         [](Manager& m) { return std::to_string(m.getProcessCurentPercent(0)); },
         {same0, same0, {"10", {}, nullptr}, {"10", {}, nullptr}, {"10", {}, nullptr}}},
        {"getProcessCurentPercent(1)",
         [](Manager& m) { return std::to_string(m.getProcessCurentPercent(1)); },
         {same0, same0, {"20", {}, nullptr}, {"20", {}, nullptr}, same0}},
        {"getKeyForAction(Main)",
         [](Manager& m) { return std::to_string(m.getKeyForAction(L"Main")); },
         {none, none, same0, same0, same0}},
        {"getKeyForAction(Sub)",
         [](Manager& m) { return std::to_string(m.getKeyForAction(L"Sub")); },
         {none, none, same1, same1, same1}},
        {"getKeyForAction(New)",
         [](Manager& m) { return std::to_string(m.getKeyForAction(L"New")); },
         {none, none, none, none, none}},
    };

    for (const Operation& operation : operations)
    {
        ASSERT_EQ(operation.outcomes.size(), states.size()) << operation.name;
        for (size_t i = 0; i < states.size(); ++i)
        {
            SCOPED_TRACE(std::string(operation.name) + ", " + states[i].name);
            const Outcome& expected = operation.outcomes[i];
            manager = *asLoaded;
            Told early;
            Display display("", early);
            manager.registerDisplay(&display);
            states[i].enter(manager);
            ASSERT_EQ(described(manager), states[i].described);
            early.clear();
            lateTold.clear();

            EXPECT_EQ(operation.run(manager), expected.result);
            early.insert(early.end(), lateTold.begin(), lateTold.end());
            EXPECT_EQ(early, expected.told);
            EXPECT_EQ(described(manager), expected.after == nullptr ? states[i].described : expected.after);
        }
    }
}

// ---- Calls from inside a notification

TEST_F(qelProcessEvolution, GoesOnWithTheNextDisplayWhenOneTakesItselfOut)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerDisplay(&c);
    manager.registerProcess(L"Main");
    takeTold();
    b.onProgress = [this](int) { EXPECT_EQ(manager.deRegisterDisplay(1), 1); };
    manager.increaseProgress(0, 1);
    EXPECT_EQ(takeTold(), (Told{"a: progress 0 1", "b: progress 0 1", "c: progress 0 1"}));
    manager.increaseProgress(0, 2);
    EXPECT_EQ(takeTold(), (Told{"a: progress 0 2", "c: progress 0 2"}));
}

TEST_F(qelProcessEvolution, LetsADisplayTakeItselfOutAndGo)
{
    std::unique_ptr<Display> passing = std::make_unique<Display>("passing", told);
    passing->onRemove = [&](int) {
        manager.deRegisterDisplay(0);
        passing.reset();
    };
    manager.registerDisplay(passing.get());
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    takeTold();
    manager.deRegisterProcess(0);
    EXPECT_EQ(passing, nullptr);
    EXPECT_EQ(told, (Told{"passing: remove 0", "b: remove 0"}));
}

TEST_F(qelProcessEvolution, SkipsAndRepeatsNobodyWhenADisplayTakesOthersOut)
{
    Display d("d", told);
    for (Display* display : {&a, &b, &c, &d})
    {
        manager.registerDisplay(display);
    }
    manager.registerProcess(L"Main");
    takeTold();
    // The two in front, then the one behind.
    c.onProgress = [this](int) {
        manager.deRegisterDisplay(0);
        manager.deRegisterDisplay(0);
    };
    manager.increaseProgress(0, 1);
    EXPECT_EQ(takeTold(), (Told{"a: progress 0 1", "b: progress 0 1", "c: progress 0 1", "d: progress 0 1"}));
    c.onProgress = [this](int) { manager.deRegisterDisplay(1); };
    manager.increaseProgress(0, 2);
    EXPECT_EQ(takeTold(), Told{"c: progress 0 2"});
    EXPECT_EQ(described(manager), "0 Main 2; Main; ---; 1");
}

TEST_F(qelProcessEvolution, EndsTheRoundWhenADisplayTakesAllOut)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    a.onAdd = [this](int) {
        while (manager.deRegisterDisplay(0) != 0)
        {
        }
    };
    EXPECT_EQ(manager.registerProcess(L"Main"), 0);
    EXPECT_EQ(told, Told{"a: add 0 Main"});
    EXPECT_EQ(described(manager), "0 Main 0; Main; ---; 0");
}

TEST_F(qelProcessEvolution, TellsADisplayThatIsRegisteredByAnotherOnce)
{
    manager.registerDisplay(&a);
    a.onAdd = [this](int) { EXPECT_EQ(manager.registerDisplay(&b), 1); };
    manager.registerProcess(L"Main");
    EXPECT_EQ(takeTold(), (Told{"a: add 0 Main", "b: add 0 Main", "b: progress 0 0"}));

    a.onProgress = [this](int) { manager.registerDisplay(&c); };
    manager.increaseProgress(0, 9);
    EXPECT_EQ(takeTold(), (Told{"a: progress 0 9", "c: add 0 Main", "c: progress 0 9", "b: progress 0 9"}));
}

TEST_F(qelProcessEvolution, ReplacesADisplayByAnotherInARound)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    takeTold();
    a.onProgress = [this](int) {
        manager.deRegisterDisplay(0);
        manager.registerDisplay(&c);
    };
    manager.increaseProgress(0, 5);
    EXPECT_EQ(told, (Told{"a: progress 0 5", "c: add 0 Main", "c: progress 0 5", "b: progress 0 5"}));
}

TEST_F(qelProcessEvolution, LetsADisplayTakeItselfOutWhileItRegisters)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.registerDisplay(&a);
    takeTold();
    b.onAdd = [this](int) { manager.deRegisterDisplay(1); };
    EXPECT_EQ(manager.registerDisplay(&b), 1);
    EXPECT_EQ(takeTold(), Told{"b: add 0 Main"});
    c.onProgress = [this](int) { manager.deRegisterDisplay(1); };
    EXPECT_EQ(manager.registerDisplay(&c), 1);
    EXPECT_EQ(takeTold(), (Told{"c: add 0 Main", "c: progress 0 0"}));
    EXPECT_EQ(described(manager), "0 Main 0, 1 Sub 0; Main Sub; ---; 1");
}

TEST_F(qelProcessEvolution, KeepsTellingADisplayThatMovesDownWhileItRegisters)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    manager.registerDisplay(&a);
    takeTold();
    b.onAdd = [this](int key) {
        if (key == 0)
        {
            manager.deRegisterDisplay(0);
        }
    };
    EXPECT_EQ(manager.registerDisplay(&b), 1);
    EXPECT_EQ(told, (Told{"b: add 0 Main", "b: progress 0 0", "b: add 1 Sub", "b: progress 1 0"}));
}

TEST_F(qelProcessEvolution, TellsOnceOfAProcessThatADisplayRegistersWhileItRegisters)
{
    manager.registerProcess(L"Main");
    a.onAdd = [this](int key) {
        if (key == 0)
        {
            EXPECT_EQ(manager.registerProcess(L"Sub"), 1);
        }
    };
    manager.registerDisplay(&a);
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: add 1 Sub", "a: progress 0 0"}));
}

TEST_F(qelProcessEvolution, StopsAtTheLastProcessWhenADisplayRemovesThemWhileItRegisters)
{
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    manager.increaseProgress(0, 7);
    a.onAdd = [this](int) {
        while (manager.getNumberOfActiveProcesses() > 0)
        {
            manager.deRegisterProcess(0);
        }
    };
    manager.registerDisplay(&a);
    // What it is told next is what was true when it was called.
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: remove 0", "a: remove 0", "a: remove 0", "a: progress 0 7"}));
    EXPECT_EQ(described(manager), ";; ---; 1");
}

TEST_F(qelProcessEvolution, TellsOfANestedProcessFirstWhereTheOuterRoundHasNotBeen)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    a.onAdd = [this](int key) {
        if (key == 0)
        {
            EXPECT_EQ(manager.registerProcess(L"Sub"), 1);
        }
    };
    EXPECT_EQ(manager.registerProcess(L"Main"), 0);
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: add 1 Sub", "b: add 1 Sub", "b: add 0 Main"}));
    EXPECT_EQ(described(manager), "0 Main 0, 1 Sub 0; Main Sub; ---; 2");
}

TEST_F(qelProcessEvolution, SurvivesAProcessThatADisplayRemovesAsItIsAdded)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    a.onAdd = [this](int key) { EXPECT_EQ(manager.deRegisterProcess(key), 1); };
    EXPECT_EQ(manager.registerProcess(L"Main"), 0);
    EXPECT_EQ(told, (Told{"a: add 0 Main", "a: remove 0", "b: remove 0", "b: add 0 Main"}));
    EXPECT_EQ(described(manager), ";; ---; 2");
}

TEST_F(qelProcessEvolution, GoesOnWithItsKeyWhenADisplayRemovesTheProcessThatReports)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    takeTold();
    a.onProgress = [this](int) { manager.deRegisterProcess(0); };
    manager.increaseProgress(0, 3);
    EXPECT_EQ(told, (Told{"a: progress 0 3", "a: remove 0", "b: remove 0", "b: progress 0 3"}));
    EXPECT_EQ(described(manager), ";; ---; 2");
}

TEST_F(qelProcessEvolution, RemovesOneProcessOnceThoughADisplayAsksAgain)
{
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    takeTold();
    a.onRemove = [this](int key) { EXPECT_EQ(manager.deRegisterProcess(key), 0); };
    EXPECT_EQ(manager.deRegisterProcess(1), 1);
    EXPECT_EQ(told, Told{"a: remove 1"});
    EXPECT_EQ(described(manager), "0 Main 0, 2 Second 0; Main Second; ---; 1");
}

TEST_F(qelProcessEvolution, TakesTheKeyAsAPositionAfterNestedRemovals)
{
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    takeTold();
    a.onRemove = [this](int key) {
        if (key == 1)
        {
            EXPECT_EQ(manager.deRegisterProcess(0), 1);
        }
    };
    EXPECT_EQ(manager.deRegisterProcess(1), 1);
    EXPECT_EQ(told, (Told{"a: remove 1", "a: remove 0"}));
    EXPECT_EQ(described(manager), "1 First 0; First; ---; 1");

    // Nothing is left at that position.
    manager = *asLoaded;
    manager.registerDisplay(&a);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    EXPECT_EQ(manager.deRegisterProcess(1), 1);
    EXPECT_EQ(described(manager), "1 Sub 0; Sub; ---; 1");
}

TEST_F(qelProcessEvolution, CancelsFromInsideAReport)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    takeTold();
    a.onProgress = [this](int) { manager.cancelProcess(); };
    manager.increaseProgress(1, 50);
    EXPECT_EQ(told, (Told{"a: progress 1 50", "a: remove 0", "b: remove 0", "a: remove 1", "b: remove 1",
                          "b: progress 1 50"}));
    EXPECT_EQ(described(manager), "0 Main 0; Main Sub; EAC; 2");
}

TEST_F(qelProcessEvolution, ReturnsTheKeyOfASubProcessThatADisplayCancelsAsItIsAdded)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    a.onAdd = [this](int) { manager.cancelProcess(); };
    EXPECT_EQ(manager.registerProcess(L"Sub"), 1);
    EXPECT_EQ(described(manager), "0 Main 0; Main Sub; EAC; 1");
    EXPECT_TRUE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, SetsTheCancelOnlyWhenAllHaveBeenTold)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    std::vector<bool> seen;
    a.onRemove = [&](int) { seen.push_back(manager.getIsCanceled()); };
    manager.cancelProcess();
    EXPECT_EQ(seen, std::vector<bool>{false});
    EXPECT_TRUE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, CancelsOnceThoughADisplayAsksAgain)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    takeTold();
    a.onRemove = [this](int) { manager.cancelProcess(); };
    manager.cancelProcess();
    EXPECT_EQ(told, (Told{"a: remove 0", "a: remove 1"}));
    EXPECT_TRUE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, CancelsFromInsideTheEndOfASubProcess)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"First");
    manager.registerProcess(L"Second");
    takeTold();
    a.onRemove = [this](int) { manager.cancelProcess(); };
    EXPECT_EQ(manager.deRegisterProcess(2), 1);
    EXPECT_EQ(told, (Told{"a: remove 2", "a: remove 0", "a: remove 1", "a: remove 2"}));
    EXPECT_EQ(described(manager), "0 Main 0; Main First Second; EAC; 1");
}

TEST_F(qelProcessEvolution, HasNothingToCancelOnceADisplayEndsTheMainProcess)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    a.onRemove = [this](int key) {
        if (key == 1)
        {
            EXPECT_EQ(manager.deRegisterProcess(0), 1);
        }
    };
    manager.cancelProcess();
    EXPECT_EQ(described(manager), "1 Sub 0; Sub; ---; 1");

    manager = *asLoaded;
    a.onRemove = [this](int key) { EXPECT_EQ(manager.deRegisterProcess(key), 0); };
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.cancelProcess();
    // Not while it is being told: the working code ends its process itself.
    EXPECT_EQ(described(manager), "0 Main 0; Main; EAC; 1");
}

TEST_F(qelProcessEvolution, CancelsNothingWhenADisplayEndsAllAndAllowsTheNextCancel)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    a.onRemove = [this](int key) {
        if (key == 1)
        {
            EXPECT_EQ(manager.deRegisterProcess(0), 1);
            EXPECT_EQ(manager.deRegisterProcess(0), 1);
            EXPECT_EQ(manager.EnableCancel(true), 0);
        }
    };
    manager.cancelProcess();
    EXPECT_FALSE(manager.getIsCanceled());
    EXPECT_EQ(manager.getNumberOfActiveProcesses(), 0);
    EXPECT_EQ(manager.registerProcess(L"Next"), 0);
    manager.cancelProcess();
    EXPECT_TRUE(manager.getIsCanceled());
}

TEST_F(qelProcessEvolution, CancelsTheProcessesThatRanWhenItBegan)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    takeTold();
    a.onRemove = [this](int) { EXPECT_EQ(manager.registerProcess(L"Late"), 1); };
    manager.cancelProcess();
    EXPECT_EQ(told, (Told{"a: remove 0", "a: add 1 Late"}));
    EXPECT_EQ(described(manager), "0 Main 0; Main Late; EAC; 1");
}

TEST_F(qelProcessEvolution, TellsADisplayThatRegistersDuringACancelOfTheEndsStillToCome)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    takeTold();
    a.onRemove = [this](int key) {
        if (key == 0)
        {
            manager.registerDisplay(&b);
        }
    };
    manager.cancelProcess();
    EXPECT_EQ(takeTold(), (Told{"a: remove 0", "b: add 0 Main", "b: progress 0 0", "b: add 1 Sub", "b: progress 1 0",
                                "a: remove 1", "b: remove 1"}));
    a.onRemove = nullptr;
    manager.deRegisterProcess(0);
    EXPECT_EQ(told, (Told{"a: remove 0", "b: remove 0"}));
}

TEST_F(qelProcessEvolution, StaysInStepAfterANestedRound)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    takeTold();
    a.onProgress = [this](int key) {
        if (key == 0)
        {
            manager.increaseProgress(1, 8);
            manager.deRegisterDisplay(0);
        }
    };
    manager.increaseProgress(0, 4);
    EXPECT_EQ(told, (Told{"a: progress 0 4", "a: progress 1 8", "b: progress 1 8", "b: progress 0 4"}));
}

TEST_F(qelProcessEvolution, StaysInStepAfterADisplayHasThrown)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    a.onAdd = [](int) { throw std::runtime_error("display"); };
    EXPECT_THROW(manager.registerProcess(L"Main"), std::runtime_error);
    EXPECT_EQ(described(manager), "0 Main 0; Main; ---; 2");
    a.onRemove = [](int) { throw std::runtime_error("display"); };
    EXPECT_THROW(manager.deRegisterProcess(0), std::runtime_error);
    a.onRemove = nullptr;
    takeTold();
    EXPECT_EQ(manager.deRegisterDisplay(1), 1);
    EXPECT_EQ(manager.deRegisterProcess(0), 1);
    EXPECT_EQ(told, Told{"a: remove 0"});
    EXPECT_EQ(described(manager), ";; ---; 1");
}

TEST_F(qelProcessEvolution, NeverReadsBehindAListThatIsReplacedInARound)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    takeTold();
    a.onProgress = [this](int) { manager = *asLoaded; };
    manager.increaseProgress(0, 1);
    EXPECT_EQ(told, Told{"a: progress 0 1"});
}

TEST_F(qelProcessEvolution, KeepsARoundOfOneRegisterApartFromACopy)
{
    manager.registerDisplay(&a);
    manager.registerDisplay(&b);
    manager.registerProcess(L"Main");
    takeTold();
    a.onRemove = [this](int key) {
        a.onRemove = nullptr;
        Manager* const copy = new Manager(manager);
        EXPECT_EQ(copy->deRegisterDisplay(0), 1);
        EXPECT_EQ(copy->deRegisterProcess(key), 1);
    };
    EXPECT_EQ(manager.deRegisterProcess(0), 1);
    EXPECT_EQ(told, (Told{"a: remove 0", "b: remove 0", "b: remove 0"}));
}

// ---- Without memory

/// Counts what it is told and asks for no memory.
class Counting final : public ProgressDisplayProtocol
{
public:
    void setProgress(int, int) override { ++calls; }
    void addProcess(int, qelString, bool) override { ++calls; }
    void removeProcess(int) override { ++calls; }

    int calls = 0;
};

TEST_F(qelProcessEvolution, StaysAsItWasAndTellsNobodyWhenMemoryRunsOut)
{
    // The ninth of each grows its list.
    Counting display;
    manager.EnableCancel(true);
    for (int i = 0; i < 8; ++i)
    {
        manager.registerDisplay(&display);
        manager.registerProcess(L"Process");
    }
    const std::string before = described(manager);
    const qelString ninth(L"Ninth");

    struct Step
    {
        const char* name;
        std::function<void()> run;
        int failures;
        int told;
    };
    const std::vector<Step> steps = {
        {"registerProcess", [&] { EXPECT_EQ(manager.registerProcess(ninth), 8); }, 3, 8},
        {"increaseProgress", [&] { manager.increaseProgress(3, 5); }, 1, 8},
        {"deRegisterProcess", [&] { EXPECT_EQ(manager.deRegisterProcess(8), 1); }, 1, 8},
        {"registerDisplay", [&] { EXPECT_EQ(manager.registerDisplay(&display), 8); }, 1, 16},
        {"deRegisterDisplay", [&] { EXPECT_EQ(manager.deRegisterDisplay(8), 1); }, 0, 0},
        {"back to the start", [&] { manager.increaseProgress(3, 0); }, 1, 8},
    };
    for (const Step& step : steps)
    {
        SCOPED_TRACE(step.name);
        const std::string stood = described(manager);
        display.calls = 0;
        const int failures = qelTest::failEveryAllocation(step.run, [&] {
            EXPECT_EQ(described(manager), stood);
            EXPECT_EQ(display.calls, 0);
        });
        EXPECT_EQ(failures, step.failures);
        EXPECT_EQ(display.calls, step.told);
    }
    EXPECT_EQ(described(manager), before);
}

TEST_F(qelProcessEvolution, IsNotCancelledWhenMemoryRunsOut)
{
    Counting display;
    manager.registerDisplay(&display);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    manager.registerProcess(L"Sub");
    const std::string before = described(manager);
    qelTest::failEveryAllocation([&] { manager.cancelProcess(); }, [&] { EXPECT_EQ(described(manager), before); });
    EXPECT_EQ(described(manager), "0 Main 0; Main Sub; EAC; 1");
}

TEST_F(qelProcessEvolution, StaysAsItWasWhenAnotherOneCannotBeTakenOver)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    const Manager* const other = new Manager(manager);
    manager = *asLoaded;
    manager.registerDisplay(&b);
    manager.registerDisplay(&c);
    manager.registerProcess(L"Before");
    const int failures = qelTest::failEveryAllocation(
        [&] { manager = *other; }, [&] { EXPECT_EQ(described(manager), "0 Before 0; Before; ---; 2"); });
    EXPECT_EQ(failures, 4); // the list of texts is an object of its own
    EXPECT_EQ(described(manager), "0 Main 0; Main; EA-; 1");
}

TEST_F(qelProcessEvolution, AssignedToItselfKeepsEverything)
{
    manager.registerDisplay(&a);
    manager.EnableCancel(true);
    manager.registerProcess(L"Main");
    const Manager& same = manager;
    manager = same;
    EXPECT_EQ(described(manager), "0 Main 0; Main; EA-; 1");
    manager.increaseProgress(0, 3);
    EXPECT_EQ(told.back(), "a: progress 0 3");
}
} // namespace
