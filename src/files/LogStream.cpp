#include "files/LogStream.h"

#include "qelRuntime.h"

#include <windows.h>

#include <io.h>

namespace
{
/// What writers lock is one byte far behind all data, so that nobody is kept from reading or writing the data.
const DWORD kTurnOffsetHigh = 0x40000000;

/// A writer holds its turn for microseconds. A longer wait means that another program has locked the whole file.
const ULONGLONG kLongestWait = 2000;
const int kBusyTries = 100;

OVERLAPPED turn()
{
    OVERLAPPED place = {};
    place.OffsetHigh = kTurnOffsetHigh;
    return place;
}

HANDLE handleOf(FILE* file)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
}

bool lock(HANDLE file)
{
    const ULONGLONG begin = GetTickCount64();
    for (int tries = 0;; ++tries)
    {
        OVERLAPPED place = turn();
        if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place))
        {
            return true;
        }
        // Not every file can be locked: a device, some network drives.
        if (GetLastError() != ERROR_LOCK_VIOLATION || GetTickCount64() - begin >= kLongestWait)
        {
            return false;
        }
        Sleep(tries < kBusyTries ? 0 : 1);
    }
}

void unlock(HANDLE file)
{
    OVERLAPPED place = turn();
    UnlockFileEx(file, 0, 1, 0, &place);
}
} // namespace

LogStream::LogStream(const qelString& fileName)
    : m_file(nullptr)
    , m_locked(false)
{
    qelfopen(&m_file, fileName, L"a+");
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): there is nothing to lock before the file is open
    m_locked = m_file != nullptr && lock(handleOf(m_file));
}

LogStream::~LogStream()
{
    if (m_file == nullptr)
    {
        return;
    }
    (void)fflush(m_file);
    if (m_locked)
    {
        // Closing would do it too, but not where a child process has inherited the file.
        unlock(handleOf(m_file));
    }
    qelfclose(m_file);
}

void LogStream::reset(const qelString& fileName)
{
    FILE* file = nullptr;
    qelfopen(&file, fileName, L"w");
    qelfclose(file);
}

qelString LogStream::orCommonLog(const qelString& fileName)
{
    return fileName.isEmpty() ? qelString(L"c:\\Orvalis.log") : fileName;
}
