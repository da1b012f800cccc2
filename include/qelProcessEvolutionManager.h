/**
 * @file
 * @brief Registry of running operations and of the displays that show their progress.
 */
#ifndef QEL_PROCESS_EVOLUTION_MANAGER_H
#define QEL_PROCESS_EVOLUTION_MANAGER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"
#include "qelStringClassArray.h"

/**
 * @brief A running operation, as returned by qelProcessEvolutionManager::getProcessInfo().
 * @ingroup progress
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
 */
struct QEL_API ProcessInfo
{
    int key = 0;      ///< the key given at registration; unchanged when the process moves down
    int percent = 0;  ///< the percentage last reported
    qelString action; ///< the text given at registration
};

static_assert(sizeof(ProcessInfo) == 24, "two numbers and a text");

/**
 * @brief Interface of a progress display.
 * @ingroup progress
 *
 * qelProcessEvolutionManager notifies it of every change.
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
 * Never owned by the manager: deregister it before it is destroyed. There is no virtual destructor, so destroy a
 * display through its own type.
 *
 * @par Threads
 * Called on the thread that calls the manager.
 */
class ProgressDisplayProtocol
{
public:
    /// The percentage of process `key` was set; also called for every running process when the display registers.
    virtual void setProgress(int key, int percent) = 0;

    /**
     * A process has registered; also called for every running process when the display registers. `cancelAllowed` is
     * true only for a main process that the user may cancel, and never for a display that registers later.
     */
    virtual void addProcess(int key, qelString action, bool cancelAllowed) = 0;

    /// Process `key` ends. Higher keys move down by one, unless a cancel ends them all.
    virtual void removeProcess(int key) = 0;

protected:
    ~ProgressDisplayProtocol() = default;
};

/**
 * @brief Registry of running operations and of the displays that show their progress.
 * @ingroup progress
 *
 * An operation ("process") registers under an action text, gets a key and reports its percentage; the manager, one per
 * process, passes every change to all displays. The first operation is the main process, later ones are its
 * sub-processes. Cancelling goes the other way: a display requests it, the working code polls for it.
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
 * The caller owns displays and must deregister them before destroying them.
 *
 * @par Threads
 * Not thread-safe: keep all use on one thread. Displays are called on the caller's thread.
 *
 * @par Cost
 * Made for a handful of processes and displays: every notification copies the list of displays and searches it before
 * each call.
 *
 * @par Failure
 * Throws `std::bad_alloc` when out of memory and leaves the manager as it was.
 *
 * @par Keys and percentages
 * Keys are positions: the main process has key 0. When a process deregisters, later ones move down by one, and every
 * key passed to the manager is a position at that moment. Display numbers behave the same way. Percentages are stored
 * and passed on as they are, not clamped to 0..100.
 *
 * @par Calls from inside a notification
 * A display may call any member from inside a notification; it takes effect at once:
 * - A round of notifications reaches, in order, the displays that were registered when it began and still are when
 *   their turn comes. A display that registers meanwhile is told of the running processes only at registration; one
 *   that deregisters, even the one being called, is not called again.
 * - A nested change reaches all displays before the outer round continues, so displays further down the list hear of it
 *   first. The outer round keeps the key it began with.
 * - Refused: deregistering a process while displays are being told of its end, and cancelling while a cancel is under
 *   way.
 */
class QEL_API qelProcessEvolutionManager
{
public:
    /// A separate manager with the same processes, displays and flags. It cannot be destroyed.
    qelProcessEvolutionManager(const qelProcessEvolutionManager& other);

    /// Copies processes, displays and flags. No display is notified.
    qelProcessEvolutionManager& operator=(const qelProcessEvolutionManager& other);

    /// The one manager. Made when the library is loaded; never null.
    static qelProcessEvolutionManager* getProcessEvolutionManager();

    /// @name Processes
    /// @{

    /**
     * Registers a process at 0 percent, notifies all displays and returns its key, the number of processes before it.
     * -1, without a notification, while a cancel is pending: only the main process then remains.
     */
    int registerProcess(qelString action);

    /**
     * Notifies all displays, then removes the process. Returns 1, also for a key that is not registered (displays are
     * notified all the same); 0, without a notification, for a negative key and, while a cancel is pending, for every
     * key but 0. Key 0 also resets the cancel and EnableCancel().
     */
    int deRegisterProcess(int key);

    /// Sets the percentage (does not add to it) and notifies all displays. Does nothing for a key that is not
    /// registered.
    void increaseProgress(int key, int percent);
    /// @}

    /// @name Displays
    /// @{

    /**
     * Adds a display at the end and returns its number. It is notified of every running process in key order:
     * addProcess() (never with cancel allowed), then setProgress(). A display registered twice is notified twice; a
     * null one has a number but is never called.
     */
    int registerDisplay(ProgressDisplayProtocol* display);

    /// Removes the display, without notifying it; later ones move down. Returns 1, or 0 for an unknown number.
    int deRegisterDisplay(int number);
    /// @}

    /// @name Cancelling
    /// @{

    /**
     * Makes the next main process one that can be cancelled; `allow` is passed to the displays as `cancelAllowed`. Has
     * an effect only while no process is registered. Deliberately always returns 0.
     */
    int EnableCancel(bool allow);

    /**
     * Requests the end of all processes: displays are notified of the end of each one, sub-processes are removed, and
     * getIsCanceled() becomes true. The main process stays until its code deregisters it. Does nothing when cancelling
     * was not enabled or no process is registered.
     *
     * The action texts of the removed sub-processes deliberately stay, before those that register later: see
     * getKeyForAction().
     */
    void cancelProcess();

    /// Whether a cancel was requested since the main process registered. Working code should poll it often.
    bool getIsCanceled() const;
    /// @}

    /// @name Queries
    /// A key that is not registered gives an empty string and 0.
    /// @{

    /// The main process and its sub-processes; 0 when nothing runs.
    int getNumberOfActiveProcesses() const;

    /// Key, percentage and action text of a process.
    ProcessInfo getProcessInfo(int key) const;

    /// The text given at registration.
    qelString getProcessCurentAction(int key) const;

    /// The percentage last reported.
    int getProcessCurentPercent(int key) const;

    /**
     * Position of the first action text equal to `action` (case-sensitive), or -1. It is the key of that process until
     * a cancel has removed sub-processes, whose texts stay and count. O(n).
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
    bool m_cancelAllowed;                          ///< the argument of EnableCancel()
};

static_assert(sizeof(qelProcessEvolutionManager) == 72, "virtual table, three lists, three flags");

#endif
