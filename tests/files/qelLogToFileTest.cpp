// The log's rules that hold once in a process: each test runs in a process of its own.

#include "qelLogfile.h"

#include "support/FailingAllocation.h"
#include "support/FreshProcess.h"
#include "support/LogText.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <share.h>

using qelTest::LogText;
using qelTest::TestFile;

namespace
{
/// A file of a fixed name, missing at first and deleted at the end.
class FixedFile
{
public:
    explicit FixedFile(const wchar_t* path)
        : m_path(path)
    {
        DeleteFileW(path);
    }

    ~FixedFile() { DeleteFileW(m_path.c_str()); }

    FixedFile(const FixedFile&) = delete;
    FixedFile& operator=(const FixedFile&) = delete;

    void set(const char* content) const
    {
        FILE* file = _wfsopen(m_path.c_str(), L"wb", _SH_DENYNO);
        if (file != nullptr)
        {
            fputs(content, file);
            fclose(file);
        }
    }

    std::string get() const
    {
        FILE* file = _wfsopen(m_path.c_str(), L"rb", _SH_DENYNO);
        if (file == nullptr)
        {
            return "no such file";
        }
        char content[1000];
        const size_t size = fread(content, 1, sizeof content, file);
        fclose(file);
        return std::string(content, size);
    }

private:
    std::wstring m_path;
};

/// Makes a new folder the current one.
class FreshFolder
{
public:
    FreshFolder()
    {
        GetCurrentDirectoryW(MAX_PATH, m_before);
        CreateDirectoryW(m_folder.widePath().c_str(), nullptr);
        SetCurrentDirectoryW(m_folder.widePath().c_str());
    }

    ~FreshFolder() { SetCurrentDirectoryW(m_before); }

private:
    TestFile m_folder;
    wchar_t m_before[MAX_PATH] = {};
};

TEST(qelLogfileStatus, IsOffAtFirst)
{
    EXPECT_EQ(qelLogfile::getLogStatus(), 0);
}

TEST(qelLogToFile, BeginsEachLineWithALineEnd)
{
    const LogText times;
    const TestFile file;
    qelLogfile::logToFile(file.path(), L"first");
    EXPECT_EQ(times.withoutTimes(file.get()), "\r\n[now] first");
    qelLogfile::logToFile(file.path(), L"second");
    EXPECT_EQ(times.withoutTimes(file.get()), "\r\n[now] first\r\n[now] second");
}

TEST(qelLogToFile, EmptiesTheFileOfTheFirstCallOnly)
{
    const LogText times;
    const TestFile x("old x");
    const TestFile y("old y");
    qelLogfile::logToFile(x.path(), L"1");
    EXPECT_EQ(times.withoutTimes(x.get()), "\r\n[now] 1");
    qelLogfile::logToFile(y.path(), L"2");
    EXPECT_EQ(times.withoutTimes(y.get()), "old y\r\n[now] 2") << "deliberately kept on its first use";
    qelLogfile::logToFile(x.path(), L"3");
    EXPECT_EQ(times.withoutTimes(x.get()), "\r\n[now] 1\r\n[now] 3");
}

TEST(qelLogToFile, HasItsFirstCallEvenWhenTheFileCannotBeOpened)
{
    const LogText times;
    const TestFile file("old");
    qelLogfile::logToFile(file.path() + L"\\missing\\a.log", L"lost");
    qelLogfile::logToFile(file.path(), L"1");
    EXPECT_EQ(times.withoutTimes(file.get()), "old\r\n[now] 1");
}

TEST(qelLogToFile, NeedsNoSwitch)
{
    const TestFile file;
    qelLogfile::setLogStatus(0);
    qelLogfile::logToFile(file.path(), L"a");
    EXPECT_TRUE(file.exists());
    EXPECT_EQ(qelLogfile::getLogStatus(), 0);
}

TEST(qelLogToFile, LeavesFirstCallsToLogToFile)
{
    const LogText times;
    const TestFile file("old");
    const TestFile other;
    qelLogfile::setLogStatus(1);
    qelLogfile(other.path()).appendWithSave(L"a");
    qelLogfile::listModules(other.path());
    qelLogfile::logToFile(file.path(), L"1");
    EXPECT_EQ(times.withoutTimes(file.get()), "\r\n[now] 1");
}

TEST(qelLogToFile, WritesToTheCommonLogWithoutAName)
{
    const LogText times;
    const FixedFile common(L"c:\\Orvalis.log");
    qelLogfile::logToFile(L"", L"a");
    qelLogfile::logToFile(L"", L"b");
    EXPECT_EQ(times.withoutTimes(common.get()), "\r\n[now] a\r\n[now] b");
}

TEST(qelLogToFile, EmptiesTheCommonLogInTheFirstCall)
{
    const LogText times;
    const FixedFile common(L"c:\\Orvalis.log");
    common.set("old");
    ASSERT_EQ(common.get(), "old");
    qelLogfile::logToFile(L"", L"a");
    EXPECT_EQ(times.withoutTimes(common.get()), "\r\n[now] a");
}

TEST(qelLogToFile, LosesLinesInSilence)
{
    const LogText times;
    const TestFile taken("kept");
    const HANDLE keeper = CreateFileW(taken.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(keeper, INVALID_HANDLE_VALUE);
    qelLogfile::logToFile(taken.path(), L"a");
    CloseHandle(keeper);
    EXPECT_EQ(taken.get(), "kept");

    const TestFile folder;
    ASSERT_TRUE(CreateDirectoryW(folder.widePath().c_str(), nullptr));
    qelLogfile::logToFile(folder.path(), L"a");
    qelLogfile::logToFile(std::wstring(300, L'n').c_str(), L"a");
    qelLogfile::logToFile(L"Z:\\dev\\full", L"a");

    const TestFile good;
    qelLogfile::logToFile(good.path(), L"b");
    EXPECT_EQ(times.withoutTimes(good.get()), "\r\n[now] b");
}

TEST(qelLogToFile, WritesTheLineAfterTextThatTheStreamLacks)
{
    const LogText times;
    const TestFile file(L"-\u65E5\u8A8C.log");
    qelLogfile::logToFile(file.path(), L"a\u4E2Db");
    qelLogfile::logToFile(file.path(), L"next");
    EXPECT_EQ(times.withoutTimes(file.get()), "\r\n[now] a\r\n[now] next");
}

TEST(qelLogfile, WritesToTheCurrentFolderWithoutAName)
{
    const LogText times;
    const FreshFolder folder;
    const FixedFile log(L"Brisken.LOG");
    qelLogfile::setLogStatus(1);
    EXPECT_EQ(qelLogfile().appendWithSave(L"a"), 1);
    EXPECT_EQ(times.withoutTimes(log.get()), "[now] a");
}

TEST(qelLogToFileWithoutMemory, BeginsEachProcessWithAnEmptyFile)
{
    const FixedFile file(L"log without memory.txt");
    file.set("from before");
    const qelString name(L"log without memory.txt");
    const qelString message(L"message");
    qelTest::failEveryAllocation([&] { qelLogfile::logToFile(name, message); }, [] {});
    EXPECT_EQ(file.get().find("from before"), std::string::npos);
}
} // namespace

int main(int argc, char** argv)
{
    return qelTest::runEachTestAlone(argc, argv);
}
