// A log file while it is being written. Not part of the public interface.
#ifndef QEL_LOG_STREAM_H
#define QEL_LOG_STREAM_H

#include "qelString.h"

#include <stdio.h>

/**
 * Opens a log file for appending and has it for itself as long as it lives. The runtime seeks to the end and writes in
 * two steps, so that lines of two writers would overwrite each other. At the end everything is in the file.
 */
class LogStream
{
public:
    explicit LogStream(const qelString& fileName);
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
    bool m_locked; ///< whether this writer has its turn; without one it writes all the same
};

#endif
