// Appends to a log file. Not part of the public interface.
#ifndef QEL_LOG_STREAM_H
#define QEL_LOG_STREAM_H

#include "qelString.h"

#include <stdio.h>

/// Time that one call may wait for other writers: 20 ms in total.
class LogPatience
{
public:
    /// Yields; false when the time, which starts with the first wait, is over.
    bool wait();

private:
    long long m_end = 0; ///< performance counter; 0 before the first wait
};

/**
 * Opens a log file for appending, locked against other writers while it lives: the runtime seeks and writes in two
 * steps, long lines in several pieces, so lines of two writers would overwrite each other. When the lock is not free in
 * time, it writes anyway. The destructor flushes.
 */
class LogStream
{
public:
    LogStream(const qelString& fileName, LogPatience& patience);
    ~LogStream();

    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;

    /// Null when the file cannot be opened.
    FILE* file() const { return m_file; }

    /// Creates or empties a log file.
    static void reset(const qelString& fileName);

    /// The name; if empty, that of the common log.
    static qelString orCommonLog(const qelString& fileName);

private:
    FILE* m_file;
};

#endif
