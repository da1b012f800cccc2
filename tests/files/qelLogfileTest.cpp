// Instances of the log file. What happens once in a process is tested in qelLogToFileTest.cpp.

#include "qelLogfile.h"

#include "files/Logging.h"
#include "support/ImportHook.h"
#include "support/PrivateMembers.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <limits.h>
#include <share.h>

using qelTest::ImportHook;
using qelTest::Logging;
using qelTest::TestFile;

struct HeldStream
{
    using type = FILE* qelLogfile::*;
    friend type member(HeldStream);
};

template struct PrivateMember<HeldStream, &qelLogfile::m_stream>;

namespace
{
struct OpenLogfile : qelLogfile
{
    using qelLogfile::assertClose;
    using qelLogfile::qelLogfile;
};

bool isClosed(const TestFile& file)
{
    const HANDLE alone = CreateFileW(file.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (alone == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    CloseHandle(alone);
    return true;
}

/// A file that nobody else can open.
class Taken
{
public:
    explicit Taken(const TestFile& file)
        : m_handle(CreateFileW(file.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr))
    {
    }

    ~Taken() { CloseHandle(m_handle); }

    Taken(const Taken&) = delete;
    Taken& operator=(const Taken&) = delete;

private:
    HANDLE m_handle;
};

/// Makes a file read-only, and says whether the system cares: some let their administrator write all the same.
class ReadOnly
{
public:
    explicit ReadOnly(const TestFile& file)
        : m_path(file.widePath())
    {
        SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_READONLY);
        const HANDLE opened = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        m_refusesWriters = opened == INVALID_HANDLE_VALUE;
        CloseHandle(opened);
    }

    ~ReadOnly() { SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL); }

    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

    bool refusesWriters() const { return m_refusesWriters; }

private:
    std::wstring m_path;
    bool m_refusesWriters;
};

class qelLogfileStatus : public Logging
{
};

class qelLogfileAppend : public Logging
{
};

class qelLogfileReset : public Logging
{
};

class qelLogfileStream : public Logging
{
protected:
    void hold(qelLogfile& log)
    {
        m_file.set("");
        log.*member(HeldStream()) = _wfsopen(m_file.widePath().c_str(), L"r", _SH_DENYNO);
        ASSERT_FALSE(isClosed(m_file));
    }

    static FILE* held(qelLogfile& log) { return log.*member(HeldStream()); }
};

class qelLogfileTurn : public Logging
{
protected:
    void SetUp() override
    {
        Logging::SetUp();
        file = m_file.widePath();
        locks = 0;
    }

    static BOOL WINAPI watchLock(HANDLE handle, DWORD flags, DWORD reserved, DWORD low, DWORD high, OVERLAPPED* at)
    {
        ++locks;
        region = *at;
        bytesLow = low;
        bytesHigh = high;
        return LockFileEx(handle, flags, reserved, low, high, at);
    }

    static BOOL WINAPI refuseAsUnsupported(HANDLE, DWORD, DWORD, DWORD, DWORD, OVERLAPPED*)
    {
        ++locks;
        SetLastError(ERROR_INVALID_FUNCTION);
        return FALSE;
    }

    static BOOL WINAPI refuseThreeTimes(HANDLE handle, DWORD flags, DWORD reserved, DWORD low, DWORD high,
                                        OVERLAPPED* at)
    {
        if (++locks > 3)
        {
            return LockFileEx(handle, flags, reserved, low, high, at);
        }
        SetLastError(ERROR_LOCK_VIOLATION);
        return FALSE;
    }

    static double milliseconds()
    {
        LARGE_INTEGER now = {};
        LARGE_INTEGER second = {};
        QueryPerformanceCounter(&now);
        QueryPerformanceFrequency(&second);
        return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(second.QuadPart);
    }

    static HANDLE openForAppending()
    {
        return CreateFileW(file.c_str(), GENERIC_READ | FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_ALWAYS, 0, nullptr);
    }

    static BOOL lockRegion(HANDLE handle)
    {
        OVERLAPPED at = region;
        return LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, bytesLow, bytesHigh, &at);
    }

    static std::wstring file;
    static int locks;
    static OVERLAPPED region;
    static DWORD bytesLow;
    static DWORD bytesHigh;
};

std::wstring qelLogfileTurn::file;
int qelLogfileTurn::locks = 0;
OVERLAPPED qelLogfileTurn::region = {};
DWORD qelLogfileTurn::bytesLow = 0;
DWORD qelLogfileTurn::bytesHigh = 0;

TEST_F(qelLogfileStatus, KeepsAnyValue)
{
    for (int status : {5, -1, 0, 1, INT_MIN})
    {
        qelLogfile::setLogStatus(status);
        EXPECT_EQ(qelLogfile::getLogStatus(), status);
    }
}

TEST_F(qelLogfileStatus, IsOnForAnyValueButZero)
{
    qelLogfile log(m_file.path());
    qelLogfile::setLogStatus(-7);
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_EQ(content(), "[now] a");
}

TEST_F(qelLogfileStatus, HoldsForInstancesMadeBefore)
{
    qelLogfile::setLogStatus(0);
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(L"a"), 0);
    qelLogfile::setLogStatus(1);
    EXPECT_EQ(log.appendWithSave(L"b"), 1);
    EXPECT_EQ(content(), "[now] b");
}

TEST_F(qelLogfileAppend, ReturnsZeroAndCreatesNoFileWhileLoggingIsOff)
{
    qelLogfile::setLogStatus(0);
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(L"a"), 0);
    EXPECT_FALSE(m_file.exists());
}

TEST_F(qelLogfileAppend, CreatesTheFileAndReturnsOne)
{
    qelLogfile log(m_file.path());
    EXPECT_FALSE(m_file.exists());
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_EQ(content(), "[now] a");
}

TEST_F(qelLogfileAppend, RunsTextsWithoutLineEndsTogether)
{
    qelLogfile log(m_file.path());
    log.appendWithSave(L"a");
    log.appendWithSave(L"b");
    EXPECT_EQ(content(), "[now] a[now] b");
}

TEST_F(qelLogfileAppend, WritesTheLineEndsOfTheText)
{
    qelLogfile log(m_file.path());
    log.appendWithSave(L"a\nb\n");
    log.appendWithSave(L"c");
    EXPECT_EQ(content(), "[now] a\r\nb\r\n[now] c");
}

TEST_F(qelLogfileAppend, KeepsWhatTheFileHeld)
{
    m_file.set("before\r\n");
    qelLogfile log(m_file.path());
    log.appendWithSave(L"after");
    EXPECT_EQ(content(), "before\r\n[now] after");
}

TEST_F(qelLogfileAppend, WritesTheTimeForAnEmptyText)
{
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(L""), 1);
    EXPECT_EQ(content(), "[now] ");
}

TEST_F(qelLogfileAppend, DoesNotTakeTheTextForAFormat)
{
    qelLogfile log(m_file.path());
    log.appendWithSave(L"100%s %d %n %%");
    EXPECT_EQ(content(), "[now] 100%s %d %n %%");
}

TEST_F(qelLogfileAppend, WritesTheLongestText)
{
    const std::wstring text(qelString::kMaxLength, L'x');
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(text.c_str()), 1);
    EXPECT_EQ(content(), "[now] " + std::string(text.size(), 'x'));
}

TEST_F(qelLogfileAppend, EndsTheLineAtWhatTheStreamLacksAndWritesTheNextOne)
{
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(L"a\u4E2Db\n"), 1) << "the runtime's error counts as written";
    EXPECT_EQ(log.appendWithSave(L"next"), 1);
    EXPECT_EQ(content(), "[now] a[now] next");
}

TEST_F(qelLogfileAppend, LeavesTheFileClosed)
{
    qelLogfile log(m_file.path());
    log.appendWithSave(L"a");
    EXPECT_TRUE(isClosed(m_file));
    log.appendWithSave(L"\u4E2D");
    EXPECT_TRUE(isClosed(m_file));
}

TEST_F(qelLogfileAppend, WritesWhileOthersReadAndAppend)
{
    qelLogfile log(m_file.path());
    log.appendWithSave(L"1\n");
    const HANDLE other = CreateFileW(m_file.widePath().c_str(), GENERIC_READ | FILE_APPEND_DATA,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(log.appendWithSave(L"2\n"), 1);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(other, "other\r\n", 7, &written, nullptr));
    EXPECT_EQ(log.appendWithSave(L"3\n"), 1);
    CloseHandle(other);
    EXPECT_EQ(content(), "[now] 1\r\n[now] 2\r\nother\r\n[now] 3\r\n");
}

TEST_F(qelLogfileAppend, WritesToTheFileOfTheOriginalThroughACopy)
{
    qelLogfile log(m_file.path());
    qelLogfile copied(log);
    qelLogfile assigned(L"elsewhere.log");
    assigned = log;
    EXPECT_EQ(copied.appendWithSave(L"a"), 1);
    EXPECT_EQ(assigned.appendWithSave(L"b"), 1);
    EXPECT_EQ(content(), "[now] a[now] b");
}

TEST_F(qelLogfileAppend, CutsTheNameTo255Units)
{
    std::wstring name = m_file.widePath() + L"-";
    name.resize(300, L'n');
    const std::wstring cut = name.substr(0, 255);
    DeleteFileW(cut.c_str());

    qelLogfile log(name.c_str());
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_TRUE(DeleteFileW(cut.c_str()));
}

TEST_F(qelLogfileAppend, KeepsANameOf255Units)
{
    std::wstring name = m_file.widePath() + L"-";
    name.resize(255, L'n');
    qelLogfile log(name.c_str());
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_TRUE(DeleteFileW(name.c_str()));
}

TEST_F(qelLogfileAppend, TakesANameOutsideTheAnsiCodePage)
{
    const TestFile foreign(L"-\u65E5\u8A8C-\u0416.log");
    qelLogfile log(foreign.path());
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_EQ(m_times.withoutTimes(foreign.get()), "[now] a");
}

TEST_F(qelLogfileAppend, ReturnsZeroForAReadOnlyFileAndLeavesItAlone)
{
    m_file.set("kept");
    const ReadOnly file(m_file);
    EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"a"), file.refusesWriters() ? 0 : 1);
    EXPECT_EQ(content(), file.refusesWriters() ? "kept" : "kept[now] a");
}

TEST_F(qelLogfileAppend, ReturnsZeroForAFileThatAnotherProgramKeeps)
{
    m_file.set("kept");
    {
        const Taken file(m_file);
        EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"a"), 0);
    }
    EXPECT_EQ(content(), "kept");
}

TEST_F(qelLogfileAppend, ReturnsZeroForAFolder)
{
    ASSERT_TRUE(CreateDirectoryW(m_file.widePath().c_str(), nullptr));
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.appendWithSave(L"a"), 0);
}

TEST_F(qelLogfileAppend, ReturnsZeroForAMissingFolderAndForNoName)
{
    EXPECT_EQ(qelLogfile(m_file.path() + L"\\missing\\a.log").appendWithSave(L"a"), 0);
    EXPECT_EQ(qelLogfile(L"").appendWithSave(L"a"), 0);
    EXPECT_EQ(qelLogfile(L"a<b>|?.log").appendWithSave(L"a"), 0);
}

TEST_F(qelLogfileAppend, ReturnsOneOnAFullDiskAndWritesElsewhereAfterIt)
{
    const wchar_t fullDisk[] = L"Z:\\dev\\full";
    const HANDLE probe =
        CreateFileW(fullDisk, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (probe == INVALID_HANDLE_VALUE)
    {
        GTEST_SKIP() << "this system has no disk that is always full";
    }
    DWORD written = 0;
    ASSERT_FALSE(WriteFile(probe, "a", 1, &written, nullptr));
    ASSERT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    CloseHandle(probe);
    qelLogfile full(fullDisk);
    EXPECT_EQ(full.appendWithSave(L"a"), 1) << "the write into the stream's buffer succeeds";
    EXPECT_EQ(full.appendWithSave(std::wstring(100000, L'x').c_str()), 1) << "a runtime error counts as written";
    EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"b"), 1);
    EXPECT_EQ(content(), "[now] b");
}

TEST_F(qelLogfileReset, ReturnsZeroAndLeavesTheFileAloneWhileLoggingIsOff)
{
    qelLogfile::setLogStatus(0);
    m_file.set("kept");
    EXPECT_EQ(qelLogfile(m_file.path()).reset(), 0);
    EXPECT_EQ(content(), "kept");
}

TEST_F(qelLogfileReset, EmptiesTheFile)
{
    m_file.set("lost");
    qelLogfile log(m_file.path());
    EXPECT_EQ(log.reset(), 1);
    EXPECT_EQ(content(), "");
    EXPECT_TRUE(isClosed(m_file));
    log.appendWithSave(L"a");
    EXPECT_EQ(content(), "[now] a");
}

TEST_F(qelLogfileReset, CreatesTheFile)
{
    EXPECT_EQ(qelLogfile(m_file.path()).reset(), 1);
    EXPECT_TRUE(m_file.exists());
}

TEST_F(qelLogfileReset, ReturnsOneAllTheSameWhenTheFileCannotBeOpened)
{
    m_file.set("kept");
    {
        const Taken file(m_file);
        EXPECT_EQ(qelLogfile(m_file.path()).reset(), 1);
    }
    EXPECT_EQ(content(), "kept");
    EXPECT_EQ(qelLogfile(m_file.path() + L"\\missing\\a.log").reset(), 1);
    EXPECT_EQ(qelLogfile(L"").reset(), 1);
}

TEST_F(qelLogfileStream, IsNullBetweenCalls)
{
    qelLogfile log(m_file.path());
    EXPECT_EQ(held(log), nullptr);
    log.reset();
    EXPECT_EQ(held(log), nullptr);
    log.appendWithSave(L"a");
    EXPECT_EQ(held(log), nullptr);
}

TEST_F(qelLogfileStream, IsClosedByAssertCloseOnlyWhileLoggingIsOn)
{
    OpenLogfile log(m_file.path());
    EXPECT_EQ(log.assertClose(), 0) << "nothing to close";
    hold(log);
    qelLogfile::setLogStatus(0);
    EXPECT_EQ(log.assertClose(), 0);
    EXPECT_NE(held(log), nullptr);
    EXPECT_FALSE(isClosed(m_file));

    qelLogfile::setLogStatus(1);
    EXPECT_EQ(log.assertClose(), 1);
    EXPECT_EQ(held(log), nullptr);
    EXPECT_TRUE(isClosed(m_file));
    EXPECT_EQ(log.assertClose(), 0);
}

TEST_F(qelLogfileStream, IsClosedByTheDestructorOnlyWhileLoggingIsOn)
{
    FILE* left = nullptr;
    {
        qelLogfile log(m_file.path());
        hold(log);
        left = held(log);
        qelLogfile::setLogStatus(0);
    }
    EXPECT_FALSE(isClosed(m_file));
    qelLogfile::setLogStatus(1);
    {
        qelLogfile log(m_file.path());
        log.*member(HeldStream()) = left;
    }
    EXPECT_TRUE(isClosed(m_file));
}

TEST_F(qelLogfileStream, IsClosedByResetAndByAppending)
{
    qelLogfile log(m_file.path());
    hold(log);
    EXPECT_EQ(log.reset(), 1);
    EXPECT_EQ(held(log), nullptr);
    EXPECT_TRUE(isClosed(m_file));

    hold(log);
    EXPECT_EQ(log.appendWithSave(L"a"), 1);
    EXPECT_EQ(held(log), nullptr);
    EXPECT_TRUE(isClosed(m_file));
    EXPECT_EQ(content(), "[now] a");
}

TEST_F(qelLogfileStream, IsCopiedWithTheName)
{
    qelLogfile log(m_file.path());
    hold(log);
    qelLogfile copied(log);
    EXPECT_EQ(held(copied), held(log));
    qelLogfile assigned;
    assigned = log;
    EXPECT_EQ(held(assigned), held(log));
    copied.*member(HeldStream()) = nullptr;
    assigned.*member(HeldStream()) = nullptr;
}

TEST_F(qelLogfileTurn, EndsWithTheLine)
{
    const ImportHook lock("LockFileEx", &watchLock);
    qelLogfile(m_file.path()).appendWithSave(L"a");
    EXPECT_EQ(locks, 1);

    const HANDLE other = openForAppending();
    EXPECT_TRUE(lockRegion(other));
    CloseHandle(other);
}

TEST_F(qelLogfileTurn, TakesNoByteThatALogCouldHave)
{
    const ImportHook lock("LockFileEx", &watchLock);
    qelLogfile(m_file.path()).appendWithSave(L"a");
    EXPECT_EQ(bytesLow, 1u);
    EXPECT_EQ(bytesHigh, 0u);
    // Behind four exabytes, and the same in every version of the library: writers of one log have to agree.
    EXPECT_EQ(region.OffsetHigh, 0x40000000u);
}

TEST_F(qelLogfileTurn, IsWaitedFor)
{
    const ImportHook lock("LockFileEx", &refuseThreeTimes);
    EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"a"), 1);
    EXPECT_EQ(locks, 4);
    EXPECT_EQ(content(), "[now] a");
}

TEST_F(qelLogfileTurn, IsNotNeededWhereFilesCannotBeLocked)
{
    const ImportHook lock("LockFileEx", &refuseAsUnsupported);
    EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"a"), 1);
    EXPECT_EQ(locks, 1);
    EXPECT_EQ(content(), "[now] a");
    EXPECT_TRUE(isClosed(m_file));
}

TEST_F(qelLogfileTurn, IsGivenUpAfterTwentyMilliseconds)
{
    {
        const ImportHook lock("LockFileEx", &watchLock);
        qelLogfile(m_file.path()).appendWithSave(L"a");
    }
    const HANDLE other = openForAppending();
    ASSERT_TRUE(lockRegion(other));
    // The shortest of several: the system may take the processor away for longer.
    double shortest = 1000;
    for (int line = 0; line < 10; ++line)
    {
        const double begin = milliseconds();
        EXPECT_EQ(qelLogfile(m_file.path()).appendWithSave(L"b"), 1);
        const double waited = milliseconds() - begin;
        EXPECT_GE(waited, 19.0);
        shortest = waited < shortest ? waited : shortest;
    }
    CloseHandle(other);
    EXPECT_LE(shortest, 30.0);
    std::string expected = "[now] a";
    for (int line = 0; line < 10; ++line)
    {
        expected += "[now] b";
    }
    EXPECT_EQ(content(), expected);
}
} // namespace
