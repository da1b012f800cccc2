// Logs that other processes write to. This program is the other process too.

#include "qelLogfile.h"

#include "support/LogText.h"
#include "support/StartProcess.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

using qelTest::LogText;
using qelTest::TestFile;

namespace
{
const int kLines = 10000;
const char kAppend[] = "--append";
const char kEndAbruptly[] = "--end-abruptly";
const UINT kAbruptEnd = 99;
const wchar_t kStartEvent[] = L"Local\\qelLogWritersTest start";

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

/// What a process does that ends right behind its last call, without the runtime's and the library's last steps.
int endAbruptly(const std::string& file)
{
    const qelString name(file.c_str());
    qelLogfile::setLogStatus(1);
    qelLogfile log(name);
    qelLogfile::logToFile(name, L"first");
    log.appendWithSave(L"second");
    TerminateProcess(GetCurrentProcess(), kAbruptEnd);
    return 1;
}

HANDLE startProcess(const std::wstring& arguments)
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    PROCESS_INFORMATION process = {};
    if (!qelTest::startProcess(L"\"" + std::wstring(program) + L"\" " + arguments, process))
    {
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

HANDLE startWriter(const std::wstring& file, wchar_t writer)
{
    return startProcess(L"--append \"" + file + L"\" " + writer);
}

TEST(qelLogfile, KeepsEveryLineOfAProcessThatEndsRightBehindTheCall)
{
    const LogText times;
    const TestFile file("old");
    const HANDLE process = startProcess(L"--end-abruptly \"" + file.widePath() + L"\"");
    ASSERT_NE(process, nullptr);
    ASSERT_EQ(WaitForSingleObject(process, 60000), WAIT_OBJECT_0);
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    EXPECT_EQ(code, kAbruptEnd);
    EXPECT_EQ(times.withoutTimes(file.get()), "\r\n[now] first[now] second");
}

TEST(qelLogfile, LosesAndTearsNoLineOfTwoProcesses)
{
    const LogText times;
    const TestFile file("");
    const HANDLE start = CreateEventW(nullptr, TRUE, FALSE, kStartEvent);
    ASSERT_NE(start, nullptr);
    const HANDLE writers[] = {startWriter(file.widePath(), L'A'), startWriter(file.widePath(), L'B')};
    ASSERT_NE(writers[0], nullptr);
    ASSERT_NE(writers[1], nullptr);
    Sleep(500);
    SetEvent(start);
    ASSERT_EQ(WaitForMultipleObjects(2, writers, TRUE, 240000), WAIT_OBJECT_0);
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
    int next[2] = {0, 0};
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
    if (argc == 3 && std::string(argv[1]) == kEndAbruptly)
    {
        return endAbruptly(argv[2]);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
