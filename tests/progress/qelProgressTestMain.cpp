// Under Wine, on a display without a window manager, every window that goes would wait two seconds for the manager's
// answer. A setting prevents that. Wine reads it when a program starts, so the tests run in a second process.

#include "support/SavedRegistryKey.h"
#include "support/StartProcess.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace
{
const wchar_t kSecondProcess[] = L"QEL_PROGRESS_TEST_RUNS";

// Not 0, which Wine reports for a process that a stack overflow has ended.
const DWORD kPassed = 77;

bool isUnderWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Runs this program again with the same arguments and returns its result.
int runAgain()
{
    const qelTest::SavedRegistryKey driver(HKEY_CURRENT_USER,
                                           L"Software\\Wine\\AppDefaults\\qelProgressTest.exe\\X11 Driver");
    driver.setText(L"Managed", L"N");
    SetEnvironmentVariableW(kSecondProcess, L"1");

    PROCESS_INFORMATION process = {};
    if (!qelTest::startProcess(GetCommandLineW(), process))
    {
        return 1;
    }
    DWORD result = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &result);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return result == kPassed ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    const bool isSecond = GetEnvironmentVariableW(kSecondProcess, nullptr, 0) != 0;
    if (isUnderWine() && !isSecond)
    {
        return runAgain();
    }
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    return isSecond && result == 0 ? static_cast<int>(kPassed) : result;
}
