/**
 * @file
 * @brief Diagnostic log of time-stamped lines, and a listing of the modules in the process.
 */
#ifndef QEL_LOGFILE_H
#define QEL_LOGFILE_H

#include "qelExport.h"
#include "qelString.h"

#include <stdio.h>

/**
 * @brief Diagnostic log of time-stamped lines, file versions, and a listing of the modules in the process.
 * @ingroup files
 *
 * Lines that survive a crash: every line opens the file, writes and closes it again, so when a call returns, its line
 * has left the process and is there for other programs, whatever happens to the process next. An instance writes to one
 * file while the switch of the process is on (setLogStatus()), which it is not at first; the static members need no
 * switch.
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
 * @par Ownership
 * No file stays open and no name is shared; several instances may write to one file.
 *
 * @par Threads
 * As qelString. Two threads that make the first call of logToFile() together may both empty the file. Lines that
 * several processes or threads append to one file come out whole and complete, in the order in which they got their
 * turn. A line whose turn does not come within 20 ms is written without one, and may then tear another.
 *
 * @par Cost
 * Each line opens and closes a file, up to a millisecond: made for an occasional line. Nothing limits or rotates the
 * files. A log that another program has locked costs each call 20 ms at most, listModules() with all its rows included.
 *
 * @par Failure
 * A line that cannot be written is lost in silence; nothing is thrown or reported but the results of the members,
 * which tell less than it seems: a line on a full disk gives 1, and so does a reset() of what cannot be opened.
 *
 * @par Lines
 * They begin with the local time of day in square brackets, hh:mm:ss without a date. appendWithSave() adds no line end,
 * logToFile() puts one before each line. Text is written in the code page of the C runtime's locale, with carriage
 * returns before line feeds. What the code page lacks ends the line there; the next line is whole again.
 */
class QEL_API qelLogfile
{
public:
    /**
     * A log with that name, of which the first 255 units count. The default lies in the folder that is current when a
     * line is written. Nothing is opened or created yet.
     */
    qelLogfile(qelString fileName = L"Brisken.LOG");

    /// A copy has the same name; it writes to the same file.
    qelLogfile(const qelLogfile&) = default;

    /// Takes over the name.
    qelLogfile& operator=(const qelLogfile&) = default;

    /// Closes a stream that the instance holds, but only while logging is on.
    ~qelLogfile();

    /// Creates or empties the file. 0 while logging is off, else 1, deliberately even when the file cannot be opened or
    /// is a folder.
    int reset();

    /**
     * Appends "[hh:mm:ss] " and the text, as it is: line ends are the caller's. 0 while logging is off or when the file
     * cannot be opened, else 1: deliberately also when the text cannot be written, as on a full disk.
     */
    int appendWithSave(const qelString& text);

    /// @name The switch for all instances of the process
    /// @{

    /// Any value but 0 turns logging on.
    static void setLogStatus(int status);

    /// The value last set; 0 at first.
    static int getLogStatus();
    /// @}

    /**
     * Appends a line end, "[hh:mm:ss] " and the message, whether logging is on or not. An empty name stands for
     * "c:\Orvalis.log". The first call in the process empties its file before; files of later calls are deliberately
     * never emptied, not even when they are used for the first time. Mind the order: the file comes first. Two texts
     * that are swapped write the name of the log into a file named by the message, and may empty one of that name.
     */
    static void logToFile(const qelString& fileName, const qelString& message);

    /**
     * Reads the file version out of a program or library, such as 10.00.19041.0001 for 10.0.19041.1. Returns 1; or 0
     * when the file has none or cannot be read, and `version` then keeps its text. A name without a folder is searched
     * for like a library. `fileName` is only read.
     */
    static int GetFileVersion(qelString& fileName, qelString& version);

    /**
     * Writes a table of every module in the process: the low 32 bits of its address, its size in bytes, its file
     * version and its path. What the file held before is lost. An empty name stands for "c:\Orvalis.log". Each row is
     * safe in the file before the next module is looked at. Nothing is written when the process cannot find itself, and
     * no row when it cannot list its modules.
     */
    static void listModules(const qelString& fileName);

protected:
    /// Closes a stream that the instance holds and returns 1; 0 when there is none or logging is off.
    int assertClose();

private:
    static int doLogging;      ///< switch for the instances
    static int firstLogToFile; ///< 1 until the first call of logToFile()

    qelString m_fileName; ///< at most 255 units
    FILE* m_stream;       ///< null between calls
};

static_assert(sizeof(qelLogfile) == 24, "name and stream");

#endif
