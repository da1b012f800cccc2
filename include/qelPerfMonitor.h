/**
 * @file
 * @brief A developer's stopwatch that writes to a log.
 */
#ifndef QEL_PERF_MONITOR_H
#define QEL_PERF_MONITOR_H

#include "qelExport.h"
#include "qelLogfile.h"
#include "qelString.h"

/**
 * @brief A developer's stopwatch that writes to a log.
 * @ingroup files
 *
 * Times one stretch of work after the other, from some 100 milliseconds up. The log is a qelLogfile: it is written only
 * while qelLogfile::setLogStatus() has it on, and no line ends are added, so that a start and its end stand on one line
 * of the file.
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
 * @par Ownership
 * A monitor keeps a name and two times; no file stays open between calls.
 *
 * @par Threads
 * One instance belongs to one thread; otherwise as qelString.
 *
 * @par Cost
 * Each line opens and closes a file, up to a millisecond, after the time was taken.
 *
 * @par Failure
 * A log that cannot be written is lost in silence. A label that leaves no room for the times is refused as by
 * qelString::format(): the line then holds the time of day only.
 *
 * @par Times
 * They are milliseconds since the process began, as the C runtime's `clock` gives them: time on the wall, to the
 * nearest ticks of the system (about 15 ms). They wrap after 24.8 days.
 */
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
    qelLogfile m_log;
    int m_startTicks; ///< milliseconds at the last start(); 0 before it
    int m_endTicks;   ///< milliseconds at the last end()
};

static_assert(sizeof(qelPerfMonitor) == 32, "log and two times");

#endif
