/**
 * @file
 * @brief Log file that survives crashes, file versions, and a list of loaded modules.
 */
#ifndef QEL_LOGFILE_H
#define QEL_LOGFILE_H

#include "qelExport.h"
#include "qelString.h"

#include <stdio.h>

/**
 * @brief Log file of time-stamped lines that survives crashes; also file versions and a list of loaded modules.
 * @ingroup files
 *
 * Every line opens the file, writes and closes it again, so that the line is in the file when the call returns, even if
 * the process then crashes. An instance writes to one file, and only while logging is on (setLogStatus(); off at
 * first); the static members write always.
 *
 * @par Example
 * @code
 * qelLogfile::setLogStatus(1);
 * qelLogfile log(L"Import.log");
 * log.reset();                                          // == 1
 * log.appendWithSave(L"reading model.mdb\n");           // == 1, [14:05:09] reading model.mdb
 *
 * qelLogfile::logToFile(L"Start.log", L"licence found");
 * qelLogfile::listModules(L"Modules.log");
 * qelFileExists(L"Modules.log");                        // == 1
 * @endcode
 *
 * @par Threads
 * Not thread-safe, like qelString; two threads that make the first call of logToFile() at once may both empty the file.
 * Several instances, and several processes, may append to one file: lines come out whole. A line that has waited for 20
 * ms is written anyway, and may then tear another.
 *
 * @par Cost
 * Up to a millisecond per line: made for occasional lines. Files are neither limited nor rotated. A log locked by
 * another program delays each call by at most 20 ms, a whole listModules() included.
 *
 * @par Failure
 * A line that cannot be written is silently dropped. A result of 1 does not prove success: a line on a full disk gives
 * 1, and so does reset() of a file that cannot be opened.
 *
 * @par Lines
 * They begin with the local time as [hh:mm:ss], without a date. appendWithSave() adds no line end, logToFile() puts one
 * before each line. Text is written in the code page of the C runtime's locale, line feeds as CR LF. A character that
 * the code page lacks truncates the line there; the next line is whole again.
 */
class QEL_API qelLogfile
{
public:
    /**
     * A log with that file name, truncated to 255 units. A relative name is in the folder that is current when a line
     * is written. Nothing is opened or created yet.
     */
    qelLogfile(qelString fileName = L"Brisken.LOG");

    /// A copy has the same name; it writes to the same file.
    qelLogfile(const qelLogfile&) = default;

    /// Takes over the name.
    qelLogfile& operator=(const qelLogfile&) = default;

    /// Closes an open stream, but only while logging is on.
    ~qelLogfile();

    /// Creates or empties the file. 0 while logging is off, else 1, deliberately also when the file cannot be opened.
    int reset();

    /**
     * Appends "[hh:mm:ss] " and `text`, without a line end. 0 while logging is off or when the file cannot be opened,
     * else 1, deliberately also when writing fails.
     */
    int appendWithSave(const qelString& text);

    /// @name Switch for all instances of the process
    /// @{

    /// Any value but 0 turns logging on.
    static void setLogStatus(int status);

    /// The value last set; 0 at first.
    static int getLogStatus();
    /// @}

    /**
     * Appends a line end, "[hh:mm:ss] " and the message, whether logging is on or not. An empty name means
     * "c:\Orvalis.log". The first call in the process empties its file first; deliberately, no later call empties one,
     * not even a file not used before. The file name comes first: swapped arguments write the name of the log to a file
     * named like the message, and may empty it.
     */
    static void logToFile(const qelString& fileName, const qelString& message);

    /**
     * Reads the file version of a program or library, such as 10.00.19041.0001 for 10.0.19041.1. Returns 1; or 0,
     * leaving `version` alone, when the file has none or cannot be read. A name without a folder is searched for like a
     * DLL. `fileName` is only read.
     */
    static int GetFileVersion(qelString& fileName, qelString& version);

    /**
     * Replaces the file with a table of every module in the process: low 32 bits of the address, size in bytes, file
     * version and path. An empty name means "c:\Orvalis.log". Each row is in the file before the next module is looked
     * at. Writes nothing when the process cannot open itself, and no rows when it cannot list its modules.
     */
    static void listModules(const qelString& fileName);

protected:
    /// Closes an open stream and returns 1; 0 when there is none or logging is off.
    int assertClose();

private:
    static int doLogging;      ///< switch for all instances
    static int firstLogToFile; ///< 1 until the first call of logToFile()

    qelString m_fileName; ///< at most 255 units
    FILE* m_stream;       ///< null between calls
};

static_assert(sizeof(qelLogfile) == 24, "name and stream");

#endif
