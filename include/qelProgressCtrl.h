/**
 * @file
 * @brief Progress dialog.
 */
#ifndef QEL_PROGRESS_CTRL_H
#define QEL_PROGRESS_CTRL_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Progress dialog; base class of a host's own progress displays.
 * @ingroup progress
 *
 * A small dialog with a title, a bar and a percentage: an output window of qelProgressCtrl. A host that shows progress
 * in another way derives from this class.
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
 * All objects of this class share one dialog: the object that opens it takes it over from the previous one, which still
 * counts as active and from then on writes to the new one's dialog. A copy of an active window shares its dialog
 * likewise. Destroying a window does not close the dialog; call reset() first.
 *
 * @par Threads
 * The dialog belongs to the thread that opened it; keep all use there.
 *
 * @par Failure
 * When the progress bar cannot be created, a message box says so and waits for an answer.
 */
class QEL_API qelProgressCtrlWindow
{
public:
    /// Switched off, not active, at 0 percent and without a title.
    qelProgressCtrlWindow();

    /// Copies all members; opens no dialog.
    qelProgressCtrlWindow(const qelProgressCtrlWindow& other);

    /// Does not close the dialog.
    virtual ~qelProgressCtrlWindow();

    /// Copies all members.
    qelProgressCtrlWindow& operator=(const qelProgressCtrlWindow& other);

    /// @name To override in a host's own window
    /// @{

    /**
     * After a reset(), opens a new dialog with that title. Returns the activity: 1, or 0 when the dialog cannot be
     * created or host code that Windows ran meanwhile has closed or replaced it.
     */
    virtual int activate(qelString title);

    /// Closes the dialog if active, and goes back to 0 percent and inactive. Always returns 1.
    virtual int reset();

    /**
     * Sets the percentage. Returns 0 and does nothing when it is outside 0..100, unchanged, or lower (unless `force` is
     * not 0); otherwise returns the activity. Works on an inactive window too.
     */
    virtual int setPercentage(int percent, int force = 0);

    /// Sets the title and, when active, shows it. Returns the activity.
    virtual int setTitle(const qelString& title);
    /// @}

    /// @name State
    /// @{

    /// Gets the title set last; returns the activity.
    int getTitle(qelString& title) const;

    /// Gets the percentage set last; returns the activity.
    int getPercentage(int& percent) const;

    /// The activity: 1 from activate() to reset(), even when the user has closed the dialog.
    int isActive() const;

#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers" // const is part of the exported name for hosts of Visual C++
#endif
    /// Same as isActive().
    const int getActivity() const;

    /// 1 when qelProgressCtrl calls the window, else 0.
    const int getOn() const;
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic pop
#endif

    /// For derived classes; neither opens nor closes the dialog.
    void setActivity(int value);

    /// From now on qelProgressCtrl calls the window.
    void switchOn();

    /// From now on qelProgressCtrl skips the window; what it shows stays.
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
 * @brief List of the output windows of qelProgressCtrl.
 * @ingroup progress
 *
 * Holds the built-in window and those of the host, in calling order. There is one,
 * qelProgressCtrl::m_ProgressCtrlWindowController.
 *
 * @par Example
 * @code
 * qelProgressCtrlWindowController* list = qelProgressCtrl::m_ProgressCtrlWindowController;
 * list->windows()[0] == &list->defaultWindow();   // == true
 * list->defaultWindow().getOn();                  // == 0
 * @endcode
 *
 * @par Ownership
 * The caller owns added windows, which must outlive their place in the list.
 */
class QEL_API qelProgressCtrlWindowController
{
public:
    /// Puts the built-in window into the list, deliberately switched off: no dialog appears unless the host asks for
    /// it.
    qelProgressCtrlWindowController();

    /// The same windows in the same order, but with its own copy of the built-in window.
    qelProgressCtrlWindowController(const qelProgressCtrlWindowController& other);

    /// The same for assignment.
    qelProgressCtrlWindowController& operator=(const qelProgressCtrlWindowController& other);

    /// Same as qelProgressCtrl::appendOutputWindow().
    int append(qelProgressCtrlWindow* window);

    /// The windows in calling order. To remove one, set its entry to null, which every call skips.
    qelArray<qelProgressCtrlWindow*>& windows();

    /// The built-in window, the first of the list.
    qelProgressCtrlWindow& defaultWindow();

private:
    qelArray<qelProgressCtrlWindow*> m_windows; ///< not owned; null entries are removed windows
    qelProgressCtrlWindow m_defaultWindow;
};

static_assert(sizeof(qelProgressCtrlWindowController) == 64, "a list and a window");

/**
 * @brief Progress dialog for long operations; all members are static.
 * @ingroup progress
 *
 * Working code calls it from anywhere, without an object. Each call goes to all windows that are switched on, in the
 * order of the list. One window is built in, a small dialog with a title, a bar and a percentage
 * (qelProgressCtrlWindow), switched off at first; a host may add windows derived from it.
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
 * The caller owns added windows, which must outlive their place in the list.
 *
 * @par Threads
 * Not thread-safe: keep all use on the thread that opened the dialog.
 *
 * @par Percentages
 * Whole numbers from 0 to 100, which never decrease unless forced; others are ignored.
 *
 * @par Messages and the user
 * The dialog is modeless, has no owner and belongs to the thread that opened it. It reacts only while that thread's
 * message loop runs: the library runs none. The user closes the dialog with OK or Cancel (or Escape, where the host's
 * loop calls IsDialogMessage). The host is not notified: the window counts as active until reset() or the next
 * activate(), and calls in between are harmless.
 */
class QEL_API qelProgressCtrl
{
public:
    qelProgressCtrl() = delete;

    /// The list of windows. Made when the library is loaded; never null.
    static qelProgressCtrlWindowController* m_ProgressCtrlWindowController;

    /// @name To all windows
    /// Each returns how many windows returned non-zero.
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

    /// Gets its title.
    static int getTitle(qelString& title);

    /// Gets its percentage.
    static int getPercentage(int& percent);
    /// @}

    /**
     * How many windows are switched on and active. When there are none and `fallback` is not 0, deliberately switches
     * the first window on and makes it count as active from the next call on, without a dialog; this call still returns
     * 0.
     */
    static int isActive(int fallback = 0);

    /**
     * Adds a window at the end and returns its position; one already in the list stays where it is; -1 for null. In
     * every case all windows of the list, the built-in one included, are switched off first. A new window keeps its
     * state: call switchOn() to see it.
     */
    static int appendOutputWindow(qelProgressCtrlWindow* window);
};

#endif
