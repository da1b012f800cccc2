// The log's rules that hold once in a process, each test in a process of its own, and logs of several processes.

#include "qelLogfile.h"

#include "support/FreshProcess.h"
#include "support/LogText.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

#include <share.h>

using qelTest::LogText;
using qelTest::TestFile;

namespace
{
const int kLines = 10000;
const char kAppend[] = "--append";
const wchar_t kStartEvent[] = L"Local\\qelLogToFileTest start";

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

/// Some lines are longer than a stream's buffer, and so are written in several pieces.
std::string payload(int line)
{
    return line % 100 == 0 ? std::string(9000, 'x') : std::string(static_cast<size_t>(line % 50), 'y');
}

std::string record(char writer, int line)
{
    return std::string("[now] ") + writer + std::to_string(line) + " " + payload(line) + ".";
}

/// What another process does: lines of one writer, of one of the two kinds.
int appendLines(const std::string& file, char writer)
{
    const qelString name(file.c_str());
    qelLogfile::setLogStatus(1);
    qelLogfile log(name);
    qelLogfile::logToFile(L"NUL", L"the first call empties its file");

    const HANDLE start = OpenEventW(SYNCHRONIZE, FALSE, kStartEvent);
    const bool started = WaitForSingleObject(start, 60000) == WAIT_OBJECT_0;
    CloseHandle(start);
    for (int line = 0; started && line < kLines; ++line)
    {
        const std::string text = writer + std::to_string(line) + " " + payload(line) + ".";
        if (writer == 'A')
        {
            log.appendWithSave(qelString(text.c_str()) + L"\n");
        }
        else
        {
            qelLogfile::logToFile(name, text.c_str());
        }
    }
    return started ? 0 : 1;
}

HANDLE startWriter(const std::wstring& file, wchar_t writer)
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = L"\"" + std::wstring(program) + L"\" --append \"" + file + L"\" " + writer;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    {
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

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
    const HANDLE keeper =
        CreateFileW(taken.widePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
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

TEST(qelLogfile, LosesAndTearsNoLineOfTwoProcesses)
{
    const LogText times;
    const TestFile file("");
    const HANDLE start = CreateEventW(nullptr, TRUE, FALSE, kStartEvent);
    ASSERT_NE(start, nullptr);
    const HANDLE writers[] = { startWriter(file.widePath(), L'A'), startWriter(file.widePath(), L'B') };
    ASSERT_NE(writers[0], nullptr);
    ASSERT_NE(writers[1], nullptr);
    Sleep(500);
    SetEvent(start);
    ASSERT_EQ(WaitForMultipleObjects(2, writers, TRUE, 55000), WAIT_OBJECT_0);
    CloseHandle(start);
    for (HANDLE writer : writers)
    {
        DWORD code = 1;
        GetExitCodeProcess(writer, &code);
        EXPECT_EQ(code, 0u);
        CloseHandle(writer);
    }

    // Line ends stand behind the lines of one writer and before those of the other.
    std::string content = times.withoutTimes(file.get());
    int next[2] = { 0, 0 };
    int changes = 0;
    char last = 0;
    size_t at = content.find_first_not_of("\r\n");
    while (at != std::string::npos)
    {
        ASSERT_GT(content.size(), at + 6);
        const char writer = content[at + 6];
        ASSERT_TRUE(writer == 'A' || writer == 'B') << content.substr(at, 100);
        const std::string expected = record(writer, next[writer - 'A']++);
        ASSERT_EQ(content.compare(at, expected.size(), expected), 0) << content.substr(at, 100);
        changes += writer != last ? 1 : 0;
        last = writer;
        at = content.find_first_not_of("\r\n", at + expected.size());
    }
    EXPECT_EQ(next[0], kLines);
    EXPECT_EQ(next[1], kLines);
    EXPECT_GT(changes, 100) << "the two hardly met";
}
} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::string(argv[1]) == kAppend)
    {
        return appendLines(argv[2], argv[3][0]);
    }
    return qelTest::runEachTestAlone(argc, argv);
}
