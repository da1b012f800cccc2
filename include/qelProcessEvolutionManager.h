/**
 * @file
 * @brief The process-wide register of running operations and of the displays that show their progress.
 */
#ifndef QEL_PROCESS_EVOLUTION_MANAGER_H
#define QEL_PROCESS_EVOLUTION_MANAGER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"
#include "qelStringClassArray.h"

/**
 * @brief One registered process of qelProcessEvolutionManager.
 * @ingroup progress
 *
 * What qelProcessEvolutionManager::getProcessInfo() tells of a process.
 *
 * @par Example
 * @code
 * qelProcessEvolutionManager* manager = qelProcessEvolutionManager::getProcessEvolutionManager();
 * const int key = manager->registerProcess(L"Numbering");  // == 0
 * manager->increaseProgress(key, 40);
 * const ProcessInfo info = manager->getProcessInfo(key);
 * info.percent;                                            // == 40
 * info.action;                                             // == L"Numbering"
 * manager->deRegisterProcess(key);                         // == 1
 * @endcode
 *
 */
struct QEL_API ProcessInfo
{
    int key = 0;      ///< the key handed out at registration; keeps its value when the process moves down
    int percent = 0;  ///< the percentage last reported
    qelString action; ///< the text given at registration
};

static_assert(sizeof(ProcessInfo) == 24, "two numbers and a text");

/**
 * @brief What a display of progress implements.
 * @ingroup progress
 *
 * The register of processes tells it whatever happens to them.
 *
 * @par Example
 * @code
 * class PercentOfMainProcess final : public ProgressDisplayProtocol
 * {
 * public:
 *     void setProgress(int key, int percent) override { m_percent = key == 0 ? percent : m_percent; }
 *     void addProcess(int, qelString, bool) override {}
 *     void removeProcess(int) override {}
 *     int m_percent = 0;
 * };
 *
 * qelProcessEvolutionManager* manager = qelProcessEvolutionManager::getProcessEvolutionManager();
 * PercentOfMainProcess display;
 * const int number = manager->registerDisplay(&display);
 * const int key = manager->registerProcess(L"Numbering");
 * manager->increaseProgress(key, 40);
 * display.m_percent;                                       // == 40
 * manager->deRegisterProcess(key);
 * manager->deRegisterDisplay(number);                      // == 1
 * @endcode
 *
 * @par Ownership
 * The register calls a display and never owns it: it must be deregistered before it goes. There is no virtual
 * destructor, so a display is destroyed by the code that made it, through its own type.
 *
 * @par Threads
 * Called on the thread that calls the register.
 */
class ProgressDisplayProtocol
{
public:
    /// The percentage of the process with that key is set; also called for every running process when the display
    /// registers.
    virtual void setProgress(int key, int percent) = 0;

    /**
     * A process has registered; also called for every running process when the display registers. `cancelAllowed` is
     * true only for a main process that may be cancelled by the user, and never on a display that registers later.
     */
    virtual void addProcess(int key, qelString action, bool cancelAllowed) = 0;

    /// The process with that key ends. Those with higher keys move down by one, unless a cancel ends them all.
    virtual void removeProcess(int key) = 0;

protected:
    ~ProgressDisplayProtocol() = default;
};

/**
 * @brief The process-wide register of running operations and of the displays that show their progress.
 * @ingroup progress
 *
 * An operation ("process") registers under an action text, gets a key and reports its percentage; the register passes
 * every change on to all displays. The first process is the main process, later ones are its sub-processes. The user's
 * wish to cancel goes the other way: a display asks for it, the working code looks for it.
 *
 * @par Example
 * @code
 * qelProcessEvolutionManager* manager = qelProcessEvolutionManager::getProcessEvolutionManager();
 * manager->EnableCancel(true);                            // before the main process, or not at all
 * const int key = manager->registerProcess(L"Numbering"); // == 0, the main process
 * for (int part = 1; part <= 200 && !manager->getIsCanceled(); ++part)
 * {
 *     number(part);
 *     manager->increaseProgress(key, 100 * part / 200);
 * }
 * manager->getProcessCurentPercent(key);                  // == 100
 * manager->deRegisterProcess(key);                        // == 1, ready for the next main process
 * @endcode
 *
 * @par Ownership
 * Displays belong to the caller and must be deregistered before they go.
 *
 * @par Threads
 * No locks; every call is made, and every display called, on the caller's thread. Keep all use on one thread.
 *
 * @par Cost
 * Made for a handful of processes and displays: every notification copies the list of displays, and looks for each of
 * them in it before its call.
 *
 * @par Failure
 * Refusals are results. When memory runs out, the register stays as it was.
 *
 * @par Keys and percentages
 * Keys are positions: the main process has key 0. When a process deregisters, later ones move down by one, and every
 * key given to the register counts as a position of that moment. Display numbers behave the same way. Percentages are
 * stored and passed on as they come, nothing is cut to 0..100.
 *
 * @par Calls from inside a notification
 * A display may call anything here from inside a notification, and it takes effect at once:
 * - A round of notifications reaches the displays that were registered when it began and still are when their turn
 *   comes, in their order. A display that registers meanwhile hears of the running processes at its registration
 *   only; one that deregisters, even the one being called, is not called again.
 * - A nested change is told to all displays before the outer round goes on, so that displays further down the list hear
 *   of it first. The outer round keeps the key it began with.
 * - A process cannot be deregistered while the displays are being told that it ends, and a cancel does not start again
 *   while it is being told: such calls are refused.
 */
class QEL_API qelProcessEvolutionManager
{
public:
    /// A register of its own with the same processes, displays and flags. It cannot be destroyed.
    qelProcessEvolutionManager(const qelProcessEvolutionManager& other);

    /// Takes over processes, displays and flags. No display is told.
    qelProcessEvolutionManager& operator=(const qelProcessEvolutionManager& other);

    /// The one register of the process. Made when the library is loaded; never null.
    static qelProcessEvolutionManager* getProcessEvolutionManager();

    /// @name Processes
    /// @{

    /**
     * Registers a process at 0 percent, tells all displays and returns its key, which is the number of processes before
     * it. -1, and nobody is told, while a cancel is pending: only the main process then remains.
     */
    int registerProcess(qelString action);

    /**
     * Tells all displays that the process ends, then removes it. Returns 1, also for a key that is not registered
     * (which the displays are told all the same); 0, and nobody is told, for a negative key and, while a cancel is
     * pending, for every key but 0. Key 0 ends the cycle: the wish to cancel and EnableCancel() are forgotten.
     */
    int deRegisterProcess(int key);

    /// Sets the percentage (it does not add) and tells all displays. Nothing happens for a key that is not registered.
    void increaseProgress(int key, int percent);
    /// @}

    /// @name Displays
    /// @{

    /**
     * Adds a display at the end and returns its number. It is told of every running process in key order: addProcess()
     * (never with cancel allowed), then setProgress(). A display registered twice is told everything twice; a null
     * one has a number but is never called.
     */
    int registerDisplay(ProgressDisplayProtocol* display);

    /// Removes the display, without telling it; later ones move down. 1, or 0 for a number that no display has.
    int deRegisterDisplay(int number);
    /// @}

    /// @name Cancelling
    /// @{

    /**
     * Makes the next main process one that can be cancelled; `allow` is what the displays are told with it. Counts only
     * while no process is registered. Deliberately always returns 0.
     */
    int EnableCancel(bool allow);

    /**
     * Asks for the end of all processes: displays are told that each one ends, sub-processes are dropped, and
     * getIsCanceled() becomes true. The main process stays until its code deregisters it. Nothing happens where
     * cancelling was not enabled or no process is registered.
     *
     * The action texts of the dropped sub-processes deliberately stay, in front of those that register later: see
     * getKeyForAction().
     */
    void cancelProcess();

    /// Whether a cancel was requested since the main process registered. For the working code to look at often.
    bool getIsCanceled() const;
    /// @}

    /// @name What is registered
    /// A key that is not registered, negative ones included, gives the empty text and 0.
    /// @{

    /// The main process and its sub-processes; 0 when nothing runs.
    int getNumberOfActiveProcesses() const;

    /// All that is known of a process.
    ProcessInfo getProcessInfo(int key) const;

    /// The text given at registration.
    qelString getProcessCurentAction(int key) const;

    /// The percentage last reported.
    int getProcessCurentPercent(int key) const;

    /**
     * Position of the first action text equal to `action`, with regard to case, or -1. It is the key of that process
     * until a cancel has dropped sub-processes, whose texts stay and count. O(n).
     */
    int getKeyForAction(const qelString& action) const;
    /// @}

private:
    class EndUnderWay;

    qelProcessEvolutionManager();
    virtual ~qelProcessEvolutionManager();

    static qelProcessEvolutionManager* m_pProcessEvolutionManager;

    qelArray<ProcessInfo> m_processes;             ///< by key
    qelArray<ProgressDisplayProtocol*> m_displays; ///< by display number; not owned
    qelStringClassArray m_actions;                 ///< action texts, in the order of the processes
    bool m_isCanceled;                             ///< a cancel was requested
    bool m_cancelEnabled;                          ///< EnableCancel() was called for this main process
    bool m_cancelAllowed;                          ///< what EnableCancel() was given
};

static_assert(sizeof(qelProcessEvolutionManager) == 72, "virtual table, three lists, three flags");

#endif
