// Processes that end at bad moments. A watchdog ends those that hang.

#include "endings/Ways.h"

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
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string command(path);
    command = "\"" + command.substr(0, command.rfind('\\') + 1) + "qelEndingProcess.exe\" " + arguments;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
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
                EXPECT_EQ(exitCodeOf(arguments), expected) << arguments << ", round " << round;
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
