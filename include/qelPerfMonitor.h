/**
 * @file
 * @brief Stopwatch that writes to a log file.
 */
#ifndef QEL_PERF_MONITOR_H
#define QEL_PERF_MONITOR_H

#include "qelExport.h"
#include "qelLogfile.h"
#include "qelString.h"

/**
 * @brief Stopwatch that writes to a log file.
 * @ingroup files
 *
 * For developers: times work that takes about 100 milliseconds or more. The log is a qelLogfile: it is written only
 * while logging is on (qelLogfile::setLogStatus()), and without line ends, so a start and its end are on one line of
 * the file.
 *
 * @par Example
 * @code
 * qelLogfile::setLogStatus(1);
 * qelPerfMonitor monitor;                   // BriskenPerf.LOG in the current folder
 * monitor.start(L"Load");                   // [10:15:02] Start = Load : 1200
 * loadModel();
 * monitor.end(L"Load");                     // [10:15:04] End = Load : 1200 -> 3450 (Diff = 2250)
 * qelFileExists(L"BriskenPerf.LOG");        // == 1
 * @endcode
 *
 * @par Cost
 * Each line takes up to a millisecond, after the time was taken.
 *
 * @par Failure
 * A line that cannot be written is silently dropped. A label too long for qelString::format() leaves a line with the
 * time of day only.
 *
 * @par Times
 * Milliseconds since the process began, from the C runtime's `clock`: wall-clock time, with the resolution of the
 * system timer (about 15 ms). They wrap after 24.8 days.
 */
class QEL_API qelPerfMonitor
{
public:
    /// A stopped monitor that writes to that file; the name is truncated to 255 units.
    qelPerfMonitor(const qelString& fileName = L"BriskenPerf.LOG");

    /// Starts timing and logs "Start = label : time".
    void start(const qelString& label);

    /**
     * Logs "End = label : start -> end (Diff = difference)". May be called again: each call counts from the last
     * start(), or from 0 without one.
     */
    void end(const qelString& label);

    /// Like end(), and shows the same times in a message box, whether logging is on or not. Returns when the user
    /// closes it.
    void endWithMessageBox(const qelString& label);

private:
    qelLogfile m_log;
    int m_startTicks; ///< milliseconds at the last start(); 0 before it
    int m_endTicks;   ///< milliseconds at the last end()
};

static_assert(sizeof(qelPerfMonitor) == 32, "log and two times");

#endif
