/**
 * @file
 * @brief Shows the progress of a long operation to the user.
 */
#ifndef QEL_PROGRESS_CTRL_H
#define QEL_PROGRESS_CTRL_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief An output window of qelProgressCtrl; as it stands, the built-in dialog.
 * @ingroup progress
 *
 * A small dialog with a title, a bar and a percentage. A host that shows progress in another way derives from this
 * class.
 *
 * @par Example
 * @code
 * class StatusLine : public qelProgressCtrlWindow
 * {
 * public:
 *     int activate(qelString title) override { return setTitle(title); }
 *     int reset() override { return setTitle(L""); }
 *     int setPercentage(int percent, int) override { return setTitle(qelString::integerToString(percent) + L" %"); }
 *     int setTitle(const qelString& text) override
 *     {
 *         m_text = text; // the host would show it
 *         return 1;
 *     }
 *     qelString m_text;
 * };
 *
 * static StatusLine line;                          // outlives its place in the list
 * qelProgressCtrl::appendOutputWindow(&line);      // == 1, behind the built-in window
 * line.switchOn();
 * qelProgressCtrl::setPercentage(40);              // == 1, one window has answered
 * line.m_text;                                     // == L"40 %"
 * qelProgressCtrl::m_ProgressCtrlWindowController->windows()[1] = nullptr;
 * @endcode
 *
 * @par Ownership
 * All objects of this class share one dialog: one that opens it takes it over from the one that had it, which keeps
 * counting as active and from then on writes to the other's dialog. A copy of an active window shares its dialog
 * likewise. Destroying a window leaves the dialog alone; reset() it first.
 *
 * @par Threads
 * The dialog belongs to the thread that opened it; keep all use there.
 *
 * @par Failure
 * A progress bar that cannot be made is shown to the user, in a message box that waits for an answer.
 */
class QEL_API qelProgressCtrlWindow
{
public:
    /// Switched off, not active, at 0 percent and without a title.
    qelProgressCtrlWindow();

    /// Copies switch, title, percentage and activity; opens no dialog.
    qelProgressCtrlWindow(const qelProgressCtrlWindow& other);

    /// Leaves the dialog alone.
    virtual ~qelProgressCtrlWindow();

    /// Takes over switch, title, percentage and activity.
    qelProgressCtrlWindow& operator=(const qelProgressCtrlWindow& other);

    /// @name What a window of the host's own replaces
    /// @{

    /**
     * Opens a fresh dialog with that title, after a reset() of what was there. Returns the activity: 1, or 0 when the
     * dialog cannot be made or the host, called by the system meanwhile, has closed or replaced it.
     */
    virtual int activate(qelString title);

    /// Closes the dialog when the window is active, and goes back to 0 percent and not active. Always returns 1.
    virtual int reset();

    /**
     * Moves to `percent`. Returns 0, and nothing happens, for a percentage outside 0..100, the one there already, or,
     * unless `force` is not 0, a lower one; otherwise the activity. The percentage of a window that is not active is
     * kept all the same.
     */
    virtual int setPercentage(int percent, int force = 0);

    /// Keeps the title and, when active, shows it. Returns the activity.
    virtual int setTitle(const qelString& title);
    /// @}

    /// @name State
    /// @{

    /// Copies out the title set last and returns the activity.
    int getTitle(qelString& title) const;

    /// Copies out the percentage set last and returns the activity.
    int getPercentage(int& percent) const;

    /// The activity: 1 from activate() to reset(), whether the user has ended the dialog or not.
    int isActive() const;

#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers" // const is part of the exported name for hosts of Visual C++
#endif
    /// The same as isActive().
    const int getActivity() const;

    /// Whether the window takes part in the calls of qelProgressCtrl: 1 or 0.
    const int getOn() const;
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic pop
#endif

    /// For windows that show their progress in another way; makes and closes no dialog.
    void setActivity(int value);

    /// The window takes part from now on.
    void switchOn();

    /// The window takes no part any more; what it shows stays.
    void switchOff();
    /// @}

private:
    int m_on;          ///< 1 when switched on
    qelString m_title; ///< the last one set
    int m_percentage;  ///< 0 to 100
    int m_activity;    ///< 1 while active
};

static_assert(sizeof(qelProgressCtrlWindow) == 40, "virtual table, switch, title, percentage, activity");

/**
 * @brief The list of output windows; there is one, see qelProgressCtrl::m_ProgressCtrlWindowController.
 * @ingroup progress
 *
 * Holds the built-in window and those of the host, in the order of the calls.
 *
 * @par Example
 * @code
 * qelProgressCtrlWindowController* list = qelProgressCtrl::m_ProgressCtrlWindowController;
 * list->windows()[0] == &list->defaultWindow();   // == true
 * list->defaultWindow().getOn();                  // == 0
 * @endcode
 *
 * @par Ownership
 * Windows that are added belong to the caller and must live as long as they are in the list.
 *
 */
class QEL_API qelProgressCtrlWindowController
{
public:
    /// Puts the built-in window into the list. Deliberately switched off: a program that never asks sees no dialog.
    qelProgressCtrlWindowController();

    /// The same windows in the same order, except that the copy's own built-in window, in the state of the other one,
    /// takes its place.
    qelProgressCtrlWindowController(const qelProgressCtrlWindowController& other);

    /// Takes over the windows and the state of the built-in one, as the copy does.
    qelProgressCtrlWindowController& operator=(const qelProgressCtrlWindowController& other);

    /// As qelProgressCtrl::appendOutputWindow().
    int append(qelProgressCtrlWindow* window);

    /// The windows in the order of the calls. A window is taken out by a null in its place, which every call skips.
    qelArray<qelProgressCtrlWindow*>& windows();

    /// The built-in window, the first of the list.
    qelProgressCtrlWindow& defaultWindow();

private:
    qelArray<qelProgressCtrlWindow*> m_windows; ///< not owned; null entries are windows that have gone
    qelProgressCtrlWindow m_defaultWindow;
};

static_assert(sizeof(qelProgressCtrlWindowController) == 64, "a list and a window");

/**
 * @brief Shows the progress of a long operation to the user; all members are static.
 * @ingroup progress
 *
 * What working code calls, from anywhere and without an object at hand. Each call goes through the windows in the order
 * of the list and passes over null entries and windows that are switched off. One window is built in, a small dialog
 * with a title, a bar and a percentage (qelProgressCtrlWindow), switched off at first; a host may add windows of its
 * own, derived from it.
 *
 * @par Example
 * @code
 * qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn(); // once, by the host
 *
 * qelProgressCtrl::activate(L"Numbering of parts");                            // == 1, one window
 * for (int part = 1; part <= 200; ++part)
 * {
 *     number(part);
 *     qelProgressCtrl::setPercentage(100 * part / 200);
 *     pumpMessages();                                                          // the host's own
 * }
 * int percent = 0;
 * qelProgressCtrl::getPercentage(percent);                                     // == 1
 * percent;                                                                     // == 100
 * qelProgressCtrl::reset();                                                    // == 1
 * @endcode
 *
 * @par Ownership
 * Windows that are added belong to the caller and must live as long as they are in the list.
 *
 * @par Threads
 * No locks; keep all use on the thread that opened the dialog.
 *
 * @par Cost
 * A call to each window that is switched on; a percentage that has not changed costs a comparison.
 *
 * @par Failure
 * Only a progress bar that cannot be made is shown to the user, in a message box that waits for an answer.
 *
 * @par Percentages
 * They are whole numbers from 0 to 100 and do not run backwards unless forced; others are refused.
 *
 * @par Messages and the user
 * The dialog is modeless, has no owner and belongs to the thread that opened it. It answers the user only while that
 * thread's message loop runs: the library runs none of its own. The user ends the dialog with OK or Cancel (the Escape
 * key, where the host's loop offers it the keys). Nobody is told: the window counts as active until reset() or the next
 * activate(), and calls in between do no harm.
 */
class QEL_API qelProgressCtrl
{
public:
    qelProgressCtrl() = delete;

    /// The one list of windows. Made when the library is loaded; never null.
    static qelProgressCtrlWindowController* m_ProgressCtrlWindowController;

    /// @name To all windows
    /// Each returns how many windows answered with anything but 0.
    /// @{

    /// qelProgressCtrlWindow::activate() of each.
    static int activate(qelString title);

    /// qelProgressCtrlWindow::reset() of each.
    static int reset();

    /// qelProgressCtrlWindow::setTitle() of each.
    static int setTitle(const qelString& title);

    /// qelProgressCtrlWindow::setPercentage() of each.
    static int setPercentage(int percent, int force = 0);
    /// @}

    /// @name From the first window
    /// Each returns 1, or 0 and leaves its argument alone when no window is switched on.
    /// @{

    /// Copies out its title.
    static int getTitle(qelString& title);

    /// Copies out its percentage.
    static int getPercentage(int& percent);
    /// @}

    /**
     * How many windows are switched on and active. When there are none and `fallback` is not 0, the first of the list
     * is deliberately switched on and made to count as active from the next call on, without a dialog; this call still
     * returns 0.
     */
    static int isActive(int fallback = 0);

    /**
     * Adds a window at the end and returns its position; one that is in the list already stays where it is. Every
     * window of the list is switched off first, even when the new one is refused (-1 for null) or known, and the
     * built-in one with them. The new one keeps its switch: a host that wants to see it calls switchOn().
     */
    static int appendOutputWindow(qelProgressCtrlWindow* window);
};

#endif
