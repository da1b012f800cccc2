#include "support/FreshProcess.h"

#include "support/StartProcess.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
const char kAlone[] = "--alone";
const DWORD kLongestTest = 60000;
// Of a process that has lost its stack, Wine reports 0.
const int kPassed = 77;

std::vector<std::string> allTests()
{
    std::vector<std::string> names;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i)
    {
        const testing::TestSuite& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j)
        {
            names.push_back(std::string(suite.name()) + "." + suite.GetTestInfo(j)->name());
        }
    }
    return names;
}

std::wstring ownPath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

/// Of ASCII alone.
std::wstring wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

bool passesAlone(const std::string& filter)
{
    PROCESS_INFORMATION process = {};
    if (!qelTest::startProcess(
            L"\"" + ownPath() + L"\" " + wide(kAlone) + L" --gtest_brief=1 --gtest_filter=" + wide(filter), process))
    {
        return false;
    }
    if (WaitForSingleObject(process.hProcess, kLongestTest) != WAIT_OBJECT_0)
    {
        TerminateProcess(process.hProcess, 1);
        WaitForSingleObject(process.hProcess, INFINITE);
    }
    DWORD code = 1;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code == kPassed;
}
} // namespace

bool qelTest::runsAlone(int argc, char** argv)
{
    return argc > 1 && std::string(argv[1]) == kAlone;
}

int qelTest::runEachTestAlone(int argc, char** argv)
{
    const bool alone = runsAlone(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
    {
        return RUN_ALL_TESTS();
    }
    if (alone)
    {
        return RUN_ALL_TESTS() == 0 ? kPassed : 1;
    }

    // A filter of the caller's own is for the one test under work.
    const std::string filter = testing::GTEST_FLAG(filter);
    const std::vector<std::string> tests = filter == "*" ? allTests() : std::vector<std::string>{filter};
    std::vector<std::string> failed;
    for (const std::string& test : tests)
    {
        if (!passesAlone(test))
        {
            failed.push_back(test);
        }
    }
    printf("%d tests, each in a process of its own: %d failed\n", static_cast<int>(tests.size()),
           static_cast<int>(failed.size()));
    for (const std::string& test : failed)
    {
        printf("[  FAILED  ] %s\n", test.c_str());
    }
    return failed.empty() && !tests.empty() ? 0 : 1;
}
