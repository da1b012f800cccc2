#include "files/LogStream.h"

#include "qelRuntime.h"

#include <windows.h>

#include <io.h>
#include <share.h>

namespace
{
/// Writers lock one byte far past all data, so that the lock blocks no reading or writing.
const DWORD kTurnOffsetHigh = 0x40000000;

/// A turn takes microseconds. After a longer wait, assume that another program has locked the file.
const long long kLongestWaitMilliseconds = 20;

void takeTurn(HANDLE file, LogPatience& patience)
{
    OVERLAPPED place = {};
    place.OffsetHigh = kTurnOffsetHigh;
    // Not every file can be locked: devices, some network drives.
    while (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) &&
           GetLastError() == ERROR_LOCK_VIOLATION && patience.wait())
    {
    }
}
} // namespace

bool LogPatience::wait()
{
    LARGE_INTEGER now = {};
    QueryPerformanceCounter(&now);
    if (m_end == 0)
    {
        LARGE_INTEGER second = {};
        QueryPerformanceFrequency(&second);
        m_end = now.QuadPart + second.QuadPart * kLongestWaitMilliseconds / 1000;
    }
    if (now.QuadPart >= m_end)
    {
        return false;
    }
    // A longer sleep would last a tick of the system timer, nearly all the time allowed.
    Sleep(0);
    return true;
}

LogStream::LogStream(const qelString& fileName, LogPatience& patience)
    : m_file(_wfopen(fileName.getStringW(), L"a+"))
{
    if (m_file != nullptr)
    {
        takeTurn(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(m_file))), patience);
    }
}

LogStream::~LogStream()
{
    // Flushes, then releases the lock.
    qelfclose(m_file);
}

void LogStream::reset(const qelString& fileName)
{
    // Allocates nothing: the first call of the process must not be lost to a failure here.
    qelfclose(_wfsopen(fileName.getStringW(), L"w", _SH_DENYNO));
}

qelString LogStream::orCommonLog(const qelString& fileName)
{
    return fileName.isEmpty() ? qelString(L"c:\\Orvalis.log") : fileName;
}
