/**
 * @file
 * @brief A developer's stopwatch that writes to a log.
 *
 * @code
 * qelPerfMonitor monitor;                   // BriskenPerf.LOG in the current folder
 * monitor.start(L"Load");                   // [10:15:02] Start = Load : 1200
 * loadModel();
 * monitor.end(L"Load");                     // [10:15:04] End = Load : 1200 -> 3450 (Diff = 2250)
 * @endcode
 *
 * - **Times** are milliseconds since the process began, as the C runtime's `clock` gives them: time on the wall, to
 *   the nearest ticks of the system (about 15 ms). They wrap after 24.8 days.
 * - **The log** is a `qelLogfile`: it is written only while qelLogfile::setLogStatus() has it on, and no line ends are
 *   added, so that a start and its end stand on one line of the file.
 * - **Scale**: stretches of some 100 milliseconds and more; each line costs opening and closing a file.
 * - **Ownership**: no file stays open between calls.
 * - **Failure**: a log that cannot be written is lost in silence. A label that leaves no room for the times is refused
 *   as by qelString::format(): the line then holds the time of day only.
 * - **Threads**: one instance belongs to one thread; otherwise as `qelString`.
 */
#ifndef QEL_PERF_MONITOR_H
#define QEL_PERF_MONITOR_H

#include "qelExport.h"
#include "qelLogfile.h"
#include "qelString.h"

/// @brief Times one stretch of work after the other; see the head of this file.
class QEL_API qelPerfMonitor
{
public:
    /// A monitor that writes to that file, of whose name the first 255 units count. It does not start yet.
    qelPerfMonitor(const qelString& fileName = L"BriskenPerf.LOG");

    /// Takes the time and logs "Start = label : time".
    void start(const qelString& label);

    /**
     * Takes the time and logs "End = label : start -> end (Diff = difference)". It may be called again and counts from
     * the last start() each time, and without any start() from 0.
     */
    void end(const qelString& label);

    /// As end(), and shows the same times in a box, whether logging is on or not. Returns when the user closes it.
    void endWithMessageBox(const qelString& label);

private:
    /// From the last start to the last end, in milliseconds.
    qelLogfile m_log;
    int m_startTicks; ///< milliseconds at the last start(); 0 before it
    int m_endTicks;   ///< milliseconds at the last end()
};

static_assert(sizeof(qelPerfMonitor) == 32, "log and two times");

#endif
