// Processes that end at bad moments. A watchdog ends those that hang.

#include "endings/Ways.h"
#include "support/StartProcess.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

namespace
{
const DWORD kLongestLife = 30000; // ms
const int kHangs = -1;

int rounds = 1; // of the command line
int processes = 0;

/// The exit code of a process that ends so; kHangs when the watchdog had to end it.
int exitCodeOf(const std::string& arguments)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring command(path);
    command = L"\"" + command.substr(0, command.rfind(L'\\') + 1) + L"qelEndingProcess.exe\" " +
              std::wstring(arguments.begin(), arguments.end());
    PROCESS_INFORMATION process = {};
    if (!qelTest::startProcess(command, process))
    {
        return -2;
    }
    const bool ended = WaitForSingleObject(process.hProcess, kLongestLife) == WAIT_OBJECT_0;
    if (!ended)
    {
        TerminateProcess(process.hProcess, 5);
    }
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    ++processes;
    return ended ? static_cast<int>(code) : kHangs;
}

/// Whether an assertion of Wine's has ended the process: one that a thread meets now and then when it calls the system
/// while another one ends the process.
bool isEndedByWine(int code)
{
    return code == static_cast<int>(0x80000101);
}

void endInEveryWay(const std::string& moment)
{
    for (int round = 0; round < rounds; ++round)
    {
        for (const char* way : {"ExitProcess", "TerminateProcess", "exit", "abort"})
        {
            for (const char* who : {"main", "another"})
            {
                const std::string arguments = moment + " " + way + " " + who;
                const int expected = strcmp(way, "abort") == 0 ? qelTest::kExitCodeOfAbort : qelTest::kExitCode;
                int code = exitCodeOf(arguments);
                for (int again = 0; again < 3 && isEndedByWine(code); ++again)
                {
                    code = exitCodeOf(arguments);
                }
                EXPECT_EQ(code, expected) << arguments << ", round " << round;
            }
        }
    }
}

TEST(qelProcessEnd, WhileWorkersAreBusyAndInATask)
{
    endInEveryWay("tasks");
}

TEST(qelProcessEnd, DuringTheWritingOfALog)
{
    endInEveryWay("log");
}

TEST(qelProcessEnd, WhileThreadsReadTheRegistry)
{
    endInEveryWay("registry");
}

TEST(qelProcessEnd, WithTheProgressDialogOpen)
{
    endInEveryWay("dialog");
}

TEST(qelProcessEnd, WithAModuleThatUsesTheLibraryWhenItGoes)
{
    endInEveryWay("module");
}

TEST(qelProcessEnd, WhileAModuleThatUsesTheLibraryIsLoaded)
{
    endInEveryWay("attach");
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc == 3 && strcmp(argv[1], "--rounds") == 0)
    {
        rounds = atoi(argv[2]);
    }
    const int result = RUN_ALL_TESTS();
    printf("%d processes ended\n", processes);
    DeleteFileW(L"EndingProcess.log");
    DeleteFileW(L"EndingModule.log");
    return result;
}
