#include "qelLogfile.h"

#include "files/LogStream.h"
#include "qelRuntime.h"

namespace
{
const int kMaxName = 255;
const size_t kTimeCapacity = 80;

/// Result of the formatted write; 0 when the file cannot be opened.
int append(const qelString& fileName, const wchar_t* format, const qelString& text)
{
    LogPatience patience;
    const LogStream log(fileName, patience);
    if (log.file() == nullptr)
    {
        return 0;
    }
    wchar_t time[kTimeCapacity] = {};
    qelwstrtime8(time, kTimeCapacity);
    return qelfprintf(log.file(), format, time, text.getStringW());
}
} // namespace

qelLogfile::qelLogfile(qelString fileName)
    : m_stream(nullptr)
{
    m_fileName.copy(fileName, 0, kMaxName);
}

qelLogfile::~qelLogfile()
{
    assertClose();
}

int qelLogfile::reset()
{
    if (doLogging == 0)
    {
        return 0;
    }
    assertClose();
    LogStream::reset(m_fileName);
    return 1;
}

int qelLogfile::appendWithSave(const qelString& text)
{
    if (doLogging == 0)
    {
        return 0;
    }
    assertClose();
    // A negative result, for text that cannot be written, counts as success.
    return append(m_fileName, L"[%s] %s", text) != 0 ? 1 : 0;
}

void qelLogfile::setLogStatus(int status)
{
    doLogging = status;
}

int qelLogfile::getLogStatus()
{
    return doLogging;
}

void qelLogfile::logToFile(const qelString& fileName, const qelString& message)
{
    const qelString target = LogStream::orCommonLog(fileName);
    // Deliberately one flag for the process, not one per file.
    if (firstLogToFile == 1)
    {
        firstLogToFile = 0;
        LogStream::reset(target);
    }
    append(target, L"\n[%s] %s", message);
}

int qelLogfile::assertClose()
{
    if (doLogging == 0 || m_stream == nullptr)
    {
        return 0;
    }
    qelfclose(m_stream);
    m_stream = nullptr;
    return 1;
}
