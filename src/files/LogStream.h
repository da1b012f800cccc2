// A log file while it is being written. Not part of the public interface.
#ifndef QEL_LOG_STREAM_H
#define QEL_LOG_STREAM_H

#include "qelString.h"

#include <stdio.h>

/// The time that one call of a host may spend on waiting for other writers: 20 ms in all, whatever it writes.
class LogPatience
{
public:
    /// Lets others run; false when the time, which begins with the first wait, is over.
    bool wait();

private:
    long long m_end = 0; ///< as the performance counter tells time; 0 before the first wait
};

/**
 * Opens a log file for appending and has its turn as long as it lives. The runtime seeks to the end and writes in two
 * steps, and long lines in several pieces, so that lines of two writers would overwrite each other. At the end
 * everything is in the file. Where no turn is to be had in time, it writes all the same.
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

    /// The name, or that of the common log where it is empty.
    static qelString orCommonLog(const qelString& fileName);

private:
    FILE* m_file;
};

#endif
