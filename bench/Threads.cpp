// The thread pool, and what it costs to report progress.

#include "Families.h"
#include "Plain.h"

#include "qelProcessEvolutionManager.h"
#include "qelProgressCtrl.h"
#include "qelThreadsPool.h"

#include <windows.h>

#include <atomic>
#include <deque>
#include <stdexcept>
#include <type_traits>
#include <utility>

using namespace qelBench;

namespace
{
using Task = void (*)(void*);

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): what the tasks, which are functions, share
std::atomic<int> tasksRun; // by whichever pool

void countTask(void*)
{
    tasksRun.fetch_add(1, std::memory_order_relaxed);
}

/// A pool of Windows, of as many threads.
class SystemPool
{
public:
    explicit SystemPool(int threads)
        : m_pool(CreateThreadpool(nullptr))
    {
        SetThreadpoolThreadMaximum(m_pool, static_cast<DWORD>(threads));
        SetThreadpoolThreadMinimum(m_pool, static_cast<DWORD>(threads));
        InitializeThreadpoolEnvironment(&m_environment);
        SetThreadpoolCallbackPool(&m_environment, m_pool);
        // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): the environment comes first
        m_work = CreateThreadpoolWork(call, this, &m_environment);
    }

    SystemPool(const SystemPool&) = delete;
    SystemPool& operator=(const SystemPool&) = delete;

    ~SystemPool()
    {
        CloseThreadpoolWork(m_work);
        DestroyThreadpoolEnvironment(&m_environment);
        CloseThreadpool(m_pool);
    }

    void queue(Task task)
    {
        m_task = task;
        SubmitThreadpoolWork(m_work);
    }

    void wait() { WaitForThreadpoolWorkCallbacks(m_work, FALSE); }

private:
    static void CALLBACK call(PTP_CALLBACK_INSTANCE, void* pool, PTP_WORK)
    {
        static_cast<SystemPool*>(pool)->m_task(nullptr);
    }

    PTP_POOL m_pool;
    TP_CALLBACK_ENVIRON m_environment;
    PTP_WORK m_work;
    Task m_task = nullptr;
};

/// The pool that everybody writes: a deque, a lock and a condition variable.
class DequePool
{
public:
    explicit DequePool(int threads)
    {
        for (int i = 0; i < threads; ++i)
        {
            m_threads.push_back(CreateThread(nullptr, 0, run, this, 0, nullptr));
        }
    }

    DequePool(const DequePool&) = delete;
    DequePool& operator=(const DequePool&) = delete;
    ~DequePool() { wait(); }

    void queue(Task task, void* argument = nullptr)
    {
        AcquireSRWLockExclusive(&m_lock);
        m_tasks.emplace_back(task, argument);
        ReleaseSRWLockExclusive(&m_lock);
        WakeConditionVariable(&m_work);
    }

    void wait()
    {
        AcquireSRWLockExclusive(&m_lock);
        m_stopping = true;
        ReleaseSRWLockExclusive(&m_lock);
        WakeAllConditionVariable(&m_work);
        for (const HANDLE thread : m_threads)
        {
            WaitForSingleObject(thread, INFINITE);
            CloseHandle(thread);
        }
        m_threads.clear();
    }

private:
    static DWORD WINAPI run(void* pool)
    {
        static_cast<DequePool*>(pool)->work();
        return 0;
    }

    void work()
    {
        AcquireSRWLockExclusive(&m_lock);
        for (;;)
        {
            while (m_tasks.empty() && !m_stopping)
            {
                SleepConditionVariableSRW(&m_work, &m_lock, INFINITE, 0);
            }
            if (m_tasks.empty())
            {
                break;
            }
            const std::pair<Task, void*> task = m_tasks.front();
            m_tasks.pop_front();
            ReleaseSRWLockExclusive(&m_lock);
            task.first(task.second);
            AcquireSRWLockExclusive(&m_lock);
        }
        ReleaseSRWLockExclusive(&m_lock);
    }

    SRWLOCK m_lock = SRWLOCK_INIT;
    CONDITION_VARIABLE m_work = CONDITION_VARIABLE_INIT;
    std::deque<std::pair<Task, void*>> m_tasks;
    bool m_stopping = false;
    std::vector<HANDLE> m_threads;
};

const int kTasks = 50000;

int countByUs(int workers)
{
    tasksRun = 0;
    qelThreadsPool pool(workers);
    for (int i = 0; i < kTasks; ++i)
    {
        pool.QueueTask(countTask, nullptr);
    }
    pool.WaitForThreadsToFinishWork();
    return tasksRun;
}

template <class Pool> int countBy(int workers)
{
    tasksRun = 0;
    Pool pool(workers);
    for (int i = 0; i < kTasks; ++i)
    {
        pool.queue(countTask);
    }
    pool.wait();
    return tasksRun;
}

void addEmptyTasks(Table& table, int workers)
{
    const std::string name = "50 k empty tasks, " + std::to_string(workers) + (workers == 1 ? " worker" : " workers");
    const auto add = [&](const char* peer, int (*count)(int)) {
        Row row{name, sizeText(kTasks, "tasks"), peer, 1.2,
                "With more threads than processors, order is chance: 0.5 to 2.9."};
        row.clock = Clock::wall;
        table.add(row, [workers, count] {
            return sides([workers] { return countByUs(workers); }, [workers, count] { return count(workers); });
        });
    };
    add("pool of Windows", countBy<SystemPool>);
    add("deque with condition variable", countBy<DequePool>);
}

const int kBacklog = 60000;

struct Gate
{
    HANDLE reached = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE opened = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

void waitAtGate(void* argument)
{
    const Gate& gate = *static_cast<const Gate*>(argument);
    SetEvent(gate.reached);
    WaitForSingleObject(gate.opened, INFINITE);
}

/// A pool of one worker who is kept busy until the backlog is complete.
template <class Pool> class Blocked
{
public:
    Blocked()
        : m_pool(1)
    {
        queue(waitAtGate, &m_gate);
        WaitForSingleObject(m_gate.reached, INFINITE);
    }

    Blocked(const Blocked&) = delete;
    Blocked& operator=(const Blocked&) = delete;

    ~Blocked()
    {
        SetEvent(m_gate.opened);
        wait(m_pool);
        CloseHandle(m_gate.reached);
        CloseHandle(m_gate.opened);
    }

    void fill()
    {
        for (int i = 0; i < kBacklog; ++i)
        {
            queue(countTask, nullptr);
        }
    }

private:
    static void wait(qelThreadsPool& pool) { pool.WaitForThreadsToFinishWork(); }
    static void wait(DequePool& pool) { pool.wait(); }

    void queue(Task task, void* argument)
    {
        if constexpr (std::is_same_v<Pool, qelThreadsPool>)
        {
            m_pool.QueueTask(task, argument);
        }
        else
        {
            m_pool.queue(task, argument);
        }
    }

    Gate m_gate;
    Pool m_pool;
};

template <class Pool> Side queueing()
{
    return prepared([] { return std::make_shared<Blocked<Pool>>(); },
                    [](const std::shared_ptr<Blocked<Pool>>& blocked) { blocked->fill(); });
}

template <class Pool> int ranOfBacklog()
{
    tasksRun = 0;
    Blocked<Pool>().fill();
    return tasksRun;
}

void addQueueing(Table& table)
{
    Row row{"queueing while the worker is busy", "60 k tasks", "deque with condition variable", 3};
    row.clock = Clock::wall;
    table.add(row, [] {
        return Sides{queueing<qelThreadsPool>(), queueing<DequePool>(), [] {
                         return ranOfBacklog<qelThreadsPool>() == kBacklog && ranOfBacklog<DequePool>() == kBacklog;
                     }};
    });
}

void workForAWhile(void*)
{
    const double begin = now(Clock::wall);
    while (now(Clock::wall) - begin < 100e3)
    {
    }
    countTask(nullptr);
}

void addCoarseTasks(Table& table)
{
    Row row{"1 k tasks of 100 us, 1 worker", "1 k tasks", "the same work without a pool", 1.05};
    row.clock = Clock::wall;
    table.add(row, [] {
        const auto ours = [] {
            tasksRun = 0;
            qelThreadsPool pool(1);
            for (int i = 0; i < 1000; ++i)
            {
                pool.QueueTask(workForAWhile, nullptr);
            }
            pool.WaitForThreadsToFinishWork();
            return tasksRun.load();
        };
        const auto theirs = [] {
            tasksRun = 0;
            for (int i = 0; i < 1000; ++i)
            {
                workForAWhile(nullptr);
            }
            return tasksRun.load();
        };
        return sides(ours, theirs);
    });
}

class LastPercent final : public ProgressDisplayProtocol
{
public:
    void setProgress(int, int percent) override { m_percent = percent; }
    void addProcess(int, qelString, bool) override {}
    void removeProcess(int) override {}

    int percent() const { return m_percent; }

private:
    int m_percent = 0;
};

/// A process with one display, for as long as the row lasts.
struct Reported
{
    Reported()
        : number(manager->registerDisplay(&display))
        , key(manager->registerProcess(L"Numbering"))
    {
    }

    Reported(const Reported&) = delete;
    Reported& operator=(const Reported&) = delete;

    ~Reported()
    {
        manager->deRegisterProcess(key);
        manager->deRegisterDisplay(number);
    }

    qelProcessEvolutionManager* manager = qelProcessEvolutionManager::getProcessEvolutionManager();
    LastPercent display;
    LastPercent direct;
    ProgressDisplayProtocol* called = &direct;
    int number;
    int key;
    int percent = 0;
};

int nextPercent(int percent)
{
    return percent == 100 ? 0 : percent + 1;
}

void addProgressReport(Table& table)
{
    table.add(Row{"progress update, register with one display", "1 update", "virtual call"}, [] {
        const auto d = std::make_shared<Reported>();
        const auto ours = [d] {
            d->manager->increaseProgress(d->key, d->percent = nextPercent(d->percent));
            return 0;
        };
        const auto theirs = [d] {
            keep(&d->called);
            d->called->setProgress(0, d->percent = nextPercent(d->percent));
            return 0;
        };
        const auto same = [d] {
            d->manager->increaseProgress(d->key, 40);
            d->called->setProgress(0, 40);
            return d->display.percent() == d->direct.percent();
        };
        return Sides{repeated(ours), repeated(theirs), same};
    });
}

/// The built-in dialog, open or not.
class Dialog
{
public:
    explicit Dialog(bool open)
        : m_open(open)
    {
        if (m_open)
        {
            qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn();
            if (qelProgressCtrl::activate(L"Numbering of parts") != 1)
            {
                throw std::runtime_error("the progress dialog cannot be opened");
            }
        }
    }

    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    ~Dialog()
    {
        if (m_open)
        {
            qelProgressCtrl::reset();
            qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOff();
        }
    }

    /// What each window answered: 1 for the dialog.
    int update() { return qelProgressCtrl::setPercentage(m_percent = nextPercent(m_percent), 1); }

private:
    bool m_open;
    int m_percent = 0;
};

void addDialogUpdate(Table& table, bool open)
{
    Row row{open ? "progress update, dialog open" : "progress update, no dialog", "1 update", "virtual call"};
    row.clock = open ? Clock::wall : Clock::thread;
    row.reason = open ? "Bar and percent text are windows." : "";
    table.add(row, [open] {
        const auto dialog = std::make_shared<Dialog>(open);
        const auto direct = std::make_shared<Reported>();
        const auto theirs = [direct] {
            keep(&direct->called);
            direct->called->setProgress(0, direct->percent = nextPercent(direct->percent));
            return 0;
        };
        return Sides{repeated([dialog] { return dialog->update(); }), repeated(theirs),
                     [dialog, open] { return dialog->update() == (open ? 1 : 0); }};
    });
}
} // namespace

void qelBench::addThreads(Table& table)
{
    table.family("Threads and progress");
    for (const int workers : {1, 2, 4})
    {
        addEmptyTasks(table, workers);
    }
    addQueueing(table);
    addCoarseTasks(table);
    addProgressReport(table);
    addDialogUpdate(table, false);
    addDialogUpdate(table, true);
}
